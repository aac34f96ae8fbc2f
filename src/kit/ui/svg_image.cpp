#include "kit/ui/svg_image.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "kit/foundation/graphics.h"

namespace kit {
namespace {

void setError(std::string* error, std::string text) {
  if (error)
    *error = std::move(text);
}

// The value of attribute `name` in `tag`, if present.
std::optional<std::string_view> attribute(std::string_view tag, std::string_view name) {
  for (size_t at = tag.find(name); at != std::string_view::npos; at = tag.find(name, at + 1)) {
    const bool starts = at > 0 && std::isspace(static_cast<unsigned char>(tag[at - 1]));
    size_t i = at + name.size();
    while (i < tag.size() && std::isspace(static_cast<unsigned char>(tag[i])))
      ++i;
    if (!starts || i >= tag.size() || tag[i] != '=')
      continue;
    ++i;
    while (i < tag.size() && std::isspace(static_cast<unsigned char>(tag[i])))
      ++i;
    if (i >= tag.size() || (tag[i] != '"' && tag[i] != '\''))
      continue;
    const size_t end = tag.find(tag[i], i + 1);
    if (end == std::string_view::npos)
      return std::nullopt;
    return tag.substr(i + 1, end - i - 1);
  }
  return std::nullopt;
}

// The numbers at the start of `text`, separated by spaces or commas.
std::vector<double> numbers(std::string_view text) {
  std::string copy(text);
  std::vector<double> out;
  const char* p = copy.c_str();
  for (;;) {
    while (*p == ' ' || *p == ',' || *p == '\t' || *p == '\n' || *p == '\r')
      ++p;
    char* end = nullptr;
    const double value = std::strtod(p, &end);
    if (end == p)
      return out;
    out.push_back(value);
    p = end;
  }
}

// Sizes the reader turns into a drawing, no smaller than it can tell from
// nothing (its single-precision zero) and no larger than a bitmap can be.
bool usableSide(double value) {
  return std::isfinite(value) && value >= 1e-3 && value <= 1e6;
}

// A width or height in absolute units; the relative ones (%, em, ex) mean
// nothing on the outermost element and make the reader drop the drawing.
bool usableLength(std::string_view text) {
  std::string copy(text);
  char* end = nullptr;
  const double value = std::strtod(copy.c_str(), &end);
  if (end == copy.c_str() || !usableSide(value))
    return false;
  std::string_view unit(end);
  while (!unit.empty() && std::isspace(static_cast<unsigned char>(unit.back())))
    unit.remove_suffix(1);
  for (std::string_view absolute : {"", "px", "pt", "pc", "mm", "cm", "in"}) {
    if (unit == absolute)
      return true;
  }
  return false;
}

// Whether the root element gives the drawing a size (width and height, or a
// view box). The reader drops drawings without one, and leaks what it had
// parsed when it does, so they are refused before it sees them.
bool declaresSize(std::string_view svg) {
  const size_t open = svg.find("<svg");
  const size_t close = open == std::string_view::npos ? open : svg.find('>', open);
  if (close == std::string_view::npos)
    return false;
  const std::string_view tag = svg.substr(open, close - open);
  const auto width = attribute(tag, "width"), height = attribute(tag, "height");
  if (width && height)
    return usableLength(*width) && usableLength(*height);
  if (const auto box = attribute(tag, "viewBox")) {
    const auto v = numbers(*box);
    return v.size() == 4 && usableSide(v[2]) && usableSide(v[3]);
  }
  return false;
}

int pixelsFor(double points, double scale) {
  const double pixels = std::round(points * scale);
  return std::isfinite(pixels) && pixels >= 1 && pixels <= kMaxSvgPixelSide
             ? static_cast<int>(pixels)
             : 0;
}

}  // namespace

std::optional<Image> rasterizeSvg(std::string_view svg, Size size, double scale,
                                  std::string* error) {
  if (svg.size() > kMaxSvgBytes) {
    setError(error, "SVG of " + std::to_string(svg.size()) + " bytes is larger than the limit");
    return std::nullopt;
  }
  if (!declaresSize(svg)) {
    setError(error, "not a usable SVG: no <svg> element with a size");
    return std::nullopt;
  }
  if (!(std::isfinite(scale) && scale > 0))
    scale = 1;
  const int width = pixelsFor(size.width, scale), height = pixelsFor(size.height, scale);
  if (width == 0 || height == 0) {
    setError(error, "no usable size to draw the SVG at");
    return std::nullopt;
  }

  Result<PixelBuffer> drawn = Graphics::current().images().rasterizeSvg(svg, width, height);
  if (!drawn) {
    setError(error, "not a usable SVG: " + drawn.error());
    return std::nullopt;
  }
  if (drawn->width <= 0 || drawn->height <= 0) {
    setError(error, "the SVG drew nothing");
    return std::nullopt;
  }
  return Image::fromPixels(*drawn, scale);
}

void releaseSvgThreadState() {
  if (Graphics* graphics = Graphics::installed())
    graphics->images().releaseThreadState();
}

}  // namespace kit
