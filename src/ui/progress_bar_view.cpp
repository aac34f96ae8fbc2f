#include "ui/progress_bar_view.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kTrackAlpha = 0.3;

}  // namespace

std::shared_ptr<ProgressBarView> ProgressBarView::create(kit::Rect frame) {
  auto bar = std::make_shared<ProgressBarView>(Token{}, frame);
  bar->addSubview(bar->fill_);  // needs the shared owner, so not in the constructor
  return bar;
}

ProgressBarView::ProgressBarView(Token, kit::Rect frame)
    : View(frame), fill_(std::make_shared<kit::View>()) {
  const double radius = this->frame().size.height / 2;
  setBackgroundColor(kit::Color::white().withAlpha(kTrackAlpha));
  setCornerRadius(radius);
  fill_->setBackgroundColor(kit::Color::white());
  fill_->setCornerRadius(radius);
  // Width and the space after it share a resize in proportion, so the
  // filled fraction survives a new bar size.
  fill_->setAutoresizingMask(kit::Autoresizing::FlexibleWidth |
                             kit::Autoresizing::FlexibleRightMargin |
                             kit::Autoresizing::FlexibleHeight);
  setProgress(0);
}

void ProgressBarView::setProgress(double progress) {
  progress_ = std::isnan(progress) ? 0 : std::clamp(progress, 0.0, 1.0);
  const kit::Size size = bounds().size;
  fill_->setFrame({{0, 0}, {size.width * progress_, size.height}});
}
