#include "kit/backends/desktop/curl_http_client.h"
#include "kit/backends/desktop/curl_http_fetcher.h"
#include "kit/foundation/headless_platform.h"
#include "kit/platform/backend.h"

namespace kit {

// Headless runs on the desktop reach real servers (the ad server of a test).
std::unique_ptr<HttpClient> makeHeadlessHttpClient() {
  return std::make_unique<CurlHttpClient>();
}

std::unique_ptr<HttpFetcher> makeHeadlessHttpFetcher(RunLoop& runLoop) {
  return std::make_unique<CurlHttpFetcher>(runLoop);
}

}  // namespace kit
