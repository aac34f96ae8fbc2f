#include "kit/foundation/run_loop.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace kit {

struct RunLoop::Tasks {
  std::mutex mutex;
  std::vector<std::function<void()>> queue;
};

RunLoop::RunLoop(const Clock& clock) : clock_(clock), tasks_(std::make_unique<Tasks>()) {}

RunLoop::~RunLoop() = default;

std::shared_ptr<Timer> RunLoop::scheduledTimer(double intervalSeconds, std::function<void()> target,
                                               bool repeats) {
  KIT_CHECK_THREAD(thread_);
  auto interval = static_cast<int64_t>(std::llround(intervalSeconds * kNanosPerSecond));
  auto timer = std::make_shared<Timer>(interval, std::move(target), repeats,
                                       clock_.monotonicNanos() + interval);
  timers_.push_back(timer);
  return timer;
}

void RunLoop::runPosted() {
  KIT_CHECK_THREAD(thread_);
  std::vector<std::function<void()>> tasks;
  {
    std::lock_guard<std::mutex> lock(tasks_->mutex);
    tasks.swap(tasks_->queue);
  }
  for (auto& task : tasks)
    task();
}

void RunLoop::runOnce() {
  runPosted();

  // Walk a snapshot: callbacks may schedule or invalidate timers.
  const int64_t now = clock_.monotonicNanos();
  auto snapshot = timers_;
  for (auto& timer : snapshot)
    timer->fireIfDue(now);
  std::erase_if(timers_, [](const std::shared_ptr<Timer>& t) { return !t->isValid(); });
}

void RunLoop::post(std::function<void()> task) {
  std::lock_guard<std::mutex> lock(tasks_->mutex);
  tasks_->queue.push_back(std::move(task));
}

std::optional<int64_t> RunLoop::nextFireDate() const {
  std::optional<int64_t> next;
  for (const auto& timer : timers_) {
    if (timer->isValid() && (!next || timer->fireDate() < *next))
      next = timer->fireDate();
  }
  return next;
}

}  // namespace kit
