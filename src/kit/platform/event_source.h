#pragma once

#include <cstdint>
#include <variant>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/platform/key_codes.h"

namespace kit {

// Platform input and window events in portable terms, as an event source
// reports them. Points are window points (the content's coordinates after the
// backend has taken its viewport off), so portable code never sees pixels of
// a particular window.
struct PlatformEvent {
  // A finger or the mouse's primary button went down: fingers that landed in
  // the same event come as one event.
  struct TouchesBegan {
    std::vector<Point> points;
  };
  // A key went down (repeats are not reported); modifiers are kMod bits.
  struct KeyDown {
    PlatformKey key = PlatformKey::Other;
    uint16_t modifiers = 0;
  };
  struct PadPressed {
    PadButton button = PadButton::Other;
  };
  enum class Window {
    FocusGained,
    FocusLost,
    Shown,    // restored, exposed
    Hidden,   // minimised, tab hidden: the application goes to the background
    Resized,  // the viewport changes; the next frame draws at the new size
    Close,    // the close button, the tab closing: the application terminates
  };
  struct WindowEvent {
    Window what = Window::Shown;
  };
  struct Quit {};

  std::variant<TouchesBegan, KeyDown, PadPressed, WindowEvent, Quit> what;
};

// Where events come from: the desktop's event queue, the browser's listeners,
// a test's script. Owned by the backend; the application borrows it and drains
// it once per frame on the main thread. Implementations may queue events from
// callbacks (the browser's) and hand them over here.
class EventSource {
 public:
  virtual ~EventSource() = default;
  // Appends every event that arrived since the last call, oldest first.
  virtual void poll(std::vector<PlatformEvent>& out) = 0;
};

}  // namespace kit
