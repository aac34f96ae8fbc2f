#pragma once

#include <memory>
#include <optional>
#include <string>

#include "adsdk/ad_network.h"
#include "adsdk/gad_request.h"
#include "kit/ui/view_controller.h"

class GADInterstitial;
class InterstitialAdViewController;

// Told about an interstitial's life; every operation is optional (empty).
// A failed load tells nothing: the ad just never becomes ready.
class GADInterstitialDelegate {
 public:
  virtual ~GADInterstitialDelegate() = default;
  virtual void interstitialDidReceiveAd(GADInterstitial& /*ad*/) {}
  virtual void interstitialWillDismissScreen(GADInterstitial& /*ad*/) {}
  virtual void interstitialDidDismissScreen(GADInterstitial& /*ad*/) {}
};

// A full-screen ad, good for one showing: load it, wait until it is ready,
// present it once over the window until the player closes it. Create with
// std::make_shared. The network and the delegate are weak; while on screen
// the ad keeps itself alive. Main thread only.
class GADInterstitial final : public std::enable_shared_from_this<GADInterstitial> {
 public:
  explicit GADInterstitial(std::weak_ptr<AdNetwork> network);

  const std::string& adUnitID() const { return adUnitID_; }
  void setAdUnitID(std::string adUnitID) { adUnitID_ = std::move(adUnitID); }
  std::shared_ptr<GADInterstitialDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<GADInterstitialDelegate> delegate) {
    delegate_ = std::move(delegate);
  }

  // Asks for an ad the size of the main screen. Only the first call counts.
  void loadRequest(const GADRequest& request);
  // Loaded and not shown yet.
  bool isReady() const { return creative_.has_value() && !hasBeenUsed_; }
  bool hasBeenUsed() const { return hasBeenUsed_; }
  // From presentation until the dismissal has finished.
  bool isPresented() const { return screen_ != nullptr; }

  // Shows the ad modally over `rootViewController`'s window. Ignored unless
  // ready, and when that controller already presents another (the ad then
  // stays ready).
  void presentFromRootViewController(
      const std::shared_ptr<kit::ViewController>& rootViewController);
  // What the close button does: the delegate hears "will dismiss" now and
  // "did dismiss" once the screen is gone. Ignored unless on screen.
  void close();

  const std::optional<AdCreative>& creative() const { return creative_; }
  // The ad's screen while presented.
  std::shared_ptr<InterstitialAdViewController> screen() const { return screen_; }

 private:
  std::weak_ptr<AdNetwork> network_;
  std::string adUnitID_;
  std::weak_ptr<GADInterstitialDelegate> delegate_;
  std::optional<AdCreative> creative_;
  std::shared_ptr<InterstitialAdViewController> screen_;
  bool requested_ = false;
  bool hasBeenUsed_ = false;
  bool closing_ = false;
};
