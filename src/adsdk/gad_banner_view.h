#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adsdk/ad_network.h"
#include "adsdk/gad_request.h"
#include "adsdk/gad_request_error.h"
#include "kit/render/touch_receiver.h"
#include "kit/ui/image_view.h"
#include "kit/ui/view.h"
#include "kit/ui/view_controller.h"

class GADBannerView;

// Told how a banner's request ended; both operations are optional (empty).
class GADBannerViewDelegate {
 public:
  virtual ~GADBannerViewDelegate() = default;
  virtual void adViewDidReceiveAd(GADBannerView& /*bannerView*/) {}
  virtual void adViewDidFailToReceiveAdWithError(GADBannerView& /*bannerView*/,
                                                 const GADRequestError& /*error*/) {}
};

// A banner ad: a view that asks the network for an ad and shows it, fitted
// to its bounds, until the next one arrives; a tap opens the ad's page. A
// failed request leaves the banner as it was. Create with std::make_shared.
// The network, the delegate and the root view controller are weak. Main
// thread only.
class GADBannerView final : public kit::View, public kit::TouchReceiver {
 public:
  GADBannerView(kit::Rect frame, std::weak_ptr<AdNetwork> network);
  std::string className() const override { return "GADBannerView"; }

  const std::string& adUnitID() const { return adUnitID_; }
  void setAdUnitID(std::string adUnitID) { adUnitID_ = std::move(adUnitID); }
  std::shared_ptr<GADBannerViewDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<GADBannerViewDelegate> delegate) {
    delegate_ = std::move(delegate);
  }
  std::shared_ptr<kit::ViewController> rootViewController() const {
    return rootViewController_.lock();
  }
  void setRootViewController(std::weak_ptr<kit::ViewController> controller) {
    rootViewController_ = std::move(controller);
  }

  // Asks for an ad of the banner's current size for the ad unit; the answer
  // comes later through the delegate. A newer request supersedes one still
  // waiting.
  void loadRequest(const GADRequest& request);

  // The ad on show, if one has arrived.
  const std::optional<AdCreative>& creative() const { return creative_; }
  bool isLoading() const { return loading_; }

  // A tap anywhere on the banner opens the ad's page.
  void touchesBegan(const std::vector<kit::Point>& pointsInView) override;

 protected:
  std::string describe() const override;

 private:
  void received(uint64_t request, const AdAnswer& answer);

  std::weak_ptr<AdNetwork> network_;
  std::string adUnitID_;
  std::weak_ptr<GADBannerViewDelegate> delegate_;
  std::weak_ptr<kit::ViewController> rootViewController_;
  std::shared_ptr<kit::ImageView> imageView_;
  std::optional<AdCreative> creative_;
  uint64_t request_ = 0;
  bool loading_ = false;
};
