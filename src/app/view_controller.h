#pragma once

#include <memory>
#include <optional>

#include "app/host_services.h"
#include "game/game_scene.h"
#include "kit/foundation/notification_center.h"
#include "kit/foundation/services.h"
#include "kit/render/interface_layout.h"
#include "kit/ui/view_controller.h"

// The root view controller that hosts the game. Its view is the layout's
// sprite view; when the view loads it registers the preferences' defaults,
// starts the launch's counters afresh, observes the scene's notifications,
// creates and presents the game scene, lets the rating service decide about a
// prompt and places the banner in the adView container. Every second game
// over it asks for an interstitial. The services and the host
// services are borrowed and outlive it; it lives for the whole process.
class ViewController final : public kit::ViewController, public kit::OutletTarget {
 public:
  // `seed` seeds the scene's random numbers (the time when not given).
  ViewController(const kit::Services& services, HostServices& host,
                 std::optional<unsigned> seed = std::nullopt);
  ~ViewController() override;

  // --- Fields, in declaration order ----------------------------------------------
  int mode = 0;  // declared, never used
  // Declared and released, never created: the game plays no music.
  std::shared_ptr<void> backgroundMusicPlayer;
  std::shared_ptr<GameScene> gameScene;
  // The banner container from the interface layout (an outlet), never
  // assigned in code.
  std::shared_ptr<kit::View> adView() const { return _adView.lock(); }

  // --- View lifecycle --------------------------------------------------------------
  void viewDidLoad() override;
  // Kept on purpose: entering the foreground has no effect of the game's own.
  void viewWillAppear(bool animated) override;
  // Kept on purpose: entering the background neither pauses nor saves the game.
  void viewWillDisappear(bool animated) override;
  void didReceiveMemoryWarning() override;
  // The platform calls nothing here any more; kept as the controller's hook.
  void viewDidUnload();

  // --- Notifications -----------------------------------------------------------------
  // The ad notification: counts the game overs of this launch; every second one
  // tries an interstitial.
  void showAd(const kit::Notification& notification);
  // The sound notification: kept on purpose as an empty hook (no audio to switch).
  void soundchange(const kit::Notification& notification);

  // --- Actions for controls of the layout (none are wired) ----------------------------
  // Opens the game's store page, as the scene's rate button would.
  void rateApp(const std::shared_ptr<kit::View>& sender);
  // Flips the sound switch in the preferences and writes them; the scene is not told.
  void onSound(const std::shared_ptr<kit::View>& sender);
  // Kept on purpose as an empty action.
  void onShare(const std::shared_ptr<kit::View>& sender);
  // Kept on purpose as an empty action.
  void onAgain(const std::shared_ptr<kit::View>& sender);

  // kit::OutletTarget: "adView".
  void setOutlet(const std::string& name, std::shared_ptr<kit::View> view) override;

 private:
  kit::Services services_;
  HostServices& host_;
  std::optional<unsigned> seed_;
  std::weak_ptr<kit::View> _adView;
};
