#include "kit/foundation/device.h"

#include <sys/utsname.h>

#include <sstream>

#include "kit/foundation/read_file.h"

namespace kit {

namespace {

constexpr size_t kMaxFactFile = 64 * 1024;

std::string trimmed(std::string_view text) {
  const char* space = " \t\r\n\"'";
  size_t begin = text.find_first_not_of(space);
  if (begin == std::string_view::npos)
    return {};
  size_t end = text.find_last_not_of(space);
  return std::string(text.substr(begin, end - begin + 1));
}

// VERSION_ID of an os-release file ("12"), empty when it has none.
std::string versionId(const std::string& osRelease) {
  std::istringstream lines(osRelease);
  for (std::string line; std::getline(lines, line);) {
    constexpr std::string_view kKey = "VERSION_ID=";
    if (line.compare(0, kKey.size(), kKey) == 0)
      return trimmed(line.substr(kKey.size()));
  }
  return {};
}

}  // namespace

Device Device::detect() {
  return detect("/");
}

Device Device::detect(const std::filesystem::path& root) {
  Device device;
  for (const char* file : {"etc/os-release", "usr/lib/os-release"}) {
    if (auto text = readSmallFile(root / file, kMaxFactFile)) {
      if (std::string version = versionId(*text); !version.empty()) {
        device.systemVersion = version;
        break;
      }
    }
  }
  std::string model;
  if (auto name = readSmallFile(root / "sys/class/dmi/id/product_name", kMaxFactFile)) {
    model = trimmed(*name);
  }
  if (model.empty()) {
    utsname uts{};
    if (::uname(&uts) == 0)
      model = uts.machine;
  }
  if (!model.empty())
    device.model = model;
  return device;
}

}  // namespace kit
