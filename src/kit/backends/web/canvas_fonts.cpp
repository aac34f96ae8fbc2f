#include "kit/backends/web/canvas_fonts.h"

#include <emscripten/emscripten.h>

#include <map>

#include "kit/backends/web/browser_canvas.h"

// One measuring context, kept in Module.twinlanesText.
// clang-format off
EM_JS(double, tl_text_measure, (const char* font, const char* text, int length), {
  const t = Module.twinlanesText ||
            (Module.twinlanesText = { ctx: document.createElement('canvas').getContext('2d') });
  t.ctx.font = UTF8ToString(font);
  return t.ctx.measureText(UTF8ToString(text, length)).width;
});

EM_JS(double, tl_text_ascent, (const char* font), {
  const ctx = Module.twinlanesText.ctx;
  ctx.font = UTF8ToString(font);
  return ctx.measureText('Hg').fontBoundingBoxAscent;
});

EM_JS(double, tl_text_descent, (const char* font), {
  const ctx = Module.twinlanesText.ctx;
  ctx.font = UTF8ToString(font);
  return ctx.measureText('Hg').fontBoundingBoxDescent;
});

EM_JS(void, tl_text_begin, (int width, int height, double scale, const char* font, double r,
                            double g, double b, double a), {
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const ctx = canvas.getContext('2d');
  ctx.scale(scale, scale);
  ctx.font = UTF8ToString(font);
  ctx.textBaseline = 'alphabetic';
  ctx.fillStyle = 'rgba(' + Math.round(r * 255) + ',' + Math.round(g * 255) + ',' +
                  Math.round(b * 255) + ',' + a + ')';
  Module.twinlanesText.drawing = ctx;
});

EM_JS(void, tl_text_line, (const char* text, int length, double x, double baseline), {
  Module.twinlanesText.drawing.fillText(UTF8ToString(text, length), x, baseline);
});

EM_JS(void, tl_text_end, (uint8_t* out), {
  const ctx = Module.twinlanesText.drawing;
  HEAPU8.set(ctx.getImageData(0, 0, ctx.canvas.width, ctx.canvas.height).data, out);
  Module.twinlanesText.drawing = null;
});
// Without a page (the scenario runner under node): the advances of the
// system family's own font file, read once per weight, so that text is as
// wide as the desktop lays it out (unhinted, unkerned); characters the file
// has no glyph for (CJK) are an em wide. -1 when the file cannot be read.
EM_JS(double, tl_text_file_ems, (bool bold, const char* text, int length), {
  const faces = Module.twinlanesFaces || (Module.twinlanesFaces = {});
  const key = bold ? 'Bold' : 'Regular';
  if (!(key in faces)) {
    faces[key] = null;
    try {
      const bytes = require('fs').readFileSync(
          '/usr/share/fonts/truetype/liberation2/LiberationSans-' + key + '.ttf');
      const v = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
      const tables = {};
      for (let i = 0, n = v.getUint16(4); i < n; ++i) {
        const r = 12 + 16 * i;
        tables[String.fromCharCode(v.getUint8(r), v.getUint8(r + 1), v.getUint8(r + 2),
                                   v.getUint8(r + 3))] = v.getUint32(r + 8);
      }
      const unitsPerEm = v.getUint16(tables.head + 18);
      const metrics = v.getUint16(tables.hhea + 34);
      let sub = -1;
      for (let i = 0, n = v.getUint16(tables.cmap + 2); i < n; ++i) {
        const r = tables.cmap + 4 + 8 * i;
        if (v.getUint16(r) === 3 && v.getUint16(r + 2) === 1)
          sub = tables.cmap + v.getUint32(r + 4);
      }
      if (sub < 0 || v.getUint16(sub) !== 4)
        throw new Error('no Unicode map');
      const segments = v.getUint16(sub + 6) / 2;
      const ends = sub + 14, starts = ends + 2 * segments + 2;
      const deltas = starts + 2 * segments, offsets = deltas + 2 * segments;
      const glyphOf = (c) => {
        for (let i = 0; i < segments; ++i) {
          if (c > v.getUint16(ends + 2 * i))
            continue;
          const start = v.getUint16(starts + 2 * i);
          if (c < start)
            return 0;
          const delta = v.getUint16(deltas + 2 * i);
          const offset = v.getUint16(offsets + 2 * i);
          if (offset === 0)
            return (c + delta) & 0xFFFF;
          const g = v.getUint16(offsets + 2 * i + offset + 2 * (c - start));
          return g === 0 ? 0 : (g + delta) & 0xFFFF;
        }
        return 0;
      };
      const advance = (g) => v.getUint16(tables.hmtx + 4 * Math.min(g, metrics - 1));
      faces[key] = { unitsPerEm, glyphOf, advance };
    } catch (e) {
    }
  }
  const face = faces[key];
  if (!face)
    return -1;
  let units = 0, ems = 0;
  for (const ch of UTF8ToString(text, length)) {
    const c = ch.codePointAt(0);
    const g = c < 0x10000 ? face.glyphOf(c) : 0;
    if (g)
      units += face.advance(g);
    else
      ems += 1;
  }
  return units / face.unitsPerEm + ems;
});
// clang-format on

