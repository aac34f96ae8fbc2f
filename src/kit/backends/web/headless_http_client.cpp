#include "kit/backends/web/web_services.h"
#include "kit/foundation/headless_platform.h"

namespace kit {

// The browser has no blocking HTTP: headless runs get the same refusals as
// the page.
std::unique_ptr<HttpClient> makeHeadlessHttpClient() {
  return std::make_unique<web::NoBlockingHttp>();
}

}  // namespace kit
