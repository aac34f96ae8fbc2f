// Creation of the scene: the world (background, lane lines, score, obstacle
// layer, cars, crash sprites) and the three overlay screens. Every size and
// position is a fraction of the scene size, evaluated left to right.

#include "game/game_scene.h"
#include "game/tuning.h"

#include <cstdlib>
#include <string>

#include "kit/scene/physics_body.h"
#include "names/preference_keys.h"

namespace {

constexpr const char* kFontName = "Arial-BoldMT";
constexpr kit::Color kLayerColor{0, 0, 0, 0.75};
constexpr kit::Color kOverTextColor{0.02, 0.7, 1.0, 1.0};

std::shared_ptr<kit::SpriteNode> sprite(const char* imageName, kit::Size size) {
  return kit::SpriteNode::spriteNodeWithTexture(kit::Texture(imageName), size);
}

std::shared_ptr<kit::LabelNode> centredLabel(double fontSize, const char* text, kit::Color color) {
  auto label = kit::LabelNode::labelNodeWithFontNamed(kFontName);
  label->setFontSize(fontSize);
  label->setText(text);
  label->setHorizontalAlignmentMode(kit::LabelHorizontalAlignmentMode::Center);
  label->setVerticalAlignmentMode(kit::LabelVerticalAlignmentMode::Center);
  label->setFontColor(color);
  return label;
}

}  // namespace

std::shared_ptr<GameScene> GameScene::sceneWithSize(kit::Size size, const kit::Services& services,
                                                    std::optional<unsigned> seed) {
  auto scene = std::make_shared<GameScene>(Token{}, size, services, seed);
  scene->initWithSize(size);
  return scene;
}

GameScene::GameScene(Token, kit::Size size, const kit::Services& services,
                     std::optional<unsigned> seed)
    : kit::Scene(size), services_(services), seed_(seed) {}

GameScene::~GameScene() {
  // The run loop shares the timer; it must not call into a scene that is gone.
  if (timer_)
    timer_->invalidate();
  physicsWorld().setContactDelegate(nullptr);
}

void GameScene::initWithSize(kit::Size size) {
  services_.random.seed(seed_ ? *seed_ : static_cast<unsigned>(services_.clock.now()));
  // The timer's target is this scene, which invalidates it when it goes.
  timer_ = services_.runLoop.scheduledTimer(
      tuning::kSpawnTickSeconds, [this] { tickCount(); }, true);
  enableTimer(false);
  startFlag_ = false;
  homeFlag_ = false;
  soundFlag_ = services_.defaults.boolForKey(prefkey::kSound);
  allObstacle_.clear();
  physicsWorld().setContactDelegate(this);
  physicsWorld().setGravity({0, 0});

  initBackgroundLayer(size);
  initObstacleLayer(size);
  initCars(size);
  initHomeLayer(size);
  initHelpLayer(size);
  initOverLayer(size);
}

bool GameScene::isPad() const {
  return services_.device.isPad();
}

void GameScene::initBackgroundLayer(kit::Size size) {
  const double W = size.width, H = size.height;
  backgroundLayer_ = sprite("bg.png", {W, H});
  backgroundLayer_->setAnchorPoint({0, 0});
  backgroundLayer_->setPosition({0, 0});
  addChild(backgroundLayer_);

  const double lineWidth = isPad() ? 8 : 5;
  leftLineNode_ = sprite("line", {lineWidth, 2 * H});
  leftLineNode_->setPosition({W * tuning::kRoadWidth, H});
  backgroundLayer_->addChild(leftLineNode_);
  rightLineNode_ = sprite("line", {lineWidth, 2 * H});
  rightLineNode_->setPosition({W * 3 * tuning::kRoadWidth, H});
  backgroundLayer_->addChild(rightLineNode_);

  double fontSize = 40;
  if (isPad())
    fontSize = 70;
  scoreNode_ = centredLabel(fontSize, "0", kit::Color::black());
  scoreNode_->setPosition({W * 0.5, H + fontSize * -0.8});

  // The score backdrop is the one node the scene keeps in no field.
  auto backdrop = sprite("scorebg", {W / 3, fontSize + 15});
  backdrop->setPosition(scoreNode_->position());
  backgroundLayer_->addChild(backdrop);
  backgroundLayer_->addChild(scoreNode_);
  scoreNode_->setZPosition(1.0);
  backdrop->setZPosition(1.0);
}

void GameScene::initObstacleLayer(kit::Size size) {
  // Anchored at the scene's origin, so its coordinates are scene coordinates.
  obstacleLayer_ = kit::SpriteNode::spriteNodeWithColor(kit::Color::clear(), size);
  obstacleLayer_->setAnchorPoint({0, 0});
  obstacleLayer_->setPosition({0, 0});
  addChild(obstacleLayer_);
}

