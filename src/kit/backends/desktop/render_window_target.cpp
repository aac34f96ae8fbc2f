#include <SDL.h>

#include <algorithm>
#include <cmath>

#include "kit/backends/desktop/render_window.h"
#include "kit/backends/desktop/render_window_parts.h"

namespace kit {
namespace {

uint8_t byte(double unit) {
  return static_cast<uint8_t>(std::lround(std::clamp(unit, 0.0, 1.0) * 255));
}

SDL_BlendMode sdlBlend(TargetBlend blend) {
  return blend == TargetBlend::None ? SDL_BLENDMODE_NONE : SDL_BLENDMODE_BLEND;
}

}  // namespace

RenderWindow::RenderWindow() : textures_(std::make_unique<Textures>()) {}

Size RenderWindow::pixelSize() const {
  int w = 0, h = 0;
  if (SDL_GetRendererOutputSize(renderer_, &w, &h) != 0)
    SDL_GetWindowSize(window_, &w, &h);
  return {double(w), double(h)};
}

TextureId RenderWindow::createTexture(const uint8_t* rgba, int width, int height) {
  if (width <= 0 || height <= 0 || !rgba)
    return 0;
  // ARGB8888: the format the software renderer blits fastest.
  std::vector<uint32_t> argb(static_cast<size_t>(width) * height);
  for (size_t i = 0; i < argb.size(); ++i) {
    const uint8_t* p = rgba + i * 4;
    argb[i] = uint32_t{p[3]} << 24 | uint32_t{p[0]} << 16 | uint32_t{p[1]} << 8 | p[2];
  }
  SDL_Texture* texture = SDL_CreateTexture(renderer_, SDL_PIXELFORMAT_ARGB8888,
                                           SDL_TEXTUREACCESS_STATIC, width, height);
  if (!texture)
    return 0;
  SDL_UpdateTexture(texture, nullptr, argb.data(), width * 4);
  SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND);
  SDL_SetTextureScaleMode(texture, SDL_ScaleModeLinear);
  const TextureId id = textures_->next++;
  textures_->live.emplace(id, texture);
  return id;
}

void RenderWindow::destroyTexture(TextureId texture) {
  auto it = textures_->live.find(texture);
  if (it == textures_->live.end())
    return;
  SDL_DestroyTexture(it->second);
  textures_->live.erase(it);
}

void RenderWindow::clear(const Color& color) {
  SDL_SetRenderDrawBlendMode(renderer_, SDL_BLENDMODE_NONE);
  SDL_SetRenderDrawColor(renderer_, byte(color.red), byte(color.green), byte(color.blue),
                         byte(color.alpha));
  SDL_RenderClear(renderer_);
}

void RenderWindow::fillRect(const Rect& rect, const Color& color, TargetBlend blend) {
  const SDL_Rect dst = sdlPixelRect(rect);
  SDL_SetRenderDrawBlendMode(renderer_, sdlBlend(blend));
  SDL_SetRenderDrawColor(renderer_, byte(color.red), byte(color.green), byte(color.blue),
                         byte(color.alpha));
  SDL_RenderFillRect(renderer_, &dst);
}

void RenderWindow::drawQuad(const TexturedQuad& quad) {
  SDL_Texture* texture = textures_->find(quad.texture);
  if (!texture)
    return;
  SDL_SetTextureColorMod(texture, byte(quad.tint.red), byte(quad.tint.green), byte(quad.tint.blue));
  SDL_SetTextureAlphaMod(texture, byte(quad.alpha));
  SDL_SetTextureBlendMode(texture, sdlBlend(quad.blend));
  SDL_Rect source;
  const SDL_Rect* from = nullptr;
  if (quad.source) {
    source = sdlPixelRect(*quad.source);
    from = &source;
  }
  const Rect& d = quad.destination;
  if (std::abs(quad.rotationDegrees) < 1e-6 && !quad.flipVertical) {
    const SDL_Rect dst = sdlPixelRect(d);
    SDL_RenderCopy(renderer_, texture, from, &dst);
    return;
  }
  const SDL_FRect dst{float(d.origin.x), float(d.origin.y), float(d.size.width),
                      float(d.size.height)};
  SDL_RenderCopyExF(renderer_, texture, from, &dst, quad.rotationDegrees, nullptr,
                    quad.flipVertical ? SDL_FLIP_VERTICAL : SDL_FLIP_NONE);
}

void RenderWindow::setClip(const std::optional<Rect>& rect) {
  if (!rect) {
    SDL_RenderSetClipRect(renderer_, nullptr);
    return;
  }
  const SDL_Rect clip{static_cast<int>(std::lround(rect->origin.x)),
                      static_cast<int>(std::lround(rect->origin.y)),
                      static_cast<int>(std::lround(rect->size.width)),
                      static_cast<int>(std::lround(rect->size.height))};
  SDL_RenderSetClipRect(renderer_, &clip);
}

void RenderWindow::present() {
  SDL_RenderPresent(renderer_);
}

Result<std::vector<uint8_t>> RenderWindow::readPixels(int& width, int& height) const {
  const Size px = pixelSize();
  const int w = static_cast<int>(px.width), h = static_cast<int>(px.height);
  std::vector<uint8_t> rgba(static_cast<size_t>(w) * h * 4);
  if (rgba.empty() ||
      SDL_RenderReadPixels(renderer_, nullptr, SDL_PIXELFORMAT_RGBA32, rgba.data(), w * 4) != 0) {
    width = height = 0;
    return Error{std::string("cannot read the window's pixels: ") + SDL_GetError()};
  }
  width = w;
  height = h;
  return rgba;
}

}  // namespace kit
