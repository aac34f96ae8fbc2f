#include "kit/foundation/notification_center.h"

#include <gtest/gtest.h>

#include <string>

namespace kit {
namespace {

class NotificationCenterTest : public ::testing::Test {
 protected:
  // Registers an observer that appends its tag to `calls` (and runs `also`).
  void observe(const void* who, const std::string& name, std::string tag,
               std::function<void()> also = {}) {
    center.addObserver(who, name, [this, tag, also](const Notification& n) {
      calls += tag;
      last = n;
      if (also)
        also();
    });
  }

  NotificationCenter center;
  std::string calls;
  Notification last;
  int a = 0, b = 0, c = 0;
};

TEST_F(NotificationCenterTest, DeliversSynchronouslyInRegistrationOrder) {
  observe(&a, "showad", "a");
  observe(&b, "soundchange", "x");
  observe(&c, "showad", "c");
  observe(&b, "showad", "b");
  center.postNotificationName("showad");
  EXPECT_EQ(calls, "acb");
  EXPECT_TRUE(last.object.isNil());

  center.postNotificationName("soundchange", Value(false));
  EXPECT_EQ(calls, "acbx");
  EXPECT_EQ(last.object, Value(false));
}

TEST_F(NotificationCenterTest, ObserverRemovedDuringPostIsNotCalledAfterwards) {
  observe(&a, "showad", "a", [&] {
    center.removeObserver(&b);
    center.removeObserver(&a, "showad");
  });
  observe(&b, "showad", "b");
  observe(&c, "showad", "c");
  center.postNotificationName("showad");
  center.postNotificationName("showad");
  EXPECT_EQ(calls, "acc");
}

TEST_F(NotificationCenterTest, PostsFromAHandlerGoAtOnceButNewObserversWaitForTheNextPost) {
  observe(&a, "showad", "a", [&] {
    center.postNotificationName("soundchange", Value(true));
    if (calls == "as")
      observe(&b, "showad", "b");
  });
  observe(&c, "soundchange", "s");
  center.postNotificationName("showad");
  EXPECT_EQ(calls, "as");
  center.postNotificationName("showad");
  EXPECT_EQ(calls, "asasb");
  EXPECT_EQ(center.postCount("showad"), 2u);
  EXPECT_EQ(center.postCount("never"), 0u);
}

}  // namespace
}  // namespace kit
