#include "adsdk/interstitial_ad_view_controller.h"

#include "kit/ui/label.h"
#include "kit/ui/screen.h"

namespace {

constexpr kit::Color kBackdrop{0.106, 0.122, 0.153, 1};      // #1b1f27
constexpr kit::Color kButtonFill{0.075, 0.086, 0.11, 0.72};  // dark glass
constexpr kit::Color kCross{0.933, 0.945, 0.965, 1};         // #eef1f6

// The whole screen: taps on the picture open the ad, keys close it.
class InterstitialView final : public kit::View,
                               public kit::TouchReceiver,
                               public kit::KeyReceiver {
 public:
  InterstitialView(kit::Rect frame, std::function<void(kit::Point)> tapped,
                   std::function<void()> close)
      : kit::View(frame), tapped_(std::move(tapped)), close_(std::move(close)) {}
  std::string className() const override { return "GADInterstitialView"; }

  void touchesBegan(const std::vector<kit::Point>& points) override {
    if (!points.empty())
      tapped_(points.front());
  }
  bool keyPressed(kit::Key key) override {
    if (key == kit::Key::Escape || key == kit::Key::Return)
      close_();
    return true;  // modal: nothing reaches the game underneath
  }

 private:
  std::function<void(kit::Point)> tapped_;
  std::function<void()> close_;
};

class CloseButton final : public kit::View, public kit::TouchReceiver {
 public:
  CloseButton(kit::Rect frame, std::function<void()> pressed)
      : kit::View(frame), pressed_(std::move(pressed)) {}
  std::string className() const override { return "GADCloseButton"; }
  void touchesBegan(const std::vector<kit::Point>&) override { pressed_(); }

 private:
  std::function<void()> pressed_;
};

}  // namespace

InterstitialAdViewController::InterstitialAdViewController(AdCreative creative,
                                                           std::function<void()> onClick,
                                                           std::function<void()> onClose)
    : creative_(std::move(creative)), onClick_(std::move(onClick)), onClose_(std::move(onClose)) {}

void InterstitialAdViewController::loadView() {
  const kit::Rect screen{{0, 0}, kit::Screen::main().bounds()};
  // The actions hold the controller weakly: the view must not keep it alive.
  std::weak_ptr<kit::ViewController> weak = weak_from_this();
  auto self = [weak]() {
    return std::static_pointer_cast<InterstitialAdViewController>(weak.lock());
  };
  auto root = std::make_shared<InterstitialView>(
      screen,
      [self](kit::Point point) {
        auto controller = self();
        if (!controller)
          return;
        const auto& image = controller->creativeView_;
        const kit::Rect shown =
            image->imageRect(image->image() ? image->image()->size() : kit::Size{});
        const kit::Rect onScreen{
            {image->frame().origin.x + shown.origin.x, image->frame().origin.y + shown.origin.y},
            shown.size};
        if (onScreen.contains(point) && controller->onClick_)
          controller->onClick_();
      },
      [self] {
        if (auto controller = self(); controller && controller->onClose_)
          controller->onClose_();
      });
  root->setBackgroundColor(kBackdrop);

  creativeView_ = std::make_shared<kit::ImageView>(creative_.image, screen);
  creativeView_->setContentMode(kit::ContentMode::ScaleAspectFit);
  root->addSubview(creativeView_);

  closeButton_ = std::make_shared<CloseButton>(
      kit::Rect{{0, 0}, {kCloseButtonSide, kCloseButtonSide}}, [self] {
        if (auto controller = self(); controller && controller->onClose_)
          controller->onClose_();
      });
  closeButton_->setBackgroundColor(kButtonFill);
  closeButton_->setCornerRadius(kCloseButtonSide / 2);
  auto cross =
      std::make_shared<kit::Label>(kit::Rect{{0, -1}, {kCloseButtonSide, kCloseButtonSide}});
  cross->setText("\u00d7");
  cross->setFont(kit::Font::boldSystemFontOfSize(28));
  cross->setTextColor(kCross);
  cross->setTextAlignment(kit::TextAlignment::Center);
  closeButton_->addSubview(cross);
  root->addSubview(closeButton_);

  layout(root->bounds());
  setView(root);
}

void InterstitialAdViewController::viewWillAppear(bool) {
  layout(view()->bounds());
}

void InterstitialAdViewController::layout(kit::Rect bounds) {
  creativeView_->setFrame(bounds);
  closeButton_->setFrame({{bounds.size.width - kMargin - kCloseButtonSide, kMargin},
                          {kCloseButtonSide, kCloseButtonSide}});
  creativeView_->setAutoresizingMask(kit::Autoresizing::FlexibleWidth |
                                     kit::Autoresizing::FlexibleHeight);
  closeButton_->setAutoresizingMask(kit::Autoresizing::FlexibleLeftMargin |
                                    kit::Autoresizing::FlexibleBottomMargin);
}
