#include "kit/render/image_library.h"

#include <algorithm>

namespace kit {
namespace {

// Image files larger than this are refused unread.
constexpr size_t kLargestFile = 32u << 20;

bool allOpaque(const PixelBuffer& pixels) {
  for (size_t i = 3; i < pixels.rgba.size(); i += 4) {
    if (pixels.rgba[i] != 0xff)
      return false;
  }
  return true;
}

}  // namespace

struct ImageLibrary::Entry {
  int requestWidth = 0;
  int requestHeight = 0;
  Sized sized;
  TargetTexture texture;
  uint64_t lastUsed = 0;
};

struct ImageLibrary::Source {
  bool failed = false;
  bool svg = false;
  std::string bytes;
  std::vector<Entry> sizes;  // an SVG's rasterisations; a PNG's one decoding
};

ImageLibrary::ImageLibrary(RenderTarget& target, ImageCodec& codec, const ResourceStore& resources,
                           Resolver resolver, Log& log)
    : target_(target),
      codec_(codec),
      resources_(resources),
      resolver_(std::move(resolver)),
      log_(log) {}

ImageLibrary::~ImageLibrary() = default;

ImageLibrary::Source* ImageLibrary::source(const std::string& name) {
  auto it = sources_.find(name);
  if (it != sources_.end())
    return it->second.get();
  auto source = std::make_unique<Source>();
  const std::optional<std::string> resource = resolver_ ? resolver_(name) : std::nullopt;
  Result<std::string> bytes = resource ? resources_.read(*resource, kLargestFile) : Error{""};
  if (!resource) {
    log_.write("image not found: " + name);
    source->failed = true;
  } else if (!bytes) {
    log_.write("image file unreadable or too large: " + resources_.location(*resource));
    source->failed = true;
  } else if (bytes->empty()) {
    log_.write("image file unreadable: " + resources_.location(*resource));
    source->failed = true;
  } else {
    source->bytes = std::move(*bytes);
    source->svg = resource->ends_with(".svg");
  }
  return sources_.emplace(name, std::move(source)).first->second.get();
}

Result<ImageLibrary::Entry> ImageLibrary::rasterize(Source& source, int width, int height) {
  Result<PixelBuffer> pixels = Error{""};
  if (source.svg) {
    pixels = codec_.rasterizeSvg(source.bytes, width, height);
    // The rasteriser keeps the drawing's aspect ratio and fits it inside the
    // request; when the box has another shape, rasterise to cover it instead
    // and let drawing stretch it.
    if (pixels && (pixels->width < width - 1 || pixels->height < height - 1)) {
      const bool narrow = pixels->width < width - 1;
      pixels = narrow ? codec_.rasterizeSvg(source.bytes, width, 0)
                      : codec_.rasterizeSvg(source.bytes, 0, height);
    }
  } else {
    pixels = codec_.decode(source.bytes);
  }
  if (!pixels)
    return Error{pixels.error()};
  Entry entry;
  entry.requestWidth = width;
  entry.requestHeight = height;
  entry.sized.width = pixels->width;
  entry.sized.height = pixels->height;
  entry.sized.opaque = allOpaque(*pixels);
  entry.texture = TargetTexture(target_, pixels->rgba.data(), pixels->width, pixels->height);
  if (!entry.texture)
    return Error{"the render target cannot make the texture"};
  entry.sized.texture = entry.texture.id();
  ++rasterizations_;
  return entry;
}

const ImageLibrary::Sized* ImageLibrary::get(const std::string& name, int width, int height,
                                             uint64_t frame) {
  Source* src = source(name);
  if (src->failed)
    return nullptr;
  width = std::clamp(width, 1, kLargestSide);
  height = std::clamp(height, 1, kLargestSide);
  for (Entry& e : src->sizes) {
    if (!src->svg || (e.requestWidth == width && e.requestHeight == height)) {
      e.lastUsed = frame;
      return &e.sized;
    }
  }
  Result<Entry> made = rasterize(*src, width, height);
  if (!made) {
    log_.write("image cannot be decoded: " + name + " (" + made.error() + ")");
    src->failed = true;
    src->sizes.clear();
    return nullptr;
  }
  made->lastUsed = frame;
  src->sizes.push_back(std::move(*made));
  return &src->sizes.back().sized;
}

void ImageLibrary::releaseUnused(uint64_t oldestKept) {
  for (auto& [name, src] : sources_) {
    std::erase_if(src->sizes, [&](const Entry& e) { return e.lastUsed < oldestKept; });
  }
}

size_t ImageLibrary::textureCount() const {
  size_t n = 0;
  for (const auto& [name, src] : sources_)
    n += src->sizes.size();
  return n;
}

}  // namespace kit
