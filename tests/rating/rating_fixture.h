#pragma once

#include <gmock/gmock.h>

#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/animator.h"
#include "kit/ui/label.h"
#include "kit/ui/mail_compose_sink.h"
#include "kit/ui/window.h"
#include "names/preference_keys.h"
#include "rating/rt_service.h"
#include "ui/view_toast.h"

struct ResultRecorder final : RTServiceResultDelegate {
  void onRTServiceResult(int result) override { results.push_back(result); }
  std::vector<int> results;
};

// One launch as the rating service sees it: fresh services on preferences
// that outlive the launch, a window with a root view controller, the view
// animator on the manual clock, and the service.
struct Launch {
  Launch(const std::filesystem::path& prefs, kit::MailSink& mail)
      : platform(prefs, TWINLANES_RESOURCES), animator(platform.clock) {
    platform.defaults.registerDefaults({{prefkey::kLanguages, kit::Value::Array{"en"}}});
    platform.device.model = "TestModel1,2";
    window->setRootViewController(root);
    service = RTService::initWithAppid(1234567890, "support@twinlanes.example", platform.services(),
                                       mail);
  }
  ~Launch() {
    setToastLog(previousToastLog);
    kit::Animator::setCurrent(previous);
  }

  kit::HeadlessPlatform platform;
  kit::Animator animator;
  kit::Animator* previous = kit::Animator::setCurrent(&animator);
  kit::Log* previousToastLog = setToastLog(&platform.log);
  std::shared_ptr<kit::Window> window = std::make_shared<kit::Window>(kit::Size{320, 568});
  std::shared_ptr<kit::ViewController> root = std::make_shared<kit::ViewController>();
  std::shared_ptr<RTService> service;
};

class RatingTest : public ::testing::Test {
 protected:
  static constexpr int64_t kInstallTime = 1'700'000'000;

  RatingTest() { relaunch(); }

  void relaunch() {
    launch_.reset();  // the old launch ends first: its preferences are written
    launch_ = std::make_unique<Launch>(prefs.path(), mail);
    launch_->service->setDelegate(recorder);
  }

  // A new launch `seconds` after the install whose host asks the service.
  bool launchAt(int64_t seconds) {
    relaunch();
    platform().clock.setNow(kInstallTime + seconds);
    return service().decideShowRT(launch_->root);
  }

  void advance(double seconds) {
    for (int i = 0; i < static_cast<int>(seconds * 60 + 0.5); ++i) {
      platform().clock.advance(kit::kNanosPerSecond / 60);
      launch_->animator.tick();
    }
  }

  std::shared_ptr<kit::AlertView> alert() const {
    return kit::AlertView::visibleAlert(*launch_->window);
  }

  // A tap at the centre of the prompt's button, then the fade-out.
  void tapButton(int index) {
    ASSERT_TRUE(alert());
    const kit::Rect frame = alert()->frameOfButtonAtIndex(index).value();
    alert()->touchesBegan({{frame.midX(), frame.midY()}});
    advance(0.5);
  }

  kit::HeadlessPlatform& platform() { return launch_->platform; }
  RTService& service() { return *launch_->service; }
  Launch& launch() { return *launch_; }
  bool rated() { return platform().defaults.boolForKey(prefkey::kRated); }
  int64_t counted() { return platform().defaults.integerForKey(prefkey::kAppOpened); }

  kit::TempDir prefs;
  kit::RecordingMailSink mail;
  std::shared_ptr<ResultRecorder> recorder = std::make_shared<ResultRecorder>();
  std::unique_ptr<Launch> launch_;
};
