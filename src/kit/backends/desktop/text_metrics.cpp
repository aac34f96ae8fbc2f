#include "kit/render/text_metrics.h"

#include <pango/pangocairo.h>

#include <algorithm>

namespace kit {

double firstBaseline(const TextBlock& block) {
  if (block.text.empty())
    return 0;
  static PangoContext* context = [] {
    PangoContext* c = pango_font_map_create_context(pango_cairo_font_map_get_default());
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    pango_cairo_context_set_font_options(c, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(c, FALSE);
    return c;
  }();
  PangoLayout* layout = pango_layout_new(context);
  gchar* valid = g_utf8_make_valid(block.text.data(), static_cast<gssize>(block.text.size()));
  pango_layout_set_text(layout, valid, -1);
  g_free(valid);
  PangoFontDescription* font = pango_font_description_new();
  pango_font_description_set_family(font, block.font.family.c_str());
  const double size = block.font.pointSize > 0 ? std::min(block.font.pointSize, 1000.0) : 17;
  pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
  pango_font_description_set_weight(font,
                                    block.font.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_style(font,
                                   block.font.italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
  pango_layout_set_font_description(layout, font);
  pango_font_description_free(font);
  const double baseline = static_cast<double>(pango_layout_get_baseline(layout)) / PANGO_SCALE;
  g_object_unref(layout);
  return baseline;
}

}  // namespace kit
