#include "kit/backends/desktop/curl_http_client.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <mutex>

namespace kit {

namespace {

struct Transfer {
  std::string body;
  size_t maxBytes;
  bool tooLarge = false;
};

// The only dependable size cap on this libcurl: the declared size check does
// not stop a chunked reply, so the bytes are counted as they arrive.
size_t onData(char* data, size_t size, size_t count, void* user) {
  auto* transfer = static_cast<Transfer*>(user);
  const size_t bytes = size * count;
  if (bytes > transfer->maxBytes - transfer->body.size()) {
    transfer->tooLarge = true;
    return 0;  // a short count ends the transfer
  }
  transfer->body.append(data, bytes);
  return bytes;
}

bool hasWebScheme(const std::string& url) {
  auto startsWith = [&](std::string_view prefix) {
    if (url.size() < prefix.size())
      return false;
    return std::equal(prefix.begin(), prefix.end(), url.begin(), [](char a, char b) {
      return a == std::tolower(static_cast<unsigned char>(b));
    });
  };
  return startsWith("http://") || startsWith("https://");
}

bool hasControlBytes(const std::string& url) {
  return std::any_of(url.begin(), url.end(), [](char c) {
    auto u = static_cast<unsigned char>(c);
    return u <= 0x20 || u == 0x7f;
  });
}

void initCurlOnce() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

}  // namespace

HttpResponse CurlHttpClient::get(const HttpRequest& request) {
  HttpResponse response;
  if (!hasWebScheme(request.url) || hasControlBytes(request.url)) {
    response.error = "refused URL (only http and https, no spaces or control characters)";
    return response;
  }
  initCurlOnce();
  std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  if (!curl) {
    response.error = "could not start a transfer";
    return response;
  }
  CURL* h = curl.get();
  Transfer transfer{{}, request.maxBodyBytes};
  char errorBuffer[CURL_ERROR_SIZE] = {};

  curl_easy_setopt(h, CURLOPT_URL, request.url.c_str());
  curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(h, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(h, CURLOPT_FOLLOWLOCATION, request.maxRedirects > 0 ? 1L : 0L);
  curl_easy_setopt(h, CURLOPT_MAXREDIRS, static_cast<long>(std::max(request.maxRedirects, 0)));
  curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(request.connectTimeoutMs));
  curl_easy_setopt(h, CURLOPT_TIMEOUT_MS, static_cast<long>(request.totalTimeoutMs));
  curl_easy_setopt(h, CURLOPT_LOW_SPEED_LIMIT, request.lowSpeedBytesPerSecond);
  curl_easy_setopt(h, CURLOPT_LOW_SPEED_TIME, request.lowSpeedSeconds);
  curl_easy_setopt(h, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request.maxBodyBytes));
  curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, onData);
  curl_easy_setopt(h, CURLOPT_WRITEDATA, &transfer);
  curl_easy_setopt(h, CURLOPT_ERRORBUFFER, errorBuffer);
  curl_easy_setopt(h, CURLOPT_USERAGENT, "TwinLanes/1.0");

  const CURLcode rc = curl_easy_perform(h);
  curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &response.status);
  response.body = std::move(transfer.body);

  if (transfer.tooLarge || rc == CURLE_FILESIZE_EXCEEDED) {
    response.body.clear();
    response.error = "reply larger than " + std::to_string(request.maxBodyBytes) + " bytes";
  } else if (rc != CURLE_OK) {
    response.error = errorBuffer[0] ? errorBuffer : curl_easy_strerror(rc);
  } else if (response.status < 200 || response.status > 299) {
    response.error = "HTTP status " + std::to_string(response.status);
  } else {
    response.ok = true;
  }
  return response;
}

}  // namespace kit
