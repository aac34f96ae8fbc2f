#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "adsdk/ad_network.h"
#include "kit/render/touch_receiver.h"
#include "kit/ui/image_view.h"
#include "kit/ui/key_receiver.h"
#include "kit/ui/view_controller.h"

// The screen an interstitial is shown on: its creative fitted over a dark
// backdrop, with a round close button ("×") at the top right. A tap on the
// creative asks for its page; the close button, Escape or Return ask to
// close. What happens then is the owner's business (the actions are
// callbacks). Main thread only.
class InterstitialAdViewController final : public kit::ViewController {
 public:
  static constexpr double kCloseButtonSide = 36;
  static constexpr double kMargin = 12;

  InterstitialAdViewController(AdCreative creative, std::function<void()> onClick,
                               std::function<void()> onClose);

  void loadView() override;
  void viewWillAppear(bool animated) override;

  const AdCreative& creative() const { return creative_; }
  std::shared_ptr<kit::View> closeButton() const { return closeButton_; }
  std::shared_ptr<kit::ImageView> creativeView() const { return creativeView_; }

 private:
  void layout(kit::Rect bounds);

  AdCreative creative_;
  std::function<void()> onClick_;
  std::function<void()> onClose_;
  std::shared_ptr<kit::ImageView> creativeView_;
  std::shared_ptr<kit::View> closeButton_;
};
