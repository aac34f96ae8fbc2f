// Tinting throughput against the same Cairo calls made bare on a ready
// surface (create a context on it, fill, paint the sprite with the blend mode,
// paint it again with destination-in). Each iteration runs both, one after
// the other, so machine noise hits them alike; "ratio" is tint time over bare
// time (goal: 1.2 or less). Times are this thread's CPU time, which other
// tenants of a shared machine disturb far less than the wall clock. Run with
// --benchmark_repetitions for medians.

#include <benchmark/benchmark.h>
#include <cairo.h>

#include <ctime>
#include <string>

#include "kit/foundation/graphics.h"
#include "kit/platform/backend.h"
#include "kit/ui/image.h"
#include "kit/ui/screen.h"
#include "ui/image_tint.h"

namespace {

constexpr double kScale = 2;  // sprite, screen and result share it, as in the game
constexpr kit::Color kTint{0.9, 0.3, 0.2, 1};

// A sprite-like premultiplied source: an opaque disc with a soft edge and
// transparent corners, shaded from light to dark.
cairo_surface_t* makeSprite(int side) {
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side);
  cairo_t* cr = cairo_create(surface);
  double r = side / 2.0;
  cairo_pattern_t* shade = cairo_pattern_create_radial(r * 0.7, r * 0.7, 0, r, r, r);
  cairo_pattern_add_color_stop_rgba(shade, 0, 0.95, 0.95, 0.95, 1);
  cairo_pattern_add_color_stop_rgba(shade, 0.9, 0.25, 0.25, 0.25, 1);
  cairo_pattern_add_color_stop_rgba(shade, 1, 0.1, 0.1, 0.1, 0);
  cairo_set_source(cr, shade);
  cairo_arc(cr, r, r, r, 0, 6.2832);
  cairo_fill(cr);
  cairo_pattern_destroy(shade);
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  return surface;
}

cairo_status_t appendPng(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

kit::Image toImage(cairo_surface_t* sprite) {
  std::string png;
  cairo_surface_write_to_png_stream(sprite, appendPng, &png);
  return *kit::Image::fromPngData(png, kScale);
}

double threadSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

void bareTint(cairo_surface_t* target, cairo_surface_t* sprite, int side, bool overlay) {
  cairo_t* cr = cairo_create(target);
  cairo_set_source_rgba(cr, kTint.red, kTint.green, kTint.blue, kTint.alpha);
  cairo_rectangle(cr, 0, 0, side, side);
  cairo_fill(cr);
  cairo_set_source_surface(cr, sprite, 0, 0);
  if (overlay) {
    cairo_set_operator(cr, CAIRO_OPERATOR_OVERLAY);
    cairo_paint(cr);
  }
  cairo_set_operator(cr, CAIRO_OPERATOR_DEST_IN);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(target);
}

void tintAgainstBareCairo(benchmark::State& state, bool overlay) {
  int side = static_cast<int>(state.range(0));
  kit::Screen::main().setScale(kScale);
  const std::shared_ptr<kit::Graphics> graphics = kit::makeBackendGraphics();
  kit::Graphics::setCurrent(graphics.get());
  cairo_surface_t* sprite = makeSprite(side);
  cairo_surface_t* target = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side);
  kit::Image image = toImage(sprite);

  double oursSeconds = 0, bareSeconds = 0;
  for (auto _ : state) {
    double start = threadSeconds();
    kit::Image tinted =
        overlay ? imageWithGradientTintColor(image, kTint) : imageWithTintColor(image, kTint);
    benchmark::DoNotOptimize(tinted);
    double middle = threadSeconds();
    bareTint(target, sprite, side, overlay);
    double end = threadSeconds();
    oursSeconds += middle - start;
    bareSeconds += end - middle;
    state.SetIterationTime(end - start);
  }
  double pixels = double(side) * side * double(state.iterations());
  state.counters["tint_MPps"] = pixels / oursSeconds / 1e6;
  state.counters["cairo_MPps"] = pixels / bareSeconds / 1e6;
  state.counters["ratio"] = oursSeconds / bareSeconds;
  cairo_surface_destroy(target);
  cairo_surface_destroy(sprite);
}

void BM_FlatTint(benchmark::State& state) {
  tintAgainstBareCairo(state, false);
}
void BM_GradientTint(benchmark::State& state) {
  tintAgainstBareCairo(state, true);
}

BENCHMARK(BM_FlatTint)
    ->Arg(64)
    ->Arg(512)
    ->Arg(2048)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_GradientTint)
    ->Arg(64)
    ->Arg(512)
    ->Arg(2048)
    ->UseManualTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
