#pragma once

#include <memory>

#include "kit/ui/view.h"

namespace kit {

class Image;

// How an image view fits its image into its bounds (the platform's values).
enum class ContentMode {
  ScaleToFill = 0,
  ScaleAspectFit = 1,
  ScaleAspectFill = 2,
  Redraw = 3,
  Center = 4,
  Top = 5,
  Bottom = 6,
  Left = 7,
  Right = 8,
  TopLeft = 9,
  TopRight = 10,
  BottomLeft = 11,
  BottomRight = 12,
};

// A view that shows an image, shared with whoever else holds it. User
// interaction is off by default, as on the platform.
class ImageView : public View {
 public:
  explicit ImageView(std::shared_ptr<Image> image = nullptr, Rect frame = {});
  std::string className() const override { return "ImageView"; }

  const std::shared_ptr<Image>& image() const { return image_; }
  void setImage(std::shared_ptr<Image> image) { image_ = std::move(image); }
  ContentMode contentMode() const { return contentMode_; }
  void setContentMode(ContentMode mode) { contentMode_ = mode; }

  // Where an image of `imageSize` points lands in the bounds under the
  // content mode (it may overflow the bounds for the aspect-fill and
  // alignment modes; clipsToBounds decides whether that shows). An empty
  // image size gives an empty rectangle.
  Rect imageRect(Size imageSize) const;

 private:
  std::shared_ptr<Image> image_;
  ContentMode contentMode_ = ContentMode::ScaleToFill;
};

}  // namespace kit
