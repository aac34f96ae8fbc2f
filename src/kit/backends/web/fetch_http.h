#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

#include "kit/platform/http_fetcher.h"

namespace kit {
class RunLoop;
}

namespace kit::web {

// HTTP through the browser's fetch(): asynchronous, no threads. Each request
// is bounded by its total timeout (an AbortController) and its body size;
// only http and https URLs are fetched. Answers are posted to the run loop
// given to deliverOn() (so they arrive in a frame's run-loop pass, never
// inside a browser callback); dropping the fetcher forgets requests in
// flight, whose late answers are discarded. Main thread only.
class FetchHttp final : public HttpFetcher {
 public:
  FetchHttp();
  ~FetchHttp() override;
  FetchHttp(const FetchHttp&) = delete;
  FetchHttp& operator=(const FetchHttp&) = delete;

  void fetch(HttpRequest request, std::function<void(HttpResponse)> done) override;
  // Borrowed; must outlive the fetcher or be replaced first.
  void deliverOn(RunLoop& loop) { loop_ = &loop; }

  // From the JavaScript side: the answer to request `id`.
  void finished(int id, HttpResponse response);

 private:
  RunLoop* loop_ = nullptr;
  int nextId_ = 1;
  std::map<int, std::function<void(HttpResponse)>> pending_;
};

}  // namespace kit::web
