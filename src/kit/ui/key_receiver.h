#pragma once

#include "kit/ui/view.h"

namespace kit {

// The keys a modal panel answers, by what they mean to it; the application
// maps the keyboard onto them.
enum class Key {
  Escape,
  Return,  // Return, keypad Enter
  Tab,
  BackTab,  // Shift+Tab
  Left,
  Right,
  Up,
  Down,
};

// A view that takes the keyboard while it is up (an alert): mix it into a
// View subclass that is added straight to the window. keyPressed answers
// whether the key was used; a modal receiver uses every key, so none reach
// the game under it.
class KeyReceiver {
 public:
  virtual ~KeyReceiver() = default;
  virtual bool keyPressed(Key key) = 0;
};

// Offers `key` to the topmost visible KeyReceiver among the window's
// subviews (the last one added wins). False when there is none or it did not
// use the key: the application then handles the key itself.
bool deliverKey(View& window, Key key);

}  // namespace kit
