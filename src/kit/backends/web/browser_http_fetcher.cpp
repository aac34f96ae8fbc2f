#include "kit/backends/web/browser_http_fetcher.h"

#include <emscripten/emscripten.h>

#include <string>
#include <utility>
#include <vector>

#include "kit/backends/web/downloaded_pictures.h"
#include "kit/backends/web/js_bytes.h"
#include "kit/foundation/strings.h"

// clang-format off
EM_JS(void, tl_fetch_start, (int id, const char* url, double timeoutMs, double maxBytes), {
  const fetches = Module.twinlanesFetches || (Module.twinlanesFetches = new Map());
  const controller = new AbortController();
  const entry = {controller, settled: false, ok: false, status: 0, body: null, error: ""};
  fetches.set(id, entry);
  let timedOut = false;
  const timer = setTimeout(() => { timedOut = true; controller.abort(); }, timeoutMs);
  const settle = (ok, error) => {
    if (entry.settled) return;
    clearTimeout(timer);
    entry.settled = true;
    entry.ok = ok;
    entry.error = error;
  };
  // The page draws only pictures it has decoded (decoding is asynchronous),
  // so a downloaded SVG, PNG or JPEG is decoded before it is handed over, as
  // the resources' SVGs are at start.
  const preloadSvg = async (body) => {
    if (typeof Image === "undefined" || !Module.twinlanesSvgs) return;
    const text = new TextDecoder().decode(body);
    if (!text.substring(0, 1024).includes("<svg") || Module.twinlanesSvgs.has(text)) return;
    const image = new Image();
    image.src = URL.createObjectURL(new Blob([text], {type: "image/svg+xml"}));
    try {
      await image.decode();
      Module.twinlanesSvgs.set(text, image);
    } catch (e) {
      // Not drawable: the ad fails when it is drawn, saying so.
    }
  };
  const read = async (response) => {
    entry.status = response.status;
    const chunks = [];
    let size = 0;
    if (response.body) {
      const reader = response.body.getReader();
      for (;;) {
        const part = await reader.read();
        if (part.done) break;
        size += part.value.length;
        if (size > maxBytes) {
          settle(false, "reply larger than " + maxBytes + " bytes");
          controller.abort();
          return;
        }
        chunks.push(part.value);
      }
    }
    const body = new Uint8Array(size);
    let at = 0;
    for (const chunk of chunks) { body.set(chunk, at); at += chunk.length; }
    entry.body = body;
    if (response.ok) await preloadSvg(body);
    if (response.ok && Module.twinlanesPictures) await Module.twinlanesPictures.add(body);
    if (response.ok) settle(true, "");
    else settle(false, "HTTP status " + response.status);
  };
  fetch(UTF8ToString(url), {signal: controller.signal, credentials: "omit", cache: "no-store"})
    .then(read)
    .catch((e) => settle(false, timedOut ? "timed out after " + timeoutMs + " ms"
                                         : String((e && e.message) || e)));
});

EM_JS(void, tl_fetch_cancel, (int id), {
  const fetches = Module.twinlanesFetches;
  const entry = fetches && fetches.get(id);
  if (!entry) return;
  fetches.delete(id);
  if (!entry.settled) entry.controller.abort();
});

// 0 while in flight; else 1 + ok, with the body left in the stash.
EM_JS(int, tl_fetch_settled, (int id), {
  const entry = Module.twinlanesFetches && Module.twinlanesFetches.get(id);
  if (!entry || !entry.settled) return 0;
  Module.twinlanesStash = entry.body || new Uint8Array(0);
  return entry.ok ? 2 : 1;
});

EM_JS(int, tl_fetch_status, (int id), { return Module.twinlanesFetches.get(id).status; });

EM_JS(void, tl_fetch_error, (int id), {
  Module.twinlanesStash = new TextEncoder().encode(Module.twinlanesFetches.get(id).error);
});
// clang-format on

namespace kit::web {

namespace {

bool hasWebScheme(const std::string& url) {
  return startsWithIgnoringCase(url, "http://") || startsWithIgnoringCase(url, "https://");
}

}  // namespace

BrowserHttpFetcher::BrowserHttpFetcher(RunLoop& runLoop) : runLoop_(runLoop) {
  installDownloadedPictures();
}

struct BrowserHttpFetcher::Flight final : HttpFetch {
  Flight(std::weak_ptr<BrowserHttpFetcher*> fetcher, int id)
      : fetcher(std::move(fetcher)), id(id) {}
  ~Flight() override {
    if (auto f = fetcher.lock())
      (*f)->cancel(id);
  }
  std::weak_ptr<BrowserHttpFetcher*> fetcher;
  int id;
};

BrowserHttpFetcher::~BrowserHttpFetcher() {
  for (auto& [id, done] : flights_)
    tl_fetch_cancel(id);
  if (poller_)
    poller_->invalidate();
}

std::unique_ptr<HttpFetch> BrowserHttpFetcher::start(const HttpRequest& request, Done done) {
  const int id = nextId_++;
  if (!hasWebScheme(request.url)) {
    HttpResponse refused;
    refused.error = "refused URL (only http and https)";
    std::weak_ptr<BrowserHttpFetcher*> weak = self_;
    runLoop_.post([weak, id, refused, done = std::move(done)] {
      auto f = weak.lock();
      if (f && (*f)->flights_.erase(id))
        done(refused);
    });
    flights_.emplace(id, nullptr);
    return std::make_unique<Flight>(self_, id);
  }
  tl_fetch_start(id, request.url.c_str(), double(request.totalTimeoutMs),
                 double(request.maxBodyBytes));
  flights_.emplace(id, std::move(done));
  if (!poller_) {
    std::weak_ptr<BrowserHttpFetcher*> weak = self_;
    poller_ = runLoop_.scheduledTimer(
        1.0 / 60,
        [weak] {
          if (auto f = weak.lock())
            (*f)->poll();
        },
        true);
  }
  return std::make_unique<Flight>(self_, id);
}

void BrowserHttpFetcher::poll() {
  // Answers go out after the walk: an answer may start or cancel requests.
  std::vector<std::pair<Done, HttpResponse>> answers;
  for (auto it = flights_.begin(); it != flights_.end();) {
    const int settled = it->second ? tl_fetch_settled(it->first) : 0;
    if (settled == 0) {
      ++it;
      continue;
    }
    HttpResponse response;
    response.body = takeStash();
    response.ok = settled == 2;
    response.status = tl_fetch_status(it->first);
    if (!response.ok) {
      response.body.clear();
      tl_fetch_error(it->first);
      response.error = takeStash();
    }
    tl_fetch_cancel(it->first);
    answers.emplace_back(std::move(it->second), std::move(response));
    it = flights_.erase(it);
  }
  if (flights_.empty() && poller_) {
    poller_->invalidate();
    poller_.reset();
  }
  for (auto& [done, response] : answers)
    done(std::move(response));
}

void BrowserHttpFetcher::cancel(int id) {
  if (flights_.erase(id))
    tl_fetch_cancel(id);
}

}  // namespace kit::web
