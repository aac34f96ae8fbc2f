#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "adsdk/ad_network.h"
#include "adsdk/gad_banner_view.h"
#include "adsdk/gad_interstitial.h"
#include "kit/foundation/services.h"
#include "kit/foundation/value.h"
#include "kit/ui/mail_compose_sink.h"
#include "kit/ui/view_controller.h"
#include "rating/rt_service.h"

class AdmobViewController;

// Told about the interstitial's life; every operation is optional (empty).
class AdmobViewControllerDelegate {
 public:
  virtual ~AdmobViewControllerDelegate() = default;
  virtual void adMobVCDidReceiveInterstitialAd(AdmobViewController& /*controller*/) {}
  virtual void adMobVCWillCloseInterstitialAd(AdmobViewController& /*controller*/) {}
  virtual void adMobVCDidCloseInterstitialAd(AdmobViewController& /*controller*/) {}
};

// How a text-message composer ended (the platform's values).
enum class MessageComposeResult { Cancelled = 0, Sent = 1, Failed = 2 };

// The ad controller: one per process (shareAdmobVC). It holds the ad-unit
// identifiers, places the single banner in a host view, keeps an
// interstitial loaded and shows it on request no more often than every 31
// seconds (unless told to ignore that), loads a fresh one after each
// dismissal, and owns the rating service. It also keeps the launch counters
// in the preferences and offers a few store helpers. Its own view is never
// shown; it is the banner's root view controller. The view lifecycle is the
// base class's.
//
// Made on an Environment of borrowed services (which outlive it) and a weak
// ad network. Besides the shared instance, tests build their own with
// create(). Main thread only; shareAdmobVC() may be read from any thread,
// but the shared controller is only ever created on the main thread (the
// environment's run loop's thread; checked in debug builds).
class AdmobViewController final : public kit::ViewController,
                                  public GADBannerViewDelegate,
                                  public GADInterstitialDelegate {
  struct Token {};

 public:
  struct Environment {
    kit::Services services;
    std::weak_ptr<AdNetwork> network;
    kit::MailSink& mailSink;  // where the rating service's feedback mail goes
  };

  // The least time, in seconds, between two interstitials shown by
  // try_show_admob_interstitial when the spacing is not ignored.
  static constexpr long kInterstitialSpacing = 31;
  static constexpr int64_t kStoreLookupTimeoutMs = 10000;

  // --- The shared instance -----------------------------------------------------------
  // The shared controller (thread-safe to read); nullptr when none was set.
  // Its owner (the game's ads) makes it with setSharedEnvironment, which
  // creates it at once on the main thread, and drops it with releaseShared.
  static std::shared_ptr<AdmobViewController> shareAdmobVC();
  static void setSharedEnvironment(Environment environment);
  // Drops the shared controller and makes a fresh one on `environment`, as a
  // new launch of the game would (scripted relaunches).
  static std::shared_ptr<AdmobViewController> relaunchShared(Environment environment);
  // Drops the shared controller and its environment (at the end of the
  // process, before the services it borrows go); shareAdmobVC then answers
  // nullptr.
  static void releaseShared();

  // A fresh controller after init, not shared.
  static std::shared_ptr<AdmobViewController> create(Environment environment);
  // Use create().
  AdmobViewController(Token, Environment environment);
  ~AdmobViewController() override;

  // --- Fields, in declaration order ----------------------------------------------
  int32_t app_id = 0;      // the app's store identifier
  int appType = 0;         // declared, never used
  int32_t openTimes = 0;   // launches so far, this one included
  long firstOpenTime = 0;  // the first launch, seconds since 1970
  std::string banner_id;
  std::string interstitial_id;
  std::string baidu_appid;                              // declared, never set
  std::shared_ptr<GADBannerView> adBanner;              // made by the first placement
  std::shared_ptr<GADInterstitial> interstitial_timer;  // declared, never made; only cleared
  std::shared_ptr<GADInterstitial> interstitial_round;  // the preloaded interstitial
  float adWeight = 0;                                   // the banner's width (the name is historic)
  float adHeight = 0;
  float widthScreen = 0;
  float heightScreen = 0;
  float scaleScreen = 0;
  int deviceType = 0;  // declared, never written
  std::string supportMail;
  std::shared_ptr<kit::View> landscapeView;  // set to nil in init, not otherwise used
  long lastShowInerstitialAd = 0;            // the last interstitial shown, seconds since 1970
  bool bInApp = false;                       // YES would stop every interstitial; nothing sets it

  // --- Properties --------------------------------------------------------------------
  // Declared; the controller itself never uses it.
  std::shared_ptr<kit::ViewController> rootViewController() const { return _rootViewController; }
  void setRootViewController(std::shared_ptr<kit::ViewController> controller) {
    _rootViewController = std::move(controller);
  }
  int landscape() const { return _landscape; }
  void setLandscape(int landscape) { _landscape = landscape; }
  std::shared_ptr<AdmobViewControllerDelegate> delegate() const { return _delegate.lock(); }
  void setDelegate(std::weak_ptr<AdmobViewControllerDelegate> delegate) {
    _delegate = std::move(delegate);
  }
  const std::shared_ptr<RTService>& rtService() const { return _rtService; }
  void setRtService(std::shared_ptr<RTService> service) { _rtService = std::move(service); }

  // --- Banner ------------------------------------------------------------------------
  // Shows the banner at (x, posy), width × height, in `view`; the first call
  // makes the banner with that size.
  void show_admob_banner(float x, float posy, float width, float height,
                         const std::shared_ptr<kit::View>& view);
  // The same with the stored banner size.
  void show_admob_banner(float x, float posy, const std::shared_ptr<kit::View>& view);
  // Centred in `view`, never at a negative origin.
  void show_admob_banner(const std::shared_ptr<kit::View>& view);
  // Kept on purpose as an empty operation.
  void show_admob_banner_smart(float x, float posy, const std::shared_ptr<kit::View>& view);
  // A new banner of width × height asking for its ad; stores the size.
  void init_admob_banner(float width, float height);
  // A new banner of the stored size asking for its ad.
  void init_admob_banner();

  // --- Interstitial ------------------------------------------------------------------
  // Shows the interstitial from `vc` if one is ready; no spacing check.
  void show_admob_interstitial(const std::shared_ptr<kit::ViewController>& vc);
  // Shows the interstitial from `vc` when one is ready and the spacing allows
  // (or is ignored); true when shown.
  bool try_show_admob_interstitial(const std::shared_ptr<kit::ViewController>& vc,
                                   bool ignoreTimeInterval);
  bool admob_interstial_ready() const;
  void init_admob_interstitial();
  // A fresh interstitial that starts loading.
  void init_admob_interstitial_round();

  // --- Removal -----------------------------------------------------------------------
  // Takes every banner view (anyone's) out of `view`; the banner is kept.
  void remove_banner(const std::shared_ptr<kit::View>& view);
  // remove_banner, then no more callbacks from the ads (no interstitial is
  // loaded after the current one).
  void remove_all_ads(const std::shared_ptr<kit::View>& view);
  // Kept on purpose as an empty operation.
  void removeAds(const std::shared_ptr<kit::View>& sender);

  // --- Ad callbacks ------------------------------------------------------------------
  void adViewDidReceiveAd(GADBannerView& bannerView) override;
  void adViewDidFailToReceiveAdWithError(GADBannerView& bannerView,
                                         const GADRequestError& error) override;
  void interstitialDidReceiveAd(GADInterstitial& ad) override;
  void interstitialWillDismissScreen(GADInterstitial& ad) override;
  // Tells the delegate, then loads the next interstitial.
  void interstitialDidDismissScreen(GADInterstitial& ad) override;

  // --- Counters in the preferences (stored as text) ----------------------------------
  void setKeyTimes(const std::string& key, const std::string& str);
  // As decimal text.
  void setKeyTimes(const std::string& key, long keyTimes);
  // The stored value, or nil.
  kit::Value getStrKey(const std::string& key) const;
  // The stored value as text; when there is none, stores `def` and answers it.
  std::string getStrKey(const std::string& key, const std::string& def);
  // The stored number (0 for text that is not one); when there is none,
  // stores `def` as text and answers it.
  int getKeyTimes(const std::string& key, long def);
  // The launch's bookkeeping: first launch time, launch count, ad units.
  void InitVar();
  // Whether two times lie less than 24 hours apart.
  bool isSameDay(long date1, long date2) const;

  // --- Store helpers -----------------------------------------------------------------
  // Whether the store lists a version whose text sorts after this build's
  // (a plain text comparison: "1.10" is older than "1.9"). Blocks for the
  // round trip, at most the lookup time limit; false on any failure.
  bool onCheckVersion();
  // The store's lookup host ("host" or "host:port"); from the publisher
  // config unless set.
  void setStoreLookupHost(std::string host) { storeLookupHost_ = std::move(host); }
  void setStoreLookupTimeout(int64_t milliseconds) { storeLookupTimeoutMs_ = milliseconds; }
  // Opens the store page of the app `identifier` (decimal digits). There is
  // no in-app product page here, so the store link is opened and `viewCtrl`
  // is not used.
  void openAppWithId(const std::string& identifier,
                     const std::shared_ptr<kit::ViewController>& viewCtrl);
  void productViewControllerDidFinish(kit::ViewController& viewController);
  // Logs the result; a failure shows an alert. Then dismisses whatever this
  // controller presents.
  void messageComposeViewControllerDidFinishWithResult(kit::ViewController& controller,
                                                       MessageComposeResult result);

 private:
  void init();
  void clearAdDelegates();
  std::weak_ptr<AdmobViewController> weakSelf();
  // A new banner view of width × height in adBanner, asking for its ad.
  void makeBanner(float width, float height);

  std::shared_ptr<kit::ViewController> _rootViewController;
  int _landscape = 0;
  std::weak_ptr<AdmobViewControllerDelegate> _delegate;
  std::shared_ptr<RTService> _rtService;

  Environment environment_;
  std::string storeLookupHost_;
  int64_t storeLookupTimeoutMs_ = kStoreLookupTimeoutMs;
};