void GameScene::initCars(kit::Size size) {
  const double W = size.width;
  const double cw = W * tuning::kRoadWidth * tuning::kCarWidth;
  const double ch = cw * tuning::kCarAspect;
  const double y = ch * 0.5 + ch * 0.5 + (isPad() ? tuning::kCarLiftPad : tuning::kCarLiftPhone);

  auto makeCar = [&](int caridx, int carpos, double x) {
    auto car = std::make_shared<Car>(kit::Texture("car"), kit::Size{cw, ch});
    car->setCaridx(caridx);
    car->setCarpos(carpos);
    car->setPosition({x, y});
    addChild(car);
    auto body = kit::PhysicsBody::bodyWithRectangleOfSize(
        {car->size().width * tuning::kHitWidth, car->size().height * tuning::kHitHeight});
    body->setCategoryBitMask(kCarCategory);
    body->setContactTestBitMask(kObstacleCategory);
    body->setCollisionBitMask(0);
    body->setAffectedByGravity(false);
    car->setPhysicsBody(body);
    return car;
  };
  leftCar_ = makeCar(0, 0, W * tuning::kHalfRoadWidth);
  rightCar_ = makeCar(1, 1, W * 7 * tuning::kHalfRoadWidth);

  smokeAnim_.clear();
  for (int i = 1; i <= 6; ++i)
    smokeAnim_.emplace_back("fire" + std::to_string(i));

  const double s = leftCar_->size().width * 2;
  leftSmoke_ = sprite("fire1", {s, s});
  leftSmoke_->setPosition(leftCar_->position());
  addChild(leftSmoke_);
  leftSmoke_->setHidden(true);
  rightSmoke_ = sprite("fire1", {s, s});
  rightSmoke_->setPosition(rightCar_->position());
  addChild(rightSmoke_);
  rightSmoke_->setHidden(true);

  rightSmoke_->setZPosition(1.0);
  leftSmoke_->setZPosition(1.0);
  leftCar_->setZPosition(1.0);
  rightCar_->setZPosition(1.0);
}

namespace {

// The shape every overlay screen shares: black at 75 % over the whole scene.
// Each builder then sets z 2, so that the three screens draw in the order
// added (home, help, over) above everything else.
std::shared_ptr<kit::SpriteNode> overlay(kit::Scene& scene, kit::Size size) {
  auto layer = kit::SpriteNode::spriteNodeWithColor(kLayerColor, size);
  layer->setAnchorPoint({0, 0});
  layer->setPosition({0, 0});
  scene.addChild(layer);
  return layer;
}

}  // namespace

void GameScene::initHomeLayer(kit::Size size) {
  const double W = size.width, H = size.height;
  homeLayer_ = overlay(*this, size);
  const double side = isPad() ? W / 4.5 : W / 3.0;
  playBtn_ = sprite("play", {side, side});
  playBtn_->setPosition({W / 2, H / 2});
  homeLayer_->addChild(playBtn_);
  homeLayer_->setZPosition(2.0);
}

void GameScene::initHelpLayer(kit::Size size) {
  const double W = size.width, H = size.height;
  helpLayer_ = overlay(*this, size);
  auto picture = sprite("help", {0.65 * W, 0.65 * W * 1.5});
  picture->setPosition({W / 2, H / 2 + W / 6});
  helpLayer_->addChild(picture);

  const double side = isPad() ? W / 7 : W / 6;
  helpPlayBtn_ = sprite("helpstart", {side, side});
  const double y = picture->position().y - picture->size().height / 2 - side;
  helpPlayBtn_->setPosition({W / 2, y});
  helpLayer_->addChild(helpPlayBtn_);
  helpLayer_->setAlpha(0);
  helpLayer_->setZPosition(2.0);
}

void GameScene::initOverLayer(kit::Size size) {
  const double W = size.width, H = size.height;
  overLayer_ = overlay(*this, size);
  const double s = isPad() ? W / 4.5 : W / 3.5;
  const bool tall = !isPad() && H > 500;

  againBtn_ = sprite("play", {s, s});
  againBtn_->setPosition({W / 2, H / 2 - 0.4 * s});
  overLayer_->addChild(againBtn_);

  overScoreNode_ = centredLabel(isPad() ? 60 : 35, "0", kOverTextColor);
  overScoreNode_->setPosition(
      {W / 2, tall ? againBtn_->position().y + s * 1.6 : againBtn_->position().y + s * 1.4});

  // A placeholder until the first game over writes the real line.
  overBestNode_ = centredLabel(isPad() ? 40 : 20, "记 录 : 5", kOverTextColor);
  overBestNode_->setPosition({W / 2, overScoreNode_->position().y - overScoreNode_->fontSize() / 2 -
                                         overBestNode_->fontSize() / 2});

  auto scoreBackground = sprite("overscorebg", {W / 2.5, W / 2.5 / 1.5});
  scoreBackground->setPosition(
      {W / 2, (overScoreNode_->position().y + overBestNode_->position().y) / 2});
  overLayer_->addChild(scoreBackground);
  overLayer_->addChild(overScoreNode_);
  overLayer_->addChild(overBestNode_);

  auto title = sprite("gameover", {0.65 * W, 0.65 * W / 4.5});
  title->setPosition({W / 2, H - 1.5 * title->size().height});
  overLayer_->addChild(title);

  overLayer_->setAlpha(0);
  overLayer_->setZPosition(2.0);
}

void GameScene::layoutGame(kit::Size size) {
  (void)size;
}
