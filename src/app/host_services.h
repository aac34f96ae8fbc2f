#pragma once

#include <memory>

namespace kit {
class View;
}
class ViewController;

// What the host view controller asks of the ad controller and its rating
// service. The rating and ad subsystems fill it in (their shared ad
// controller behind each call); until they do, NoHostServices stands in.
// Borrowed by the controller; the owner outlives it.
class HostServices {
 public:
  virtual ~HostServices() = default;

  // The shared ad controller's rating service decides whether to prompt
  // (decideShowRT: with `controller`); its answer is ignored.
  virtual void askRatingService(ViewController& controller) = 0;
  // The shared ad controller shows its banner at (x, posy), width × height,
  // inside `view` (show_admob_banner:posy:width:height:view:).
  virtual void placeBanner(float x, float posy, float width, float height,
                           const std::shared_ptr<kit::View>& view) = 0;
  // The shared ad controller tries an interstitial presented from
  // `controller`, bypassing its own spacing when `ignoreTimeInterval`
  // (try_show_admob_interstitial:ignoreTimeInterval:); the answer is ignored.
  virtual void tryShowInterstitial(ViewController& controller, bool ignoreTimeInterval) = 0;
};

// The host before the ad and rating subsystems are wired in.
class NoHostServices final : public HostServices {
 public:
  // No rating service yet: nobody is asked.
  void askRatingService(ViewController&) override {}
  // No ad controller yet: the banner container stays empty.
  void placeBanner(float, float, float, float, const std::shared_ptr<kit::View>&) override {}
  // No ad controller yet: no interstitial is tried.
  void tryShowInterstitial(ViewController&, bool) override {}
};
