#pragma once

#include <filesystem>

#include "kit/backends/files/file_resource_store.h"
#include "kit/backends/web/browser_http_fetcher.h"
#include "kit/backends/web/browser_url_opener.h"
#include "kit/backends/web/local_storage_preferences.h"
#include "kit/foundation/bundle.h"
#include "kit/foundation/clock.h"
#include "kit/foundation/device.h"
#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "kit/foundation/notification_center.h"
#include "kit/foundation/random_source.h"
#include "kit/foundation/run_loop.h"
#include "kit/foundation/services.h"
#include "kit/foundation/user_defaults.h"
#include "kit/platform/backend.h"

namespace kit::web {

// The browser has no blocking HTTP (and no threads to hide one in): every
// request is refused with that reason, as an unreachable server would fail.
// What runs while frames run fetches asynchronously (BrowserHttpFetcher).
class NoBlockingHttp final : public HttpClient {
 public:
  HttpResponse get(const HttpRequest& request) override;
};

// The page's real services: the system clock, the console log (stderr),
// preferences in localStorage, the resources the page wrote into the
// module's file system under `resourceDir`, the browser's URL opener, the
// device facts of a phone-shaped page and a random source. Owns them all;
// services() lends them out and must not outlive it. Main thread only.
class WebServices {
 public:
  explicit WebServices(const std::filesystem::path& resourceDir);
  WebServices(const WebServices&) = delete;
  WebServices& operator=(const WebServices&) = delete;

  Services services();

  // Declared in construction order: each may use those above it.
  SystemClock clock;
  StderrLog log;
  RunLoop runLoop;
  NotificationCenter notifications;
  LocalStoragePreferences preferenceStore;
  UserDefaults defaults;
  FileResourceStore resourceStore;
  Bundle bundle;
  NoBlockingHttp http;
  BrowserHttpFetcher fetcher{runLoop};
  BrowserUrlOpener urlOpener;
  Device device;
  RandomSource random;
  std::shared_ptr<Graphics> graphics = makeBackendGraphics();
};

}  // namespace kit::web
