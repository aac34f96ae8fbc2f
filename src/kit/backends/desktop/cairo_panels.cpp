// CairoImageSystem's panels and spinners: Cairo paths, the shadow blurred
// by three box blurs.
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "kit/backends/desktop/cairo_image_system.h"
#include "kit/render/panel_geometry.h"
#include "kit/ui/premultiplied.h"

namespace kit {
namespace {

constexpr int kLargestSide = 4096;

void roundedRect(cairo_t* cr, double x, double y, double w, double h, double r) {
  if (r <= 0) {
    cairo_rectangle(cr, x, y, w, h);
    return;
  }
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - r, y + r, r, -M_PI / 2, 0);
  cairo_arc(cr, x + w - r, y + h - r, r, 0, M_PI / 2);
  cairo_arc(cr, x + r, y + h - r, r, M_PI / 2, M_PI);
  cairo_arc(cr, x + r, y + r, r, M_PI, 3 * M_PI / 2);
  cairo_close_path(cr);
}

// Three box blurs approximate a Gaussian; applied to an alpha-only plane.
void boxBlur(std::vector<float>& plane, int w, int h, int radius) {
  if (radius <= 0)
    return;
  std::vector<float> tmp(plane.size());
  const float norm = 1.0f / static_cast<float>(2 * radius + 1);
  auto pass = [&](const std::vector<float>& src, std::vector<float>& dst, bool horizontal) {
    const int lines = horizontal ? h : w, length = horizontal ? w : h;
    for (int line = 0; line < lines; ++line) {
      auto at = [&](int i) -> size_t {
        return horizontal ? static_cast<size_t>(line) * w + i : static_cast<size_t>(i) * w + line;
      };
      float sum = 0;
      for (int i = -radius; i <= radius; ++i)
        sum += (i >= 0 && i < length) ? src[at(i)] : 0;
      for (int i = 0; i < length; ++i) {
        dst[at(i)] = sum * norm;
        const int out = i - radius, in = i + radius + 1;
        if (out >= 0)
          sum -= src[at(out)];
        if (in < length)
          sum += src[at(in)];
      }
    }
  };
  for (int round = 0; round < 3; ++round) {
    pass(plane, tmp, true);
    pass(tmp, plane, false);
  }
}

// Ends drawing into `surface` and copies it, straight alpha, into `out`
// (already of its size).
void finish(cairo_t* cr, cairo_surface_t* surface, PanelBitmap& out) {
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  unpremultiply(cairo_image_surface_get_data(surface), out.width, out.height,
                cairo_image_surface_get_stride(surface), out.rgba.data());
  cairo_surface_destroy(surface);
}

}  // namespace

PanelBitmap CairoImageSystem::rasterizePanel(const PanelStyle& style, double scale) {
  const std::optional<PanelGeometry> g = panelGeometry(style, scale, kLargestSide);
  if (!g)
    return {};
  PanelBitmap out = g->blank();
  const double w = g->panel.size.width, h = g->panel.size.height, r = g->cornerRadius;

  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, out.width, out.height);
  cairo_t* cr = cairo_create(surface);
  if (g->shadow) {
    // The shape's coverage, blurred, tinted with the shadow colour.
    cairo_surface_t* mask = cairo_image_surface_create(CAIRO_FORMAT_A8, out.width, out.height);
    cairo_t* mcr = cairo_create(mask);
    roundedRect(mcr, out.origin.x + g->shadowOffset.width, out.origin.y + g->shadowOffset.height, w,
                h, r);
    cairo_set_source_rgba(mcr, 0, 0, 0, 1);
    cairo_fill(mcr);
    cairo_destroy(mcr);
    cairo_surface_flush(mask);
    std::vector<float> plane(static_cast<size_t>(out.width) * out.height);
    const unsigned char* m = cairo_image_surface_get_data(mask);
    const int mstride = cairo_image_surface_get_stride(mask);
    for (int y = 0; y < out.height; ++y)
      for (int x = 0; x < out.width; ++x)
        plane[static_cast<size_t>(y) * out.width + x] = m[y * mstride + x] / 255.0f;
    boxBlur(plane, out.width, out.height, std::max(1, static_cast<int>(g->shadowBlur) / 2));
    unsigned char* md = cairo_image_surface_get_data(mask);
    for (int y = 0; y < out.height; ++y)
      for (int x = 0; x < out.width; ++x)
        md[y * mstride + x] = static_cast<unsigned char>(
            std::lround(plane[static_cast<size_t>(y) * out.width + x] * 255));
    cairo_surface_mark_dirty(mask);
    const Color c = style.shadowColor;
    cairo_set_source_rgba(cr, c.red, c.green, c.blue, g->shadowAlpha);
    cairo_mask_surface(cr, mask, 0, 0);
    cairo_surface_destroy(mask);
  }
  if (style.fill.alpha > 0) {
    roundedRect(cr, out.origin.x, out.origin.y, w, h, r);
    cairo_set_source_rgba(cr, style.fill.red, style.fill.green, style.fill.blue, style.fill.alpha);
    cairo_fill(cr);
  }
  finish(cr, surface, out);
  return out;
}

PanelBitmap CairoImageSystem::rasterizeSpinner(double side, double scale, Color color, int spokes) {
  const std::optional<SpinnerGeometry> g =
      spinnerGeometry(side, scale, color.alpha, spokes, kLargestSide);
  if (!g)
    return {};
  PanelBitmap out = g->blank();
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, out.width, out.height);
  cairo_t* cr = cairo_create(surface);
  cairo_translate(cr, out.width / 2.0, out.height / 2.0);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_set_line_width(cr, g->lineWidth);
  for (const SpinnerSpoke& spoke : g->spokes) {
    cairo_save(cr);
    cairo_rotate(cr, spoke.angle);
    cairo_move_to(cr, 0, -g->inner);
    cairo_line_to(cr, 0, -g->outer);
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, spoke.alpha);
    cairo_stroke(cr);
    cairo_restore(cr);
  }
  finish(cr, surface, out);
  return out;
}

}  // namespace kit
