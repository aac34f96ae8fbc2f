#include "kit/foundation/read_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kit {

std::optional<std::string> readSmallFile(const std::filesystem::path& path, size_t maxBytes) {
  Result<std::string> bytes = readSmallFileOrWhy(path, maxBytes);
  if (!bytes)
    return std::nullopt;
  return std::move(*bytes);
}

Result<std::string> readSmallFileOrWhy(const std::filesystem::path& path, size_t maxBytes) {
  // Non-blocking so that a FIFO in the file's place cannot hang the reader.
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0)
    return Error{std::strerror(errno)};
  struct Closer {
    int fd;
    ~Closer() { ::close(fd); }
  } closer{fd};
  struct stat st {};
  if (::fstat(fd, &st) != 0)
    return Error{std::strerror(errno)};
  if (S_ISDIR(st.st_mode))
    return Error{"a folder, not a file"};
  if (!S_ISREG(st.st_mode))
    return Error{"not a regular file"};
  const std::string tooLarge = "larger than " + std::to_string(maxBytes) + " bytes";
  if (static_cast<uint64_t>(st.st_size) > maxBytes)
    return Error{tooLarge};
  std::string bytes;
  char buffer[16 * 1024];
  while (bytes.size() <= maxBytes) {
    ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0)
      return Error{std::strerror(errno)};
    if (n == 0)
      break;
    bytes.append(buffer, static_cast<size_t>(n));
  }
  if (bytes.size() > maxBytes)
    return Error{tooLarge};
  return bytes;
}

}  // namespace kit
