#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "kit/foundation/run_loop.h"
#include "kit/platform/http_fetcher.h"
#include "kit/platform/preference_store.h"
#include "kit/platform/resource_store.h"

namespace kit {

class Graphics;

// The functions each backend defines (in src/kit/backends/<name>/), for code
// that has no services or window to ask: headless runs, test mains, tools and
// the start-up of the programs. Everything else a backend supplies comes
// from the objects these make, from its services owner (DesktopServices,
// WebServices) and from the WindowSystem a program opens. Each call makes
// new objects that the caller owns; main thread only.

// Preferences in `folder` and resources below `folder` for headless runs
// (files where there is a file system). The preference store logs lines
// about its folder to `log`, which must outlive it.
std::unique_ptr<PreferenceStore> makeHeadlessPreferenceStore(const std::filesystem::path& folder,
                                                             Log& log);
std::unique_ptr<ResourceStore> makeHeadlessResourceStore(const std::filesystem::path& folder);

// The HTTP client for headless runs: the desktop's is real; one without
// blocking HTTP answers every request with an error.
std::unique_ptr<HttpClient> makeHeadlessHttpClient();
// The asynchronous fetcher for headless runs, answering on `runLoop`.
std::unique_ptr<HttpFetcher> makeHeadlessHttpFetcher(RunLoop& runLoop);

// The text and image systems: the desktop's Pango and Cairo; the browser's
// canvas, with estimates under node. Shared, because a worker drawing a
// picture keeps them alive (Graphics::ThreadUse).
std::shared_ptr<Graphics> makeBackendGraphics();

// The user's preferred languages as the platform lists them, as codes
// ("zh_CN" becomes "zh-Hans-CN"), most wanted first; empty when it names
// none (as with LANG=C).
std::vector<std::string> systemLanguages();

}  // namespace kit
