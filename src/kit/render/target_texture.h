#pragma once

#include <cstdint>
#include <utility>

#include "kit/platform/render_target.h"

namespace kit {

// Sole owner of one texture of a render target: gives it back when dropped.
// The target must outlive it. Empty (false) when the target could not make it.
class TargetTexture {
 public:
  TargetTexture() = default;
  TargetTexture(RenderTarget& target, const uint8_t* rgba, int width, int height)
      : target_(&target), id_(target.createTexture(rgba, width, height)) {}
  ~TargetTexture() { reset(); }
  TargetTexture(TargetTexture&& other) noexcept
      : target_(std::exchange(other.target_, nullptr)), id_(std::exchange(other.id_, 0)) {}
  TargetTexture& operator=(TargetTexture&& other) noexcept {
    if (this != &other) {
      reset();
      target_ = std::exchange(other.target_, nullptr);
      id_ = std::exchange(other.id_, 0);
    }
    return *this;
  }
  TargetTexture(const TargetTexture&) = delete;
  TargetTexture& operator=(const TargetTexture&) = delete;

  TextureId id() const { return id_; }
  explicit operator bool() const { return id_ != 0; }

 private:
  void reset() {
    if (target_ && id_)
      target_->destroyTexture(id_);
    id_ = 0;
  }

  RenderTarget* target_ = nullptr;
  TextureId id_ = 0;
};

}  // namespace kit
