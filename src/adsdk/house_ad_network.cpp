#include "adsdk/house_ad_network.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "adsdk/creative_source.h"
#include "kit/foundation/assert.h"
#include "kit/foundation/graphics.h"
#include "kit/ui/svg_image.h"

bool isAdUnitID(const std::string& id) {
  constexpr std::string_view kPrefix = "ca-app-pub-";
  if (id.size() != kPrefix.size() + 16 + 1 + 10 || id.compare(0, kPrefix.size(), kPrefix) != 0)
    return false;
  for (size_t i = kPrefix.size(); i < id.size(); ++i) {
    const bool slash = i == kPrefix.size() + 16;
    if (slash ? id[i] != '/' : (id[i] < '0' || id[i] > '9'))
      return false;
  }
  return true;
}

namespace {

bool isUsableSize(kit::Size size) {
  return std::isfinite(size.width) && std::isfinite(size.height) && size.width >= 1 &&
         size.height >= 1;
}

AdAnswer failure(GADErrorCode code, std::string reason) {
  return {std::nullopt, GADRequestError(code, std::move(reason))};
}

// What the worker hands back to the main thread.
struct Loaded {
  AdAnswer answer;
  std::vector<std::string> warnings;
};

}  // namespace

struct HouseAdNetwork::Pending {
  AdFormat format = AdFormat::Banner;
  Completion done;
  std::shared_ptr<kit::Timer> timer;
  std::optional<AdAnswer> answer;  // known at once (a refused request), or taken from finished
  bool due = false;                // the answer's delay has passed
  std::unique_ptr<kit::HttpFetch> fetch;  // a served download in flight
};

// State reached from timers, posted tasks and the worker. `owner` is valid
// whenever a main-thread task can lock this (the network holds the only
// lasting reference and goes on the main thread).
struct HouseAdNetwork::Shared {
  HouseAdNetwork* owner = nullptr;
  std::map<uint64_t, Pending> pending;  // main thread only

  std::mutex mutex;  // guards finished and closed
  std::map<uint64_t, Loaded> finished;
  bool closed = false;  // the network is gone: loads are dropped
};

// One thread that reads and draws creatives, one request at a time. Queued
// loads are dropped when it stops; the one in flight is left to finish on its
// own (the job owns what it uses), so stopping never waits for it.
struct HouseAdNetwork::Worker {
  struct State {
    explicit State(std::shared_ptr<kit::Graphics> g) : graphics(std::move(g)) {}
    // What pictures are drawn with, kept alive while a load may be in flight.
    std::shared_ptr<kit::Graphics> graphics;
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> jobs;
    bool stop = false;
  };

  Worker(bool inPlace, std::shared_ptr<kit::Graphics> graphics)
      : state(std::make_shared<State>(std::move(graphics))), inPlace(inPlace) {}
  ~Worker() {
    {
      std::lock_guard<std::mutex> lock(state->mutex);
      state->stop = true;
      state->jobs.clear();
    }
    state->wake.notify_all();
    if (thread.joinable())
      thread.detach();
  }

  void post(std::function<void()> job) {
    {
      std::lock_guard<std::mutex> lock(state->mutex);
      if (!inPlace) {
        state->jobs.push_back(std::move(job));
        try {
          if (!thread.joinable())
            thread = std::thread([s = state] { run(*s); });
          state->wake.notify_one();
          return;
        } catch (const std::system_error&) {
          // A platform without threads (the browser): from now on creatives
          // load where they are asked for, and the answers still wait
          // for their delay on the run loop.
          inPlace = true;
          job = std::move(state->jobs.back());
          state->jobs.clear();
        }
      }
    }
    kit::Graphics::ThreadUse use(state->graphics);
    job();
  }

  static void run(State& s) {
    kit::Graphics::ThreadUse use(s.graphics);
    for (;;) {
      std::function<void()> job;
      {
        std::unique_lock<std::mutex> lock(s.mutex);
        s.wake.wait(lock, [&s] { return s.stop || !s.jobs.empty(); });
        if (s.stop) {
          kit::releaseSvgThreadState();
          return;
        }
        job = std::move(s.jobs.front());
        s.jobs.pop_front();
      }
      job();
    }
  }

  std::shared_ptr<State> state;
  std::thread thread;
  bool inPlace;
};

void HouseAdNetwork::checkMainThread() const {
  KIT_ASSERT(services_.runLoop.isMainThread(), "the ad network is used on the main thread only");
}

HouseAdNetwork::HouseAdNetwork(const kit::Services& services, Options options)
    : services_(services), options_(std::move(options)), shared_(std::make_shared<Shared>()) {
  shared_->owner = this;
  if (options_.serverURL.empty()) {
    bundled_ = options_.bundledAds
                   ? std::make_shared<BundledCreatives>(*options_.bundledAds, "")
                   : std::make_shared<BundledCreatives>(services_.bundle.resources(), "ads");
  } else {
    server_.emplace(options_.serverURL, options_.serverTimeoutMs);
  }
  worker_ =
      std::make_unique<Worker>(options_.deterministic, services_.graphics.weak_from_this().lock());
}

