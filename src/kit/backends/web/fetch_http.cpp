#include "kit/backends/web/fetch_http.h"

#include <emscripten/emscripten.h>

#include <string>

#include "kit/backends/web/js_bytes.h"
#include "kit/foundation/run_loop.h"

extern "C" {
// Called by the JavaScript below when a fetch ends: the body is in the stash.
EMSCRIPTEN_KEEPALIVE void twinlanes_fetch_done(void* fetcher, int id, int ok, int status,
                                               char* error) {
  kit::HttpResponse response;
  response.ok = ok != 0;
  response.status = status;
  response.body = kit::web::takeStash();
  if (error != nullptr) {
    response.error = error;
    free(error);
  }
  static_cast<kit::web::FetchHttp*>(fetcher)->finished(id, std::move(response));
}
}

// clang-format off
EM_JS(void, tl_fetch, (void* fetcher, int id, const char* url, double timeoutMs, double maxBytes,
                       int maxRedirects), {
  const live = Module.twinlanesFetchers || (Module.twinlanesFetchers = new Set());
  live.add(fetcher);
  const done = (ok, status, body, error) => {
    if (!Module.twinlanesFetchers.has(fetcher)) return;
    Module.twinlanesStash = body;
    Module._twinlanes_fetch_done(fetcher, id, ok ? 1 : 0, status, error ? allocateUTF8(error) : 0);
  };
  const controller = new AbortController();
  const timer = setTimeout(() => controller.abort(), timeoutMs);
  fetch(UTF8ToString(url), {
    signal: controller.signal, redirect: maxRedirects > 0 ? 'follow' : 'error',
    credentials: 'omit', cache: 'no-store'
  })
    .then(async (response) => {
      const declared = Number(response.headers.get('content-length') || 0);
      if (declared > maxBytes) throw new Error('the body is larger than ' + maxBytes + ' bytes');
      const body = new Uint8Array(await response.arrayBuffer());
      if (body.length > maxBytes) throw new Error('the body is larger than ' + maxBytes + ' bytes');
      clearTimeout(timer);
      done(response.ok, response.status, body, response.ok ? null : 'HTTP status ' + response.status);
    })
    .catch((e) => {
      clearTimeout(timer);
      done(false, 0, null, e.name === 'AbortError' ? 'timed out' : String(e.message || e));
    });
});

EM_JS(void, tl_fetch_forget, (void* fetcher), {
  if (Module.twinlanesFetchers) Module.twinlanesFetchers.delete(fetcher);
});
// clang-format on

namespace kit::web {

FetchHttp::FetchHttp() = default;

FetchHttp::~FetchHttp() {
  tl_fetch_forget(this);
}

void FetchHttp::fetch(HttpRequest request, std::function<void(HttpResponse)> done) {
  const int id = nextId_++;
  pending_.emplace(id, std::move(done));
  if (request.url.rfind("http://", 0) != 0 && request.url.rfind("https://", 0) != 0) {
    HttpResponse refused;
    refused.error = "only http and https URLs are fetched";
    finished(id, std::move(refused));
    return;
  }
  tl_fetch(this, id, request.url.c_str(), static_cast<double>(request.totalTimeoutMs),
           static_cast<double>(request.maxBodyBytes), request.maxRedirects);
}

void FetchHttp::finished(int id, HttpResponse response) {
  const auto it = pending_.find(id);
  if (it == pending_.end())
    return;
  auto done = std::move(it->second);
  pending_.erase(it);
  if (loop_ == nullptr) {
    done(std::move(response));
    return;
  }
  loop_->post([done = std::move(done), response = std::move(response)]() mutable {
    done(std::move(response));
  });
}

}  // namespace kit::web
