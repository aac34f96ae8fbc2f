#pragma once

#include <functional>
#include <memory>

#include "kit/foundation/http.h"

namespace kit {

// One GET in flight, owned by whoever started it. Destroying it cancels the
// request: its answer is never delivered, and nothing waits for the transfer
// to stop. Main thread only.
class HttpFetch {
 public:
  virtual ~HttpFetch() = default;
};

// GETs for work done while frames run (ad downloads): start() returns at
// once, and `done` runs exactly once, on the main run loop in a later pass,
// with the response (a refused URL, time-out or over-long body included),
// unless the handle was destroyed first. The request's limits hold as for
// HttpClient. Owned by the services; outlives every handle it gives out.
// Main thread only; `done` may be destroyed unrun on any thread, so it
// should hold weak references only.
class HttpFetcher {
 public:
  using Done = std::function<void(HttpResponse)>;
  virtual ~HttpFetcher() = default;
  [[nodiscard]] virtual std::unique_ptr<HttpFetch> start(const HttpRequest& request, Done done) = 0;

  // For a driver that holds its clock while an answer it needs is on the
  // way (scripted runs): blocks until some request's answer has been posted
  // to the run loop, then returns true; false after `maxSeconds` without
  // one. Call between frames, then run the run loop's posted tasks. A
  // fetcher whose answers need the caller to return (the browser's) returns
  // false at once.
  virtual bool waitForAnswer(double /*maxSeconds*/) { return false; }
};

}  // namespace kit