HouseAdNetwork::~HouseAdNetwork() {
  {
    // A load finishing from now on no longer reaches the run loop, which may
    // go with the services once the network is gone.
    std::lock_guard<std::mutex> lock(shared_->mutex);
    shared_->closed = true;
  }
  worker_.reset();
  shared_->owner = nullptr;
  for (auto& [id, pending] : shared_->pending) {
    if (pending.timer)
      pending.timer->invalidate();
    pending.fetch.reset();
  }
}

HouseAdNetwork::Options HouseAdNetwork::optionsFromBundle(const kit::Bundle& bundle) {
  Options options;
  options.serverURL = bundle.infoValue("adServerUrl").stringValue().value_or("");
  return options;
}

void HouseAdNetwork::setAnswer(Answer answer, double slowSeconds) {
  answer_ = answer;
  slowSeconds_ = std::isfinite(slowSeconds) ? std::max(slowSeconds, 0.0) : 0.0;
}

void HouseAdNetwork::requestAd(const AdSlot& slot, Completion done) {
  checkMainThread();
  const uint64_t id = nextId_++;
  Pending pending;
  std::optional<size_t> sequence;  // of the creative to load, when one is
  pending.format = slot.format;
  pending.done = std::move(done);
  double delay = options_.answerDelaySeconds;
  if (!isAdUnitID(slot.adUnitID)) {
    pending.answer = failure(GADErrorCode::InvalidRequest,
                             "Invalid request: \"" + slot.adUnitID + "\" is not an ad unit ID");
  } else if (!isUsableSize(slot.size)) {
    pending.answer = failure(GADErrorCode::InvalidRequest, "Invalid request: the ad has no size");
  } else if (answer_ == Answer::Fail) {
    pending.answer = failure(GADErrorCode::NoFill, "Request Error: No ad to show.");
  } else {
    if (answer_ == Answer::Slow)
      delay = slowSeconds_;
    sequence = sequence_[slot.format]++;
  }
  std::weak_ptr<Shared> weak = shared_;
  pending.timer = services_.runLoop.scheduledTimer(
      std::max(delay, 0.0),
      [weak, id] {
        auto s = weak.lock();
        if (!s || !s->owner)
          return;
        if (auto it = s->pending.find(id); it != s->pending.end())
          it->second.due = true;
        s->owner->deliverIfReady(id);
      },
      false);
  shared_->pending.emplace(id, std::move(pending));
  if (!sequence)
    return;
  if (server_)
    fetchManifest(id, slot, *sequence);
  else
    load(id, [source = bundled_, slot, sequence = *sequence](std::vector<std::string>& warnings) {
      return loadCreative(*source, slot, sequence, warnings);
    });
}

void HouseAdNetwork::load(uint64_t id, LoadJob job) {
  std::shared_ptr<Shared> shared = shared_;
  kit::RunLoop& runLoop = services_.runLoop;
  worker_->post([shared, &runLoop, id, job = std::move(job)] {
    Loaded loaded;
    loaded.answer = job(loaded.warnings);
    std::weak_ptr<Shared> weak = shared;
    std::lock_guard<std::mutex> lock(shared->mutex);
    if (shared->closed)
      return;
    shared->finished[id] = std::move(loaded);
    runLoop.post([weak, id] {
      if (auto s = weak.lock(); s && s->owner)
        s->owner->deliverIfReady(id);
    });
  });
}

void HouseAdNetwork::finish(uint64_t id, AdAnswer answer) {
  {
    std::lock_guard<std::mutex> lock(shared_->mutex);
    shared_->finished[id] = Loaded{std::move(answer), {}};
  }
  deliverIfReady(id);
}

void HouseAdNetwork::startFetch(uint64_t id, const std::string& url, size_t maxBytes,
                                std::function<void(kit::HttpResponse)> then) {
  std::weak_ptr<Shared> weak = shared_;
  std::unique_ptr<kit::HttpFetch> fetch =
      services_.fetcher.start(server_->request(url, maxBytes),
                              [weak, id, then = std::move(then)](kit::HttpResponse response) {
                                auto s = weak.lock();
                                if (!s || !s->owner)
                                  return;
                                if (auto it = s->pending.find(id); it != s->pending.end())
                                  it->second.fetch.reset();
                                then(std::move(response));
                              });
  if (auto it = shared_->pending.find(id); it != shared_->pending.end())
    it->second.fetch = std::move(fetch);
}

