// The ad controller's counters in the preferences and its store helpers.
#include <algorithm>
#include <climits>
#include <cstdint>

#include "ads/admob_view_controller.h"
#include "ads/store_lookup_reply.h"
#include "adsdk/house_ad_network.h"
#include "kit/ui/alert_view.h"
#include "names/preference_keys.h"
#include "names/store_link.h"

namespace {

constexpr long kSecondsPerDay = 86400;
constexpr size_t kMaxLookupReplyBytes = 256 * 1024;
constexpr size_t kMaxStoreIdDigits = 20;

// A stored counter read as the platform reads text as a 32-bit number:
// clamped to its range, 0 for text that is not a number.
int intValue(const kit::Value& value) {
  const int64_t n = value.integerValue();
  return static_cast<int>(std::clamp<int64_t>(n, INT_MIN, INT_MAX));
}

bool isStoreIdentifier(const std::string& identifier) {
  return !identifier.empty() && identifier.size() <= kMaxStoreIdDigits &&
         std::all_of(identifier.begin(), identifier.end(),
                     [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

void AdmobViewController::setKeyTimes(const std::string& key, const std::string& str) {
  kit::UserDefaults& defaults = environment_.services.defaults;
  defaults.setObject(str, key);
  defaults.synchronize();
}

void AdmobViewController::setKeyTimes(const std::string& key, long keyTimes) {
  setKeyTimes(key, std::to_string(keyTimes));
}

kit::Value AdmobViewController::getStrKey(const std::string& key) const {
  return environment_.services.defaults.objectForKey(key);
}

std::string AdmobViewController::getStrKey(const std::string& key, const std::string& def) {
  const kit::Value stored = getStrKey(key);
  if (stored.isNil()) {
    setKeyTimes(key, def);
    return def;
  }
  // Anything but text or a number (a hand-edited file) reads as empty text.
  return stored.stringValue().value_or("");
}

int AdmobViewController::getKeyTimes(const std::string& key, long def) {
  return intValue(kit::Value(getStrKey(key, std::to_string(def))));
}

void AdmobViewController::InitVar() {
  const auto now = static_cast<long>(environment_.services.clock.now());
  firstOpenTime = getKeyTimes(prefkey::kFirstDownload, 0);
  if (firstOpenTime == 0) {
    setKeyTimes(prefkey::kFirstDownload, now);
    firstOpenTime = now;
  }
  // 32-bit arithmetic, wrapping rather than overflowing.
  openTimes =
      static_cast<int32_t>(static_cast<uint32_t>(getKeyTimes(prefkey::kAppOpenTimes, 0)) + 1u);
  setKeyTimes(prefkey::kAppOpenTimes, static_cast<long>(openTimes));

  const kit::Bundle& bundle = environment_.services.bundle;
  // A stored unit the network would refuse (a hand-edited file) gives way to
  // the publisher's, or the ads would stay off for good.
  const auto storedUnit = [&](const std::string& key, const std::string& infoKey) {
    const std::string publisher = bundle.infoValue(infoKey).stringValue().value_or("");
    std::string id = getStrKey(key, publisher);
    if (!isAdUnitID(id) && isAdUnitID(publisher)) {
      setKeyTimes(key, publisher);
      id = publisher;
    }
    return id;
  };
  banner_id = storedUnit(prefkey::kBannerId, "bannerAdUnitId");
  interstitial_id = storedUnit(prefkey::kInterstitialId, "interstitialAdUnitId");
  bInApp = false;
}

bool AdmobViewController::isSameDay(long date1, long date2) const {
  // The distance in unsigned arithmetic: no overflow for any pair.
  const auto a = static_cast<uint64_t>(date1), b = static_cast<uint64_t>(date2);
  const uint64_t distance = date1 >= date2 ? a - b : b - a;
  return distance < static_cast<uint64_t>(kSecondsPerDay);
}

bool AdmobViewController::onCheckVersion() {
  const kit::Services& services = environment_.services;
  const std::string local = services.bundle.infoValue("CFBundleVersion").stringValue().value_or("");

  kit::HttpRequest request;
  request.url = "http://" + storeLookupHost_ + "/lookup?id=" + std::to_string(app_id);
  request.totalTimeoutMs = storeLookupTimeoutMs_;
  request.connectTimeoutMs = std::min(request.connectTimeoutMs, storeLookupTimeoutMs_);
  request.maxBodyBytes = kMaxLookupReplyBytes;
  const kit::HttpResponse response = services.http.get(request);
  if (!response.ok || response.body.empty())
    return false;
  const std::optional<std::string> version = storeVersionFromReply(response.body);
  return version && version->compare(local) > 0;
}

void AdmobViewController::openAppWithId(const std::string& identifier,
                                        const std::shared_ptr<kit::ViewController>&) {
  const kit::Services& services = environment_.services;
  if (!isStoreIdentifier(identifier)) {
    services.log.write("not a store identifier: " + identifier);
    return;
  }
  const std::string host = services.bundle.infoValue("storeHost").stringValue().value_or("");
  services.urlOpener.openURL(storelink::regionalAppPage(host, identifier));
}

void AdmobViewController::productViewControllerDidFinish(kit::ViewController& viewController) {
  viewController.dismissViewControllerAnimated(true);
}

void AdmobViewController::messageComposeViewControllerDidFinishWithResult(
    kit::ViewController& controller, MessageComposeResult result) {
  environment_.services.log.write("send msg," + std::to_string(static_cast<int>(result)));
  if (result == MessageComposeResult::Failed) {
    auto alert = std::make_shared<kit::AlertView>("Error", "Failed to send SMS!",
                                                  std::weak_ptr<kit::AlertViewDelegate>(), "OK",
                                                  std::vector<std::string>());
    alert->show(controller.isViewLoaded() ? controller.view() : view());
  }
  dismissViewControllerAnimated(true);
}
