#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "kit/foundation/clock.h"
#include "kit/foundation/thread_checker.h"
#include "kit/foundation/timer.h"

namespace kit {

// The main thread's run loop: timers and posted tasks, fired by the frame
// driver once per pass. Single-threaded, except post(), which any thread may
// call to hand work to the main thread; the thread that made the loop is its
// main thread, and debug builds check every other call is made there.
class RunLoop {
 public:
  explicit RunLoop(const Clock& clock);
  ~RunLoop();
  RunLoop(const RunLoop&) = delete;
  RunLoop& operator=(const RunLoop&) = delete;

  // A timer whose first fire date is one interval from now.
  std::shared_ptr<Timer> scheduledTimer(double intervalSeconds, std::function<void()> target,
                                        bool repeats);

  // Runs posted tasks, then every valid timer that is due, once each, in the
  // order they were scheduled. A timer scheduled or re-dated by a callback
  // during the pass waits for the next pass.
  void runOnce();

  // Runs the posted tasks only, on the clock as it stands: for a driver
  // that holds its clock between frames while answers come in. Never from
  // inside a pass.
  void runPosted();

  // Queues a task for the next pass. Thread-safe.
  void post(std::function<void()> task);

  // Earliest fire date among valid timers (for pacing an idle loop).
  std::optional<int64_t> nextFireDate() const;

  const Clock& clock() const { return clock_; }
  // Whether the caller runs on the loop's (main) thread.
  bool isMainThread() const { return thread_.calledOnValidThread(); }

 private:
  struct Tasks;
  const Clock& clock_;
  std::vector<std::shared_ptr<Timer>> timers_;
  std::unique_ptr<Tasks> tasks_;
  ThreadChecker thread_;
};

}  // namespace kit
