#include "app/game_ads.h"

#include "ads/admob_view_controller.h"
#include "app/view_controller.h"

namespace {

std::shared_ptr<kit::ViewController> sharedFrom(ViewController& controller) {
  return controller.shared_from_this();
}

}  // namespace

GameAds::~GameAds() {
  stop();
}

void GameAds::stop() {
  if (!network_)
    return;
  AdmobViewController::releaseShared();
  network_.reset();
  if (!recordedMail())
    mailSink_.reset();
}

void GameAds::start(const kit::Services& services, bool scripted) {
  if (network_)
    return;
  HouseAdNetwork::Options options = HouseAdNetwork::optionsFromBundle(services.bundle);
  options.deterministic = scripted;
  network_ = std::make_shared<HouseAdNetwork>(services, options);
  // A script's mail is kept across its launches; the backend's sink borrows
  // this launch's services.
  if (!scripted && realMail_)
    mailSink_ = realMail_(services);
  else if (!recordedMail())
    mailSink_ = std::make_unique<kit::RecordingMailSink>();
  // The shared instance is made once per process on first use; a later
  // launch in the same process makes its own at once.
  if (startedBefore_)
    AdmobViewController::relaunchShared({services, network_, *mailSink_});
  else
    AdmobViewController::setSharedEnvironment({services, network_, *mailSink_});
  startedBefore_ = true;
}

void GameAds::askRatingService(ViewController& controller) {
  auto ads = network_ ? AdmobViewController::shareAdmobVC() : nullptr;
  if (ads && ads->rtService())
    ads->rtService()->decideShowRT(sharedFrom(controller));
}

void GameAds::placeBanner(float x, float posy, float width, float height,
                          const std::shared_ptr<kit::View>& view) {
  if (auto ads = network_ ? AdmobViewController::shareAdmobVC() : nullptr)
    ads->show_admob_banner(x, posy, width, height, view);
}

void GameAds::tryShowInterstitial(ViewController& controller, bool ignoreTimeInterval) {
  if (auto ads = network_ ? AdmobViewController::shareAdmobVC() : nullptr)
    ads->try_show_admob_interstitial(sharedFrom(controller), ignoreTimeInterval);
}

bool GameAds::closeInterstitial() {
  auto ads = network_ ? AdmobViewController::shareAdmobVC() : nullptr;
  if (!ads || !ads->roundInterstitial() || !ads->roundInterstitial()->isPresented())
    return false;
  ads->roundInterstitial()->close();
  return true;
}

kit::Value GameAds::describe() const {
  auto ads = network_ ? AdmobViewController::shareAdmobVC() : nullptr;
  if (!ads)
    return {};
  kit::Value banner;
  if (const auto& view = ads->banner()) {
    const kit::Rect frame = view->superview()
                                ? view->superview()->convertRectToView(view->frame(), nullptr)
                                : view->frame();
    banner = kit::Value::Dictionary{
        {"frame",
         kit::Value::Array{frame.origin.x, frame.origin.y, frame.size.width, frame.size.height}},
        {"shown", view->window() != nullptr},
        {"loaded", view->creative().has_value()},
        {"creative", view->creative() ? kit::Value(view->creative()->name) : kit::Value()}};
  }
  const auto& round = ads->roundInterstitial();
  return kit::Value::Dictionary{
      {"banner", banner},
      {"interstitial",
       kit::Value::Dictionary{
           {"ready", ads->admob_interstial_ready()},
           {"showing", round && round->isPresented()},
           {"creative",
            round && round->creative() ? kit::Value(round->creative()->name) : kit::Value()},
           {"shows", network_->impressions(AdFormat::Interstitial)},
           {"lastShowInerstitialAd", ads->lastInterstitialShownAt()}}},
      {"openTimes", ads->launchCount()},
      {"firstOpenTime", ads->firstLaunchTime()}};
}
