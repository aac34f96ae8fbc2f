#include "ui/progress_overlay.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "kit/foundation/clock.h"
#include "kit/ui/activity_indicator_view.h"
#include "kit/ui/animation_options.h"
#include "kit/ui/label.h"
#include "kit/ui/text_layout.h"
#include "ui/progress_bar_view.h"
#include "ui/progress_ring_view.h"

namespace {

using kit::AnimationOptions;

// Look and layout, in points.
constexpr double kMargin = 20;   // between the panel's edge and its content
constexpr double kSpacing = 10;  // between the indicator and the label
constexpr double kMinSide = 100;
constexpr double kIndicatorSide = 37;  // the large spinner's size; the ring matches it
constexpr kit::Size kBarSize{120, 8};
constexpr double kCornerRadius = 10;
constexpr double kPanelAlpha = 0.8;
constexpr double kFontSize = 16;
constexpr double kMaxFraction = 0.8;  // of the host's size the panel may take
constexpr unsigned kPanelResizing =
    kit::Autoresizing::FlexibleLeftMargin | kit::Autoresizing::FlexibleRightMargin |
    kit::Autoresizing::FlexibleTopMargin | kit::Autoresizing::FlexibleBottomMargin;

double clampedProgress(double progress) {
  return std::isnan(progress) ? 0 : std::clamp(progress, 0.0, 1.0);
}

}  // namespace

ProgressOverlay::ProgressOverlay(const std::shared_ptr<kit::View>& host, kit::RunLoop& runLoop,
                                 Mode mode, ProgressOverlayTiming timing)
    : host_(host),
      runLoop_(runLoop),
      mode_(mode),
      timing_(timing),
      panel_(std::make_shared<kit::View>()),
      self_(std::make_shared<ProgressOverlay*>(this)) {
  panel_->setBackgroundColor(kit::Color::black().withAlpha(kPanelAlpha));
  panel_->setCornerRadius(kCornerRadius);
  panel_->setAutoresizingMask(kPanelResizing);
  rebuild();
}

ProgressOverlay::~ProgressOverlay() {
  cancelTimer();
  panel_->removeFromSuperview();
}

// [Showing and hiding]

void ProgressOverlay::show() {
  switch (state_) {
    case State::Hidden:
      if (timing_.graceTime > 0) {
        state_ = State::Waiting;
        timer_ = runLoop_.scheduledTimer(
            timing_.graceTime,
            [this] {
              timer_.reset();
              appear();
            },
            false);
      } else {
        appear();
      }
      break;
    case State::Holding:
      cancelTimer();
      state_ = State::Shown;
      break;
    case State::Hiding:
      appear();
      break;
    case State::Waiting:
    case State::Shown:
      break;
  }
}

void ProgressOverlay::hide() {
  switch (state_) {
    case State::Waiting:
      cancelTimer();
      state_ = State::Hidden;
      break;
    case State::Shown: {
      const double shownFor = static_cast<double>(now() - shownAt_) / kit::kNanosPerSecond;
      const double left = timing_.minShowTime - shownFor;
      if (left > 0) {
        state_ = State::Holding;
        timer_ = runLoop_.scheduledTimer(
            left,
            [this] {
              timer_.reset();
              fadeOut();
            },
            false);
      } else {
        fadeOut();
      }
      break;
    }
    case State::Hidden:
    case State::Holding:
    case State::Hiding:
      break;
  }
}

bool ProgressOverlay::isVisible() const {
  return state_ == State::Shown || state_ == State::Holding || state_ == State::Hiding;
}

void ProgressOverlay::appear() {
  auto host = host_.lock();
  if (!host) {
    state_ = State::Hidden;
    return;
  }
  if (panel_->superview() != host) {
    centreInHost();
    panel_->setAlpha(0);
    host->addSubview(panel_);
  }
  state_ = State::Shown;
  shownAt_ = now();
  ++fadeGeneration_;  // a fade-out still running no longer removes the panel
  kit::View::animateWithDuration(
      timing_.fadeDuration, 0,
      AnimationOptions::CurveEaseOut | AnimationOptions::BeginFromCurrentState,
      [this] { panel_->setAlpha(1); }, {});
}

