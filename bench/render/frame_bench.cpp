// What drawing a frame costs on the software renderer with the phone layout
// at two pixels per point (a 640 x 1136 scene): the home screen, a frame of
// steady play, whole autoplayed frames, and as the baseline in the same run a
// bare frame of the same window (clear, one full-window texture, present).
#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "app/game_application.h"
#include "kit/backends/desktop/headless_platform.h"
#include "kit/backends/desktop/render_window.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/renderer.h"
#include "kit/scene/frame_driver.h"

namespace {

constexpr int64_t kFrame = kit::kNanosPerSecond / 60;

void useOffscreen() {
  setenv("SDL_VIDEODRIVER", "offscreen", 0);
  setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
}

// The game on a manual clock in a real window.
struct Game {
  Game() {
    useOffscreen();
    GameApplication::Options options;
    options.application.resourceDir = TWINLANES_RESOURCES;
    options.application.windowScale = 2;
    options.seed = 11;
    app = std::make_unique<GameApplication>(options, host, platform.services());
    std::string error;
    ok = app->launch(&error);
    if (!ok)
      message = error;
  }
  void frames(int n) {
    for (int i = 0; i < n; ++i) {
      platform.clock.advance(kFrame);
      app->application().runFrame();
    }
  }
  kit::TempDir prefs{"twinlanes-frame-bench"};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  NoHostServices host;
  std::unique_ptr<GameApplication> app;
  bool ok = false;
  std::string message;
};

void BM_HomeScreenFrame(benchmark::State& state) {
  Game game;
  if (!game.ok)
    return state.SkipWithError(game.message.c_str());
  game.frames(10);
  for (auto _ : state)
    game.app->application().finishFrame();
  state.counters["draw_calls"] = double(game.app->application().renderer()->stats().drawCalls);
}
BENCHMARK(BM_HomeScreenFrame)->Unit(benchmark::kMillisecond)->MinTime(2);

void BM_PlayFrame(benchmark::State& state) {
  Game game;
  if (!game.ok)
    return state.SkipWithError(game.message.c_str());
  game.app->setAutoplay(true);
  game.frames(240);  // a few seconds into the first run: obstacles on the roads
  if (!game.app->scene()->startFlag)
    return state.SkipWithError("the run ended early");
  const uint64_t before = game.app->application().renderer()->stats().rasterizations;
  for (auto _ : state)
    game.app->application().finishFrame();
  const auto stats = game.app->application().renderer()->stats();
  state.counters["draw_calls"] = double(stats.drawCalls);
  state.counters["rasterized_while_timed"] = double(stats.rasterizations - before);
}
BENCHMARK(BM_PlayFrame)->Unit(benchmark::kMillisecond)->MinTime(2);

// Whole frames (game logic, view animations, drawing) while the built-in
// player plays run after run, game-over screens included.
void BM_AutoplayedFrames(benchmark::State& state) {
  Game game;
  if (!game.ok)
    return state.SkipWithError(game.message.c_str());
  game.app->setAutoplay(true);
  game.frames(60);
  const uint64_t before = game.app->application().renderer()->stats().rasterizations;
  int64_t frames = 0;
  for (auto _ : state) {
    game.frames(1);
    ++frames;
  }
  const auto stats = game.app->application().renderer()->stats();
  state.counters["rasterized_per_1000_frames"] =
      double(stats.rasterizations - before) * 1000 / double(frames);
}
BENCHMARK(BM_AutoplayedFrames)->Unit(benchmark::kMillisecond)->MinTime(2);

void BM_BareFrame(benchmark::State& state) {
  useOffscreen();
  kit::WindowOptions options;
  options.content = {320, 618};
  options.scale = 2;
  std::string error;
  auto window = kit::RenderWindow::open(options, &error);
  if (!window)
    return state.SkipWithError(error.c_str());
  const kit::Size px = window->pixelSize();
  std::vector<uint8_t> grey(static_cast<size_t>(px.width * px.height) * 4, 90);
  SDL_Texture* texture = SDL_CreateTexture(window->sdlRenderer(), SDL_PIXELFORMAT_ARGB8888,
                                           SDL_TEXTUREACCESS_STATIC, int(px.width), int(px.height));
  SDL_UpdateTexture(texture, nullptr, grey.data(), int(px.width) * 4);
  for (auto _ : state) {
    SDL_RenderClear(window->sdlRenderer());
    SDL_RenderCopy(window->sdlRenderer(), texture, nullptr, nullptr);
    window->present();
  }
  SDL_DestroyTexture(texture);
}
BENCHMARK(BM_BareFrame)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
