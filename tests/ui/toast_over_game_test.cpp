// A toast over the running game, as the feedback path shows one: the real
// application in a window (SDL's dummy driver, one pixel per point), driven
// frame by frame, and its screenshots read back.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "app/app_scenario_host.h"
#include "app/host_services.h"
#include "app/scenario_runner.h"
#include "kit/backends/desktop/desktop_window_system.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/image.h"
#include "ui/view_toast.h"

namespace {

TEST(ToastOverGame, FeedbackToastShowsOverTheHomeScreenAndGoesAway) {
  if (!std::getenv("SDL_VIDEODRIVER"))
    setenv("SDL_VIDEODRIVER", "dummy", 1);
  kit::TempDir dir{"twinlanes-toast-over-game"};
  kit::HeadlessPlatform platform{dir.path() / "prefs", TWINLANES_RESOURCES};
  NoHostServices hostServices;
  kit::DesktopWindowSystem windows;
  AppScenarioHost host{{TWINLANES_RESOURCES, true, 1, false, kit::RendererChoice::Auto, &windows},
                       platform.services(),
                       hostServices};
  std::ostringstream out;
  ScenarioRunner runner{platform, host, out};
  // The brightest channel of each pixel of a screenshot, row by row.
  auto screenshot = [&] {
    const std::string file = (dir.path() / "shot.png").string();
    EXPECT_TRUE(host.screenshot(file));
    const kit::Image image = kit::Image::loadPng(file).value();
    return [image](double x, double y) {
      const auto p = image.pixelAt(int(x), int(y));
      return std::max({p.red, p.green, p.blue});
    };
  };
  runner.setSeed(5);
  runner.setDevice(kit::Device::Idiom::Phone, {320, 568});
  runner.start();
  runner.runFrames(3);
  auto root = host.game()->viewController()->view();
  const auto before = screenshot();
  makeToast(*root, "Mail is not available on this device", 1.5, "center");
  runner.runFrames(20);  // faded in
  const auto shown = screenshot();
  auto toast = root->subviews().back();
  const kit::Rect panel = root->convertRectToView(toast->frame(), nullptr);
  const kit::Rect text = toast->convertRectToView(toast->subviews()[0]->frame(), nullptr);

  // The panel darkens whatever is under it, and its text is white on it.
  const double x = panel.minX() + 5, y = panel.midY();
  EXPECT_LT(shown(x, y), std::max(40, before(x, y) / 3));
  int white = 0;
  for (double ty = text.minY(); ty < text.maxY(); ++ty) {
    for (double tx = text.minX(); tx < text.maxX(); ++tx)
      white += shown(tx, ty) > 200;
  }
  EXPECT_GT(white, 80);

  runner.runFrames(100);  // 1.5 s shown, 0.2 s fading out, and a little
  EXPECT_EQ(toast->superview(), nullptr);
  EXPECT_NEAR(screenshot()(x, y), before(x, y), 2);
}

}  // namespace
