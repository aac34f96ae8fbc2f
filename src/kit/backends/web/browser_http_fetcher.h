#pragma once

#include <map>
#include <memory>

#include "kit/foundation/run_loop.h"
#include "kit/platform/http_fetcher.h"

namespace kit::web {

// GETs with the browser's fetch(): the page's promise settles on its own,
// and a run loop timer looks for settled requests while any is in flight,
// handing each answer over on the run loop. Time and size limits are kept
// on the page (an abort at the time limit, bytes counted as they stream);
// connect time and redirect counts are the browser's own. A downloaded SVG,
// PNG or JPEG is decoded by the page before its answer settles, so it draws
// as the resources' SVGs do (see downloaded_pictures.h). Destroying a handle
// or the fetcher aborts the request. Borrows the run loop, which
// outlives the fetcher. Main thread only.
class BrowserHttpFetcher final : public HttpFetcher {
 public:
  explicit BrowserHttpFetcher(RunLoop& runLoop);
  ~BrowserHttpFetcher() override;
  BrowserHttpFetcher(const BrowserHttpFetcher&) = delete;
  BrowserHttpFetcher& operator=(const BrowserHttpFetcher&) = delete;

  std::unique_ptr<HttpFetch> start(const HttpRequest& request, Done done) override;

 private:
  struct Flight;
  void poll();
  void cancel(int id);

  RunLoop& runLoop_;
  std::shared_ptr<BrowserHttpFetcher*> self_ = std::make_shared<BrowserHttpFetcher*>(this);
  std::map<int, Done> flights_;
  std::shared_ptr<Timer> poller_;
  int nextId_ = 1;
};

}  // namespace kit::web
