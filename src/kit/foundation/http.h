#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kit {

struct HttpRequest {
  std::string url;                  // http:// or https:// only
  int64_t connectTimeoutMs = 5000;  // DNS, TCP and TLS
  int64_t totalTimeoutMs = 10000;   // the whole transfer
  size_t maxBodyBytes = 1 << 20;    // longer bodies fail
  int maxRedirects = 3;             // 0: redirects are not followed
  // A transfer slower than this many bytes per second for lowSpeedSeconds
  // is given up (a server dripping bytes).
  long lowSpeedBytesPerSecond = 100;
  long lowSpeedSeconds = 5;
};

struct HttpResponse {
  bool ok = false;  // a 2xx reply arrived in full within the limits
  long status = 0;  // HTTP status, 0 when none arrived
  std::string body;
  std::string error;  // readable reason when !ok
};

// A blocking GET. Implementations are thread-safe; callers that must not
// block the main thread call it from a worker.
class HttpClient {
 public:
  virtual ~HttpClient() = default;
  virtual HttpResponse get(const HttpRequest& request) = 0;
};

}  // namespace kit
