#pragma once

#include <memory>

#include "kit/foundation/color.h"
#include "kit/foundation/geometry.h"
#include "kit/platform/blend_mode.h"
#include "kit/ui/image.h"

namespace kit {

// An offscreen bitmap to draw into and take images from, as the platform's
// image context: never opaque, fully transparent at the start, coordinates in
// points from the top left. The context owns its pixels until takeImage()
// shares them; drawing after that works on a private copy, so a taken image
// never changes. Not thread-safe; use one context per thread.
class ImageContext {
 public:
  // Scale 0 means the main screen's scale. The bitmap holds ceil(size × scale)
  // pixels each way; a size that is negative, not finite or too large for a
  // bitmap gives a context without pixels, where drawing does nothing.
  explicit ImageContext(Size size, double scale = 0);
  ~ImageContext();
  ImageContext(const ImageContext&) = delete;
  ImageContext& operator=(const ImageContext&) = delete;

  Size size() const;  // points
  double scale() const;

  // Replaces the pixels under rect with color (the platform's rectangle fill,
  // which copies the colour rather than blending it).
  void fillRect(const Rect& rect, const Color& color);

  // Draws image stretched to rect, combined with what is there by mode at the
  // given opacity (0 to 1). Pixels outside rect are never touched, whatever
  // the mode.
  void drawImage(const Image& image, const Rect& rect, BlendMode mode, double alpha = 1.0);

  // The pixels drawn so far, as an image of the context's size and scale.
  // Cheap: the pixels are shared, not copied, unless drawing goes on.
  Image takeImage();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace kit
