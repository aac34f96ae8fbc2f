#include <iostream>
#include <memory>

#include "app/command_line.h"
#include "app/game_ads.h"
#include "app/game_application.h"
#include "kit/backends/desktop/desktop_mail_sink.h"
#include "kit/backends/desktop/desktop_services.h"
#include "kit/backends/desktop/desktop_window_system.h"
#include "kit/backends/desktop/render_window.h"
#include "kit/foundation/preferred_languages.h"
#include "kit/ui/window.h"
#include "ui/progress_demo.h"

namespace {

// The game in a window, for a player, on the desktop's real services.
int runGame(const Flags& flags, kit::DesktopWindowSystem& windows) {
  const std::filesystem::path resources = findResources();
  GameApplication::Options options;
  options.application.title = "Twin Lanes";
  options.application.icon = resources / "icons" / "twinlanes-256.png";
  options.application.profile = flags.device;
  options.application.sceneSize = flags.size;
  options.application.fullscreen = flags.fullscreen;
  options.application.windowScale = flags.scale;
  options.application.renderer = flags.renderer;
  options.seed = flags.seed;
  options.autoplay = flags.autoplay;

  std::string why;
  if (!kit::RenderWindow::displayAvailable(&why)) {
    sayNoDisplay(why);
    return 1;
  }
  kit::DesktopServices desktop(flags.prefsDir, resources);
  GameAds ads([](const kit::Services& services) -> std::unique_ptr<kit::MailSink> {
    return std::make_unique<kit::DesktopMailSink>(services.urlOpener, services.log);
  });
  GameApplication game(options, ads, desktop.services(), &windows);
  if (sayPrefsInUse(game.application().services().defaults))
    return 1;
  kit::registerPreferredLanguages(game.application().services().defaults, flags.language);
  ads.start(game.application().services(), false);
  // The ads borrow the game's services: they stop before the game goes.
  struct StopAdsFirst {
    GameAds& ads;
    ~StopAdsFirst() { ads.stop(); }
  } stopAdsFirst{ads};
  if (const kit::Status launched = game.launch(); !launched) {
    std::cerr << "twinlanes: " << launched.error() << '\n';
    return 1;
  }
  // Nothing in the game shows the progress overlay; this lets a person see it.
  std::unique_ptr<ProgressDemo> progressDemo;
  if (flags.progressDemo) {
    progressDemo =
        runProgressDemo(game.application().window(), game.application().services().runLoop);
  }
  const int status = game.run(flags.frames);
  if (!flags.screenshot.empty()) {
    if (kit::Status saved = game.application().saveScreenshot(flags.screenshot); !saved) {
      std::cerr << "twinlanes: " << saved.error() << '\n';
      return 1;
    }
  }
  return status;
}

}  // namespace

// The application's entry point on the desktop: the command line decides how
// the application (with AppDelegate as its delegate) runs, in the desktop's
// windows.
int main(int argc, char** argv) {
  kit::DesktopWindowSystem windows;
  ProgramBackend backend;
  backend.runGame = [&windows](const Flags& flags) { return runGame(flags, windows); };
  backend.windows = &windows;
  backend.displayAvailable = [](std::string* why) {
    return kit::RenderWindow::displayAvailable(why);
  };
  return twinlanesMain(argc, argv, backend);
}
