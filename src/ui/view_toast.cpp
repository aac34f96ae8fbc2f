#include "ui/view_toast.h"

#include <algorithm>
#include <any>
#include <string_view>
#include <utility>

#include "kit/foundation/strings.h"
#include "kit/ui/activity_indicator_view.h"
#include "kit/ui/animation_options.h"
#include "kit/ui/image_view.h"
#include "kit/ui/label.h"
#include "kit/ui/text_layout.h"

namespace {

using kit::AnimationOptions;

// Look and layout, in points and seconds.
constexpr double kDefaultDuration = 3.0;
constexpr const char* kDefaultPosition = "bottom";
constexpr const char* kDefaultActivityPosition = "center";
constexpr double kFadeDuration = 0.2;
constexpr double kHorizontalPadding = 10;
constexpr double kVerticalPadding = 10;
constexpr double kEdgeDistance = 10;  // from the host's top or bottom edge
constexpr double kMaxTextWidthFraction = 0.8;
constexpr double kMaxTextHeightFraction = 0.8;
constexpr double kCornerRadius = 10;
constexpr double kPanelAlpha = 0.8;
constexpr double kShadowOpacity = 0.8;
constexpr double kShadowRadius = 6;
constexpr kit::Size kShadowOffset{4, 4};
constexpr double kFontSize = 16;
constexpr double kImageSide = 80;
constexpr double kActivitySide = 100;
// The panels keep their place when the host is resized: all four margins
// flexible (45).
constexpr unsigned kPanelResizing =
    kit::Autoresizing::FlexibleLeftMargin | kit::Autoresizing::FlexibleRightMargin |
    kit::Autoresizing::FlexibleTopMargin | kit::Autoresizing::FlexibleBottomMargin;

// The host's activity panel is kept under this key; only its address matters.
constexpr char kNoteToastActivityViewKey[] = "NoteToastActivityViewKey";

kit::Log* gToastLog = nullptr;

kit::Log& toastLog() {
  static kit::StderrLog stderrLog;
  return gToastLog ? *gToastLog : stderrLog;
}

void styleAsPanel(kit::View& panel) {
  panel.setAutoresizingMask(kPanelResizing);
  panel.setCornerRadius(kCornerRadius);
  panel.setShadowColor(kit::Color::black());
  panel.setShadowOpacity(kShadowOpacity);
  panel.setShadowRadius(kShadowRadius);
  panel.setShadowOffset(kShadowOffset);
  panel.setBackgroundColor(kit::Color::black().withAlpha(kPanelAlpha));
}

// A white, wrapping label sized to its text within `constraint`.
std::shared_ptr<kit::Label> makeTextLabel(const std::string& text, const kit::Font& font,
                                          kit::Size constraint) {
  auto label = std::make_shared<kit::Label>();
  label->setNumberOfLines(0);
  label->setFont(font);
  label->setLineBreakMode(kit::LineBreakMode::WordWrap);
  label->setTextColor(kit::Color::white());
  label->setBackgroundColor(kit::Color::clear());
  label->setAlpha(1.0);
  label->setText(text);
  const kit::Size size = kit::sizeWithFont(text, label->font(), constraint, label->lineBreakMode());
  label->setFrame({{0, 0}, size});
  return label;
}

std::shared_ptr<kit::View> activityViewOf(const kit::View& view) {
  return view.associatedObjectAs<std::shared_ptr<kit::View>>(kNoteToastActivityViewKey);
}

}  // namespace

ToastPosition::ToastPosition(const char* word) {
  if (word)
    value_ = std::string(word);
}

kit::Log* setToastLog(kit::Log* log) {
  return std::exchange(gToastLog, log);
}

// [Message toasts]

void makeToast(kit::View& view, const std::optional<std::string>& message) {
  makeToast(view, message, kDefaultDuration, kDefaultPosition);
}

void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position) {
  showToast(view, viewForMessage(view, message, std::nullopt, nullptr), duration, position);
}

void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position, const std::optional<std::string>& title) {
  showToast(view, viewForMessage(view, message, title, nullptr), duration, position);
}

void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position, const std::shared_ptr<kit::Image>& image) {
  showToast(view, viewForMessage(view, message, std::nullopt, image), duration, position);
}

void makeToast(kit::View& view, const std::optional<std::string>& message, double duration,
               const ToastPosition& position, const std::optional<std::string>& title,
               const std::shared_ptr<kit::Image>& image) {
  showToast(view, viewForMessage(view, message, title, image), duration, position);
}

void showToast(kit::View& view, const std::shared_ptr<kit::View>& toast) {
  showToast(view, toast, kDefaultDuration, kDefaultPosition);
}

void showToast(kit::View& view, const std::shared_ptr<kit::View>& toast, double duration,
               const ToastPosition& position) {
  // A toast that holds its own host cannot go on top of it.
  if (!toast || view.isDescendantOfView(toast.get()))
    return;
  toast->setCenter(centerPointForPosition(view, position, *toast));
  toast->setAlpha(0);
  view.addSubview(toast);

  // Each fade's completion runs whether or not it finished, so the toast
  // always reaches its removal.
  kit::View::animateWithDuration(
      kFadeDuration, 0, AnimationOptions::CurveEaseOut, [&toast] { toast->setAlpha(1.0); },
      [toast, duration](bool) {
        kit::View::animateWithDuration(
            kFadeDuration, duration, AnimationOptions::CurveEaseIn,
            [&toast] { toast->setAlpha(0.0); }, [toast](bool) { toast->removeFromSuperview(); });
      });
}

// [Activity toast]

void makeToastActivity(kit::View& view) {
  makeToastActivity(view, kDefaultActivityPosition);
}

