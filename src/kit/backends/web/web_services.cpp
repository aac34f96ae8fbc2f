#include "kit/backends/web/web_services.h"

#include <fstream>
#include <sstream>

namespace kit::web {
namespace {

std::string readAll(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

HttpResponse NoBlockingHttp::get(const HttpRequest&) {
  HttpResponse response;
  response.error = "the browser build makes no blocking HTTP requests";
  return response;
}

WebServices::Restored::Restored(const std::filesystem::path& file, LocalStoragePreferences& storage,
                                Log& log) {
  std::error_code ignored;
  std::filesystem::create_directories(file.parent_path(), ignored);
  Result<std::string> saved = storage.load();
  if (!saved) {
    log.write(saved.error());
    return;
  }
  if (saved->empty())
    return;
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << *saved;
}

WebServices::WebServices(const std::filesystem::path& prefsDir,
                         const std::filesystem::path& resourceDir)
    : prefsFile_(prefsDir / "prefs.json"),
      restored_(prefsFile_, storage_, log),
      mirrored_(readAll(prefsFile_)),
      runLoop(clock),
      defaults(prefsDir, log),
      bundle(resourceDir, &defaults, log) {
  device.model = "web";
}

Services WebServices::services() {
  return {clock, runLoop, notifications, defaults, bundle, log,
          http,  fetcher, urlOpener,     device,   random, *graphics};
}

void WebServices::mirrorPreferences() {
  std::error_code missing;
  const auto size = std::filesystem::file_size(prefsFile_, missing);
  if (missing)
    return;
  if (size == mirrored_.size()) {
    // Same size: compare the text itself, which is small.
    const std::string now = readAll(prefsFile_);
    if (now == mirrored_)
      return;
    mirrored_ = now;
  } else {
    mirrored_ = readAll(prefsFile_);
  }
  if (Status saved = storage_.save(mirrored_); !saved)
    log.write(saved.error());
}

}  // namespace kit::web
