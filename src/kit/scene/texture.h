#pragma once

#include <string>
#include <utility>

#include "kit/foundation/geometry.h"

namespace kit {

// An image by name. The scene
// never loads pixels: the renderer resolves the name ("car", "bg.png") to an
// asset. Two textures are equal when their names are equal. A texture may
// carry its natural size when whoever made it knows it; otherwise the size is
// zero and sprites keep the size they were given.
class Texture {
 public:
  Texture() = default;
  explicit Texture(std::string name, Size naturalSize = {})
      : name_(std::move(name)), size_(naturalSize) {}

  static Texture textureWithImageNamed(std::string name) { return Texture(std::move(name)); }

  const std::string& name() const { return name_; }
  // Zero when not known.
  Size size() const { return size_; }
  bool isNull() const { return name_.empty(); }

  friend bool operator==(const Texture& l, const Texture& r) { return l.name_ == r.name_; }

 private:
  std::string name_;
  Size size_;
};

}  // namespace kit
