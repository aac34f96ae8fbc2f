#pragma once

#include <SDL.h>

#include <cmath>
#include <unordered_map>
#include <vector>

#include "kit/backends/desktop/render_window.h"

namespace kit {

// The window's textures by id; destroyed with the window.
struct RenderWindow::Textures {
  ~Textures() {
    for (auto& [id, texture] : live)
      SDL_DestroyTexture(texture);
  }
  SDL_Texture* find(TextureId id) const {
    auto it = live.find(id);
    return it == live.end() ? nullptr : it->second;
  }

  std::unordered_map<TextureId, SDL_Texture*> live;
  TextureId next = 1;
};

// The game controllers that are plugged in, open while the window lives.
struct RenderWindow::Controllers {
  Controllers() = default;
  Controllers(const Controllers&) = delete;
  Controllers& operator=(const Controllers&) = delete;
  ~Controllers();
  void added(int deviceIndex);
  void removed(SDL_JoystickID id);

  std::vector<SDL_GameController*> open;
};

// A rectangle of pixels as SDL draws it: edges rounded to whole pixels.
inline SDL_Rect sdlPixelRect(const Rect& r) {
  const int x0 = static_cast<int>(std::lround(r.minX())),
            y0 = static_cast<int>(std::lround(r.minY()));
  const int x1 = static_cast<int>(std::lround(r.maxX())),
            y1 = static_cast<int>(std::lround(r.maxY()));
  return {x0, y0, std::max(0, x1 - x0), std::max(0, y1 - y0)};
}

}  // namespace kit