namespace kit::web {
namespace {

// Without a page: half an em for a one-byte character, a whole em for the
// wide ones (CJK), three quarters for the rest.
double estimate(std::string_view text, const Font& font) {
  double ems = 0;
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const size_t n = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    ems += n == 1 ? 0.55 : n >= 3 ? 1.0 : 0.75;
    i += n;
  }
  return ems * font.pointSize;
}

}  // namespace

std::string cssFont(const Font& font) {
  std::string css;
  if (font.italic)
    css += "italic ";
  if (font.bold)
    css += "bold ";
  css += std::to_string(font.pointSize) + "px ";
  std::string family;
  for (const char c : font.family) {
    if (c != '"' && c != '\\' && c != ';')
      family += c;
  }
  if (!family.empty())
    css += "\"" + family + "\", ";
  // Arial's metric twin first, then the CJK families of common systems.
  css +=
      "\"Liberation Sans\", Arial, Helvetica, \"WenQuanYi Micro Hei\", \"Noto Sans CJK SC\", "
      "\"PingFang SC\", \"Hiragino Sans GB\", \"Microsoft YaHei\", sans-serif";
  return css;
}

double measureRun(std::string_view text, const Font& font) {
  if (text.empty())
    return 0;
  if (!hasCanvas()) {
    const double ems = tl_text_file_ems(font.bold, text.data(), static_cast<int>(text.size()));
    return ems >= 0 ? ems * font.pointSize : estimate(text, font);
  }
  return tl_text_measure(cssFont(font).c_str(), text.data(), static_cast<int>(text.size()));
}

FontMetrics metricsOf(const Font& font) {
  static std::map<std::string, FontMetrics> cache;
  const std::string css = cssFont(font);
  if (const auto it = cache.find(css); it != cache.end())
    return it->second;
  FontMetrics m;
  if (hasCanvas()) {
    measureRun("Hg", font);  // makes the measuring context
    m.ascent = tl_text_ascent(css.c_str());
    m.descent = tl_text_descent(css.c_str());
  }
  if (!(m.ascent + m.descent > 0)) {
    m.ascent = font.pointSize * 0.905;
    m.descent = font.pointSize * 0.212;
  }
  m.lineHeight = m.ascent + m.descent;
  cache.emplace(css, m);
  return m;
}

bool drawLines(const Font& font, const Color& color, double scale, int width, int height,
               const DrawnLine* lines, size_t count, uint8_t* rgbaOut) {
  if (!hasCanvas() || width <= 0 || height <= 0)
    return false;
  measureRun("Hg", font);
  tl_text_begin(width, height, scale, cssFont(font).c_str(), color.red, color.green, color.blue,
                color.alpha);
  for (size_t i = 0; i < count; ++i)
    tl_text_line(lines[i].text.data(), static_cast<int>(lines[i].text.size()), lines[i].x,
                 lines[i].baseline);
  tl_text_end(rgbaOut);
  return true;
}

}  // namespace kit::web
