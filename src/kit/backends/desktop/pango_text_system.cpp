#include "kit/backends/desktop/pango_text_system.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

#include "kit/ui/text_placement.h"

namespace kit {
namespace {

// Beyond this a box dimension counts as unbounded (Pango widths are ints in
// 1/1024 units).
constexpr double kLargestBox = 1e6;
// Fonts are kept to sizes a screen can show.
constexpr double kLargestFontSize = 1000;
constexpr double kDefaultFontSize = 17;
// Rendered bitmaps are capped per side.
constexpr int kLargestBitmapSide = 4096;

// Unhinted metrics and unrounded glyph positions: layouts scale linearly, so
// text measured at scale 1 covers the same box drawn at any scale.
void configure(PangoContext* context) {
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(context, options);
  cairo_font_options_destroy(options);
  pango_context_set_round_glyph_positions(context, FALSE);
}

struct GObjectDeleter {
  void operator()(void* object) const { g_object_unref(object); }
};
using LayoutPtr = std::unique_ptr<PangoLayout, GObjectDeleter>;

PangoFontDescription* describe(const Font& font) {
  PangoFontDescription* d = pango_font_description_new();
  pango_font_description_set_family(d, font.family.c_str());
  double size = font.pointSize;
  if (!(size > 0))
    size = kDefaultFontSize;
  size = std::min(size, kLargestFontSize);
  pango_font_description_set_absolute_size(d, size * PANGO_SCALE);
  pango_font_description_set_weight(d, font.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_style(d, font.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  return d;
}

bool truncates(LineBreakMode mode) {
  return mode == LineBreakMode::TruncateHead || mode == LineBreakMode::TruncateTail ||
         mode == LineBreakMode::TruncateMiddle;
}

// The layout of `block`; with `ellipsizeAt` > 0 the text is ellipsized to
// that many lines per paragraph.
LayoutPtr makeLayout(PangoContext* context, const TextBlock& block, int ellipsizeAt) {
  LayoutPtr layout(pango_layout_new(context));
  gchar* valid = g_utf8_make_valid(block.text.data(), static_cast<gssize>(block.text.size()));
  pango_layout_set_text(layout.get(), valid, -1);
  g_free(valid);
  PangoFontDescription* font = describe(block.font);
  pango_layout_set_font_description(layout.get(), font);
  pango_font_description_free(font);
  if (block.box.width < kLargestBox) {
    pango_layout_set_width(layout.get(), static_cast<int>(block.box.width * PANGO_SCALE));
  }
  pango_layout_set_wrap(layout.get(), block.lineBreakMode == LineBreakMode::CharWrap
                                          ? PANGO_WRAP_CHAR
                                          : PANGO_WRAP_WORD_CHAR);
  switch (block.alignment) {
    case TextAlignment::Left:
      pango_layout_set_alignment(layout.get(), PANGO_ALIGN_LEFT);
      break;
    case TextAlignment::Center:
      pango_layout_set_alignment(layout.get(), PANGO_ALIGN_CENTER);
      break;
    case TextAlignment::Right:
      pango_layout_set_alignment(layout.get(), PANGO_ALIGN_RIGHT);
      break;
  }
  if (ellipsizeAt > 0) {
    PangoEllipsizeMode mode = PANGO_ELLIPSIZE_END;
    if (block.lineBreakMode == LineBreakMode::TruncateHead)
      mode = PANGO_ELLIPSIZE_START;
    if (block.lineBreakMode == LineBreakMode::TruncateMiddle)
      mode = PANGO_ELLIPSIZE_MIDDLE;
    pango_layout_set_ellipsize(layout.get(), mode);
    pango_layout_set_height(layout.get(), -ellipsizeAt);
  }
  return layout;
}

// Lines of `layout` that fit wholly in `maxHeight` (Pango units), at most
// `maxLines` when positive.
int linesThatFit(PangoLayout* layout, double maxHeight, int maxLines) {
  int fitting = 0;
  PangoLayoutIter* it = pango_layout_get_iter(layout);
  do {
    PangoRectangle logical;
    pango_layout_iter_get_line_extents(it, nullptr, &logical);
    if (static_cast<double>(logical.y) + logical.height > maxHeight)
      break;
    if (maxLines > 0 && fitting == maxLines)
      break;
    ++fitting;
  } while (pango_layout_iter_next_line(it));
  pango_layout_iter_free(it);
  return fitting;
}

// Widest line and bottom edge of the first `lines` lines, in Pango units.
std::pair<int, int> extentsOf(PangoLayout* layout, int lines) {
  int width = 0, bottom = 0;
  PangoLayoutIter* it = pango_layout_get_iter(layout);
  for (int i = 0; i < lines; ++i) {
    PangoRectangle logical;
    pango_layout_iter_get_line_extents(it, nullptr, &logical);
    width = std::max(width, logical.width);
    bottom = logical.y + logical.height;
    if (!pango_layout_iter_next_line(it))
      break;
  }
  pango_layout_iter_free(it);
  return {width, bottom};
}

double toPoints(int pangoUnits) {
  return std::ceil(static_cast<double>(pangoUnits) / PANGO_SCALE - 1e-6);
}

}  // namespace

PangoTextSystem::PangoTextSystem() = default;

PangoTextSystem::~PangoTextSystem() {
  if (measuring_)
    g_object_unref(measuring_);
}

PangoContext* PangoTextSystem::measuring() {
  if (!measuring_) {
    measuring_ = pango_font_map_create_context(pango_cairo_font_map_get_default());
    configure(measuring_);
  }
  return measuring_;
}

TextMetrics PangoTextSystem::layout(const TextBlock& block) {
  TextMetrics metrics;
  const Size box = block.box;
  if (block.text.empty() || !(box.width > 0) || !(box.height > 0))
    return metrics;
  PangoContext* context = measuring();
  LayoutPtr layout = makeLayout(context, block, 0);
  const double maxHeight =
      box.height < kLargestBox ? box.height * PANGO_SCALE : static_cast<double>(INT32_MAX);
  const int total = pango_layout_get_line_count(layout.get());
  metrics.lineCount = linesThatFit(layout.get(), maxHeight, block.numberOfLines);
  if (metrics.lineCount == 0)
    return metrics;
  if (metrics.lineCount < total && truncates(block.lineBreakMode)) {
    metrics.ellipsizedLines = metrics.lineCount;
    layout = makeLayout(context, block, metrics.lineCount);
    metrics.lineCount = std::min(metrics.lineCount, pango_layout_get_line_count(layout.get()));
  }
  const auto [width, bottom] = extentsOf(layout.get(), metrics.lineCount);
  metrics.size = {toPoints(width), toPoints(bottom)};
  return metrics;
}

void PangoTextSystem::warmUp() {
  layout(TextBlock{"Aa \u65b0", Font::systemFontOfSize(16)});
  layout(TextBlock{"Aa \u65b0", Font::boldSystemFontOfSize(16)});
}

double PangoTextSystem::firstBaseline(const TextBlock& block) {
  if (block.text.empty())
    return 0;
  // The font alone decides it: no box, no wrapping.
  LayoutPtr layout = makeLayout(measuring(), TextBlock{block.text, block.font}, 0);
  return static_cast<double>(pango_layout_get_baseline(layout.get())) / PANGO_SCALE;
}

TextBitmap PangoTextSystem::render(const TextBlock& block, const TextMetrics& metrics, Size area,
                                   double scale, Color color) {
  const Size size = metrics.size;
  TextFrame frame = textFrame(area, scale, size, kLargestBitmapSide);
  if (frame.bitmap.width == 0 || metrics.lineCount == 0)
    return std::move(frame.bitmap);
  TextBitmap& bitmap = frame.bitmap;

  cairo_surface_t* surface =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, bitmap.width, bitmap.height);
  cairo_t* cr = cairo_create(surface);
  cairo_scale(cr, frame.scale, frame.scale);
  PangoContext* context = pango_cairo_create_context(cr);
  configure(context);
  LayoutPtr layout = makeLayout(context, block, metrics.ellipsizedLines);

  // An unbounded layout is as wide as its widest line: align it in the area.
  const double x = block.box.width >= kLargestBox
                       ? alignedOffset(block.alignment, frame.area.width - size.width)
                       : 0;
  const double y = blockTop(frame.area, size);
  cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
  PangoLayoutIter* it = pango_layout_get_iter(layout.get());
  for (int i = 0; i < metrics.lineCount; ++i) {
    PangoLayoutLine* line = pango_layout_iter_get_line_readonly(it);
    PangoRectangle inLayout, inLine;
    pango_layout_iter_get_line_extents(it, nullptr, &inLayout);
    pango_layout_line_get_extents(line, nullptr, &inLine);
    const double originX = static_cast<double>(inLayout.x - inLine.x) / PANGO_SCALE;
    const double baseline = static_cast<double>(pango_layout_iter_get_baseline(it)) / PANGO_SCALE;
    cairo_move_to(cr, x + originX, y + baseline);
    pango_cairo_show_layout_line(cr, line);
    if (!pango_layout_iter_next_line(it))
      break;
  }
  pango_layout_iter_free(it);
  layout.reset();
  g_object_unref(context);
  cairo_destroy(cr);
  cairo_surface_flush(surface);

  // One colour throughout: the straight colour with the coverage as alpha.
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  const auto r = static_cast<uint8_t>(std::lround(std::clamp(color.red, 0.0, 1.0) * 255));
  const auto g = static_cast<uint8_t>(std::lround(std::clamp(color.green, 0.0, 1.0) * 255));
  const auto b = static_cast<uint8_t>(std::lround(std::clamp(color.blue, 0.0, 1.0) * 255));
  for (int row = 0; row < bitmap.height; ++row) {
    const auto* src =
        reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(row) * stride);
    uint8_t* dst = bitmap.rgba.data() + static_cast<size_t>(row) * bitmap.width * 4;
    for (int col = 0; col < bitmap.width; ++col) {
      const auto alpha = static_cast<uint8_t>(src[col] >> 24);
      dst[col * 4 + 0] = alpha ? r : 0;
      dst[col * 4 + 1] = alpha ? g : 0;
      dst[col * 4 + 2] = alpha ? b : 0;
      dst[col * 4 + 3] = alpha;
    }
  }
  cairo_surface_destroy(surface);
  return std::move(bitmap);
}

}  // namespace kit
