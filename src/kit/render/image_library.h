#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kit/foundation/log.h"
#include "kit/platform/image_codec.h"
#include "kit/platform/resource_store.h"
#include "kit/render/target_texture.h"

namespace kit {

// The named images of the application as textures: SVGs rasterised at the
// pixel size they are drawn (each size once, then reused), PNGs decoded once
// at their own size and scaled when drawn. A name that resolves to nothing,
// or whose file cannot be read, is logged once and then drawn as nothing.
// Borrows the render target, the codec and the log; all outlive it.
class ImageLibrary {
 public:
  // An image name ("car", "bg.png") to the name of its SVG or PNG resource
  // ("images/car.svg"), or nullopt when there is none.
  using Resolver = std::function<std::optional<std::string>(std::string_view)>;

  struct Sized {
    TextureId texture = 0;
    int width = 0;  // pixels of the texture, which may differ from the request
    int height = 0;
    bool opaque = false;  // every pixel has alpha 255
  };

  // Largest side, in pixels, an image is rasterised at.
  static constexpr int kLargestSide = 4096;

  ImageLibrary(RenderTarget& target, ImageCodec& codec, const ResourceStore& resources,
               Resolver resolver, Log& log);
  ~ImageLibrary();
  ImageLibrary(const ImageLibrary&) = delete;
  ImageLibrary& operator=(const ImageLibrary&) = delete;

  // The image `name` for a box of `width` × `height` pixels, marked as used
  // in frame `frame`; nullptr when the image cannot be had. The answer is
  // valid until the next call.
  const Sized* get(const std::string& name, int width, int height, uint64_t frame);

  // Releases sizes not used since frame `oldestKept`.
  void releaseUnused(uint64_t oldestKept);
  size_t textureCount() const;
  uint64_t rasterizations() const { return rasterizations_; }

 private:
  struct Entry;
  struct Source;
  Source* source(const std::string& name);
  Result<Entry> rasterize(Source& source, int width, int height);

  RenderTarget& target_;
  ImageCodec& codec_;
  const ResourceStore& resources_;
  Resolver resolver_;
  Log& log_;
  std::unordered_map<std::string, std::unique_ptr<Source>> sources_;
  uint64_t rasterizations_ = 0;
};

}  // namespace kit
