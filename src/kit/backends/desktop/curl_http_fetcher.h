#pragma once

#include <memory>

#include "kit/foundation/run_loop.h"
#include "kit/platform/http_fetcher.h"

namespace kit {

// Each GET runs the libcurl client on a thread of its own, detached, and
// posts the answer to the run loop. Destroying a handle or the fetcher never
// waits: a transfer still running finishes on its thread and is dropped.
// Borrows the run loop, which outlives the fetcher. Main thread only.
class CurlHttpFetcher final : public HttpFetcher {
 public:
  explicit CurlHttpFetcher(RunLoop& runLoop);
  ~CurlHttpFetcher() override;
  CurlHttpFetcher(const CurlHttpFetcher&) = delete;
  CurlHttpFetcher& operator=(const CurlHttpFetcher&) = delete;

  std::unique_ptr<HttpFetch> start(const HttpRequest& request, Done done) override;
  bool waitForAnswer(double maxSeconds) override;

 private:
  struct Channel;
  std::shared_ptr<Channel> channel_;
};

}  // namespace kit
