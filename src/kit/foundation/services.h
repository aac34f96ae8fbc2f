#pragma once

#include "kit/foundation/bundle.h"
#include "kit/foundation/clock.h"
#include "kit/foundation/device.h"
#include "kit/foundation/graphics.h"
#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "kit/foundation/notification_center.h"
#include "kit/foundation/random_source.h"
#include "kit/foundation/run_loop.h"
#include "kit/foundation/url_opener.h"
#include "kit/foundation/user_defaults.h"
#include "kit/platform/http_fetcher.h"

namespace kit {

// The platform services a system class is given. Borrowed: whoever built the
// services (the application, or a test fixture) outlives every user.
struct Services {
  Clock& clock;
  RunLoop& runLoop;
  NotificationCenter& notifications;
  UserDefaults& defaults;
  Bundle& bundle;
  Log& log;
  HttpClient& http;      // blocking: for tools and workers
  HttpFetcher& fetcher;  // asynchronous: for anything done while frames run
  UrlOpener& urlOpener;
  Device& device;
  RandomSource& random;
  Graphics& graphics;  // text and images; installed as current() by the application
};

}  // namespace kit
