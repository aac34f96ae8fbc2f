// The floor the game's startup is measured against: SDL with the same hints
// and renderer, one window of the phone layout's size, one present, then out.
#include <SDL.h>

#include <chrono>
#include <cstdio>

int main() {
  SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
  SDL_SetHint(SDL_HINT_RENDER_DRIVER, "software");
  if (SDL_Init(SDL_INIT_VIDEO) != 0) {
    std::fprintf(stderr, "no display: %s\n", SDL_GetError());
    return 1;
  }
  SDL_Window* window = SDL_CreateWindow("bare", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, 320,
                                        618, SDL_WINDOW_ALLOW_HIGHDPI);
  SDL_Renderer* renderer =
      window ? SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE | SDL_RENDERER_PRESENTVSYNC)
             : nullptr;
  if (!renderer) {
    std::fprintf(stderr, "no renderer: %s\n", SDL_GetError());
    return 1;
  }
  SDL_SetRenderDrawColor(renderer, 0, 0, 0, 255);
  SDL_RenderClear(renderer);
  SDL_RenderPresent(renderer);
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  std::fprintf(
      stderr, "startup: first frame presented at steady time %lld ns\n",
      static_cast<long long>(std::chrono::duration_cast<std::chrono::nanoseconds>(now).count()));
  SDL_DestroyRenderer(renderer);
  SDL_DestroyWindow(window);
  SDL_Quit();
  return 0;
}
