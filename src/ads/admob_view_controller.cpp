#include "ads/admob_view_controller.h"

#include <mutex>
#include <utility>
#include <vector>

#include "adsdk/gad_ad_size.h"
#include "adsdk/gad_request.h"
#include "kit/foundation/assert.h"
#include "kit/ui/screen.h"

namespace {

// The shared controller, held here for its owner (the game's ads, which set
// and release it); read from any thread, made and dropped on the main thread.
struct SharedInstance {
  std::mutex mutex;
  std::shared_ptr<AdmobViewController> instance;
};

SharedInstance& sharedInstance() {
  static SharedInstance shared;
  return shared;
}

// Swaps in `fresh` and returns the controller it replaces.
std::shared_ptr<AdmobViewController> replaceShared(std::shared_ptr<AdmobViewController> fresh) {
  SharedInstance& shared = sharedInstance();
  std::lock_guard<std::mutex> lock(shared.mutex);
  return std::exchange(shared.instance, std::move(fresh));
}

}  // namespace

// --- The shared instance ----------------------------------------------------------------

std::shared_ptr<AdmobViewController> AdmobViewController::shareAdmobVC() {
  SharedInstance& shared = sharedInstance();
  std::lock_guard<std::mutex> lock(shared.mutex);
  return shared.instance;
}

void AdmobViewController::setSharedEnvironment(Environment environment) {
  relaunchShared(std::move(environment));
}

std::shared_ptr<AdmobViewController> AdmobViewController::relaunchShared(Environment environment) {
  KIT_ASSERT(environment.services.runLoop.isMainThread(),
             "the shared ad controller is made on the main thread");
  replaceShared(nullptr).reset();  // the old launch ends before the new one starts
  auto fresh = create(std::move(environment));
  replaceShared(fresh);
  return fresh;
}

void AdmobViewController::releaseShared() {
  replaceShared(nullptr).reset();
}

std::shared_ptr<AdmobViewController> AdmobViewController::create(Environment environment) {
  auto controller = std::make_shared<AdmobViewController>(Token{}, std::move(environment));
  controller->init();
  return controller;
}

AdmobViewController::AdmobViewController(Token, Environment environment)
    : environment_(std::move(environment)) {}

AdmobViewController::~AdmobViewController() {
  clearAdDelegates();
  adBanner.reset();
  interstitial_timer.reset();
  interstitial_round.reset();
}

// After this no ad callback reaches the controller.
void AdmobViewController::clearAdDelegates() {
  if (adBanner)
    adBanner->setDelegate({});
  if (interstitial_timer)
    interstitial_timer->setDelegate({});
  if (interstitial_round)
    interstitial_round->setDelegate({});
}

std::weak_ptr<AdmobViewController> AdmobViewController::weakSelf() {
  return std::static_pointer_cast<AdmobViewController>(shared_from_this());
}

void AdmobViewController::init() {
  const kit::Services& services = environment_.services;
  view()->setBackgroundColor({235 / 255.0, 235 / 255.0, 235 / 255.0, 1});

  const kit::Size bannerSize =
      services.device.isPad() ? kit::Size{768, CGSizeFromGADAdSize(kGADAdSizeLeaderboard).height}
                              : CGSizeFromGADAdSize(kGADAdSizeBanner);
  adWeight = static_cast<float>(bannerSize.width);
  adHeight = static_cast<float>(bannerSize.height);

  const kit::Screen& screen = kit::Screen::main();
  widthScreen = static_cast<float>(screen.bounds().width);
  heightScreen = static_cast<float>(screen.bounds().height);
  scaleScreen = screen.scale() < 1.1 ? 1.0f : 2.0f;

  app_id = static_cast<int32_t>(services.bundle.infoValue("appStoreId").integerValue());
  supportMail = services.bundle.infoValue("supportMail").stringValue().value_or("");
  storeLookupHost_ = services.bundle.infoValue("storeLookupHost").stringValue().value_or("");

  InitVar();
  init_admob_interstitial();

  landscapeView = nullptr;
  setLandscape(0);

  _rtService = RTService::initWithAppid(app_id, supportMail, services, environment_.mailSink);
}

// --- Banner -------------------------------------------------------------------------------

void AdmobViewController::init_admob_banner(float width, float height) {
  makeBanner(width, height);
  adWeight = width;
  adHeight = height;
}

void AdmobViewController::init_admob_banner() {
  makeBanner(adWeight, adHeight);
}

