#include "adsdk/gad_interstitial.h"

#include "adsdk/interstitial_ad_view_controller.h"
#include "kit/ui/screen.h"

GADInterstitial::GADInterstitial(std::weak_ptr<AdNetwork> network) : network_(std::move(network)) {}

void GADInterstitial::loadRequest(const GADRequest&) {
  auto network = network_.lock();
  if (requested_ || !network)
    return;
  requested_ = true;
  const kit::Screen& screen = kit::Screen::main();
  std::weak_ptr<GADInterstitial> weak = weak_from_this();
  network->requestAd({AdFormat::Interstitial, adUnitID_, screen.bounds(), screen.scale()},
                     [weak](const AdAnswer& answer) {
                       auto self = weak.lock();
                       if (!self || !answer.creative)
                         return;
                       self->creative_ = answer.creative;
                       if (auto d = self->delegate())
                         d->interstitialDidReceiveAd(*self);
                     });
}

void GADInterstitial::presentFromRootViewController(
    const std::shared_ptr<kit::ViewController>& rootViewController) {
  if (!isReady() || !rootViewController)
    return;
  std::weak_ptr<GADInterstitial> weak = weak_from_this();
  auto screen = std::make_shared<InterstitialAdViewController>(
      *creative_,
      [weak] {
        auto self = weak.lock();
        auto network = self ? self->network_.lock() : nullptr;
        if (network)
          network->openClickThrough(*self->creative_);
      },
      [weak] {
        if (auto self = weak.lock())
          self->close();
      });
  rootViewController->presentViewController(screen, true);
  if (rootViewController->presentedViewController() != screen)
    return;  // it presents something else; the ad stays ready for later
  hasBeenUsed_ = true;
  screen_ = std::move(screen);
  if (auto network = network_.lock())
    network->recordImpression(AdFormat::Interstitial, *creative_);
}

void GADInterstitial::close() {
  if (!screen_ || closing_)
    return;
  closing_ = true;
  if (auto d = delegate())
    d->interstitialWillDismissScreen(*this);
  // The completion keeps the ad alive: its owner may let go of it when told.
  screen_->dismissViewControllerAnimated(true, [self = shared_from_this()] {
    self->screen_.reset();
    self->closing_ = false;
    if (auto d = self->delegate())
      d->interstitialDidDismissScreen(*self);
  });
}
