#include "kit/render/lifecycle.h"

namespace kit {

std::vector<Lifecycle::Call> Lifecycle::focusLost() {
  focused_ = false;
  if (state_ != State::Active)
    return {};
  state_ = State::Inactive;
  return {Call::WillResignActive};
}

std::vector<Lifecycle::Call> Lifecycle::focusGained() {
  focused_ = true;
  if (state_ != State::Inactive)
    return {};
  state_ = State::Active;
  return {Call::DidBecomeActive};
}

std::vector<Lifecycle::Call> Lifecycle::hidden() {
  std::vector<Call> calls;
  if (state_ == State::Active)
    calls.push_back(Call::WillResignActive);
  if (state_ == State::Active || state_ == State::Inactive) {
    calls.push_back(Call::DidEnterBackground);
    state_ = State::Background;
  }
  return calls;
}

std::vector<Lifecycle::Call> Lifecycle::shown() {
  if (state_ != State::Background)
    return {};
  std::vector<Call> calls{Call::WillEnterForeground};
  state_ = State::Inactive;
  if (focused_) {
    calls.push_back(Call::DidBecomeActive);
    state_ = State::Active;
  }
  return calls;
}

std::vector<Lifecycle::Call> Lifecycle::terminate() {
  if (state_ == State::Terminated)
    return {};
  state_ = State::Terminated;
  return {Call::WillTerminate};
}

}  // namespace kit
