#include "kit/foundation/run_loop.h"

#include <gtest/gtest.h>

#include <thread>

namespace kit {
namespace {

constexpr int64_t kMs = 1'000'000;

class RunLoopTest : public ::testing::Test {
 protected:
  // Advances the clock in frame-sized steps, running the loop after each.
  void advance(int64_t nanos, int64_t step = 16 * kMs) {
    for (int64_t done = 0; done < nanos; done += step) {
      clock.advance(std::min(step, nanos - done));
      loop.runOnce();
    }
  }

  ManualClock clock;
  RunLoop loop{clock};
  int fired = 0;
};

TEST_F(RunLoopTest, RepeatingTimerFiresEveryIntervalUntilInvalidated) {
  auto timer = loop.scheduledTimer(
      0.1, [&] { ++fired; }, true);
  advance(1000 * kMs, 10 * kMs);
  EXPECT_EQ(fired, 10);
  timer->invalidate();
  advance(500 * kMs);
  EXPECT_EQ(fired, 10);
  EXPECT_FALSE(loop.nextFireDate().has_value());
}

TEST_F(RunLoopTest, DistantFuturePausesAndDistantPastFiresAtNextPassThenEveryInterval) {
  auto timer = loop.scheduledTimer(
      0.1, [&] { ++fired; }, true);
  timer->setFireDate(Timer::kDistantFuture);
  advance(500 * kMs);
  EXPECT_EQ(fired, 0);
  timer->setFireDate(Timer::kDistantPast);
  loop.runOnce();
  EXPECT_EQ(fired, 1);
  advance(99 * kMs, kMs);
  EXPECT_EQ(fired, 1);
  advance(kMs, kMs);
  EXPECT_EQ(fired, 2);
}

TEST_F(RunLoopTest, LateTicksAreSkippedNotBurst) {
  auto timer = loop.scheduledTimer(
      0.1, [&] { ++fired; }, true);
  clock.advance(1050 * kMs);  // a stall of ten intervals
  loop.runOnce();
  EXPECT_EQ(fired, 1);
  advance(50 * kMs, kMs);  // back on the original grid at 1.1 s
  EXPECT_EQ(fired, 2);
}

TEST_F(RunLoopTest, OneShotsAndPostedTasksRunOnceAndWorkAddedDuringAPassWaits) {
  std::string order;
  std::shared_ptr<Timer> inner;
  loop.scheduledTimer(
      0.01,
      [&] {
        inner = loop.scheduledTimer(
            0.0, [&] { ++fired; }, false);
      },
      false);
  loop.post([&] { order += "a"; });
  loop.post([&] { order += "b"; });
  EXPECT_EQ(order, "");
  advance(10 * kMs, kMs);
  EXPECT_EQ(order, "ab");
  EXPECT_EQ(fired, 0);
  loop.runOnce();
  EXPECT_EQ(fired, 1);
  advance(500 * kMs);
  EXPECT_EQ(fired, 1);
}

// Posting is the one call other threads may make; the rest belong to the
// loop's own thread, and debug builds stop a caller from anywhere else.
TEST_F(RunLoopTest, OtherThreadsMayPostButNotRunOrScheduleInDebugBuilds) {
  std::thread([this] { loop.post([this] { ++fired; }); }).join();
  loop.runOnce();
  EXPECT_EQ(fired, 1);
#ifdef NDEBUG
  GTEST_SKIP() << "release builds leave the thread check out";
#else
  EXPECT_DEATH(std::thread([this] { loop.runOnce(); }).join(), "called off its owning thread");
  EXPECT_DEATH(std::thread([this] {
                 loop.scheduledTimer(
                     1, [] {}, false);
               }).join(),
               "called off its owning thread");
#endif
}

}  // namespace
}  // namespace kit
