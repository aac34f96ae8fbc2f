#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
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
// Its state is private: the host, the scenario dump, the built-in player and
// tests read it through the accessors below; only the scene's own operations
// write it.
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
  // let-through `hitnode`; keeps the best score; fades the game-over screen in and
  // then posts the ad notification. Later calls are ignored until the next newGame.
  void gameOver(kit::Point point, int which, kit::NodePtr hitnode);
  // Flames on that car's crash sprite, centred on `point` (scene points).
  void leftCarCrush(kit::Point point);
  void rightCarCrush(kit::Point point);

  // The handlers of the sound, rate and home buttons. Those buttons are never
  // created, so no touch reaches these; they stand ready for a version that
  // adds the buttons.
  // Flips soundFlag, stores it and posts the sound notification.
  void toggleSound();
  // Drops the game-over screen and fades the home screen in.
  void goHome();
  // Opens the game's page in the app store.
  void rateUs();

  // Kept on purpose as an empty hook for a later relayout; nothing calls it.
  void layoutGame(kit::Size size);

  // --- State, read-only --------------------------------------------------------------

  // Run state lives in three flags: Home (neither startFlag nor overFlag),
  // Playing (startFlag), Over (overFlag); homeFlag marks the home screen
  // reopened after a game over.
  bool startFlag() const { return startFlag_; }
  bool overFlag() const { return overFlag_; }
  bool homeFlag() const { return homeFlag_; }
  // The sound switch; stored and announced, gates nothing.
  bool soundFlag() const { return soundFlag_; }
  int score() const { return score_; }

  // Per road, numbered 1 to 4 from the left as addObstacleInRoadIdx counts:
  // ticks since the road last spawned, the count of its next spawn, and its
  // latest spawn (null before the first; may be a circle already collected).
  int tickcnt(int idx) const { return road(idx).tickcnt; }
  int nexttick(int idx) const { return road(idx).nexttick; }
  const std::shared_ptr<Obstacle>& lastnode(int idx) const { return road(idx).lastnode; }
  // Every obstacle of the run not yet collected, in spawn order.
  const std::vector<std::shared_ptr<Obstacle>>& allObstacle() const { return allObstacle_; }

  // The 0.1 s spawn timer, paused by fire date.
  const kit::Timer& timer() const { return *timer_; }
  const Car& leftCar() const { return *leftCar_; }
  const Car& rightCar() const { return *rightCar_; }
  const kit::SpriteNode& obstacleLayer() const { return *obstacleLayer_; }
  const kit::SpriteNode& homeLayer() const { return *homeLayer_; }
  const kit::SpriteNode& helpLayer() const { return *helpLayer_; }
  const kit::SpriteNode& overLayer() const { return *overLayer_; }
  const kit::LabelNode& scoreNode() const { return *scoreNode_; }
  const kit::LabelNode& overScoreNode() const { return *overScoreNode_; }
  const kit::LabelNode& overBestNode() const { return *overBestNode_; }
  // Crash flames of each car.
  const kit::SpriteNode& leftSmoke() const { return *leftSmoke_; }
  const kit::SpriteNode& rightSmoke() const { return *rightSmoke_; }
  // Lane lines between roads 1 and 2, and between roads 3 and 4.
  const kit::SpriteNode& leftLineNode() const { return *leftLineNode_; }
  const kit::SpriteNode& rightLineNode() const { return *rightLineNode_; }
  const kit::SpriteNode& playBtn() const { return *playBtn_; }
  const kit::SpriteNode& helpPlayBtn() const { return *helpPlayBtn_; }
  const kit::SpriteNode& againBtn() const { return *againBtn_; }

 private:
  // What the spawn rhythm keeps for one road.
  struct Road {
    int tickcnt = 0;   // ticks since the road spawned
    int nexttick = 0;  // count of the next spawn
    std::shared_ptr<Obstacle> lastnode;
  };
  static constexpr int kRoadCount = 4;

  // Road `idx` (1 to 4); an index out of range is a programmer mistake.
  const Road& road(int idx) const;
  Road& road(int idx) { return const_cast<Road&>(std::as_const(*this).road(idx)); }
  static bool validRoad(int idx);
  // A road's next spawn count: one draw of the random source.
  int nextSpawnTick();

  std::shared_ptr<kit::Timer> timer_;
  std::shared_ptr<kit::SpriteNode> backgroundLayer_;  // lines and score are its children
  std::shared_ptr<kit::SpriteNode> obstacleLayer_;    // full-scene, parent of every obstacle
  std::shared_ptr<kit::SpriteNode> homeLayer_;
  std::shared_ptr<kit::SpriteNode> overLayer_;
  std::shared_ptr<kit::SpriteNode> helpLayer_;
  std::shared_ptr<Car> leftCar_;
  std::shared_ptr<Car> rightCar_;
  std::shared_ptr<kit::LabelNode> scoreNode_;
  std::shared_ptr<kit::LabelNode> overScoreNode_;
  std::shared_ptr<kit::LabelNode> overBestNode_;
  kit::NodePtr leftTail_;   // never created: stays null
  kit::NodePtr rightTail_;  // never created: stays null
  std::shared_ptr<kit::SpriteNode> leftSmoke_;
  std::shared_ptr<kit::SpriteNode> rightSmoke_;
  std::shared_ptr<kit::SpriteNode> leftLineNode_;
  std::shared_ptr<kit::SpriteNode> rightLineNode_;
  std::vector<kit::Texture> smokeAnim_;  // "fire1" to "fire6"
  std::shared_ptr<kit::SpriteNode> playBtn_;
  std::shared_ptr<kit::SpriteNode> helpPlayBtn_;
  std::shared_ptr<kit::SpriteNode> againBtn_;
  std::shared_ptr<kit::SpriteNode> soundBtn_;     // never created: stays null
  std::shared_ptr<kit::SpriteNode> rateBtn_;      // never created: stays null
  std::shared_ptr<kit::SpriteNode> homeBtn_;      // never created: stays null
  std::shared_ptr<kit::SpriteNode> overRateBtn_;  // never created: stays null
  bool startFlag_ = false;
  bool overFlag_ = false;  // guards gameOver
  bool homeFlag_ = false;
  bool soundFlag_ = false;
  int score_ = 0;
  std::array<Road, kRoadCount> roads_;
  std::vector<std::shared_ptr<Obstacle>> allObstacle_;

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
