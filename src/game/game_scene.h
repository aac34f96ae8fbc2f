#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "game/car.h"
#include "game/obstacle.h"
#include "kit/foundation/services.h"
#include "kit/foundation/timer.h"
#include "kit/scene/label_node.h"
#include "kit/scene/physics_contact.h"
#include "kit/scene/scene.h"
#include "kit/scene/sprite_node.h"

// The one scene of the game: four roads with two cars, the falling circles
// and rectangles, the score, and the home, help and game-over screens above
// them. It is its own physics world's contact delegate. It owns every node,
// the spawn timer and the obstacle list for its whole life; the services are
// borrowed and must outlive it. Create it with sceneWithSize and present it
// on a kit::FrameDriver. Main thread only.
//
// The fields are the scene's state, in their declared order. They are public
// so that the host, the scenario runner, the autoplayer and tests can read
// them; only the scene's own operations write them. Run state lives in the
// three flags (Home: neither startFlag nor overFlag; Playing: startFlag;
// Over: overFlag), per-road state in four numbered fields.
class GameScene final : public kit::Scene, public kit::PhysicsContactDelegate {
 private:
  struct Token {
    explicit Token() = default;
  };

 public:
  // The scene with everything built and the home screen up, nothing moving.
  // The random source is seeded once here: with `seed` when given, else with the
  // clock's wall time in seconds.
  static std::shared_ptr<GameScene> sceneWithSize(kit::Size size, const kit::Services& services,
                                                  std::optional<unsigned> seed = {});

  GameScene(Token, kit::Size size, const kit::Services& services, std::optional<unsigned> seed);
  ~GameScene() override;

  // Physics categories: each kind wants to hear only about the other, and
  // nothing collides physically.
  static constexpr uint32_t kCarCategory = 1;
  static constexpr uint32_t kObstacleCategory = 2;

  // --- Frame callbacks ---------------------------------------------------------

  // Routes a touch-began event by the flags: the home buttons, steering, or
  // (once the game-over screen is fully opaque) the game-over buttons.
  void touchesBegan(const kit::TouchSet& touches, const kit::Event* event) override;
  // Ends the run when a circle has fallen past the cars uncollected. The
  // time is not consulted.
  void update(double currentTime) override;
  // A car met an obstacle: a circle scores, a rectangle crashes.
  void didBeginContact(const kit::PhysicsContact& contact) override;
  // Nothing to do after physics; kept as the scene's hook.
  void didSimulatePhysics() override {}

  // --- Spawning ------------------------------------------------------------------

  // Resumes (true: fires at the next run-loop pass, then every 0.1 s) or
  // pauses (false) the spawn timer.
  void enableTimer(bool enable);
  // The spawn timer's tick: counts every road and spawns where a road's
  // count reaches its threshold.
  void tickCount();
  // Spawns one obstacle at the top of road `idx` (1 to 4; other values
  // create nothing) and sends it down the screen.
  void addObstacleInRoadIdx(int idx);

  // --- Steering ------------------------------------------------------------------

  // Move the car to its other road (0.1 s, with a tilt). No state checks.
  void leftCarChangeRoad();
  void rightCarChangeRoad();

  // --- Run flow ------------------------------------------------------------------

  // Clears the world and starts a run (called when a start fade has ended).
  void newGame();
  // Ends the run once: freezes the world, shows the crash at `point` for car
  // `which` (0 left, else right) when `hitnode` is null, or blinks the
  // let-through `hitnode`; keeps "best"; fades the game-over screen in and
  // then posts "showad". Later calls are ignored until the next newGame.
  void gameOver(kit::Point point, int which, kit::NodePtr hitnode);
  // Flames on that car's crash sprite, centred on `point` (scene points).
  void leftCarCrush(kit::Point point);
  void rightCarCrush(kit::Point point);

