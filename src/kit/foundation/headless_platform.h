#pragma once

#include <filesystem>
#include <memory>

#include "kit/foundation/http.h"
#include "kit/foundation/services.h"
#include "kit/platform/backend.h"
#include "kit/platform/preference_store.h"
#include "kit/platform/resource_store.h"

namespace kit {

// A complete set of platform services for tests and the headless scenario
// runner: a manual clock, a capturing log (optionally forwarding each line),
// preferences in a given folder, the bundle of a given resources folder, a
// recording URL opener, default device facts and a random source seeded
// with 1. The stores of the preferences and resources, the HTTP client and
// the fetcher are the backend's (makeHeadless...), and so are the graphics
// (makeBackendGraphics).
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
  std::unique_ptr<PreferenceStore> preferenceStore;
  UserDefaults defaults;
  std::unique_ptr<ResourceStore> resourceStore;
  Bundle bundle;
  std::unique_ptr<HttpClient> httpClient;
  HttpClient& http;
  std::unique_ptr<HttpFetcher> httpFetcher;
  HttpFetcher& fetcher;
  RecordingUrlOpener urlOpener;
  Device device;
  RandomSource random;
  std::shared_ptr<Graphics> graphics;
};

}  // namespace kit
