#include "kit/foundation/user_defaults.h"

#include "kit/foundation/json.h"

namespace kit {

namespace {

constexpr int kMaxDepth = 64;

// What a preferences file holds, or nullopt with the reason it is refused.
// The writer checks its own bytes with this too, so it never writes a file
// the next launch would refuse. A key whose value is nil (a JSON null, or a
// number out of range) is left out: it reads as its default.
std::optional<Value::Dictionary> decodeFile(std::string_view bytes, std::string* why) {
  std::string reason;
  std::optional<Result<Value>> parsed;
  if (bytes.empty()) {
    reason = "is empty";
  } else if (bytes.size() > UserDefaults::kMaxFileBytes) {
    reason = "is larger than 4 MiB";
  } else if (!*(parsed = readJson(bytes, kMaxDepth))) {
    reason = (*parsed).error();
  } else if (!(**parsed).ifDictionary()) {
    reason = "does not hold a JSON object";
  }
  if (why)
    *why = reason;
  if (!reason.empty())
    return std::nullopt;
  Value::Dictionary values = std::move(*(**parsed).ifDictionary());
  std::erase_if(values, [](const auto& entry) { return entry.second.isNil(); });
  return values;
}

}  // namespace

UserDefaults::UserDefaults(PreferenceStore& store, Log& log) : store_(store), log_(log) {
  load();
}

UserDefaults::~UserDefaults() {
  if (dirty_ && persistent_)
    write();
}

std::optional<Value::Dictionary> UserDefaults::decode(std::string_view bytes) {
  return decodeFile(bytes, nullptr);
}

std::string UserDefaults::encode(const Value::Dictionary& values) {
  return toJson(Value(values)) + "\n";
}

void UserDefaults::load() {
  persistent_ = store_.isPersistent();
  PreferenceStore::Loaded loaded = store_.load(kMaxFileBytes);
  using State = PreferenceStore::Loaded::State;
  switch (loaded.state) {
    case State::kMissing:
      return;  // first launch
    case State::kUnreadable:
      log_.write("Could not read preferences file " + store_.location() + " (" + loaded.why +
                 "); preferences are kept in memory only");
      persistent_ = false;
      return;
    case State::kRefused:
      setAside(loaded.why);
      return;
    case State::kTooLarge:
      setAside("is larger than 4 MiB");
      return;
    case State::kFound:
      break;
  }
  std::string why;
  std::optional<Value::Dictionary> values = decodeFile(loaded.bytes, &why);
  if (!values) {
    setAside(why);
    return;
  }
  values_ = std::move(*values);
}

void UserDefaults::setAside(std::string_view why) {
  const std::string line = "Preferences file " + store_.location() + " " + std::string(why);
  if (store_.inUseElsewhere()) {
    log_.write(line + "; left in place for its owner, using the defaults");
    return;
  }
  Result<std::string> bad = store_.setAside();
  if (bad) {
    log_.write(line + "; moved it to " + *bad + " and using the defaults");
  } else {
    log_.write(line + "; could not move it aside (" + bad.error() +
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

bool UserDefaults::write() {
  const std::string bytes = encode(values_);
  std::string refused;
  if (!decodeFile(bytes, &refused)) {
    log_.write("Could not save preferences to " + store_.location() + ": the new file " + refused +
               ", which the next launch would refuse; the saved file is kept");
    return false;
  }
  if (Status saved = store_.save(bytes); !saved) {
    log_.write("Could not save preferences to " + store_.location() + ": " + saved.error());
    return false;
  }
  return true;
}

}  // namespace kit
