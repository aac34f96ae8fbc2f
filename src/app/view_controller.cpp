#include "app/view_controller.h"

#include <cstdint>
#include <string>

#include "kit/render/sprite_view.h"
#include "names/launch_defaults.h"
#include "names/notification_names.h"
#include "names/preference_keys.h"
#include "names/store_link.h"

ViewController::ViewController(const kit::Services& services, HostServices& host,
                               std::optional<unsigned> seed)
    : services_(services), host_(host), seed_(seed) {}

// The controller lives for the whole process and never stops observing;
// its handlers hold it weakly, so a controller that does go is not called.
ViewController::~ViewController() = default;

void ViewController::viewDidLoad() {
  kit::ViewController::viewDidLoad();

  registerLaunchDefaults(services_.defaults);

  kit::NotificationCenter& center = services_.notifications;
  std::weak_ptr<kit::ViewController> weak = weak_from_this();
  auto forward = [weak](void (ViewController::*handler)(const kit::Notification&)) {
    return [weak, handler](const kit::Notification& notification) {
      if (auto self = weak.lock())
        (static_cast<ViewController&>(*self).*handler)(notification);
    };
  };
  center.removeObserver(this, notification::kShowAd);
  center.addObserver(this, notification::kShowAd, forward(&ViewController::showAd));
  center.removeObserver(this, notification::kSoundChange);
  center.addObserver(this, notification::kSoundChange, forward(&ViewController::soundchange));

  auto skView = std::dynamic_pointer_cast<kit::SpriteView>(view());
  if (skView) {
    skView->setShowsFPS(false);
    skView->setShowsNodeCount(false);
  } else {
    services_.log.write("the host view is not a sprite view: the game cannot be shown");
  }

  gameScene = GameScene::sceneWithSize(view()->bounds().size, services_, seed_);
  gameScene->setScaleMode(kit::SceneScaleMode::AspectFill);
  if (skView)
    skView->presentScene(gameScene);

  host_.askRatingService(*this);

  const std::shared_ptr<kit::View> banner = adView();
  const kit::Size size = banner ? banner->frame().size : kit::Size{};
  host_.placeBanner(0.0f, 0.0f, static_cast<float>(size.width), static_cast<float>(size.height),
                    banner);
}

void ViewController::viewWillAppear(bool) {}

void ViewController::viewWillDisappear(bool) {}

void ViewController::didReceiveMemoryWarning() {
  kit::ViewController::didReceiveMemoryWarning();
}

void ViewController::viewDidUnload() {}

void ViewController::showAd(const kit::Notification&) {
  kit::UserDefaults& defaults = services_.defaults;
  // 32-bit arithmetic, wrapping rather than overflowing.
  const auto count = static_cast<int32_t>(
      static_cast<uint32_t>(static_cast<int32_t>(defaults.integerForKey(prefkey::kCnt))) + 1u);
  defaults.setInteger(count, prefkey::kCnt);
  defaults.synchronize();
  if (count % 2 == 0)
    host_.tryShowInterstitial(*this, true);
}

void ViewController::soundchange(const kit::Notification&) {}

void ViewController::rateApp(const std::shared_ptr<kit::View>&) {
  services_.urlOpener.openURL(storelink::gamePage(services_.bundle));
}

void ViewController::onSound(const std::shared_ptr<kit::View>&) {
  kit::UserDefaults& defaults = services_.defaults;
  defaults.setBool(!defaults.boolForKey(prefkey::kSound), prefkey::kSound);
  defaults.synchronize();
}

void ViewController::onShare(const std::shared_ptr<kit::View>&) {}

void ViewController::onAgain(const std::shared_ptr<kit::View>&) {}

void ViewController::setOutlet(const std::string& name, std::shared_ptr<kit::View> view) {
  if (name == "adView")
    _adView = view;
}
