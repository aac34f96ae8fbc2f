#include "kit/backends/files/file_preference_store.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "kit/backends/files/set_aside.h"

namespace kit {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFileName = "prefs.json";
constexpr std::string_view kTempPrefix = "prefs.json.tmp-";

std::string errorText(int error) {
  return std::strerror(error);
}

// Closes a descriptor on every path out of a scope.
class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0)
      ::close(fd_);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  // Closes now and reports close()'s own failure, which can carry a
  // deferred write error.
  int close() {
    int rc = ::close(fd_);
    fd_ = -1;
    return rc;
  }

 private:
  int fd_;
};

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t n = ::write(fd, bytes.data(), bytes.size());
    if (n < 0) {
      if (errno == EINTR)
        continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

// Reads at most `limit` + 1 bytes, so a caller can tell "too large" without
// reading a huge file whole.
bool readUpTo(int fd, size_t limit, std::string& out) {
  char buffer[64 * 1024];
  while (out.size() <= limit) {
    ssize_t n = ::read(fd, buffer, std::min(sizeof buffer, limit + 1 - out.size()));
    if (n < 0) {
      if (errno == EINTR)
        continue;
      return false;
    }
    if (n == 0)
      break;
    out.append(buffer, static_cast<size_t>(n));
  }
  return true;
}

fs::path homeFolder() {
  if (const char* home = std::getenv("HOME"); home && home[0] == '/')
    return home;
  if (const passwd* pw = getpwuid(getuid()); pw && pw->pw_dir && pw->pw_dir[0] == '/') {
    return pw->pw_dir;
  }
  return {};
}

bool makePrivateFolder(const fs::path& folder) {
  std::error_code ec;
  fs::create_directories(folder, ec);
  return fs::is_directory(folder, ec);
}

}  // namespace

FilePreferenceStore::FilePreferenceStore(fs::path folder, Log& log)
    : folder_(std::move(folder)), file_(folder_.empty() ? fs::path() : folder_ / kFileName) {
  take(log);
}

fs::path FilePreferenceStore::defaultFolder() {
  // The XDG data folder; an empty or relative XDG_DATA_HOME counts as unset.
  const char* xdg = std::getenv("XDG_DATA_HOME");
  if (xdg && xdg[0] == '/') {
    fs::path path = fs::path(xdg) / "TwinLanes/TwinLanes";
    if (makePrivateFolder(path))
      return path;
  }
  fs::path home = homeFolder();
  if (!home.empty()) {
    fs::path path = home / ".local/share/TwinLanes/TwinLanes";
    if (makePrivateFolder(path)) {
      std::error_code ec;
      fs::permissions(path, fs::perms::owner_all, ec);
      return path;
    }
  }
  std::error_code ec;
  fs::path path = fs::temp_directory_path(ec) / ("TwinLanes-" + std::to_string(getuid()));
  makePrivateFolder(path);
  return path;
}

void FilePreferenceStore::take(Log& log) {
  if (folder_.empty())
    return;
  std::error_code ec;
  fs::create_directories(folder_, ec);
  if (!fs::is_directory(folder_, ec)) {
    log.write("Preferences folder " + folder_.string() +
              " cannot be used; preferences are kept in memory only");
    return;
  }
  usable_ = true;
  // The file, its temporary files and set-aside copies belong to whoever
  // holds the folder; another store on it only reads, never writes or cleans.
  // A file system without locks is used as if it were held: refusing it
  // would lose every save there.
  Result<FolderLock> lock = FolderLock::take(folder_);
  if (lock || lock.error() != FolderLock::kInUse) {
    if (lock)
      lock_.emplace(std::move(*lock));
    else
      log.write("Preferences folder " + folder_.string() + " cannot be locked (" + lock.error() +
                "); using it unlocked");
    persistent_ = true;
    removeStrayTempFiles();
  } else {
    inUseElsewhere_ = true;
    log.write("Preferences folder " + folder_.string() +
              " is in use by another copy of the program; changes are kept in memory only");
  }
}

void FilePreferenceStore::removeStrayTempFiles() {
  std::error_code ec;
  for (fs::directory_iterator it(folder_, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (name.compare(0, kTempPrefix.size(), kTempPrefix) == 0) {
      std::error_code ignored;
      fs::remove(it->path(), ignored);
    }
  }
}

PreferenceStore::Loaded FilePreferenceStore::load(size_t maxBytes) {
  Loaded loaded;
  if (!usable_)
    return loaded;  // nowhere to read from: nothing saved
  // Non-blocking so that a FIFO put in the file's place cannot hang us.
  Fd fd(::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (fd.get() < 0) {
    const int error = errno;
    if (error != ENOENT) {  // ENOENT: a first launch
      loaded.state = Loaded::State::kUnreadable;
      loaded.why = errorText(error);
    }
    return loaded;
  }
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
    loaded.state = Loaded::State::kRefused;
    loaded.why = "is not a regular file";
    return loaded;
  }
  if (static_cast<uint64_t>(st.st_size) > maxBytes) {
    loaded.state = Loaded::State::kTooLarge;
    return loaded;
  }
  if (!readUpTo(fd.get(), maxBytes, loaded.bytes)) {
    loaded.state = Loaded::State::kUnreadable;
    loaded.why = errorText(errno);
    loaded.bytes.clear();
    return loaded;
  }
  loaded.state = Loaded::State::kFound;
  return loaded;
}

Result<std::string> FilePreferenceStore::setAside() {
  if (!persistent_)
    return Error{"the folder is not this program's to change"};
  Result<fs::path> bad = setAsideFile(file_, std::chrono::system_clock::now(), kKeptBadFiles);
  if (!bad)
    return Error{bad.error()};
  return bad->filename().string();
}

// The whole file goes to a fresh temporary file in the same folder, reaches
// the disk, and then replaces the old one in a single rename; the folder is
// synced so the rename itself survives a power cut. On any failure the old
// file is untouched and the temporary file is removed.
Status FilePreferenceStore::save(std::string_view bytes) {
  if (!persistent_)
    return Error{"the preferences are kept in memory only"};
  std::string temp = (folder_ / (std::string(kTempPrefix) + "XXXXXX")).string();

  auto fail = [&](const char* step, int error, bool removeTemp) {
    if (removeTemp)
      ::unlink(temp.c_str());
    return Error{std::string(step) + " failed (" + errorText(error) + ")"};
  };

  Fd fd(::mkostemp(temp.data(), O_CLOEXEC));
  if (fd.get() < 0)
    return fail("creating the temporary file", errno, false);
  if (!writeAll(fd.get(), bytes))
    return fail("write", errno, true);
  if (::fsync(fd.get()) != 0)
    return fail("fsync", errno, true);
  if (fd.close() != 0)
    return fail("close", errno, true);
  if (::rename(temp.c_str(), file_.c_str()) != 0)
    return fail("rename", errno, true);

  Fd dir(::open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (dir.get() < 0)
    return fail("opening the folder", errno, false);
  if (::fsync(dir.get()) != 0)
    return fail("fsync of the folder", errno, false);
  return {};
}

}  // namespace kit
