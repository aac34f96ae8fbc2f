#include "kit/backends/desktop/curl_http_client.h"
#include "kit/foundation/headless_platform.h"

namespace kit {

// Headless runs on the desktop reach real servers (the ad server of a test).
std::unique_ptr<HttpClient> makeHeadlessHttpClient() {
  return std::make_unique<CurlHttpClient>();
}

}  // namespace kit
