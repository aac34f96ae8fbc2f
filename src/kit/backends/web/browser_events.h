#pragma once

#include <functional>
#include <vector>

#include "kit/backends/web/page_layout.h"
#include "kit/platform/event_source.h"
#include "kit/platform/key_codes.h"

namespace kit::web {

// The browser's input and page events as platform events. Touches on the
// canvas (all fingers that went down together as one event) and the mouse's
// primary button are touches; a consumed touch produces no mouse event, so
// nothing arrives twice. Keys are read on the window with the desktop's
// bindings; keys the game uses are kept from the browser (no scrolling on
// Space or the arrows). The page's visibility is the lifecycle: a hidden tab
// is Hidden (the application goes to the background), a shown one Shown.
// A resize lays the canvas out again and reports Resized.
//
// Browser callbacks only queue events; poll() hands them over in the frame.
// A hidden page gets no more animation frames, so on Hidden the wake-up
// callback (the frame host's runFrameNow) runs one frame at once for the
// application to see it. Owns its listeners; main thread only.
class BrowserEvents final : public EventSource {
 public:
  explicit BrowserEvents(PageLayout& layout);
  ~BrowserEvents() override;
  BrowserEvents(const BrowserEvents&) = delete;
  BrowserEvents& operator=(const BrowserEvents&) = delete;

  void poll(std::vector<PlatformEvent>& out) override;
  void setWakeUp(std::function<void()> wakeUp) { wakeUp_ = std::move(wakeUp); }

  // For the listeners.
  void push(PlatformEvent event) { queue_.push_back(std::move(event)); }
  void pageHidden();
  PageLayout& layout() { return layout_; }

 private:
  PageLayout& layout_;
  std::vector<PlatformEvent> queue_;
  std::function<void()> wakeUp_;
};

// The portable key for a DOM KeyboardEvent.code ("ArrowLeft", "KeyA", ...);
// Other for keys without a meaning here.
PlatformKey keyOfCode(const char* code);

}  // namespace kit::web
