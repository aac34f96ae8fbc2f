#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "kit/ui/alert_view.h"
#include "kit/ui/animator.h"
#include "kit/ui/label.h"
#include "kit/ui/mail_compose_sink.h"
#include "kit/ui/window.h"
#include "rating/rt_service.h"
#include "ui/view_toast.h"

// Records the result codes the service reports.
class ResultRecorder final : public RTServiceResultDelegate {
 public:
  void onRTServiceResult(int result) override { results.push_back(result); }
  std::vector<int> results;
};

// One launch of the game as the rating service sees it: fresh platform
// services on a preferences folder that outlives the launches, a window with
// a root view controller, the view animator on the platform's manual clock,
// and the service itself. Launches end as the application ends: the
// preferences are written.
struct Launch {
  Launch(const std::filesystem::path& prefs, kit::MailSink& mail)
      : platform(prefs, TWINLANES_RESOURCES),
        animator(platform.clock),
        previous(kit::Animator::setCurrent(&animator)),
        previousToastLog(setToastLog(&platform.log)) {
    platform.defaults.registerDefaults({{"AppleLanguages", kit::Value::Array{"en"}}});
    platform.device.model = "TestModel1,2";
    platform.device.systemVersion = "12.1";
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
  kit::Animator* previous;
  kit::Log* previousToastLog;
  std::shared_ptr<kit::Window> window = std::make_shared<kit::Window>(kit::Size{320, 568});
  std::shared_ptr<kit::ViewController> root = std::make_shared<kit::ViewController>();
  std::shared_ptr<RTService> service;
};

class RatingTest : public ::testing::Test {
 protected:
  static constexpr int64_t kInstallTime = 1'700'000'000;

  RatingTest() { relaunch(); }

  // Ends the running launch (if any) and starts the next one.
  void relaunch() {
    launch_.reset();
    launch_ = std::make_unique<Launch>(prefs.path(), mail);
    launch_->service->setDelegate(recorder);
  }

  // A new launch at `seconds` after the install whose host asks the service.
  bool launchAt(int64_t seconds) {
    relaunch();
    platform().clock.setNow(kInstallTime + seconds);
    return service().decideShowRT(launch_->root);
  }

  // Moves time on in 60 Hz frames, ticking the view animations.
  void advance(double seconds) {
    const int64_t frames = static_cast<int64_t>(seconds * 60 + 0.5);
    for (int64_t i = 0; i < frames; ++i) {
      platform().clock.advance(kit::kNanosPerSecond / 60);
      launch_->animator.tick();
    }
  }

  std::shared_ptr<kit::AlertView> alert() const {
    return kit::AlertView::visibleAlert(*launch_->window);
  }

  // A tap at the centre of the prompt's button, then the fade-out.
  void tapButton(int index) {
    auto shown = alert();
    ASSERT_TRUE(shown);
    std::optional<kit::Rect> frame = shown->frameOfButtonAtIndex(index);
    ASSERT_TRUE(frame);
    shown->touchesBegan({{frame->midX(), frame->midY()}});
    advance(0.5);
  }

  // The texts of the toasts on the root view.
  std::vector<std::string> toasts() const {
    std::vector<std::string> texts;
    for (const auto& view : launch_->root->view()->subviews()) {
      for (const auto& inner : view->subviews()) {
        if (auto label = std::dynamic_pointer_cast<kit::Label>(inner))
          texts.push_back(label->text());
      }
    }
    return texts;
  }

  kit::HeadlessPlatform& platform() { return launch_->platform; }
  RTService& service() { return *launch_->service; }
  Launch& launch() { return *launch_; }
  bool rated() { return platform().defaults.boolForKey("cz_rated"); }
  int64_t counted() { return platform().defaults.integerForKey("cz_appopened"); }

  kit::TempDir prefs;
  kit::RecordingMailSink mail;
  std::shared_ptr<ResultRecorder> recorder = std::make_shared<ResultRecorder>();

 private:
  std::unique_ptr<Launch> launch_;
};
