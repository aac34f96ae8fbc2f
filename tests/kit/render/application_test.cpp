// The application with a real window (SDL's dummy driver): launch order,
// input from mouse, touch screen and keyboard routed through the view tree,
// lifecycle events, quitting.
#include <SDL.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "kit/backends/desktop/desktop_window_system.h"
#include "kit/backends/desktop/render_window.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/render/application.h"
#include "kit/render/sprite_view.h"
#include "kit/scene/frame_driver.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/screen.h"
#include "kit/ui/view_controller.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

class TouchScene : public Scene {
 public:
  using Scene::Scene;
  void touchesBegan(const TouchSet& touches, const Event*) override {
    std::vector<Point> points;
    for (const Touch& t : touches)
      points.push_back(t.locationInScene());
    events.push_back(points);
  }
  std::vector<std::vector<Point>> events;
};

// The host controller of the test layout: its sprite view shows a scene of
// its own size.
class HostController : public ViewController, public OutletTarget {
 public:
  void setOutlet(const std::string&, std::shared_ptr<View>) override {}
  void viewDidLoad() override {
    auto sprite = std::static_pointer_cast<SpriteView>(view());
    scene = std::make_shared<TouchScene>(sprite->bounds().size);
    scene->setScaleMode(SceneScaleMode::AspectFill);
    sprite->presentScene(scene);
  }
  std::shared_ptr<TouchScene> scene;
};

class RecordingDelegate : public ApplicationDelegate {
 public:
  bool applicationDidFinishLaunchingWithOptions(Application&, const Value::Dictionary&) override {
    calls.push_back("didFinishLaunching");
    windowAtLaunch = window() != nullptr;
    return true;
  }
  void applicationWillResignActive(Application&) override { calls.push_back("resign"); }
  void applicationDidEnterBackground(Application&) override { calls.push_back("background"); }
  void applicationWillEnterForeground(Application&) override { calls.push_back("foreground"); }
  void applicationDidBecomeActive(Application&) override { calls.push_back("active"); }
  void applicationWillTerminate(Application&) override { calls.push_back("terminate"); }
  std::vector<std::string> calls;
  bool windowAtLaunch = false;
};

class ApplicationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::getenv("SDL_VIDEODRIVER"))
      SDL_SetHint(SDL_HINT_VIDEODRIVER, "dummy");
    ApplicationOptions options;
    options.windowScale = 1;
    delegate = std::make_shared<RecordingDelegate>();
    app = std::make_unique<Application>(options, delegate, platform.services(), &windows);
    app->registerViewControllerClass("ViewController", [this] {
      host = std::make_shared<HostController>();
      return host;
    });
    Status launched = app->launch();
    ASSERT_TRUE(launched) << launched.error();
  }

  // Pushes SDL events as the desktop would deliver them, then runs a frame.
  void push(SDL_Event e) { ASSERT_EQ(SDL_PushEvent(&e), 1); }
  void click(int x, int y, uint32_t which = 0) {
    SDL_Event e{};
    e.button = {SDL_MOUSEBUTTONDOWN, 0, 0, which, SDL_BUTTON_LEFT, SDL_PRESSED, 1, 0, x, y};
    push(e);
  }
  void finger(double x, double y, SDL_FingerID id, SDL_TouchID device = 1) {
    SDL_Event e{};
    e.type = SDL_FINGERDOWN;
    e.tfinger.touchId = device;
    e.tfinger.fingerId = id;
    e.tfinger.x = static_cast<float>(x / 320);
    e.tfinger.y = static_cast<float>(y / 618);
    push(e);
  }
  void key(SDL_Keycode sym, uint16_t mod = 0) {
    SDL_Event e{};
    e.type = SDL_KEYDOWN;
    e.key.keysym = {SDL_SCANCODE_UNKNOWN, sym, mod, 0};
    push(e);
  }
  void windowEvent(SDL_WindowEventID id) {
    SDL_Event e{};
    e.window = {SDL_WINDOWEVENT, 0, 1, static_cast<uint8_t>(id), 0, 0, 0, 0, 0};
    push(e);
  }
  const std::vector<std::vector<Point>>& sceneEvents() const { return host->scene->events; }

  TempDir prefs{"twinlanes-app-test"};
  HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  DesktopWindowSystem windows;
  std::shared_ptr<RecordingDelegate> delegate;
  std::shared_ptr<HostController> host;
  std::unique_ptr<Application> app;
};

