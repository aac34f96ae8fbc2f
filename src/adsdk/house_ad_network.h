#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "adsdk/ad_network.h"
#include "adsdk/creative_source.h"
#include "kit/foundation/services.h"

// Whether `id` is an ad unit the network serves: "ca-app-pub-" + 16 digits
// + "/" + 10 digits.
bool isAdUnitID(const std::string& id);

// The network behind the stand-in SDK: house ads for the game itself, from
// the bundled ads/ folder of the resources or, when the publisher config
// names an "adServerUrl", from that server. Served manifests and pictures
// download through the services' HttpFetcher; bundled creatives are read,
// and every picture drawn, on a worker thread (in place where no thread can
// start). Each answer is delivered on the main run loop once its delay
// (0.5 s of the run loop's clock by default) has passed, so a frame never
// waits for an ad.
//
// For tests and scripted runs the network can be told how to answer the
// next requests (fill, fail, or slow), and made deterministic: each answer
// then comes at exactly its delay, whenever the downloads land. Creatives
// are read and drawn in place, and whoever drives the clock calls
// awaitDueAnswers() before each frame, which holds the frame until the
// downloads of the answers due in it are in.
//
// Borrows the services (which outlive it); owned by whoever sets the ads up
// (views hold it weakly). Destroying it drops pending answers unrun and never
// waits: a download in flight is cancelled, a load in flight finishes on the
// worker and is thrown away (quitting does not wait for a download). Main
// thread only (checked in debug builds).
class HouseAdNetwork final : public AdNetwork {
 public:
  enum class Answer { Fill, Fail, Slow };

  struct Options {
    // The ad server's manifest URL; empty for the bundled ads.
    std::string serverURL;
    // Where the bundled ads are (manifest.json and its pictures at the top);
    // null for ads/ in the bundle's resources. Outlives the network.
    const kit::ResourceStore* bundledAds = nullptr;
    // The longest each request to the ad server may take.
    int64_t serverTimeoutMs = 6000;
    double answerDelaySeconds = 0.5;
    bool deterministic = false;
  };

  // The longest awaitDueAnswers() holds a frame for downloads; a request
  // whose download is still out then fails with a timeout.
  static constexpr double kDeterministicWaitSeconds = 30;

  HouseAdNetwork(const kit::Services& services, Options options);
  ~HouseAdNetwork() override;
  HouseAdNetwork(const HouseAdNetwork&) = delete;
  HouseAdNetwork& operator=(const HouseAdNetwork&) = delete;

  // The options the publisher config asks for ("adServerUrl").
  static Options optionsFromBundle(const kit::Bundle& bundle);

  // How the next requests are answered: with an ad (after the usual delay),
  // with a no-fill error, or with an ad after `slowSeconds`.
  void setAnswer(Answer answer, double slowSeconds = 0);
  Answer answer() const { return answer_; }

  void requestAd(const AdSlot& slot, Completion done) override;
  // For a deterministic network, before the frame at the clock's present
  // time runs: waits for the downloads of the answers due by then, handing
  // them over on the run loop. Does nothing otherwise. Call between frames,
  // never from a callback.
  void awaitDueAnswers();
  void openClickThrough(const AdCreative& creative) override;
  void recordImpression(AdFormat format, const AdCreative& creative) override;

  // Counts since the network was made, for reports and dumps.
  int impressions(AdFormat format) const;
  int clicks() const { return clicks_; }
  // Requests whose answer has not been delivered yet.
  size_t pendingRequests() const;

 private:
  struct Shared;
  struct Worker;
  struct Pending;

  using LoadJob = std::function<AdAnswer(std::vector<std::string>& warnings)>;

  // Runs `job` on the worker (in place when deterministic); its answer is
  // delivered once due.
  void load(uint64_t id, LoadJob job);
  // Files an answer known on the main thread, delivered once due.
  void finish(uint64_t id, AdAnswer answer);
  void startFetch(uint64_t id, const std::string& url, size_t maxBytes,
                  std::function<void(kit::HttpResponse)> then);
  void fetchManifest(uint64_t id, const AdSlot& slot, size_t sequence);
  void fetchPicture(uint64_t id, const AdSlot& slot, size_t sequence, std::string manifest);
  void deliverIfReady(uint64_t id);
  // Debug builds stop a call from any thread but the run loop's.
  void checkMainThread() const;

  kit::Services services_;
  Options options_;
  std::shared_ptr<Shared> shared_;
  std::unique_ptr<Worker> worker_;
  std::shared_ptr<CreativeSource> bundled_;  // read by loads, when not served
  std::optional<ServedCreatives> server_;    // when served
  Answer answer_ = Answer::Fill;
  double slowSeconds_ = 0;
  uint64_t nextId_ = 1;
  std::map<AdFormat, uint64_t> sequence_;
  std::map<AdFormat, int> impressions_;
  int clicks_ = 0;
};
