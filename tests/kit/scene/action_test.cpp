#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "kit/scene/action.h"
#include "scene_fixture.h"

namespace kit::testing {
namespace {

using ActionTest = SceneFixture;

TEST_F(ActionTest, OverlappingRelativeMovesOnOneNodeAddUp) {
  auto car = addNode({40, 92});
  car->runAction(Action::moveBy({80, 0}, 0.1));
  car->runAction(Action::rotateByAngle(-std::numbers::pi / 6, 0.05));
  advance(0.04);
  // A second tap half-way: the opposite move and tilt overlap the first ones.
  car->runAction(Action::moveBy({-80, 0}, 0.1));
  car->runAction(Action::rotateByAngle(std::numbers::pi / 6, 0.05));
  advance(0.04);
  EXPECT_GT(car->position().x, 40);  // still under way, both moves contributing
  advance(0.2);
  EXPECT_FALSE(car->hasActions());
  EXPECT_NEAR(car->position().x, 40, 1e-12);
  EXPECT_EQ(car->position().y, 92);
  EXPECT_NEAR(car->zRotation(), 0, 1e-15);

  // One description run twice, here and on a node that starts later.
  auto move = Action::moveBy({80, 0}, 0.1);
  car->runAction(move);
  car->runAction(move);
  advance(0.04);
  auto other = addNode({0, 0});
  other->runAction(move);
  advance(0.2);
  EXPECT_NEAR(car->position().x, 200, 1e-12);
  EXPECT_NEAR(other->position().x, 80, 1e-12);
}

TEST_F(ActionTest, RepeatedScrollAndJumpBackDoesNotDriftOverTenThousandCycles) {
  // A lane line: down one screen in 0.25 s, back up in no time, for ever.
  // A cycle lasts 12.5 frames of 20 ms, so every other cycle ends mid-frame
  // and hands its leftover time to the next one.
  auto line = addNode({80, 568});
  line->runAction(Action::repeatActionForever(
      Action::sequence({Action::moveBy({0, -568}, 0.25), Action::moveBy({0, 568}, 0)})));
  frame();  // the scroll starts here
  advance(10'000 * 0.25 + 0.1);
  // 0.1 s into cycle 10,001: 40% of the way down.
  EXPECT_NEAR(line->position().y, 568 - 0.4 * 568, 1e-6);
  EXPECT_EQ(line->position().x, 80);

  // And at a frame where a cycle ends exactly, the line is back at the top.
  advance(0.4);
  // Plain summation of the 125,000 small steps would be a few 1e-12 off
  // by now; the node's compensated sum is not.
  EXPECT_NEAR(line->position().y, 568, 1e-13);
}

TEST_F(ActionTest, ZeroDurationActionsAndBlocksFinishInTheFrameTheyStart) {
  std::vector<std::string> calls;
  auto node = addNode({0, 0});
  node->runAction(Action::sequence({Action::runBlock([&] { calls.push_back("a"); }),
                                    Action::moveBy({5, 0}, 0), Action::fadeOutWithDuration(0),
                                    Action::runBlock([&] { calls.push_back("b"); })}),
                  [&] { calls.push_back("done"); });
  frame();
  EXPECT_EQ(calls, (std::vector<std::string>{"a", "b", "done"}));
  EXPECT_EQ(node->position().x, 5);
  EXPECT_EQ(node->alpha(), 0);
  EXPECT_FALSE(node->hasActions());
}

TEST_F(ActionTest, CompletionsRunInTheActionPhaseOnceTheActionHasEnded) {
  auto layer = addNode({0, 0});
  layer->setAlpha(0);
  std::vector<std::string> order;
  double alphaSeen = -1;
  layer->runAction(
      Action::sequence({Action::waitForDuration(0.5), Action::fadeInWithDuration(0.3)}), [&] {
        alphaSeen = layer->alpha();
        order.push_back("fade");
        scene->log.push_back("completion");
      });
  layer->runAction(Action::waitForDuration(0.3), [&] { order.push_back("short"); });
  frame();
  advance(0.78);
  EXPECT_EQ(order, std::vector<std::string>{"short"});
  scene->log.clear();
  advance(0.04);
  EXPECT_EQ(order, (std::vector<std::string>{"short", "fade"}));
  EXPECT_EQ(alphaSeen, 1.0);
  // After update, before physics.
  EXPECT_EQ(scene->log, (std::vector<std::string>{"update", "completion", "didSimulatePhysics",
                                                  "update", "didSimulatePhysics"}));
}

TEST_F(ActionTest, RemovedOrReplacedActionsStopWhereTheyAreAndNeverComplete) {
  auto a = addNode({0, 0});
  auto b = addNode({0, 0});
  int completions = 0;
  a->runAction(Action::moveBy({100, 0}, 1), [&] { ++completions; });
  a->runAction(Action::rotateByAngle(1, 1), "turn");
  auto first =
      Action::sequence({Action::moveBy({100, 0}, 1), Action::runBlock([&] { ++completions; })});
  b->runAction(first, "k");
  b->runAction(Action::moveBy({0, 1}, 0.1));  // unkeyed: untouched by the replacement
  frame();
  advance(0.5);
  a->removeActionForKey("turn");
  a->removeAllActions();
  const Point aAt = a->position();
  const double aTurn = a->zRotation();
  auto second = Action::moveBy({0, 10}, 0.1);
  b->runAction(second, "k");
  EXPECT_EQ(b->actionForKey("k"), second);
  EXPECT_EQ(b->actionCount(), 1u);  // replaced, not added; the unkeyed one has ended
  advance(1);
  EXPECT_EQ(completions, 0);
  EXPECT_FALSE(a->hasActions() || b->hasActions());
  EXPECT_EQ(a->position(), aAt);
  EXPECT_EQ(a->zRotation(), aTurn);
  EXPECT_NEAR(aAt.x, 50, 1e-9);
  EXPECT_NEAR(b->position().x, 50, 1e-9);
  EXPECT_NEAR(b->position().y, 11, 1e-9);
}

TEST_F(ActionTest, BlocksMayRemoveNodesAndActionsThatAreDueInTheSameFrame) {
  auto a = addNode({0, 0});
  auto b = addNode({0, 0});
  auto c = addNode({0, 0});
  std::vector<std::string> ran;
  // All three come due in the same frame; a's completion runs first (tree
  // order) and takes b out of the tree and c's actions away.
  a->runAction(Action::waitForDuration(0.1), [&] {
    ran.push_back("a");
    b->removeFromParent();
    c->removeAllActions();
    a->removeFromParent();  // and its own node
  });
  b->runAction(Action::waitForDuration(0.1), [&] { ran.push_back("b"); });
  c->runAction(
      Action::sequence({Action::waitForDuration(0.1), Action::runBlock([&] { ran.push_back("c"); }),
                        Action::waitForDuration(1)}));
  frame();
  advance(0.1);
  // b's action had ended before a's completion ran, so it keeps its
  // completion; c's block belongs to a run that was removed first.
  EXPECT_EQ(ran, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(a->parent(), nullptr);
  EXPECT_TRUE(scene->children().size() == 1 && scene->children()[0] == c);
}

TEST_F(ActionTest, ActionsStartAtTheNextFrameOnceTheirNodeIsInTheScene) {
  auto node = Node::node();
  auto trigger = addNode({0, 0});
  trigger->runAction(Action::waitForDuration(0.1), [&] {
    node->runAction(Action::moveBy({10, 0}, 0.1));  // from a block, outside the scene
  });
  frame();
  advance(1);
  EXPECT_EQ(node->position().x, 0);
  scene->addChild(node);
  advance(0.04);  // start at elapsed 0, then one 20 ms step
  EXPECT_NEAR(node->position().x, 2, 1e-9);
  node->removeFromParent();
  advance(1);
  EXPECT_NEAR(node->position().x, 2, 1e-9);
}

TEST_F(ActionTest, SequencesHandLeftoverTimeOnGroupsEndWithTheirLongestAndMovesToStartLate) {
  auto node = addNode({0, 0});
  bool groupDone = false;
  node->runAction(Action::sequence({Action::moveBy({10, 0}, 0.05), Action::moveBy({10, 0}, 0.05)}));
  node->runAction(Action::group({Action::waitForDuration(0.03), Action::fadeOutWithDuration(0.09)}),
                  [&] { groupDone = true; });
  // An absolute move reads its start value when it starts, not when run.
  node->runAction(Action::moveToY(-16, 0.2));
  node->setPosition({0, 600});
  frame();
  advance(0.06);
  EXPECT_NEAR(node->position().x, 12, 1e-9);  // 10 ms into the second move
  EXPECT_NEAR(node->position().y, 600 - 0.3 * 616, 1e-9);
  EXPECT_FALSE(groupDone);
  advance(0.04);
  EXPECT_TRUE(groupDone);
  EXPECT_EQ(node->alpha(), 0);
}

TEST_F(ActionTest, AnimationShowsEachFrameAndRestoresTheTextureWhenDoneOrRemoved) {
  auto smoke = addSprite({0, 0}, {10, 10});
  smoke->setTexture(Texture("fire1"));
  std::vector<Texture> frames;
  for (int i = 1; i <= 3; ++i)
    frames.emplace_back("fire" + std::to_string(i + 1));

  smoke->runAction(Action::animateWithTextures(frames, 0.1, false, true));
  frame();
  EXPECT_EQ(smoke->texture().name(), "fire2");
  advance(0.1);
  EXPECT_EQ(smoke->texture().name(), "fire3");
  advance(0.1);
  EXPECT_EQ(smoke->texture().name(), "fire4");
  advance(0.1);
  EXPECT_EQ(smoke->texture().name(), "fire1");  // restored at the end

  smoke->setTexture(Texture("still"));
  smoke->runAction(
      Action::repeatActionForever(Action::animateWithTextures(frames, 0.1, false, true)), "crush");
  advance(0.36);
  EXPECT_EQ(smoke->texture().name(), "fire2");  // looping: 0.34 s into the run
  smoke->removeAllActions();
  EXPECT_EQ(smoke->texture().name(), "still");
  EXPECT_EQ(smoke->size(), (Size{10, 10}));
}

TEST_F(ActionTest, TimelessRepeatsRunOncePerFrameAndAStalledFrameStepsAQuarterSecondAtMost) {
  auto node = addNode({0, 0});
  int calls = 0;
  node->runAction(Action::repeatActionForever(Action::runBlock([&] { ++calls; })));
  node->runAction(Action::repeatActionForever(nullptr));
  node->runAction(Action::moveBy({100, 0}, 1));
  frame();
  advance(0.1);
  EXPECT_EQ(calls, 6);
  advance(10, 10);  // one frame ten seconds late
  EXPECT_NEAR(node->position().x, 10 + 100 * Scene::kMaxActionStep, 1e-9);
}

}  // namespace
}  // namespace kit::testing
