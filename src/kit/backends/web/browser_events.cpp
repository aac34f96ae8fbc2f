#include "kit/backends/web/browser_events.h"

#include <emscripten/html5.h>

#include <cstring>
#include <string_view>

#include "kit/platform/key_codes.h"

namespace kit::web {
namespace {

constexpr const char* kCanvas = "#screen";

BrowserEvents& self(void* data) {
  return *static_cast<BrowserEvents*>(data);
}

EM_BOOL onTouchStart(int, const EmscriptenTouchEvent* event, void* data) {
  PlatformEvent::TouchesBegan began;
  for (int i = 0; i < event->numTouches; ++i) {
    const EmscriptenTouchPoint& touch = event->touches[i];
    if (touch.isChanged)
      began.points.push_back(
          self(data).layout().toContent(static_cast<double>(touch.targetX), touch.targetY));
  }
  if (!began.points.empty())
    self(data).push({std::move(began)});
  return EM_TRUE;  // consumed: no mouse events follow, no double-tap zoom
}

EM_BOOL onTouchOther(int, const EmscriptenTouchEvent*, void*) {
  return EM_TRUE;  // no scrolling, no pinch zoom, no long-press menu
}

EM_BOOL onMouseDown(int, const EmscriptenMouseEvent* event, void* data) {
  if (event->button != 0)
    return EM_FALSE;
  PlatformEvent::TouchesBegan began;
  began.points.push_back(
      self(data).layout().toContent(static_cast<double>(event->targetX), event->targetY));
  self(data).push({std::move(began)});
  return EM_TRUE;
}

EM_BOOL onKeyDown(int, const EmscriptenKeyboardEvent* event, void* data) {
  const PlatformKey key = keyOfCode(event->code);
  // The browser keeps its own shortcuts (reload, the developer tools, F11)
  // and Escape (leaving fullscreen): a page is not quit.
  if (key == PlatformKey::Other || key == PlatformKey::F11 || key == PlatformKey::Escape ||
      event->ctrlKey || event->metaKey)
    return EM_FALSE;
  if (!event->repeat) {
    PlatformEvent::KeyDown down;
    down.key = key;
    down.modifiers =
        static_cast<uint16_t>((event->shiftKey ? kModShift : 0) | (event->altKey ? kModAlt : 0));
    self(data).push({down});
  }
  return EM_TRUE;
}

EM_BOOL onVisibility(int, const EmscriptenVisibilityChangeEvent* event, void* data) {
  if (event->hidden) {
    self(data).pageHidden();
  } else {
    self(data).push({PlatformEvent::WindowEvent{PlatformEvent::Window::Shown}});
    self(data).push({PlatformEvent::WindowEvent{PlatformEvent::Window::FocusGained}});
  }
  return EM_FALSE;
}

EM_BOOL onResize(int, const EmscriptenUiEvent*, void* data) {
  self(data).layout().apply();
  self(data).push({PlatformEvent::WindowEvent{PlatformEvent::Window::Resized}});
  return EM_FALSE;
}

}  // namespace

PlatformKey keyOfCode(const char* code) {
  static constexpr std::pair<std::string_view, PlatformKey> kKeys[] = {
      {"ArrowLeft", PlatformKey::Left}, {"ArrowRight", PlatformKey::Right},
      {"ArrowUp", PlatformKey::Up},     {"ArrowDown", PlatformKey::Down},
      {"KeyA", PlatformKey::A},         {"KeyD", PlatformKey::D},
      {"KeyL", PlatformKey::L},         {"Space", PlatformKey::Space},
      {"Enter", PlatformKey::Return},   {"NumpadEnter", PlatformKey::KeypadEnter},
      {"Escape", PlatformKey::Escape},  {"Tab", PlatformKey::Tab},
      {"F11", PlatformKey::F11},
  };
  const std::string_view name = code == nullptr ? std::string_view() : std::string_view(code);
  for (const auto& [text, key] : kKeys) {
    if (text == name)
      return key;
  }
  return PlatformKey::Other;
}

BrowserEvents::BrowserEvents(PageLayout& layout) : layout_(layout) {
  emscripten_set_touchstart_callback(kCanvas, this, EM_TRUE, onTouchStart);
  emscripten_set_touchmove_callback(kCanvas, this, EM_TRUE, onTouchOther);
  emscripten_set_touchend_callback(kCanvas, this, EM_TRUE, onTouchOther);
  emscripten_set_touchcancel_callback(kCanvas, this, EM_TRUE, onTouchOther);
  emscripten_set_mousedown_callback(kCanvas, this, EM_TRUE, onMouseDown);
  emscripten_set_keydown_callback(EMSCRIPTEN_EVENT_TARGET_WINDOW, this, EM_TRUE, onKeyDown);
  emscripten_set_visibilitychange_callback(this, EM_TRUE, onVisibility);
  emscripten_set_resize_callback(EMSCRIPTEN_EVENT_TARGET_WINDOW, this, EM_TRUE, onResize);
}

BrowserEvents::~BrowserEvents() {
  emscripten_set_touchstart_callback(kCanvas, nullptr, EM_TRUE, nullptr);
  emscripten_set_touchmove_callback(kCanvas, nullptr, EM_TRUE, nullptr);
  emscripten_set_touchend_callback(kCanvas, nullptr, EM_TRUE, nullptr);
  emscripten_set_touchcancel_callback(kCanvas, nullptr, EM_TRUE, nullptr);
  emscripten_set_mousedown_callback(kCanvas, nullptr, EM_TRUE, nullptr);
  emscripten_set_keydown_callback(EMSCRIPTEN_EVENT_TARGET_WINDOW, nullptr, EM_TRUE, nullptr);
  emscripten_set_visibilitychange_callback(nullptr, EM_TRUE, nullptr);
  emscripten_set_resize_callback(EMSCRIPTEN_EVENT_TARGET_WINDOW, nullptr, EM_TRUE, nullptr);
}

void BrowserEvents::poll(std::vector<PlatformEvent>& out) {
  for (auto& event : queue_)
    out.push_back(std::move(event));
  queue_.clear();
}

void BrowserEvents::pageHidden() {
  push({PlatformEvent::WindowEvent{PlatformEvent::Window::FocusLost}});
  push({PlatformEvent::WindowEvent{PlatformEvent::Window::Hidden}});
  if (wakeUp_)
    wakeUp_();
}

}  // namespace kit::web
