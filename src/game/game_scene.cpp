// Creation of the scene: the world (background, lane lines, score, obstacle
// layer, cars, crash sprites) and the three overlay screens. Every size and
// position is a fraction of the scene size, evaluated left to right.

#include "game/game_scene.h"

#include <cstdlib>
#include <string>

#include "kit/scene/physics_body.h"

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
  if (_timer)
    _timer->invalidate();
  physicsWorld().setContactDelegate(nullptr);
}

void GameScene::initWithSize(kit::Size size) {
  services_.random.seed(seed_ ? *seed_ : static_cast<unsigned>(services_.clock.now()));
  // The timer's target is this scene, which invalidates it when it goes.
  _timer = services_.runLoop.scheduledTimer(
      0.1, [this] { tickCount(); }, true);
  enableTimer(false);
  startFlag = false;
  homeFlag = false;
  soundFlag = services_.defaults.boolForKey("sound");
  allObstacle.clear();
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
  backgroundLayer = sprite("bg.png", {W, H});
  backgroundLayer->setAnchorPoint({0, 0});
  backgroundLayer->setPosition({0, 0});
  addChild(backgroundLayer);

  const double lineWidth = isPad() ? 8 : 5;
  leftLineNode = sprite("line", {lineWidth, 2 * H});
  leftLineNode->setPosition({W * 0.25, H});
  backgroundLayer->addChild(leftLineNode);
  rightLineNode = sprite("line", {lineWidth, 2 * H});
  rightLineNode->setPosition({W * 3 * 0.25, H});
  backgroundLayer->addChild(rightLineNode);

  double fontSize = 40;
  if (isPad())
    fontSize = 70;
  scoreNode = centredLabel(fontSize, "0", kit::Color::black());
  scoreNode->setPosition({W * 0.5, H + fontSize * -0.8});

  // The score backdrop is the one node the scene keeps in no field.
  auto backdrop = sprite("scorebg", {W / 3, fontSize + 15});
  backdrop->setPosition(scoreNode->position());
  backgroundLayer->addChild(backdrop);
  backgroundLayer->addChild(scoreNode);
  scoreNode->setZPosition(1.0);
  backdrop->setZPosition(1.0);
}

void GameScene::initObstacleLayer(kit::Size size) {
  // Anchored at the scene's origin, so its coordinates are scene coordinates.
  obstacleLayer = kit::SpriteNode::spriteNodeWithColor(kit::Color::clear(), size);
  obstacleLayer->setAnchorPoint({0, 0});
  obstacleLayer->setPosition({0, 0});
  addChild(obstacleLayer);
}

void GameScene::initCars(kit::Size size) {
  const double W = size.width;
  const double cw = W * 0.25 * 0.7;
  const double ch = cw * 0.75;
  const double y = ch * 0.5 + ch * 0.5 + (isPad() ? 90 : 50);

  auto makeCar = [&](int caridx, int carpos, double x) {
    auto car = std::make_shared<Car>(kit::Texture("car"), kit::Size{cw, ch});
    car->setCaridx(caridx);
    car->setCarpos(carpos);
    car->setPosition({x, y});
    addChild(car);
    auto body = kit::PhysicsBody::bodyWithRectangleOfSize(
        {car->size().width * 0.7, car->size().height * 0.94});
    body->setCategoryBitMask(kCarCategory);
    body->setContactTestBitMask(kObstacleCategory);
    body->setCollisionBitMask(0);
    body->setAffectedByGravity(false);
    car->setPhysicsBody(body);
    return car;
  };
  leftCar = makeCar(0, 0, W * 0.125);
  rightCar = makeCar(1, 1, W * 7 * 0.125);

  smokeAnim.clear();
  for (int i = 1; i <= 6; ++i)
    smokeAnim.emplace_back("fire" + std::to_string(i));

  const double s = leftCar->size().width * 2;
  leftSmoke = sprite("fire1", {s, s});
  leftSmoke->setPosition(leftCar->position());
  addChild(leftSmoke);
  leftSmoke->setHidden(true);
  rightSmoke = sprite("fire1", {s, s});
  rightSmoke->setPosition(rightCar->position());
  addChild(rightSmoke);
  rightSmoke->setHidden(true);

  rightSmoke->setZPosition(1.0);
  leftSmoke->setZPosition(1.0);
  leftCar->setZPosition(1.0);
  rightCar->setZPosition(1.0);
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
  homeLayer = overlay(*this, size);
  const double side = isPad() ? W / 4.5 : W / 3.0;
  playBtn = sprite("play", {side, side});
  playBtn->setPosition({W / 2, H / 2});
  homeLayer->addChild(playBtn);
  homeLayer->setZPosition(2.0);
}

void GameScene::initHelpLayer(kit::Size size) {
  const double W = size.width, H = size.height;
  helpLayer = overlay(*this, size);
  auto picture = sprite("help", {0.65 * W, 0.65 * W * 1.5});
  picture->setPosition({W / 2, H / 2 + W / 6});
  helpLayer->addChild(picture);

  const double side = isPad() ? W / 7 : W / 6;
  helpPlayBtn = sprite("helpstart", {side, side});
  const double y = picture->position().y - picture->size().height / 2 - side;
  helpPlayBtn->setPosition({W / 2, y});
  helpLayer->addChild(helpPlayBtn);
  helpLayer->setAlpha(0);
  helpLayer->setZPosition(2.0);
}

void GameScene::initOverLayer(kit::Size size) {
  const double W = size.width, H = size.height;
  overLayer = overlay(*this, size);
  const double s = isPad() ? W / 4.5 : W / 3.5;
  const bool tall = !isPad() && H > 500;

  againBtn = sprite("play", {s, s});
  againBtn->setPosition({W / 2, H / 2 - 0.4 * s});
  overLayer->addChild(againBtn);

  overScoreNode = centredLabel(isPad() ? 60 : 35, "0", kOverTextColor);
  overScoreNode->setPosition(
      {W / 2, tall ? againBtn->position().y + s * 1.6 : againBtn->position().y + s * 1.4});

  // A placeholder until the first game over writes the real line.
  overBestNode = centredLabel(isPad() ? 40 : 20, "记 录 : 5", kOverTextColor);
  overBestNode->setPosition({W / 2, overScoreNode->position().y - overScoreNode->fontSize() / 2 -
                                        overBestNode->fontSize() / 2});

  auto scoreBackground = sprite("overscorebg", {W / 2.5, W / 2.5 / 1.5});
  scoreBackground->setPosition(
      {W / 2, (overScoreNode->position().y + overBestNode->position().y) / 2});
  overLayer->addChild(scoreBackground);
  overLayer->addChild(overScoreNode);
  overLayer->addChild(overBestNode);

  auto title = sprite("gameover", {0.65 * W, 0.65 * W / 4.5});
  title->setPosition({W / 2, H - 1.5 * title->size().height});
  overLayer->addChild(title);

  overLayer->setAlpha(0);
  overLayer->setZPosition(2.0);
}

void GameScene::layoutGame(kit::Size size) {
  (void)size;
}
