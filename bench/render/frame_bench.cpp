// What drawing a frame costs on the software renderer with the phone layout
// at two pixels per point (a 640 x 1136 scene): the home screen, a frame of
// steady play, whole autoplayed frames, and as the baseline in the same run a
// bare frame of the same window (clear, one full-window texture, present).
// Then a frame of play on each renderer, software (the baseline) and
// accelerated (SDL's OpenGL renderer; Mesa's llvmpipe where there is no GPU),
// in that window and in a 3840 x 2160 one, as fullscreen on a 4K display.
// Those need a real display (the offscreen driver never resizes OpenGL's
// drawing surface), so scripts/run-benchmarks runs them alone under
// xvfb-run -s "-screen 0 3840x2160x24" with SDL_VIDEODRIVER=x11.
#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/game_application.h"
#include "kit/backends/desktop/desktop_window_system.h"
#include "kit/backends/desktop/render_window.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/renderer.h"
#include "kit/scene/frame_driver.h"

namespace {

constexpr int64_t kFrame = kit::kNanosPerSecond / 60;

void useOffscreen() {
  setenv("SDL_VIDEODRIVER", "offscreen", 0);
  setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
}

// The game on a manual clock in a real window, on the software renderer
// unless told otherwise, resized to `pixels` when given.
struct Game {
  explicit Game(kit::RendererChoice renderer = kit::RendererChoice::Software,
                std::optional<kit::Size> pixels = std::nullopt) {
    useOffscreen();
    GameApplication::Options options;
    options.application.resourceDir = TWINLANES_RESOURCES;
    options.application.windowScale = 2;
    options.application.renderer = renderer;
    options.seed = 11;
    app = std::make_unique<GameApplication>(options, host, platform.services(), &windows);
    const kit::Status launched = app->launch();
    ok = launched.ok();
    if (!ok) {
      message = launched.error();
      return;
    }
    kit::RenderWindow* window =
        static_cast<kit::RenderWindow*>(app->application().platformWindow());
    // Drawing is timed, not the display's refresh.
    SDL_RenderSetVSync(window->sdlRenderer(), 0);
    if (pixels) {
      SDL_SetWindowSize(window->sdlWindow(), int(pixels->width), int(pixels->height));
      frames(2);
    }
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
  kit::DesktopWindowSystem windows;
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
  if (!game.app->scene()->startFlag())
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

// A frame of play drawn and presented by one renderer at one window size;
// the OpenGL renderer is waited for (glFinish) so that its work is counted,
// not only queued.
void BM_PlayFrameOnRenderer(benchmark::State& state) {
  const auto renderer = static_cast<kit::RendererChoice>(state.range(0));
  const kit::Size pixels{double(state.range(1)), double(state.range(2))};
  Game game(renderer, pixels);
  if (!game.ok)
    return state.SkipWithError(game.message.c_str());
  const std::string driver = SDL_GetCurrentVideoDriver() ? SDL_GetCurrentVideoDriver() : "";
  if (driver != "x11" && driver != "wayland") {
    const std::string why = "needs a real display (x11 or wayland), not " + driver;
    return state.SkipWithError(why.c_str());
  }
  kit::RenderWindow* window =
      static_cast<kit::RenderWindow*>(game.app->application().platformWindow());
  const std::string name = window->rendererName();
  if (renderer == kit::RendererChoice::Accelerated && name == "software")
    return state.SkipWithError("no accelerated renderer here");
  using Finish = void (*)();
  const Finish finish =
      name == "opengl" ? reinterpret_cast<Finish>(SDL_GL_GetProcAddress("glFinish")) : nullptr;
  game.app->setAutoplay(true);
  game.frames(240);
  const kit::Size drawn = window->pixelSize();
  for (auto _ : state) {
    game.app->application().finishFrame();
    if (finish)
      finish();
  }
  state.SetLabel(name + " " + std::to_string(int(drawn.width)) + "x" +
                 std::to_string(int(drawn.height)));
}
BENCHMARK(BM_PlayFrameOnRenderer)
    ->ArgNames({"renderer", "w", "h"})
    ->Args({int(kit::RendererChoice::Software), 640, 1136})
    ->Args({int(kit::RendererChoice::Accelerated), 640, 1136})
    ->Args({int(kit::RendererChoice::Software), 3840, 2160})
    ->Args({int(kit::RendererChoice::Accelerated), 3840, 2160})
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2);

}  // namespace
