#include "kit/foundation/user_defaults.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "kit/foundation/json.h"

namespace kit {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFileName = "prefs.json";
constexpr const char* kBadName = "prefs.json.bad";
constexpr std::string_view kTempPrefix = "prefs.json.tmp-";
constexpr int kMaxDepth = 64;

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

// What a preferences file holds, or nullopt with the reason it is refused.
std::optional<Value::Dictionary> decodeFile(std::string_view bytes, const char** why) {
  const char* reason = nullptr;
  std::optional<Value> parsed;
  if (bytes.empty()) {
    reason = "is empty";
  } else if (bytes.size() > UserDefaults::kMaxFileBytes) {
    reason = "is larger than 4 MiB";
  } else if (!(parsed = parseJson(bytes, kMaxDepth))) {
    reason = "is not valid JSON";
  } else if (!parsed->ifDictionary()) {
    reason = "does not hold a JSON object";
  }
  if (why)
    *why = reason;
  if (reason)
    return std::nullopt;
  return *parsed->ifDictionary();
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

UserDefaults::UserDefaults(fs::path folder, Log& log)
    : folder_(std::move(folder)),
      file_(folder_.empty() ? fs::path() : folder_ / kFileName),
      log_(log) {
  load();
}

UserDefaults::~UserDefaults() {
  if (dirty_ && persistent_)
    write();
}

fs::path UserDefaults::defaultFolder() {
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

std::optional<Value::Dictionary> UserDefaults::decode(std::string_view bytes) {
  return decodeFile(bytes, nullptr);
}

std::string UserDefaults::encode(const Value::Dictionary& values) {
  return toJson(Value(values), 2) + "\n";
}

void UserDefaults::load() {
  if (folder_.empty()) {
    persistent_ = false;
    return;
  }
  std::error_code ec;
  fs::create_directories(folder_, ec);
  if (!fs::is_directory(folder_, ec)) {
    log_.write("Preferences folder " + folder_.string() +
               " cannot be used; preferences are kept in memory only");
    persistent_ = false;
    return;
  }
  removeStrayTempFiles();

  // Non-blocking so that a FIFO put in the file's place cannot hang us.
  Fd fd(::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (fd.get() < 0) {
    const int error = errno;
    if (error == ENOENT)
      return;  // first launch
    log_.write("Could not read preferences file " + file_.string() + " (" + errorText(error) +
               "); preferences are kept in memory only");
    persistent_ = false;
    return;
  }
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0 || !S_ISREG(st.st_mode)) {
    setAside("is not a regular file");
    return;
  }
  if (static_cast<uint64_t>(st.st_size) > kMaxFileBytes) {
    setAside("is larger than 4 MiB");
    return;
  }
  std::string bytes;
  if (!readUpTo(fd.get(), kMaxFileBytes, bytes)) {
    const int error = errno;
    log_.write("Could not read preferences file " + file_.string() + " (" + errorText(error) +
               "); preferences are kept in memory only");
    persistent_ = false;
    return;
  }
  const char* why = nullptr;
  std::optional<Value::Dictionary> values = decodeFile(bytes, &why);
  if (!values) {
    setAside(why);
    return;
  }
  values_ = std::move(*values);
}

void UserDefaults::removeStrayTempFiles() {
  std::error_code ec;
  for (fs::directory_iterator it(folder_, ec), end; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    if (name.compare(0, kTempPrefix.size(), kTempPrefix) == 0) {
      std::error_code ignored;
      fs::remove(it->path(), ignored);
    }
  }
}

void UserDefaults::setAside(std::string_view why) {
  const fs::path bad = folder_ / kBadName;
  const int rc = ::rename(file_.c_str(), bad.c_str());
  const int error = errno;
  std::string line = "Preferences file " + file_.string() + " " + std::string(why);
  if (rc == 0) {
    log_.write(line + "; moved it to " + bad.filename().string() + " and using the defaults");
  } else {
    log_.write(line + "; could not move it aside (" + errorText(error) +
               "); using the defaults, kept in memory only");
    persistent_ = false;
  }
}

void UserDefaults::registerDefaults(const Value::Dictionary& defaults) {
  KIT_CHECK_THREAD(thread_);
  for (const auto& [key, value] : defaults)
    defaults_.insert_or_assign(key, value);
}

Value UserDefaults::objectForKey(const std::string& key) const {
  KIT_CHECK_THREAD(thread_);
  if (auto it = values_.find(key); it != values_.end())
    return it->second;
  if (auto it = defaults_.find(key); it != defaults_.end())
    return it->second;
  return Value();
}

int64_t UserDefaults::integerForKey(const std::string& key) const {
  return objectForKey(key).integerValue();
}

bool UserDefaults::boolForKey(const std::string& key) const {
  return objectForKey(key).boolValue();
}

float UserDefaults::floatForKey(const std::string& key) const {
  return static_cast<float>(objectForKey(key).doubleValue());
}

double UserDefaults::doubleForKey(const std::string& key) const {
  return objectForKey(key).doubleValue();
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
  return objectForKey(key).stringValue();
}

std::optional<Value::Array> UserDefaults::arrayForKey(const std::string& key) const {
  Value value = objectForKey(key);
  if (const Value::Array* array = value.ifArray())
    return *array;
  return std::nullopt;
}

void UserDefaults::setObject(const Value& value, const std::string& forKey) {
  KIT_CHECK_THREAD(thread_);
  if (value.isNil()) {
    removeObjectForKey(forKey);
    return;
  }
  auto it = values_.find(forKey);
  if (it != values_.end() && it->second == value)
    return;
  values_.insert_or_assign(forKey, value);
  dirty_ = true;
}

void UserDefaults::setInteger(int64_t value, const std::string& forKey) {
  setObject(Value(static_cast<long long>(value)), forKey);
}

void UserDefaults::setBool(bool value, const std::string& forKey) {
  setObject(Value(value), forKey);
}

void UserDefaults::setFloat(float value, const std::string& forKey) {
  setObject(Value(static_cast<double>(value)), forKey);
}

void UserDefaults::setDouble(double value, const std::string& forKey) {
  setObject(Value(value), forKey);
}

void UserDefaults::removeObjectForKey(const std::string& key) {
  KIT_CHECK_THREAD(thread_);
  if (values_.erase(key) > 0)
    dirty_ = true;
}

bool UserDefaults::synchronize() {
  KIT_CHECK_THREAD(thread_);
  if (!dirty_)
    return true;
  if (!persistent_)
    return false;
  if (!write())
    return false;
  dirty_ = false;
  return true;
}

// The whole file goes to a fresh temporary file in the same folder, reaches
// the disk, and then replaces the old one in a single rename; the folder is
// synced so the rename itself survives a power cut. On any failure the old
// file is untouched and the temporary file is removed.
bool UserDefaults::write() {
  const std::string bytes = encode(values_);
  std::string temp = (folder_ / (std::string(kTempPrefix) + "XXXXXX")).string();

  auto fail = [&](const char* step, int error, bool removeTemp) {
    if (removeTemp)
      ::unlink(temp.c_str());
    log_.write("Could not save preferences to " + file_.string() + ": " + step + " failed (" +
               errorText(error) + ")");
    return false;
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
  return true;
}

}  // namespace kit
