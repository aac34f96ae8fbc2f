#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kit/platform/blend_mode.h"

namespace kit::web {

// Whether the page has a DOM to draw with. The same wasm objects also run
// under node (the scenario runner), where nothing is drawn: images keep
// their size with transparent pixels and text is measured by an estimate.
bool hasCanvas();

// The Canvas 2D compositing operation of a blend mode ("clear" for Clear;
// plus-darker, which canvas lacks, as multiply, the closest darkening mode).
const char* compositeOperationOf(BlendMode mode);

// One offscreen canvas of the page, released with its owner. Pixels cross
// as straight RGBA rows (ImageData's layout).
class OffscreenCanvas {
 public:
  OffscreenCanvas(int width, int height);
  ~OffscreenCanvas();
  OffscreenCanvas(const OffscreenCanvas&) = delete;
  OffscreenCanvas& operator=(const OffscreenCanvas&) = delete;

  int id() const { return id_; }
  int width() const { return width_; }
  int height() const { return height_; }
  void put(const std::vector<uint8_t>& rgba);
  std::vector<uint8_t> get() const;
  // Draws `source` stretched to the rectangle (pixels) with a Canvas 2D
  // compositing operation ("clear" clears it); nothing outside it changes.
  void draw(const OffscreenCanvas& source, double x, double y, double w, double h,
            const char* operation, double alpha);
  // "image/png" or "image/jpeg" bytes; empty when the browser cannot.
  std::string encode(const char* type, double quality) const;

 private:
  int id_;
  int width_;
  int height_;
};

}  // namespace kit::web
