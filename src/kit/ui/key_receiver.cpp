#include "kit/ui/key_receiver.h"

namespace kit {

bool deliverKey(View& window, Key key) {
  const std::vector<std::shared_ptr<View>>& subviews = window.subviews();
  for (auto it = subviews.rbegin(); it != subviews.rend(); ++it) {
    // Held for the call: the receiver may leave the window while it answers.
    std::shared_ptr<View> view = *it;
    if (view->isHidden() || view->alpha() < 0.01)
      continue;
    if (auto* receiver = dynamic_cast<KeyReceiver*>(view.get()))
      return receiver->keyPressed(key);
  }
  return false;
}

}  // namespace kit
