// A toast over the running game, as the feedback path shows one: the real
// application in a window (SDL's dummy driver, one pixel per point), driven
// frame by frame, and its screenshots read back.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "app/app_scenario_host.h"
#include "app/host_services.h"
#include "app/scenario_runner.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/image.h"
#include "kit/ui/label.h"
#include "ui/view_toast.h"

namespace {

class ToastOverGameTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::getenv("SDL_VIDEODRIVER"))
      setenv("SDL_VIDEODRIVER", "dummy", 1);
    previousLog_ = setToastLog(&platform.log);
    runner.setSeed(5);
    runner.setDevice(kit::Device::Idiom::Phone, {320, 568});
    runner.start();
    runner.runFrames(3);
  }
  void TearDown() override { setToastLog(previousLog_); }

  std::shared_ptr<kit::View> rootView() { return host.game()->viewController()->view(); }

  kit::Image screenshot(const std::string& name) {
    const std::string file = (dir.path() / name).string();
    std::string error;
    EXPECT_TRUE(host.screenshot(file, &error)) << error;
    auto image = kit::Image::loadPng(file, 1, &error);
    EXPECT_TRUE(image) << error;
    return image ? *image : kit::Image::blank({1, 1}, 1);
  }

  static int brightness(const kit::Image& image, double x, double y) {
    const auto p = image.pixelAt(static_cast<int>(x), static_cast<int>(y));
    return std::max({p.red, p.green, p.blue});
  }

  kit::TempDir dir{"twinlanes-toast-over-game"};
  kit::HeadlessPlatform platform{dir.path() / "prefs", TWINLANES_RESOURCES};
  NoHostServices hostServices;
  AppScenarioHost host{{TWINLANES_RESOURCES, true, 1}, platform.services(), hostServices};
  std::ostringstream out;
  ScenarioRunner runner{platform, host, out};

 private:
  kit::Log* previousLog_ = nullptr;
};

TEST_F(ToastOverGameTest, FeedbackToastShowsOverTheHomeScreenAndGoesAway) {
  const kit::Image before = screenshot("before.png");
  makeToast(*rootView(), "Mail is not available on this device", 1.5, "center");
  runner.runFrames(20);  // faded in
  const kit::Image shown = screenshot("toast.png");

  auto toast = rootView()->subviews().back();
  const kit::Rect panel = toast->superview()->convertRectToView(toast->frame(), nullptr);
  const kit::Rect text = toast->convertRectToView(toast->subviews()[0]->frame(), nullptr);
  EXPECT_NEAR(panel.midX(), 160, 0.5);

  // The panel darkens whatever is under it, and its text is white on it.
  EXPECT_LT(brightness(shown, panel.minX() + 5, panel.midY()),
            std::max(40, brightness(before, panel.minX() + 5, panel.midY()) / 3));
  int white = 0;
  for (double y = text.minY(); y < text.maxY(); ++y) {
    for (double x = text.minX(); x < text.maxX(); ++x)
      white += brightness(shown, x, y) > 200;
  }
  EXPECT_GT(white, 80);

  runner.runFrames(100);  // 1.5 s shown, 0.2 s fading out, and a little
  const kit::Image after = screenshot("after.png");
  EXPECT_EQ(toast->superview(), nullptr);
  EXPECT_NEAR(brightness(after, panel.minX() + 5, panel.midY()),
              brightness(before, panel.minX() + 5, panel.midY()), 2);
  EXPECT_FALSE(platform.log.contains("Invalid position"));
}

}  // namespace
