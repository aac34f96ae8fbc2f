#pragma once

// Internal to the scene module: the running side of actions.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kit/scene/action.h"

namespace kit {

class Node;
struct RunningAction;

// Collects the blocks that come due during one action phase, so that none
// runs inside the tree walk.
struct ActionContext {
  struct Due {
    std::function<void()> block;
    // The run that owes a runBlock; the block is dropped if that run is
    // removed before its turn. Null for completion blocks.
    std::shared_ptr<RunningAction> owner;
  };
  std::vector<Due> due;
  const std::shared_ptr<RunningAction>* current = nullptr;  // the run being advanced

  void queueBlock(const std::function<void()>& block) {
    due.push_back({block, current ? *current : nullptr});
  }
};

// One run of an Action on one node.
class ActionRun {
 public:
  virtual ~ActionRun() = default;

  // Advances by dt seconds (dt 0 is the start). Returns the time left over
  // when the run ends during this step, or a negative number while it runs.
  virtual double advance(Node& node, double dt, ActionContext& context) = 0;
  // The run is being removed before its end.
  virtual void cancel(Node& node) { (void)node; }
};

inline constexpr double kStillRunning = -1;

// A node's entry for one runAction call.
struct RunningAction {
  ActionPtr action;
  std::unique_ptr<ActionRun> run;
  std::string key;
  std::function<void()> completion;
  bool started = false;
  bool cancelled = false;
};

}  // namespace kit
