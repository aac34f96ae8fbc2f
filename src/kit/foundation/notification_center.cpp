#include "kit/foundation/notification_center.h"

#include <algorithm>

namespace kit {

struct NotificationCenter::Registration {
  Observer observer;
  std::string name;
  Handler handler;
  bool removed = false;
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

void NotificationCenter::addObserver(Observer observer, const std::string& name, Handler handler) {
  registrations_.push_back(
      std::make_shared<Registration>(Registration{observer, name, std::move(handler)}));
}

void NotificationCenter::removeObserver(Observer observer, const std::string& name) {
  std::erase_if(registrations_, [&](const std::shared_ptr<Registration>& r) {
    if (r->observer != observer || r->name != name)
      return false;
    r->removed = true;
    return true;
  });
}

void NotificationCenter::removeObserver(Observer observer) {
  std::erase_if(registrations_, [&](const std::shared_ptr<Registration>& r) {
    if (r->observer != observer)
      return false;
    r->removed = true;
    return true;
  });
}

void NotificationCenter::postNotificationName(const std::string& name, const Value& object) {
  auto count = std::find_if(counts_.begin(), counts_.end(),
                            [&](const auto& entry) { return entry.first == name; });
  if (count == counts_.end()) {
    counts_.emplace_back(name, 1);
  } else {
    ++count->second;
  }

  // Deliver to the registrations present now. The snapshot keeps each one
  // (and its handler) alive while it runs, even if it is removed meanwhile.
  std::vector<std::shared_ptr<Registration>> receivers;
  for (const auto& r : registrations_) {
    if (r->name == name)
      receivers.push_back(r);
  }
  const Notification notification{name, object};
  for (const auto& r : receivers) {
    if (!r->removed)
      r->handler(notification);
  }
}

size_t NotificationCenter::postCount(const std::string& name) const {
  for (const auto& [n, count] : counts_) {
    if (n == name)
      return count;
  }
  return 0;
}

}  // namespace kit
