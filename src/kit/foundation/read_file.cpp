#include "kit/foundation/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kit {

std::optional<std::string> readSmallFile(const std::filesystem::path& path, size_t maxBytes) {
  // Non-blocking so that a FIFO in the file's place cannot hang the reader.
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0)
    return std::nullopt;
  std::optional<std::string> result;
  struct stat st {};
  if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) &&
      static_cast<uint64_t>(st.st_size) <= maxBytes) {
    std::string bytes;
    char buffer[16 * 1024];
    bool ok = true;
    while (ok && bytes.size() <= maxBytes) {
      ssize_t n = ::read(fd, buffer, sizeof buffer);
      if (n < 0 && errno == EINTR)
        continue;
      if (n <= 0) {
        ok = n == 0;
        break;
      }
      bytes.append(buffer, static_cast<size_t>(n));
    }
    if (ok && bytes.size() <= maxBytes)
      result = std::move(bytes);
  }
  ::close(fd);
  return result;
}

}  // namespace kit