void makeToastActivity(kit::View& view, const ToastPosition& position) {
  if (activityViewOf(view))
    return;

  auto panel = std::make_shared<kit::View>(kit::Rect{{0, 0}, {kActivitySide, kActivitySide}});
  panel->setCenter(centerPointForPosition(view, position, *panel));
  styleAsPanel(*panel);
  panel->setAlpha(0);

  auto indicator =
      std::make_shared<kit::ActivityIndicatorView>(kit::ActivityIndicatorViewStyle::WhiteLarge);
  const kit::Size panelSize = panel->bounds().size;
  indicator->setCenter({panelSize.width / 2, panelSize.height / 2});
  panel->addSubview(indicator);
  indicator->startAnimating();

  view.setAssociatedObject(kNoteToastActivityViewKey, panel);
  view.addSubview(panel);

  kit::View::animateWithDuration(kFadeDuration, 0, AnimationOptions::CurveEaseOut,
                                 [&panel] { panel->setAlpha(1.0); }, {});
}

void hideToastActivity(kit::View& view) {
  auto panel = activityViewOf(view);
  if (!panel)
    return;
  std::weak_ptr<kit::View> host = view.weak_from_this();
  kit::View::animateWithDuration(
      kFadeDuration, 0, AnimationOptions::CurveEaseIn | AnimationOptions::BeginFromCurrentState,
      [&panel] { panel->setAlpha(0.0); },
      [panel, host](bool) {
        panel->removeFromSuperview();
        // A later fade-out of the same panel may already have cleared the
        // key, and a newer panel may be under it by now: leave that one be.
        auto owner = host.lock();
        if (owner && activityViewOf(*owner) == panel) {
          owner->setAssociatedObject(kNoteToastActivityViewKey, {});
        }
      });
}

// [Layout]

kit::Point centerPointForPosition(const kit::View& view, const ToastPosition& position,
                                  const kit::View& toast) {
  const kit::Size host = view.bounds().size;
  const double toastHeight = toast.frame().size.height;
  if (const std::string* word = position.word()) {
    if (kit::equalsIgnoringCase(*word, "top")) {
      return {host.width / 2, toastHeight / 2 + kEdgeDistance};
    }
    if (kit::equalsIgnoringCase(*word, "bottom")) {
      return {host.width / 2, host.height - toastHeight / 2 - kEdgeDistance};
    }
    if (kit::equalsIgnoringCase(*word, "center")) {
      return {host.width / 2, host.height / 2};
    }
  } else if (const kit::Point* point = position.point()) {
    return *point;
  }
  toastLog().write("Warning: Invalid position for toast.");
  return centerPointForPosition(view, kDefaultPosition, toast);
}

std::shared_ptr<kit::View> viewForMessage(const kit::View& view,
                                          const std::optional<std::string>& message,
                                          const std::optional<std::string>& title,
                                          const std::shared_ptr<kit::Image>& image) {
  if (!message && !title && !image)
    return nullptr;

  auto panel = std::make_shared<kit::View>();
  styleAsPanel(*panel);

  std::shared_ptr<kit::ImageView> imageView;
  double imageWidth = 0, imageHeight = 0, imageLeft = 0;
  if (image) {
    imageView = std::make_shared<kit::ImageView>(image);
    imageView->setContentMode(kit::ContentMode::ScaleAspectFit);
    imageView->setFrame({{kHorizontalPadding, kVerticalPadding}, {kImageSide, kImageSide}});
    imageWidth = imageView->bounds().size.width;
    imageHeight = imageView->bounds().size.height;
    imageLeft = kHorizontalPadding;
  }

  const kit::Size host = view.bounds().size;
  const kit::Size maxText{host.width * kMaxTextWidthFraction - imageWidth,
                          host.height * kMaxTextHeightFraction};

  std::shared_ptr<kit::Label> titleLabel;
  if (title) {
    titleLabel = makeTextLabel(*title, kit::Font::boldSystemFontOfSize(kFontSize), maxText);
    titleLabel->setTextAlignment(kit::TextAlignment::Left);
  }
  std::shared_ptr<kit::Label> messageLabel;
  if (message) {
    messageLabel = makeTextLabel(*message, kit::Font::systemFontOfSize(kFontSize), maxText);
  }

  double titleWidth = 0, titleHeight = 0, titleTop = 0, titleLeft = 0;
  if (titleLabel) {
    titleWidth = titleLabel->bounds().size.width;
    titleHeight = titleLabel->bounds().size.height;
    titleTop = kVerticalPadding;
    titleLeft = imageLeft + imageWidth + kHorizontalPadding;
  }
  double messageWidth = 0, messageHeight = 0, messageLeft = 0, messageTop = 0;
  if (messageLabel) {
    messageWidth = messageLabel->bounds().size.width;
    messageHeight = messageLabel->bounds().size.height;
    messageLeft = imageLeft + imageWidth + kHorizontalPadding;
    messageTop = titleTop + titleHeight + kVerticalPadding;
  }

  // The title counts towards the height only through messageTop.
  const double width = std::max(
      imageWidth + kHorizontalPadding * 2,
      std::max(titleLeft, messageLeft) + std::max(titleWidth, messageWidth) + kHorizontalPadding);
  const double height =
      std::max(messageTop + messageHeight + kVerticalPadding, imageHeight + kVerticalPadding * 2);
  panel->setFrame({{0, 0}, {width, height}});

  if (titleLabel) {
    titleLabel->setFrame({{titleLeft, titleTop}, {titleWidth, titleHeight}});
    panel->addSubview(titleLabel);
  }
  if (messageLabel) {
    messageLabel->setFrame({{messageLeft, messageTop}, {messageWidth, messageHeight}});
    panel->addSubview(messageLabel);
  }
  if (imageView)
    panel->addSubview(imageView);  // last, so the image lies on top
  return panel;
}
