#include "kit/backends/desktop/curl_http_fetcher.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "kit/backends/desktop/curl_http_client.h"

namespace kit {

// The way from the transfer threads to the run loop, closed when the
// fetcher goes (the run loop may go right after it).
struct CurlHttpFetcher::Channel {
  std::mutex mutex;
  std::condition_variable posted;
  RunLoop* runLoop = nullptr;
  bool unclaimed = false;  // an answer was posted since the last wait
};

namespace {

// Lives as long as its handle; answers check it is still there.
struct Fetch final : HttpFetch {
  std::shared_ptr<char> alive = std::make_shared<char>();
};

}  // namespace

CurlHttpFetcher::CurlHttpFetcher(RunLoop& runLoop) : channel_(std::make_shared<Channel>()) {
  channel_->runLoop = &runLoop;
}

CurlHttpFetcher::~CurlHttpFetcher() {
  std::lock_guard<std::mutex> lock(channel_->mutex);
  channel_->runLoop = nullptr;
}

std::unique_ptr<HttpFetch> CurlHttpFetcher::start(const HttpRequest& request, Done done) {
  auto fetch = std::make_unique<Fetch>();
  std::weak_ptr<char> alive = fetch->alive;
  auto deliver = [channel = channel_, alive](Done& done, HttpResponse response) {
    std::lock_guard<std::mutex> lock(channel->mutex);
    if (!channel->runLoop)
      return;
    channel->runLoop->post(
        [alive, done = std::move(done), response = std::move(response)]() mutable {
          if (!alive.expired())
            done(std::move(response));
        });
    channel->unclaimed = true;
    channel->posted.notify_all();
  };
  try {
    std::thread([request, done, deliver]() mutable {
      deliver(done, CurlHttpClient().get(request));
    }).detach();
  } catch (const std::system_error& e) {
    HttpResponse response;
    response.error = std::string("could not start a transfer: ") + e.what();
    deliver(done, std::move(response));
  }
  return fetch;
}

bool CurlHttpFetcher::waitForAnswer(double maxSeconds) {
  std::unique_lock<std::mutex> lock(channel_->mutex);
  const bool answered = channel_->posted.wait_for(lock, std::chrono::duration<double>(maxSeconds),
                                                  [this] { return channel_->unclaimed; });
  channel_->unclaimed = false;
  return answered;
}

}  // namespace kit
