#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/geometry.h"
#include "kit/ui/image.h"

namespace kit {

// Largest SVG document, in bytes, and largest side, in pixels, that
// rasterizeSvg accepts.
inline constexpr size_t kMaxSvgBytes = 512 * 1024;
inline constexpr int kMaxSvgPixelSide = 4096;

// Rasterises SVG text into an image that fits `size` points at `scale`
// pixels per point. The drawing keeps its aspect ratio, so one side of the
// result may be shorter than asked. Plain SVG only: shapes, paths, strokes
// and gradients (no text, no filters). Thread-safe: images may be made on a
// worker (one that draws with graphics of its own: Graphics::ThreadUse). On
// failure returns nothing and, when error is given, a one-line reason.
[[nodiscard]] std::optional<Image> rasterizeSvg(std::string_view svg, Size size, double scale,
                                                std::string* error = nullptr);

// A thread other than the main one that rasterised SVGs calls this as it
// ends: the SVG reader keeps per-thread state (its last error message) that
// it frees by itself only on threads it started.
void releaseSvgThreadState();

}  // namespace kit
