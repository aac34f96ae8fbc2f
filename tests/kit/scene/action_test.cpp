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

  car->runAction(Action::moveBy({80, 0}, 0.1));
  car->runAction(Action::moveBy({80, 0}, 0.07));
  advance(0.2);
  EXPECT_NEAR(car->position().x, 200, 1e-12);
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

TEST_F(ActionTest, RemovedActionsStopWhereTheyAreAndNeverComplete) {
  auto a = addNode({0, 0});
  auto b = addNode({0, 0});
  int completions = 0;
  a->runAction(Action::moveBy({100, 0}, 1), [&] { ++completions; });
  a->runAction(Action::rotateByAngle(1, 1), [&] { ++completions; });
  b->runAction(Action::moveBy({100, 0}, 1), "move");
  frame();
  advance(0.5);
  a->removeAllActions();
  b->removeActionForKey("move");
  const Point aAt = a->position(), bAt = b->position();
  advance(1);
  EXPECT_EQ(completions, 0);
  EXPECT_FALSE(a->hasActions());
  EXPECT_FALSE(b->hasActions());
  EXPECT_EQ(a->position(), aAt);
  EXPECT_EQ(b->position(), bAt);
  EXPECT_NEAR(aAt.x, 50, 1e-9);
}

TEST_F(ActionTest, ActionCountCountsEachRunUntilItEndsOrIsRemoved) {
  auto node = addNode({0, 0});
  EXPECT_EQ(node->actionCount(), 0u);
  auto scroll = Action::repeatActionForever(Action::moveBy({0, -10}, 1));
  node->runAction(scroll);
  node->runAction(scroll);  // the same description twice: two runs
  node->runAction(Action::moveBy({5, 0}, 0.1), "short");
  EXPECT_EQ(node->actionCount(), 3u);  // counted before they start
  frame();
  advance(0.2);
  EXPECT_EQ(node->actionCount(), 2u);
  node->runAction(Action::moveBy({1, 0}, 1), "k");
  node->runAction(Action::moveBy({2, 0}, 1), "k");  // replaces, does not add
  EXPECT_EQ(node->actionCount(), 3u);
  node->removeAllActions();
  EXPECT_EQ(node->actionCount(), 0u);
}

TEST_F(ActionTest, RunningUnderAKeyReplacesTheActionOfThatKey) {
  auto node = addNode({0, 0});
  bool firstCompleted = false;
  auto first = Action::moveBy({100, 0}, 1);
  auto second = Action::moveBy({0, 10}, 0.1);
  node->runAction(Action::sequence({first, Action::runBlock([&] { firstCompleted = true; })}), "k");
  node->runAction(Action::moveBy({1, 0}, 0.1));  // unkeyed: untouched by the replacement
  frame();
  advance(0.2);
  node->runAction(second, "k");
  EXPECT_EQ(node->actionForKey("k"), second);
  advance(1);
  EXPECT_FALSE(firstCompleted);
  EXPECT_NEAR(node->position().x, 20 + 1, 1e-9);
  EXPECT_NEAR(node->position().y, 10, 1e-9);
  EXPECT_EQ(node->actionForKey("k"), nullptr);
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

TEST_F(ActionTest, ActionsRunFromABlockStartInTheNextFrame) {
  auto trigger = addNode({0, 0});
  auto mover = addNode({0, 0});
  trigger->runAction(Action::waitForDuration(0.1), [&] {
    mover->runAction(Action::moveBy({10, 0}, 0.1));
  });
  frame();
  advance(0.1);
  EXPECT_TRUE(mover->hasActions());
  EXPECT_EQ(mover->position().x, 0);
  advance(0.02);  // starts here, at elapsed 0
  EXPECT_EQ(mover->position().x, 0);
  advance(0.02);
  EXPECT_NEAR(mover->position().x, 2, 1e-9);
}

TEST_F(ActionTest, ActionsOfANodeOutsideTheSceneWaitUntilItJoins) {
  auto node = Node::node();
  node->runAction(Action::moveBy({10, 0}, 0.1));
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

TEST_F(ActionTest, AbsoluteActionsReadTheirStartValueWhenTheyStart) {
  auto obstacle = addNode({200, 584});
  obstacle->runAction(Action::moveToY(-16, 0.2));
  obstacle->setPosition({210, 600});  // before the first frame: this is the start
  frame();
  advance(0.1);
  EXPECT_NEAR(obstacle->position().y, 600 - 0.5 * 616, 1e-9);
  EXPECT_EQ(obstacle->position().x, 210);
  advance(1);
  EXPECT_EQ(obstacle->position().y, -16);
}

TEST_F(ActionTest, SequencesHandLeftoverTimeOnAndGroupsEndWithTheirLongestMember) {
  auto node = addNode({0, 0});
  bool groupDone = false;
  node->runAction(Action::sequence({Action::moveBy({10, 0}, 0.05), Action::moveBy({10, 0}, 0.05)}));
  node->runAction(Action::group({Action::waitForDuration(0.03), Action::fadeOutWithDuration(0.09)}),
                  [&] { groupDone = true; });
  frame();
  advance(0.06);
  EXPECT_NEAR(node->position().x, 12, 1e-9);  // 10 ms into the second move
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

  // Without restore the last frame stays.
  smoke->runAction(Action::animateWithTextures(frames, 0.1, false, false));
  advance(0.5);
  EXPECT_EQ(smoke->texture().name(), "fire4");
}

TEST_F(ActionTest, RepeatingSomethingThatTakesNoTimeRunsOncePerFrame) {
  auto node = addNode({0, 0});
  int calls = 0;
  node->runAction(Action::repeatActionForever(Action::runBlock([&] { ++calls; })));
  node->runAction(Action::repeatActionForever(nullptr));
  frame();
  advance(0.1);
  EXPECT_EQ(calls, 6);
}

TEST_F(ActionTest, AStalledFrameAdvancesActionsByAQuarterSecondAtMost) {
  auto node = addNode({0, 0});
  node->runAction(Action::moveBy({100, 0}, 1));
  frame();
  advance(10, 10);  // one frame ten seconds late
  EXPECT_NEAR(node->position().x, 100 * Scene::kMaxActionStep, 1e-9);
}

TEST_F(ActionTest, OneDescriptionRunsOnManyNodesIndependently) {
  auto move = Action::moveBy({10, 0}, 0.1);
  auto first = addNode({0, 0});
  first->runAction(move);
  frame();
  advance(0.04);
  auto second = addNode({0, 0});
  second->runAction(move);
  advance(0.2);
  EXPECT_NEAR(first->position().x, 10, 1e-12);
  EXPECT_NEAR(second->position().x, 10, 1e-12);
}

}  // namespace
}  // namespace kit::testing
