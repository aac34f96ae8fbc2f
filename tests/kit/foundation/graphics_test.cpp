#include "kit/foundation/graphics.h"
#include "kit/platform/backend.h"

#include <gtest/gtest.h>

#include <thread>

namespace kit {
namespace {

// The test binary's main installs graphics of its own; each test puts them
// back as it found them.
class GraphicsTest : public ::testing::Test {
 protected:
  ~GraphicsTest() override { Graphics::setCurrent(before_); }

  Graphics* before_ = Graphics::installed();
};

TEST_F(GraphicsTest, InstallingReturnsThePreviousAndDestroyingUninstallsOnlyItself) {
  auto first = makeBackendGraphics();
  auto second = makeBackendGraphics();
  EXPECT_EQ(Graphics::setCurrent(first.get()), before_);
  EXPECT_EQ(Graphics::setCurrent(second.get()), first.get());
  first.reset();  // not installed: changes nothing
  EXPECT_EQ(&Graphics::current(), second.get());
  second.reset();
  EXPECT_EQ(Graphics::installed(), nullptr);
}

TEST_F(GraphicsTest, AWorkerDrawsWithItsOwnGraphicsAfterTheOwnerDropsThem) {
  auto owned = makeBackendGraphics();
  Graphics::setCurrent(owned.get());
  std::weak_ptr<Graphics> watch = owned;
  std::shared_ptr<Graphics> pinned = owned->weak_from_this().lock();

  Graphics::setCurrent(before_);  // the application ends
  owned.reset();                  // and so does the program
  ASSERT_FALSE(watch.expired());

  Graphics* seen = nullptr;
  std::thread worker([&seen, graphics = std::move(pinned)]() mutable {
    Graphics::ThreadUse use(std::move(graphics));
    seen = &Graphics::current();
  });
  worker.join();
  EXPECT_TRUE(watch.expired()) << "the worker's pin is the last owner";
  EXPECT_NE(seen, nullptr);
  EXPECT_NE(seen, before_);
  EXPECT_EQ(Graphics::installed(), before_) << "the main thread never saw the worker's";
}

TEST_F(GraphicsTest, ThreadUseWithNothingPinnedKeepsTheInstalledGraphics) {
  Graphics::ThreadUse use(nullptr);
  EXPECT_EQ(Graphics::installed(), before_);
}

}  // namespace
}  // namespace kit
