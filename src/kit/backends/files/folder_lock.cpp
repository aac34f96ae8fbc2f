#include "kit/backends/files/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace kit {

Result<FolderLock> FolderLock::take(const std::filesystem::path& folder) {
  // The lock sits on the folder itself, so no lock file is left behind.
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0)
    return Error{std::string("cannot open the folder: ") + std::strerror(errno)};
  int rc;
  do {
    rc = ::flock(fd, LOCK_EX | LOCK_NB);
  } while (rc != 0 && errno == EINTR);
  if (rc != 0) {
    const int error = errno;
    ::close(fd);
    if (error == EWOULDBLOCK)
      return Error{kInUse};
    return Error{std::string("cannot lock the folder: ") + std::strerror(error)};
  }
  return FolderLock(fd);
}

FolderLock::FolderLock(FolderLock&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

FolderLock& FolderLock::operator=(FolderLock&& other) noexcept {
  if (this != &other) {
    if (fd_ >= 0)
      ::close(fd_);
    fd_ = std::exchange(other.fd_, -1);
  }
  return *this;
}

FolderLock::~FolderLock() {
  if (fd_ >= 0)
    ::close(fd_);
}

}  // namespace kit
