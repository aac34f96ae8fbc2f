#include "kit/render/image_library.h"

#include <SDL.h>
#include <SDL_image.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kit {
namespace {

// Image files larger than this are refused unread.
constexpr std::uintmax_t kLargestFile = 32u << 20;

bool allOpaque(const SDL_Surface* s) {
  // ARGB8888: alpha is the top byte of each word.
  for (int y = 0; y < s->h; ++y) {
    const auto* row = reinterpret_cast<const uint32_t*>(static_cast<const uint8_t*>(s->pixels) +
                                                        static_cast<ptrdiff_t>(y) * s->pitch);
    for (int x = 0; x < s->w; ++x) {
      if ((row[x] >> 24) != 0xff)
        return false;
    }
  }
  return true;
}

}  // namespace

void TextureDeleter::operator()(SDL_Texture* texture) const {
  SDL_DestroyTexture(texture);
}

TexturePtr makeTexture(SDL_Renderer* renderer, const uint8_t* rgba, int width, int height) {
  if (width <= 0 || height <= 0 || !rgba)
    return nullptr;
  std::vector<uint32_t> argb(static_cast<size_t>(width) * height);
  for (size_t i = 0; i < argb.size(); ++i) {
    const uint8_t* p = rgba + i * 4;
    argb[i] = uint32_t{p[3]} << 24 | uint32_t{p[0]} << 16 | uint32_t{p[1]} << 8 | p[2];
  }
  TexturePtr texture(SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STATIC,
                                       width, height));
  if (!texture)
    return nullptr;
  SDL_UpdateTexture(texture.get(), nullptr, argb.data(), width * 4);
  SDL_SetTextureBlendMode(texture.get(), SDL_BLENDMODE_BLEND);
  SDL_SetTextureScaleMode(texture.get(), SDL_ScaleModeLinear);
  return texture;
}

struct ImageLibrary::Entry {
  int requestWidth = 0;
  int requestHeight = 0;
  Sized sized;
  TexturePtr texture;
  uint64_t lastUsed = 0;
};

struct ImageLibrary::Source {
  bool failed = false;
  bool svg = false;
  std::string bytes;
  std::vector<Entry> sizes;  // an SVG's rasterisations; a PNG's one decoding
};

ImageLibrary::ImageLibrary(SDL_Renderer* renderer, Resolver resolver, Log& log)
    : renderer_(renderer), resolver_(std::move(resolver)), log_(log) {}

ImageLibrary::~ImageLibrary() = default;

ImageLibrary::Source* ImageLibrary::source(const std::string& name) {
  auto it = sources_.find(name);
  if (it != sources_.end())
    return it->second.get();
  auto source = std::make_unique<Source>();
  const std::optional<std::filesystem::path> path = resolver_ ? resolver_(name) : std::nullopt;
  std::error_code ec;
  if (!path) {
    log_.write("image not found: " + name);
    source->failed = true;
  } else if (std::filesystem::file_size(*path, ec) > kLargestFile || ec) {
    log_.write("image file unreadable or too large: " + path->string());
    source->failed = true;
  } else {
    std::ifstream in(*path, std::ios::binary);
    source->bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    source->svg = path->extension() == ".svg";
    if (source->bytes.empty()) {
      log_.write("image file unreadable: " + path->string());
      source->failed = true;
    }
  }
  return sources_.emplace(name, std::move(source)).first->second.get();
}

std::optional<ImageLibrary::Entry> ImageLibrary::rasterize(Source& source, int width, int height) {
  SDL_RWops* rw = SDL_RWFromConstMem(source.bytes.data(), static_cast<int>(source.bytes.size()));
  if (!rw)
    return std::nullopt;
  SDL_Surface* surface = nullptr;
  if (source.svg) {
    surface = IMG_LoadSizedSVG_RW(rw, width, height);
    // The rasteriser keeps the drawing's aspect ratio and fits it inside the
    // request; when the box has another shape, rasterise to cover it instead
    // and let drawing stretch it.
    if (surface && (surface->w < width - 1 || surface->h < height - 1)) {
      const bool narrow = surface->w < width - 1;
      SDL_FreeSurface(surface);
      SDL_RWseek(rw, 0, RW_SEEK_SET);
      surface = narrow ? IMG_LoadSizedSVG_RW(rw, width, 0) : IMG_LoadSizedSVG_RW(rw, 0, height);
    }
  } else {
    surface = IMG_Load_RW(rw, 0);
  }
  SDL_RWclose(rw);
  if (!surface)
    return std::nullopt;
  SDL_Surface* argb = SDL_ConvertSurfaceFormat(surface, SDL_PIXELFORMAT_ARGB8888, 0);
  SDL_FreeSurface(surface);
  if (!argb)
    return std::nullopt;
  Entry entry;
  entry.requestWidth = width;
  entry.requestHeight = height;
  entry.sized.width = argb->w;
  entry.sized.height = argb->h;
  entry.sized.opaque = allOpaque(argb);
  entry.texture.reset(SDL_CreateTextureFromSurface(renderer_, argb));
  SDL_FreeSurface(argb);
  if (!entry.texture)
    return std::nullopt;
  SDL_SetTextureBlendMode(entry.texture.get(), SDL_BLENDMODE_BLEND);
  SDL_SetTextureScaleMode(entry.texture.get(), SDL_ScaleModeLinear);
  entry.sized.texture = entry.texture.get();
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
  std::optional<Entry> made = rasterize(*src, width, height);
  if (!made) {
    log_.write("image cannot be decoded: " + name + " (" + SDL_GetError() + ")");
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