// The manifest and the chosen picture download on the fetcher, answering on
// the run loop; the picture is drawn on the worker (in place when
// deterministic), which then delivers as any load does.
void HouseAdNetwork::fetchManifest(uint64_t id, const AdSlot& slot, size_t sequence) {
  const std::string url = server_->manifestURL();
  startFetch(id, url, CreativeSource::kMaxManifestBytes,
             [this, id, slot, sequence, url](kit::HttpResponse response) {
               if (!response.ok)
                 return finish(id, ServedCreatives::failure(url, response));
               fetchPicture(id, slot, sequence, std::move(response.body));
             });
}

void HouseAdNetwork::fetchPicture(uint64_t id, const AdSlot& slot, size_t sequence,
                                  std::string manifest) {
  const std::optional<std::string> file = pictureToLoad(manifest, slot, sequence);
  AdAnswer refused;
  const std::optional<std::string> url = file ? server_->pictureURL(*file, refused) : std::nullopt;
  if (file && !url)
    return finish(id, std::move(refused));
  if (!url) {
    // Broken or without an ad of the format: the load says why.
    return load(
        id, [slot, sequence, manifest = std::move(manifest)](std::vector<std::string>& warnings) {
          FetchedCreatives fetched(manifest, {}, {});
          return loadCreative(fetched, slot, sequence, warnings);
        });
  }
  startFetch(id, *url, CreativeSource::kMaxPictureBytes,
             [this, id, slot, sequence, manifest = std::move(manifest), file = *file,
              url = *url](kit::HttpResponse response) mutable {
               if (!response.ok)
                 return finish(id, ServedCreatives::failure(url, response));
               load(id, [slot, sequence, manifest = std::move(manifest), file = std::move(file),
                         bytes = std::move(response.body)](std::vector<std::string>& warnings) {
                 FetchedCreatives fetched(manifest, file, bytes);
                 return loadCreative(fetched, slot, sequence, warnings);
               });
             });
}

void HouseAdNetwork::awaitDueAnswers() {
  checkMainThread();
  if (!options_.deterministic)
    return;
  const int64_t now = services_.runLoop.clock().monotonicNanos();
  const auto downloadDue = [this, now] {
    return std::any_of(shared_->pending.begin(), shared_->pending.end(), [now](const auto& entry) {
      const Pending& p = entry.second;
      return p.fetch && p.timer && p.timer->isValid() && p.timer->fireDate() <= now;
    });
  };
  const auto end =
      std::chrono::steady_clock::now() + std::chrono::duration<double>(kDeterministicWaitSeconds);
  while (downloadDue()) {
    const std::chrono::duration<double> left = end - std::chrono::steady_clock::now();
    if (left.count() <= 0 || !services_.fetcher.waitForAnswer(left.count()))
      return;  // the request fails with a timeout when it is due
    services_.runLoop.runPosted();
  }
}

void HouseAdNetwork::deliverIfReady(uint64_t id) {
  checkMainThread();
  auto it = shared_->pending.find(id);
  if (it == shared_->pending.end()) {
    // Answered already: drop the late load.
    std::lock_guard<std::mutex> lock(shared_->mutex);
    shared_->finished.erase(id);
    return;
  }
  Pending& pending = it->second;
  if (!pending.due)
    return;
  if (!pending.answer) {
    std::lock_guard<std::mutex> lock(shared_->mutex);
    auto loaded = shared_->finished.find(id);
    if (loaded != shared_->finished.end()) {
      for (const std::string& line : loaded->second.warnings)
        services_.log.write(line);
      pending.answer = std::move(loaded->second.answer);
      shared_->finished.erase(loaded);
    } else if (options_.deterministic) {
      pending.answer = failure(GADErrorCode::Timeout, "Request Error: the ad took too long.");
    } else {
      return;  // the worker's post brings it
    }
  }
  Completion done = std::move(pending.done);
  const AdAnswer answer = std::move(*pending.answer);
  // Interstitials tell nobody of a failure; the log does.
  if (pending.format == AdFormat::Interstitial && answer.error)
    services_.log.write("Interstitial ad not loaded: " + answer.error->localizedFailureReason());
  if (pending.timer)
    pending.timer->invalidate();
  shared_->pending.erase(it);
  if (done)
    done(answer);
}

void HouseAdNetwork::openClickThrough(const AdCreative& creative) {
  checkMainThread();
  ++clicks_;
  if (!services_.urlOpener.openURL(creative.clickURL))
    services_.log.write("ad page not opened: " + creative.clickURL);
}

void HouseAdNetwork::recordImpression(AdFormat format, const AdCreative&) {
  checkMainThread();
  ++impressions_[format];
}

int HouseAdNetwork::impressions(AdFormat format) const {
  auto it = impressions_.find(format);
  return it == impressions_.end() ? 0 : it->second;
}

size_t HouseAdNetwork::pendingRequests() const {
  return shared_->pending.size();
}
