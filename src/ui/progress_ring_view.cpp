#include "ui/progress_ring_view.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kDotFraction = 0.14;  // of the diameter
constexpr double kUnlitAlpha = 0.25;
// Dots keep their place in the ring when it is resized.
constexpr unsigned kDotResizing =
    kit::Autoresizing::FlexibleLeftMargin | kit::Autoresizing::FlexibleRightMargin |
    kit::Autoresizing::FlexibleTopMargin | kit::Autoresizing::FlexibleBottomMargin;

}  // namespace

std::shared_ptr<ProgressRingView> ProgressRingView::create(double diameter) {
  auto ring = std::make_shared<ProgressRingView>(Token{}, diameter);
  for (const auto& dot : ring->dots_)
    ring->addSubview(dot);  // needs the shared owner
  return ring;
}

ProgressRingView::ProgressRingView(Token, double diameter)
    : View(kit::Rect{{0, 0}, {diameter, diameter}}) {
  const double side = frame().size.width;
  const double dot = side * kDotFraction;
  const double radius = (side - dot) / 2;
  for (int i = 0; i < kDots; ++i) {
    const double angle = 2 * std::numbers::pi * i / kDots;
    auto view = std::make_shared<kit::View>(kit::Rect{{0, 0}, {dot, dot}});
    view->setCenter({side / 2 + radius * std::sin(angle), side / 2 - radius * std::cos(angle)});
    view->setCornerRadius(dot / 2);
    view->setAutoresizingMask(kDotResizing);
    dots_.push_back(std::move(view));
  }
  setProgress(0);
}

void ProgressRingView::setProgress(double progress) {
  progress_ = std::isnan(progress) ? 0 : std::clamp(progress, 0.0, 1.0);
  lit_ = static_cast<int>(std::floor(progress_ * kDots + 1e-9));
  for (int i = 0; i < kDots; ++i) {
    const double alpha = i < lit_ ? 1.0 : kUnlitAlpha;
    dots_[static_cast<size_t>(i)]->setBackgroundColor(kit::Color::white().withAlpha(alpha));
  }
}
