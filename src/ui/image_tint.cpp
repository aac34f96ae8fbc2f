#include "ui/image_tint.h"

#include "kit/ui/image_context.h"

kit::Image imageWithTintColor(const kit::Image& image, const kit::Color& tintColor) {
  return imageWithTintColor(image, tintColor, kit::BlendMode::DestinationIn);
}

kit::Image imageWithGradientTintColor(const kit::Image& image, const kit::Color& tintColor) {
  return imageWithTintColor(image, tintColor, kit::BlendMode::Overlay);
}

kit::Image imageWithTintColor(const kit::Image& image, const kit::Color& tintColor,
                              kit::BlendMode blendMode) {
  kit::ImageContext context(image.size(), 0);
  kit::Rect bounds{{0, 0}, image.size()};
  context.fillRect(bounds, tintColor);
  context.drawImage(image, bounds, blendMode, 1.0);
  if (blendMode != kit::BlendMode::DestinationIn) {
    context.drawImage(image, bounds, kit::BlendMode::DestinationIn, 1.0);
  }
  return context.takeImage();
}
