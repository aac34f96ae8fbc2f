#include "kit/ui/image_context.h"

#include <cmath>
#include <cstring>

#include "kit/foundation/graphics.h"
#include "kit/ui/image_extent.h"

namespace kit {

struct ImageContext::State {
  Size size;
  double scale;
  std::shared_ptr<Bitmap> pixels;
  bool uncleared = true;  // the pixels hold whatever the allocator left
  bool shared = false;    // takeImage() handed out the pixels

  int pixelWidth() const { return pixels->width; }
  int pixelHeight() const { return pixels->height; }

  // Makes the pixels the context's own and initialised before drawing reads or
  // blends with them. A fill that replaces every pixel passes
  // coversEverything: then neither clearing nor copying is needed.
  void prepare(bool coversEverything = false) {
    if (shared) {
      unshare(!coversEverything);
    } else if (uncleared && !coversEverything) {
      clear();
    }
    uncleared = false;
  }

  // Pixels are allocated without clearing and cleared on first use, unless
  // that use is a fill over the whole bitmap: tinting starts with one, and
  // clearing megapixels only to overwrite them would cost as much as the fill
  // itself.
  void clear() {
    if (pixels->pixels)
      std::memset(pixels->pixels.get(), 0, pixels->byteCount());
    uncleared = false;
  }

  // Gives the context pixels of its own again after takeImage(), so the taken
  // image never changes under its holder.
  void unshare(bool copyPixels) {
    auto own = std::make_shared<Bitmap>(Bitmap::uncleared(pixelWidth(), pixelHeight()));
    if (copyPixels && own->pixels)
      std::memcpy(own->pixels.get(), pixels->pixels.get(), own->byteCount());
    pixels = std::move(own);
    shared = false;
  }
};

ImageContext::ImageContext(Size size, double scale) : state_(std::make_unique<State>()) {
  ImageSystem& images = Graphics::current().images();
  const ImageExtent extent = imageExtent(size, scale, images.largestSide());
  state_->size = extent.size;
  state_->scale = extent.scale;
  state_->pixels = std::make_shared<Bitmap>(Bitmap::uncleared(extent.width, extent.height));
}

ImageContext::~ImageContext() = default;

Size ImageContext::size() const {
  return state_->size;
}

double ImageContext::scale() const {
  return state_->scale;
}

void ImageContext::fillRect(const Rect& rect, const Color& color) {
  double s = state_->scale;
  double x = rect.origin.x * s, y = rect.origin.y * s;
  double width = rect.size.width * s, height = rect.size.height * s;
  state_->prepare(x <= 0 && y <= 0 && x + width >= state_->pixelWidth() &&
                  y + height >= state_->pixelHeight());
  if (state_->pixels->pixels)
    Graphics::current().images().fill(*state_->pixels, {{x, y}, {width, height}}, color);
}

void ImageContext::drawImage(const Image& image, const Rect& rect, BlendMode mode, double alpha) {
  // Nominal pixel extents (points × scale) rather than whole pixel counts, so
  // the image's points land on the rectangle's points exactly.
  double sourceWidth = image.size().width * image.scale();
  double sourceHeight = image.size().height * image.scale();
  double s = state_->scale;
  double x = rect.origin.x * s, y = rect.origin.y * s;
  double width = rect.size.width * s, height = rect.size.height * s;
  if (!(width > 0 && height > 0 && sourceWidth > 0 && sourceHeight > 0))
    return;
  if (!(std::isfinite(x) && std::isfinite(y) && std::isfinite(width) && std::isfinite(height))) {
    return;
  }
  state_->prepare();
  if (!state_->pixels->pixels || !image.bitmap().pixels)
    return;
  Graphics::current().images().composite(
      *state_->pixels, image.bitmap(),
      {{sourceWidth, sourceHeight}, {{x, y}, {width, height}}, mode, alpha});
}

Image ImageContext::takeImage() {
  if (state_->uncleared)
    state_->clear();
  state_->shared = true;
  return Image(state_->pixels, state_->size, state_->scale);
}

}  // namespace kit
