#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "adsdk/house_ad_network.h"
#include "app/host_services.h"
#include "kit/foundation/services.h"
#include "kit/foundation/value.h"
#include "kit/ui/mail_compose_sink.h"

// The ads and the rating service as the host reaches them: the house ad
// network and the mail sink the shared ad controller is made with, and the
// host's calls answered through shareAdmobVC(). start() wires them to the
// game's services; until then, and after stop(), the host's calls do
// nothing. The services are borrowed: stop() (or destruction) must come
// before they go. A stop() and a start() on a new launch's services make the
// shared ad controller afresh, as a new process would; the mail sink stays.
// Main thread only.
class GameAds final : public HostServices {
 public:
  // Makes the mail sink of a real (unscripted) run: the backend's hand-off to
  // the mail program, chosen by the program. Without one, real runs record
  // mail as scripted runs do.
  using MailSinkFactory = std::function<std::unique_ptr<kit::MailSink>(const kit::Services&)>;
  explicit GameAds(MailSinkFactory realMail = {}) : realMail_(std::move(realMail)) {}
  ~GameAds() override;
  GameAds(const GameAds&) = delete;
  GameAds& operator=(const GameAds&) = delete;

  // Sets the network up (ads from the publisher's ad server or the bundled
  // ones) and makes it, with a mail sink, the shared ad controller's
  // environment. A scripted run answers ad requests deterministically and
  // records mail instead of handing it to the desktop. Ignored while started.
  void start(const kit::Services& services, bool scripted);
  // Drops the shared ad controller and the network (a load in flight is
  // left to finish on its own and dropped).
  void stop();

  void askRatingService(ViewController& controller) override;
  void placeBanner(float x, float posy, float width, float height,
                   const std::shared_ptr<kit::View>& view) override;
  void tryShowInterstitial(ViewController& controller, bool ignoreTimeInterval) override;

  // Null before start().
  HouseAdNetwork* network() const { return network_.get(); }
  // The mail a scripted run composed (and whether mail counts as
  // available); null before start() and for the desktop's mail.
  kit::RecordingMailSink* recordedMail() const {
    return dynamic_cast<kit::RecordingMailSink*>(mailSink_.get());
  }
  // Closes the interstitial on screen; false when none is.
  [[nodiscard]] bool closeInterstitial();
  // What the ads are doing, for dumps: the banner (null before one is
  // placed: its frame in window points, whether an ad arrived and which),
  // the interstitial (ready, showing, shown this launch, the last time
  // shown) and the launch counters.
  kit::Value describe() const;

 private:
  std::shared_ptr<HouseAdNetwork> network_;
  MailSinkFactory realMail_;
  std::unique_ptr<kit::MailSink> mailSink_;
  bool startedBefore_ = false;
};