  // The handlers of the sound, rate and home buttons. Those buttons are never
  // created, so no touch reaches these; they stand ready for a version that
  // adds the buttons.
  // Flips soundFlag, stores it under "sound" and posts "soundchange".
  void toggleSound();
  // Drops the game-over screen and fades the home screen in.
  void goHome();
  // Opens the game's page in the app store.
  void rateUs();

  // Kept on purpose as an empty hook for a later relayout; nothing calls it.
  void layoutGame(kit::Size size);

  // --- Fields ---------------------------------------------------------------------

  std::shared_ptr<kit::Timer> _timer;                // the 0.1 s spawn timer, paused by fire date
  std::shared_ptr<kit::SpriteNode> backgroundLayer;  // lines and score are its children
  std::shared_ptr<kit::SpriteNode> obstacleLayer;    // full-scene, parent of every obstacle
  std::shared_ptr<kit::SpriteNode> homeLayer;
  std::shared_ptr<kit::SpriteNode> overLayer;
  std::shared_ptr<kit::SpriteNode> helpLayer;
  std::shared_ptr<Car> leftCar;
  std::shared_ptr<Car> rightCar;
  std::shared_ptr<kit::LabelNode> scoreNode;
  std::shared_ptr<kit::LabelNode> overScoreNode;
  std::shared_ptr<kit::LabelNode> overBestNode;
  kit::NodePtr leftTail;                       // never created: stays null
  kit::NodePtr rightTail;                      // never created: stays null
  std::shared_ptr<kit::SpriteNode> leftSmoke;  // crash flames of the left car
  std::shared_ptr<kit::SpriteNode> rightSmoke;
  std::shared_ptr<kit::SpriteNode> leftLineNode;   // lane line between roads 1 and 2
  std::shared_ptr<kit::SpriteNode> rightLineNode;  // lane line between roads 3 and 4
  std::vector<kit::Texture> smokeAnim;             // "fire1" to "fire6"
  std::shared_ptr<kit::SpriteNode> playBtn;
  std::shared_ptr<kit::SpriteNode> helpPlayBtn;
  std::shared_ptr<kit::SpriteNode> againBtn;
  std::shared_ptr<kit::SpriteNode> soundBtn;     // never created: stays null
  std::shared_ptr<kit::SpriteNode> rateBtn;      // never created: stays null
  std::shared_ptr<kit::SpriteNode> homeBtn;      // never created: stays null
  std::shared_ptr<kit::SpriteNode> overRateBtn;  // never created: stays null
  bool startFlag = false;                        // a run is in progress
  bool overFlag = false;                         // the run has ended; guards gameOver
  bool homeFlag = false;                         // home screen reopened after a game over
  bool soundFlag = false;  // the sound switch; stored and announced, gates nothing
  int _score = 0;
  int tickcnt1 = 0, tickcnt2 = 0, tickcnt3 = 0, tickcnt4 = 0;      // ticks since the road spawned
  int nexttick1 = 0, nexttick2 = 0, nexttick3 = 0, nexttick4 = 0;  // count of the next spawn
  // The latest spawn of each road, or null; may be a circle already collected.
  std::shared_ptr<Obstacle> lastnode1, lastnode2, lastnode3, lastnode4;
  // Every obstacle of the run not yet collected, in spawn order.
  std::vector<std::shared_ptr<Obstacle>> allObstacle;

 private:
  void initWithSize(kit::Size size);
  void initBackgroundLayer(kit::Size size);
  void initObstacleLayer(kit::Size size);
  void initCars(kit::Size size);
  void initHomeLayer(kit::Size size);
  void initHelpLayer(kit::Size size);
  void initOverLayer(kit::Size size);

  // Fades `layer` out, then starts a run. Taps during the fade start another.
  void startFrom(const std::shared_ptr<kit::SpriteNode>& layer);
  void steer(const kit::TouchSet& touches);
  void changeRoad(Car& car);
  bool isPad() const;

  kit::Services services_;
  std::optional<unsigned> seed_;
};
