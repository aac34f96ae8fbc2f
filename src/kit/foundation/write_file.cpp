#include "kit/foundation/write_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

namespace kit {
namespace {

Error failure(const std::filesystem::path& path, const std::string& why) {
  return Error{"cannot write " + path.string() + ": " + why};
}

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      return false;
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

}  // namespace

Status writeFileReplacing(const std::filesystem::path& path, std::string_view bytes) {
  struct stat st {};
  if (::lstat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode))
    return failure(path, "not a regular file");
  const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
  std::string pattern = (folder / ("." + path.filename().string() + ".XXXXXX")).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  // mkstemp creates the file exclusively: a link or a FIFO planted under
  // the name is never opened.
  const int fd = ::mkstemp(name.data());
  if (fd < 0)
    return failure(path, std::strerror(errno));
  const std::string temporary(name.data());
  bool ok = ::fchmod(fd, 0644) == 0 && writeAll(fd, bytes) && ::fsync(fd) == 0;
  const int writeErrno = errno;
  ok = ::close(fd) == 0 && ok;
  if (!ok) {
    ::unlink(temporary.c_str());
    return failure(path, std::strerror(writeErrno ? writeErrno : EIO));
  }
  if (::rename(temporary.c_str(), path.c_str()) != 0) {
    const int renameErrno = errno;
    ::unlink(temporary.c_str());
    return failure(path, std::strerror(renameErrno));
  }
  return {};
}

}  // namespace kit