TEST_F(ApplicationTest, LaunchHandsTheWindowToTheDelegateThenLoadsTheHost) {
  EXPECT_TRUE(delegate->windowAtLaunch);
  EXPECT_EQ(delegate->window(), app->window());
  EXPECT_EQ(delegate->calls, (std::vector<std::string>{"didFinishLaunching", "active"}));
  ASSERT_TRUE(host && host->scene);
  EXPECT_EQ(host->scene->size(), (Size{320, 568}));
  EXPECT_EQ(app->frameDriver().scene(), host->scene);
}

TEST_F(ApplicationTest, ClicksAndFingersBecomeSceneTouchesButNotFromTheBannerStrip) {
  click(80, 100);
  app->runFrame();
  app->runFrame();
  ASSERT_EQ(sceneEvents().size(), 1u);
  EXPECT_EQ(sceneEvents()[0], (std::vector<Point>{{80, 468}}));
  // Two fingers landing in the same frame are one event.
  finger(40, 300, 1);
  finger(280, 300, 2);
  app->runFrame();
  ASSERT_EQ(sceneEvents().size(), 2u);
  EXPECT_EQ(sceneEvents()[1].size(), 2u);
  // Mouse events made from touches and touches made from the mouse count once.
  finger(100, 100, 1);
  click(100, 100, SDL_TOUCH_MOUSEID);
  finger(200, 100, 0, SDL_MOUSE_TOUCHID);
  click(200, 100);
  app->runFrame();
  ASSERT_EQ(sceneEvents().size(), 3u);
  EXPECT_EQ(sceneEvents()[2].size(), 2u);
  // Touches in the banner strip never reach the scene.
  click(160, 600);
  finger(10, 590, 1);
  app->runFrame();
  EXPECT_EQ(sceneEvents().size(), 3u);
}

TEST_F(ApplicationTest, ArrowKeysTapTheHalvesAndBothInOneFrameAreOneEvent) {
  key(SDLK_LEFT);
  app->runFrame();
  ASSERT_EQ(sceneEvents().size(), 1u);
  EXPECT_LT(sceneEvents()[0][0].x, 160);
  key(SDLK_a);
  key(SDLK_l);
  app->runFrame();
  ASSERT_EQ(sceneEvents().size(), 2u);
  ASSERT_EQ(sceneEvents()[1].size(), 2u);
  EXPECT_LT(sceneEvents()[1][0].x, 160);
  EXPECT_GT(sceneEvents()[1][1].x, 160);
}

TEST_F(ApplicationTest, SpaceAndEnterPressTheButtonTheHostPointsAtButNeverWithAlt) {
  key(SDLK_SPACE);
  app->runFrame();
  EXPECT_TRUE(sceneEvents().empty());  // no hook, no button
  std::optional<Point> button = Point{160, 284};
  app->setPrimaryButtonHook([&] { return button; });
  key(SDLK_RETURN);
  app->runFrame();
  ASSERT_EQ(sceneEvents().size(), 1u);
  EXPECT_EQ(sceneEvents()[0], (std::vector<Point>{{160, 284}}));
  key(SDLK_RETURN, KMOD_RALT);  // fullscreen, never play
  app->runFrame();
  EXPECT_TRUE(app->platformWindow()->isFullscreen());
  EXPECT_EQ(sceneEvents().size(), 1u);
  key(SDLK_F11);
  app->runFrame();
  EXPECT_FALSE(app->platformWindow()->isFullscreen());
  // A view covering the scene keeps the keys from it.
  app->window()->addSubview(std::make_shared<View>(Rect{{0, 0}, {320, 568}}));
  key(SDLK_LEFT);
  key(SDLK_SPACE);
  app->runFrame();
  EXPECT_EQ(sceneEvents().size(), 1u);
}

