#include "kit/backends/web/browser_http_fetcher.h"
#include "kit/backends/web/web_services.h"
#include "kit/foundation/headless_platform.h"
#include "kit/platform/backend.h"

namespace kit {

// The browser has no blocking HTTP: headless runs get the same refusals as
// the page.
std::unique_ptr<HttpClient> makeHeadlessHttpClient() {
  return std::make_unique<web::NoBlockingHttp>();
}

// The page's fetch where there is one (node has it too).
std::unique_ptr<HttpFetcher> makeHeadlessHttpFetcher(RunLoop& runLoop) {
  return std::make_unique<web::BrowserHttpFetcher>(runLoop);
}

}  // namespace kit
