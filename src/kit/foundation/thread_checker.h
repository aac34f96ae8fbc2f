#pragma once

#include <thread>

#include "kit/foundation/assert.h"

namespace kit {

// Remembers the thread that made it and checks, in debug and sanitizer builds,
// that calls come from that thread (the main thread for the run loop, the
// preferences and the ad network). Release builds compile the check away.
class ThreadChecker {
 public:
  ThreadChecker() = default;

  bool calledOnValidThread() const { return std::this_thread::get_id() == owner_; }

 private:
  std::thread::id owner_ = std::this_thread::get_id();
};

}  // namespace kit

#ifdef NDEBUG
#define KIT_CHECK_THREAD(checker) static_cast<void>(0)
#else
#define KIT_CHECK_THREAD(checker) \
  static_cast<void>(KIT_ASSERT((checker).calledOnValidThread(), "called off its owning thread"))
#endif
