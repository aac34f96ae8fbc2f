#pragma once

#include <filesystem>

#include "kit/backends/desktop/curl_http_client.h"
#include "kit/backends/desktop/curl_http_fetcher.h"
#include "kit/foundation/services.h"

namespace kit {

// A complete set of platform services for tests and the headless scenario
// runner: a manual clock, a capturing log (optionally forwarding each line),
// preferences in a given folder, the bundle of a given resources folder, a
// recording URL opener, default device facts and a random source seeded
// with 1. The HTTP client is real.
// Owns every service; services() lends them out and must not outlive it.
class HeadlessPlatform {
 public:
  HeadlessPlatform(const std::filesystem::path& prefsFolder,
                   const std::filesystem::path& resourceDir, Log* forwardLog = nullptr);
  HeadlessPlatform(const HeadlessPlatform&) = delete;
  HeadlessPlatform& operator=(const HeadlessPlatform&) = delete;

  Services services();

  // Declared in construction order: each may use those above it.
  ManualClock clock;
  CapturingLog log;
  RunLoop runLoop;
  NotificationCenter notifications;
  UserDefaults defaults;
  Bundle bundle;
  CurlHttpClient http;
  CurlHttpFetcher fetcher{runLoop};
  RecordingUrlOpener urlOpener;
  Device device;
  RandomSource random;
};

}  // namespace kit
