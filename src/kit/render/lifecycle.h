#pragma once

#include <vector>

namespace kit {

// The application's lifecycle calls, in the order a mobile platform sends
// them, derived from what a desktop window reports (focus, minimise, restore,
// close). Active: focused and shown. Inactive: shown without focus.
// Background: minimised or hidden. Each report returns the calls it causes,
// for the application to send to its delegate.
class Lifecycle {
 public:
  enum class State { Active, Inactive, Background, Terminated };
  enum class Call {
    WillResignActive,
    DidEnterBackground,
    WillEnterForeground,
    DidBecomeActive,
    WillTerminate,
  };

  // A new window starts active (it opens focused on a desktop).
  State state() const { return state_; }

  std::vector<Call> focusLost();
  std::vector<Call> focusGained();
  std::vector<Call> hidden();  // minimised or hidden
  std::vector<Call> shown();   // restored; focus arrives on its own report
  std::vector<Call> terminate();

 private:
  State state_ = State::Active;
  bool focused_ = true;
};

}  // namespace kit
