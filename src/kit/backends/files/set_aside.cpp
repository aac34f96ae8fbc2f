#include "kit/backends/files/set_aside.h"

#include <fcntl.h>
#include <stdio.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace kit {

namespace fs = std::filesystem;

namespace {

constexpr int kMaxSameSecond = 99;

std::string utcStamp(std::chrono::system_clock::time_point now) {
  const std::time_t t = std::chrono::system_clock::to_time_t(now);
  std::tm utc{};
  gmtime_r(&t, &utc);
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &utc);
  return text;
}

// Renames without replacing what is there; false with errno EEXIST when the
// name is taken.
bool renameNoReplace(const fs::path& from, const fs::path& to) {
#ifdef RENAME_NOREPLACE
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
    return true;
  if (errno != EINVAL && errno != ENOSYS)
    return false;
#endif
  // A system or file system without the flag: check, then rename.
  std::error_code ec;
  if (fs::symlink_status(to, ec).type() != fs::file_type::not_found) {
    errno = EEXIST;
    return false;
  }
  return ::rename(from.c_str(), to.c_str()) == 0;
}

void keepNewest(const fs::path& file, size_t keep) {
  const std::string prefix = file.filename().string() + ".bad-";
  std::vector<fs::path> copies;
  std::error_code ec;
  for (fs::directory_iterator it(file.parent_path(), ec), end; !ec && it != end; it.increment(ec)) {
    if (it->path().filename().string().rfind(prefix, 0) == 0)
      copies.push_back(it->path());
  }
  if (copies.size() <= keep)
    return;
  // The stamps and the two-digit counters sort by time.
  std::sort(copies.begin(), copies.end());
  for (size_t i = 0; i + keep < copies.size(); ++i) {
    std::error_code ignored;
    fs::remove_all(copies[i], ignored);
  }
}

// The counter after the highest one set aside under `base` so far: a name
// freed by keepNewest() is never reused, so names keep sorting by time.
int nextCounter(const fs::path& base) {
  const std::string prefix = base.filename().string();
  int highest = 0;
  std::error_code ec;
  for (fs::directory_iterator it(base.parent_path(), ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (name.rfind(prefix, 0) != 0)
      continue;
    const std::string rest = name.substr(prefix.size());
    if (rest.empty())
      highest = std::max(highest, 1);
    else if (rest.size() == 3 && rest[0] == '-' &&
             std::isdigit(static_cast<unsigned char>(rest[1])) &&
             std::isdigit(static_cast<unsigned char>(rest[2])))
      highest = std::max(highest, std::stoi(rest.substr(1)));
  }
  return highest + 1;
}

}  // namespace

Result<fs::path> setAsideFile(const fs::path& file, std::chrono::system_clock::time_point now,
                              size_t keep) {
  const std::string base = file.string() + ".bad-" + utcStamp(now);
  for (int n = nextCounter(base); n <= kMaxSameSecond; ++n) {
    char suffix[8] = "";
    if (n > 1)
      std::snprintf(suffix, sizeof suffix, "-%02d", n);
    const fs::path target = base + suffix;
    if (renameNoReplace(file, target)) {
      keepNewest(file, std::max<size_t>(keep, 1));
      return target;
    }
    if (errno != EEXIST)
      return Error{std::strerror(errno)};
  }
  return Error{"too many copies set aside this second"};
}

}  // namespace kit
