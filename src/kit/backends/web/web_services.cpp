#include "kit/backends/web/web_services.h"

namespace kit::web {

HttpResponse NoBlockingHttp::get(const HttpRequest&) {
  HttpResponse response;
  response.error = "the browser build makes no blocking HTTP requests";
  return response;
}

WebServices::WebServices(const std::filesystem::path& resourceDir)
    : runLoop(clock),
      defaults(preferenceStore, log),
      resourceStore(resourceDir),
      bundle(resourceStore, &defaults, log) {
  device.model = "web";
}

Services WebServices::services() {
  return {clock, runLoop, notifications, defaults, bundle, log,
          http,  fetcher, urlOpener,     device,   random, *graphics};
}

}  // namespace kit::web
