#pragma once

#include <filesystem>

#include "kit/backends/desktop/curl_http_client.h"
#include "kit/backends/desktop/curl_http_fetcher.h"
#include "kit/backends/desktop/desktop_url_opener.h"
#include "kit/backends/files/file_preference_store.h"
#include "kit/backends/files/file_resource_store.h"
#include "kit/foundation/services.h"
#include "kit/platform/backend.h"

namespace kit {

// The desktop's real services: the system clock, a stderr log, preferences
// in `prefsDir` (or the per-user data folder when empty), the bundle of
// `resourceDir`, curl, the desktop's URL opener, this machine's device
// facts, a random source, and Pango and Cairo for text and images. Owns them
// all; services() lends them out and must not outlive it. Made and used on
// the main thread.
class DesktopServices {
 public:
  DesktopServices(const std::filesystem::path& prefsDir, const std::filesystem::path& resourceDir);
  DesktopServices(const DesktopServices&) = delete;
  DesktopServices& operator=(const DesktopServices&) = delete;

  Services services();

  // Declared in construction order: each may use those above it.
  SystemClock clock;
  StderrLog log;
  RunLoop runLoop;
  NotificationCenter notifications;
  FilePreferenceStore preferenceStore;
  UserDefaults defaults;
  FileResourceStore resourceStore;
  Bundle bundle;
  CurlHttpClient http;
  CurlHttpFetcher fetcher{runLoop};
  DesktopUrlOpener urlOpener;
  Device device;
  RandomSource random;
  std::shared_ptr<Graphics> graphics = makeBackendGraphics();
};

}  // namespace kit