TEST_F(ApplicationTest, MinimiseAndRestoreReachTheDelegateInOrder) {
  delegate->calls.clear();
  windowEvent(SDL_WINDOWEVENT_MINIMIZED);
  app->pollEvents();
  windowEvent(SDL_WINDOWEVENT_RESTORED);
  windowEvent(SDL_WINDOWEVENT_FOCUS_LOST);
  app->pollEvents();
  EXPECT_EQ(delegate->calls,
            (std::vector<std::string>{"resign", "background", "foreground", "active", "resign"}));
}

TEST_F(ApplicationTest, EscapeQuitsAndTerminationWritesThePreferencesOnce) {
  platform.defaults.setInteger(7, "best");
  key(SDLK_ESCAPE);
  app->runFrame();
  EXPECT_TRUE(app->quitRequested());
  EXPECT_EQ(app->run(), 0);  // returns at once, terminating
  app->terminate();
  EXPECT_EQ(std::count(delegate->calls.begin(), delegate->calls.end(), "terminate"), 1);
  std::ifstream file(platform.defaults.store().location());
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("\"best\""), std::string::npos) << text;
}

class AlertAnswers : public AlertViewDelegate {
 public:
  void alertViewClickedButtonAtIndex(AlertView&, int index) override { clicked.push_back(index); }
  std::vector<int> clicked;
};

TEST_F(ApplicationTest, AnAlertTakesTheKeysAndTheTapsBeforeTheGame) {
  auto answers = std::make_shared<AlertAnswers>();
  auto show = [&] {
    auto alert = std::make_shared<AlertView>("Rate us", "Please", answers, "Later",
                                             std::vector<std::string>{"Rate"});
    alert->show(app->window());
    app->runFrame();
    return alert;
  };
  show();
  key(SDLK_LEFT);    // moves the alert's highlight, steers nothing
  key(SDLK_ESCAPE);  // cancels the alert, does not quit
  app->runFrame();
  EXPECT_FALSE(app->quitRequested());
  EXPECT_EQ(answers->clicked, std::vector<int>{0});
  EXPECT_TRUE(sceneEvents().empty());

  auto again = show();
  const Rect button = *again->frameOfButtonAtIndex(1);
  const Point p = again->convertPointToView({button.midX(), button.midY()}, nullptr);
  click(static_cast<int>(p.x), static_cast<int>(p.y));
  click(10, 10);  // outside the panel: swallowed, not a scene tap
  app->runFrame();
  EXPECT_EQ(answers->clicked, (std::vector<int>{0, 1}));
  EXPECT_TRUE(sceneEvents().empty());
}

TEST(ApplicationScreen, MainScreenAndGraphicsAreTheApplicationsOnlyWhileItLives) {
  TempDir prefs{"twinlanes-app-test"};
  HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  Graphics* before = Graphics::installed();
  ApplicationOptions options;
  options.window = false;
  options.profile = "pad";
  {
    Application app(options, std::make_shared<ApplicationDelegate>(), platform.services(), nullptr);
    app.registerViewControllerClass("ViewController",
                                    [] { return std::make_shared<HostController>(); });
    Status launched = app.launch();
    ASSERT_TRUE(launched) << launched.error();
    EXPECT_NE(Screen::main().bounds().width, Screen::kDefaultBounds.width);
    EXPECT_EQ(&Graphics::current(), platform.graphics.get());
  }
  EXPECT_EQ(Graphics::installed(), before);
  EXPECT_EQ(Screen::main().bounds().width, Screen::kDefaultBounds.width);
  EXPECT_EQ(Screen::main().scale(), Screen::kDefaultScale);
}

TEST(ApplicationWithoutDisplay, LaunchSaysSoAndNothingCrashes) {
  SDL_SetHintWithPriority(SDL_HINT_VIDEODRIVER, "no-such-display", SDL_HINT_OVERRIDE);
  TempDir prefs{"twinlanes-app-test"};
  HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  ApplicationOptions options;
  DesktopWindowSystem windows;
  Application app(options, std::make_shared<ApplicationDelegate>(), platform.services(), &windows);
  Status launched = app.launch();
  ASSERT_FALSE(launched);
  EXPECT_NE(launched.error().find("no display"), std::string::npos) << launched.error();
  SDL_ResetHint(SDL_HINT_VIDEODRIVER);
}

}  // namespace
}  // namespace kit
