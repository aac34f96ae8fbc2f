#include "adsdk/gad_banner_view.h"

#include "kit/ui/screen.h"

GADBannerView::GADBannerView(kit::Rect frame, std::weak_ptr<AdNetwork> network)
    : kit::View(frame), network_(std::move(network)) {}

void GADBannerView::loadRequest(const GADRequest&) {
  const uint64_t request = ++request_;
  auto network = network_.lock();
  if (!network)
    return;
  loading_ = true;
  std::weak_ptr<GADBannerView> weak = std::static_pointer_cast<GADBannerView>(shared_from_this());
  network->requestAd({AdFormat::Banner, adUnitID_, bounds().size, kit::Screen::main().scale()},
                     [weak, request](const AdAnswer& answer) {
                       if (auto self = weak.lock())
                         self->received(request, answer);
                     });
}

void GADBannerView::received(uint64_t request, const AdAnswer& answer) {
  if (request != request_)
    return;  // superseded
  loading_ = false;
  if (answer.creative) {
    creative_ = answer.creative;
    if (!imageView_) {
      imageView_ = std::make_shared<kit::ImageView>(nullptr, bounds());
      imageView_->setContentMode(kit::ContentMode::ScaleAspectFit);
      imageView_->setAutoresizingMask(kit::Autoresizing::FlexibleWidth |
                                      kit::Autoresizing::FlexibleHeight);
      addSubview(imageView_);
    }
    imageView_->setFrame(bounds());
    imageView_->setImage(creative_->image);
    if (auto network = network_.lock())
      network->recordImpression(AdFormat::Banner, *creative_);
    if (auto d = delegate())
      d->adViewDidReceiveAd(*this);
  } else if (auto d = delegate()) {
    d->adViewDidFailToReceiveAdWithError(
        *this, answer.error.value_or(GADRequestError(GADErrorCode::InternalError, "no answer")));
  }
}

void GADBannerView::touchesBegan(const std::vector<kit::Point>&) {
  auto network = network_.lock();
  if (creative_ && network)
    network->openClickThrough(*creative_);
}

std::string GADBannerView::describe() const {
  std::string text = "adUnitID=" + adUnitID_;
  if (creative_)
    text += " ad=" + creative_->name;
  if (loading_)
    text += " loading";
  return text;
}
