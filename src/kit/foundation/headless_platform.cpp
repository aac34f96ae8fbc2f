#include "kit/foundation/headless_platform.h"

namespace kit {

HeadlessPlatform::HeadlessPlatform(const std::filesystem::path& prefsFolder,
                                   const std::filesystem::path& resourceDir, Log* forwardLog)
    : log(forwardLog),
      runLoop(clock),
      preferenceStore(makeHeadlessPreferenceStore(prefsFolder, log)),
      defaults(*preferenceStore, log),
      resourceStore(makeHeadlessResourceStore(resourceDir)),
      bundle(*resourceStore, &defaults, log),
      httpClient(makeHeadlessHttpClient()),
      http(*httpClient),
      httpFetcher(makeHeadlessHttpFetcher(runLoop)),
      fetcher(*httpFetcher),
      graphics(makeBackendGraphics()) {}

Services HeadlessPlatform::services() {
  return Services{clock, runLoop, notifications, defaults, bundle, log,
                  http,  fetcher, urlOpener,     device,   random, *graphics};
}

}  // namespace kit
