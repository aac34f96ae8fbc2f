#include "kit/ui/image_view.h"

#include <algorithm>

namespace kit {

ImageView::ImageView(std::shared_ptr<Image> image, Rect frame)
    : View(frame), image_(std::move(image)) {
  setUserInteractionEnabled(false);
}

Rect ImageView::imageRect(Size imageSize) const {
  const Rect b = bounds();
  const double iw = imageSize.width, ih = imageSize.height;
  if (!(iw > 0) || !(ih > 0))
    return {};
  const double w = b.size.width, h = b.size.height;
  auto placed = [&](double fx, double fy, double sw, double sh) {
    return Rect{{b.origin.x + (w - sw) * fx, b.origin.y + (h - sh) * fy}, {sw, sh}};
  };
  switch (contentMode_) {
    case ContentMode::ScaleToFill:
    case ContentMode::Redraw:
      return b;
    case ContentMode::ScaleAspectFit: {
      const double s = std::min(w / iw, h / ih);
      return placed(0.5, 0.5, iw * s, ih * s);
    }
    case ContentMode::ScaleAspectFill: {
      const double s = std::max(w / iw, h / ih);
      return placed(0.5, 0.5, iw * s, ih * s);
    }
    case ContentMode::Center:
      return placed(0.5, 0.5, iw, ih);
    case ContentMode::Top:
      return placed(0.5, 0, iw, ih);
    case ContentMode::Bottom:
      return placed(0.5, 1, iw, ih);
    case ContentMode::Left:
      return placed(0, 0.5, iw, ih);
    case ContentMode::Right:
      return placed(1, 0.5, iw, ih);
    case ContentMode::TopLeft:
      return placed(0, 0, iw, ih);
    case ContentMode::TopRight:
      return placed(1, 0, iw, ih);
    case ContentMode::BottomLeft:
      return placed(0, 1, iw, ih);
    case ContentMode::BottomRight:
      return placed(1, 1, iw, ih);
  }
  return b;
}

}  // namespace kit