void AdmobViewController::makeBanner(float width, float height) {
  adBanner =
      std::make_shared<GADBannerView>(kit::Rect{{0, 0}, {width, height}}, environment_.network);
  adBanner->setAdUnitID(banner_id);
  adBanner->setDelegate(weakSelf());
  adBanner->setRootViewController(weak_from_this());
  adBanner->loadRequest(GADRequest::request());
}

void AdmobViewController::show_admob_banner(float x, float posy, float width, float height,
                                            const std::shared_ptr<kit::View>& view) {
  if (!adBanner)
    init_admob_banner(width, height);
  adBanner->setFrame({{x, posy}, {width, height}});
  if (view)
    view->addSubview(adBanner);
}

void AdmobViewController::show_admob_banner(float x, float posy,
                                            const std::shared_ptr<kit::View>& view) {
  show_admob_banner(x, posy, adWeight, adHeight, view);
}

void AdmobViewController::show_admob_banner(const std::shared_ptr<kit::View>& view) {
  const kit::Size size = view ? view->frame().size : kit::Size{};
  float x = static_cast<float>((size.width - adWeight) * 0.5);
  float y = static_cast<float>((size.height - adHeight) * 0.5);
  if (!(x > 0))
    x = 0;
  if (!(y > 0))
    y = 0;
  show_admob_banner(x, y, view);
}

void AdmobViewController::show_admob_banner_smart(float, float, const std::shared_ptr<kit::View>&) {
}

// --- Interstitial -------------------------------------------------------------------------

void AdmobViewController::show_admob_interstitial(const std::shared_ptr<kit::ViewController>& vc) {
  if (bInApp || !interstitial_round || !interstitial_round->isReady())
    return;
  interstitial_round->presentFromRootViewController(vc);
  lastShowInerstitialAd = static_cast<long>(environment_.services.clock.now());
}

bool AdmobViewController::try_show_admob_interstitial(
    const std::shared_ptr<kit::ViewController>& vc, bool ignoreTimeInterval) {
  if (bInApp)
    return false;
  const auto now = static_cast<long>(environment_.services.clock.now());
  if (!ignoreTimeInterval && now - lastShowInerstitialAd < kInterstitialSpacing)
    return false;
  if (!admob_interstial_ready())
    return false;
  interstitial_round->presentFromRootViewController(vc);
  lastShowInerstitialAd = now;
  return true;
}

bool AdmobViewController::admob_interstial_ready() const {
  return interstitial_round && interstitial_round->isReady();
}

void AdmobViewController::init_admob_interstitial() {
  init_admob_interstitial_round();
}

void AdmobViewController::init_admob_interstitial_round() {
  interstitial_round = std::make_shared<GADInterstitial>(environment_.network);
  interstitial_round->setAdUnitID(interstitial_id);
  interstitial_round->setDelegate(weakSelf());
  interstitial_round->loadRequest(GADRequest::request());
}

// --- Removal --------------------------------------------------------------------------------

void AdmobViewController::remove_banner(const std::shared_ptr<kit::View>& view) {
  if (!view)
    return;
  std::vector<std::shared_ptr<kit::View>> banners;
  for (const auto& subview : view->subviews()) {
    if (std::dynamic_pointer_cast<GADBannerView>(subview))
      banners.push_back(subview);
  }
  for (const auto& banner : banners)
    banner->removeFromSuperview();
}

void AdmobViewController::remove_all_ads(const std::shared_ptr<kit::View>& view) {
  remove_banner(view);
  clearAdDelegates();
}

void AdmobViewController::removeAds(const std::shared_ptr<kit::View>&) {}

// --- Ad callbacks -----------------------------------------------------------------------------

void AdmobViewController::adViewDidReceiveAd(GADBannerView&) {
  environment_.services.log.write("Load banner ok!");
}

void AdmobViewController::adViewDidFailToReceiveAdWithError(GADBannerView&,
                                                            const GADRequestError& error) {
  environment_.services.log.write("Failed to receive banner with error: " +
                                  error.localizedFailureReason());
}

void AdmobViewController::interstitialDidReceiveAd(GADInterstitial&) {
  if (auto d = delegate())
    d->adMobVCDidReceiveInterstitialAd(*this);
  environment_.services.log.write("round ad ready, wait to show!");
}

void AdmobViewController::interstitialWillDismissScreen(GADInterstitial&) {
  if (auto d = delegate())
    d->adMobVCWillCloseInterstitialAd(*this);
}

void AdmobViewController::interstitialDidDismissScreen(GADInterstitial&) {
  if (auto d = delegate())
    d->adMobVCDidCloseInterstitialAd(*this);
  init_admob_interstitial_round();
}