void ProgressOverlay::fadeOut() {
  state_ = State::Hiding;
  const uint64_t generation = ++fadeGeneration_;
  std::weak_ptr<ProgressOverlay*> self = self_;
  kit::View::animateWithDuration(
      timing_.fadeDuration, 0,
      AnimationOptions::CurveEaseIn | AnimationOptions::BeginFromCurrentState,
      [this] { panel_->setAlpha(0); },
      [self, generation](bool) {
        auto alive = self.lock();
        if (!alive || (*alive)->fadeGeneration_ != generation)
          return;
        ProgressOverlay& overlay = **alive;
        overlay.panel_->removeFromSuperview();
        overlay.state_ = State::Hidden;
      });
}

void ProgressOverlay::cancelTimer() {
  if (timer_)
    timer_->invalidate();
  timer_.reset();
}

int64_t ProgressOverlay::now() const {
  return runLoop_.clock().monotonicNanos();
}

// [Content]

void ProgressOverlay::setProgress(double progress) {
  progress_ = clampedProgress(progress);
  if (ring_)
    ring_->setProgress(progress_);
  if (bar_)
    bar_->setProgress(progress_);
}

void ProgressOverlay::setMode(Mode mode) {
  if (mode == mode_)
    return;
  mode_ = mode;
  rebuild();
}

void ProgressOverlay::setLabelText(std::string text) {
  if (text == labelText_)
    return;
  labelText_ = std::move(text);
  rebuild();
}

void ProgressOverlay::rebuild() {
  const std::vector<std::shared_ptr<kit::View>> old = panel_->subviews();
  for (const auto& view : old)
    view->removeFromSuperview();
  ring_.reset();
  bar_.reset();

  std::shared_ptr<kit::View> indicator;
  switch (mode_) {
    case Mode::Indeterminate: {
      auto spinner =
          std::make_shared<kit::ActivityIndicatorView>(kit::ActivityIndicatorViewStyle::WhiteLarge);
      spinner->startAnimating();
      indicator = spinner;
      break;
    }
    case Mode::Ring:
      ring_ = ProgressRingView::create(kIndicatorSide);
      ring_->setProgress(progress_);
      indicator = ring_;
      break;
    case Mode::Bar:
      bar_ = ProgressBarView::create({{0, 0}, kBarSize});
      bar_->setProgress(progress_);
      indicator = bar_;
      break;
  }
  const kit::Size indicatorSize = indicator->frame().size;

  std::shared_ptr<kit::Label> label;
  kit::Size labelSize;
  if (!labelText_.empty()) {
    label = std::make_shared<kit::Label>();
    label->setFont(kit::Font::boldSystemFontOfSize(kFontSize));
    label->setTextColor(kit::Color::white());
    label->setTextAlignment(kit::TextAlignment::Center);
    label->setNumberOfLines(0);
    label->setLineBreakMode(kit::LineBreakMode::WordWrap);
    label->setText(labelText_);
    kit::Size room{kit::TextBlock::kUnbounded, kit::TextBlock::kUnbounded};
    if (auto host = host_.lock()) {
      const kit::Size hostSize = host->bounds().size;
      room = {hostSize.width * kMaxFraction - 2 * kMargin,
              hostSize.height * kMaxFraction - 2 * kMargin - indicatorSize.height - kSpacing};
    }
    labelSize = kit::sizeWithFont(labelText_, label->font(), room, label->lineBreakMode());
  }

  const double contentHeight = indicatorSize.height + (label ? kSpacing + labelSize.height : 0);
  const double width =
      std::max(kMinSide, std::max(indicatorSize.width, labelSize.width) + 2 * kMargin);
  const double height = std::max(kMinSide, contentHeight + 2 * kMargin);
  panel_->setFrame({{0, 0}, {width, height}});

  const double top = (height - contentHeight) / 2;
  indicator->setCenter({width / 2, top + indicatorSize.height / 2});
  panel_->addSubview(indicator);
  if (label) {
    label->setFrame(
        {{(width - labelSize.width) / 2, top + indicatorSize.height + kSpacing}, labelSize});
    panel_->addSubview(label);
  }
  centreInHost();
}

void ProgressOverlay::centreInHost() {
  if (auto host = host_.lock()) {
    const kit::Size size = host->bounds().size;
    panel_->setCenter({size.width / 2, size.height / 2});
  }
}
