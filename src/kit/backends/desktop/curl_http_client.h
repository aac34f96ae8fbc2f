#pragma once

#include "kit/foundation/http.h"

namespace kit {

// libcurl: only http and https (redirects too), bounded time and size, no
// signals, TLS verification on, no compressed replies (no size surprises).
class CurlHttpClient final : public HttpClient {
 public:
  HttpResponse get(const HttpRequest& request) override;
};

}  // namespace kit
