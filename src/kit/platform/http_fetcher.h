#pragma once

#include <functional>

#include "kit/foundation/http.h"

namespace kit {

// Asynchronous HTTP for work done while frames run (ad downloads): fetch()
// returns at once and `done` runs later on the main thread's run loop, so no
// frame waits on the network. The browser's fetch() implements it directly;
// the desktop runs the blocking HttpClient on a worker. Dropping the fetcher
// (quitting) never waits for a transfer: late results are discarded.
// Owned by the backend. fetch() on the main thread only.
class HttpFetcher {
 public:
  virtual ~HttpFetcher() = default;
  virtual void fetch(HttpRequest request, std::function<void(HttpResponse)> done) = 0;
};

}  // namespace kit
