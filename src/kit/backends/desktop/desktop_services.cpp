#include "kit/backends/desktop/desktop_services.h"

namespace kit {
namespace {

std::filesystem::path preferencesFolder(const std::filesystem::path& prefsDir) {
  if (prefsDir.empty())
    return FilePreferenceStore::defaultFolder();
  std::error_code ignored;
  std::filesystem::create_directories(prefsDir, ignored);
  return prefsDir;
}

}  // namespace

DesktopServices::DesktopServices(const std::filesystem::path& prefsDir,
                                 const std::filesystem::path& resourceDir)
    : runLoop(clock),
      preferenceStore(preferencesFolder(prefsDir), log),
      defaults(preferenceStore, log),
      resourceStore(resourceDir),
      bundle(resourceStore, &defaults, log),
      device(Device::detect()) {}

Services DesktopServices::services() {
  return {clock, runLoop, notifications, defaults, bundle, log,
          http,  fetcher, urlOpener,     device,   random, *graphics};
}

}  // namespace kit
