#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/value.h"

namespace kit {

struct Notification {
  std::string name;
  Value object;  // nil when the poster gave none
};

// Named broadcasts, delivered synchronously on the posting thread in the
// order observers registered. An observer is identified by an opaque pointer;
// it must remove itself before it dies. An observer removed during a post is
// not called afterwards, and one added during a post waits for the next.
class NotificationCenter {
 public:
  using Observer = const void*;
  using Handler = std::function<void(const Notification&)>;

  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  void addObserver(Observer observer, const std::string& name, Handler handler);
  // Every registration of the observer for that name (any object).
  void removeObserver(Observer observer, const std::string& name);
  // Every registration of the observer.
  void removeObserver(Observer observer);

  void postNotificationName(const std::string& name, const Value& object = Value());

  // How many times each name was posted (for dumps and tests).
  size_t postCount(const std::string& name) const;

 private:
  struct Registration;
  std::vector<std::shared_ptr<Registration>> registrations_;
  std::vector<std::pair<std::string, size_t>> counts_;
};

}  // namespace kit
