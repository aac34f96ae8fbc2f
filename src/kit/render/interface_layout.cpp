#include "kit/render/interface_layout.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "kit/render/sprite_view.h"
#include "kit/ui/navigation_controller.h"
#include "kit/ui/view_controller.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

using nlohmann::json;

constexpr double kLargestSide = 16384;
constexpr size_t kLargestFile = 1 << 20;
constexpr int kDeepestNesting = 32;

// Parse failures carry the path of the offending value.
struct LayoutError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

[[noreturn]] void fail(const std::string& where, const std::string& what) {
  throw LayoutError(where + ": " + what);
}

double number(const json& j, const std::string& where) {
  if (!j.is_number())
    fail(where, "expected a number");
  const double v = j.get<double>();
  if (!std::isfinite(v) || std::abs(v) > kLargestSide)
    fail(where, "number out of range");
  return v;
}

Size size(const json& j, const std::string& where) {
  if (!j.is_array() || j.size() != 2)
    fail(where, "expected [width, height]");
  const Size s{number(j[0], where), number(j[1], where)};
  if (!(s.width > 0) || !(s.height > 0))
    fail(where, "sizes must be positive");
  return s;
}

Color color(const json& j, const std::string& where) {
  if (!j.is_array() || (j.size() != 3 && j.size() != 4)) {
    fail(where, "expected [red, green, blue] or [red, green, blue, alpha], 0 to 1");
  }
  Color c{number(j[0], where), number(j[1], where), number(j[2], where),
          j.size() == 4 ? number(j[3], where) : 1.0};
  for (double v : {c.red, c.green, c.blue, c.alpha}) {
    if (v < 0 || v > 1)
      fail(where, "colour components go from 0 to 1");
  }
  return c;
}

InterfaceLayout::FrameSpec frame(const json& j, const std::string& where) {
  InterfaceLayout::FrameSpec f;
  if (j.is_string()) {
    f.named = j.get<std::string>();
    if (f.named != "window" && f.named != "scene" && f.named != "banner") {
      fail(where, "unknown frame name \"" + f.named + "\" (window, scene or banner)");
    }
    return f;
  }
  if (!j.is_array() || j.size() != 4)
    fail(where, "expected [x, y, width, height] or a name");
  f.rect = {{number(j[0], where), number(j[1], where)}, {number(j[2], where), number(j[3], where)}};
  if (f.rect.size.width < 0 || f.rect.size.height < 0)
    fail(where, "negative size");
  return f;
}

unsigned autoresizing(const json& j, const std::string& where) {
  static const std::pair<const char*, unsigned> kNames[] = {
      {"flexibleLeftMargin", Autoresizing::FlexibleLeftMargin},
      {"flexibleWidth", Autoresizing::FlexibleWidth},
      {"flexibleRightMargin", Autoresizing::FlexibleRightMargin},
      {"flexibleTopMargin", Autoresizing::FlexibleTopMargin},
      {"flexibleHeight", Autoresizing::FlexibleHeight},
      {"flexibleBottomMargin", Autoresizing::FlexibleBottomMargin},
  };
  if (!j.is_array())
    fail(where, "expected a list of resizing rules");
  unsigned mask = 0;
  for (const json& item : j) {
    bool known = false;
    for (const auto& [name, bit] : kNames) {
      if (item.is_string() && item.get<std::string>() == name) {
        mask |= bit;
        known = true;
      }
    }
    if (!known)
      fail(where, "unknown resizing rule " + item.dump());
  }
  return mask;
}

std::string text(const json& j, const std::string& where) {
  if (!j.is_string() || j.get<std::string>().empty())
    fail(where, "expected a name");
  return j.get<std::string>();
}

InterfaceLayout::ViewSpec parseView(const json& j, const std::string& where, int depth) {
  if (depth > kDeepestNesting)
    fail(where, "nested too deeply");
  if (!j.is_object())
    fail(where, "expected an object");
  InterfaceLayout::ViewSpec v;
  if (j.contains("class"))
    v.className = text(j["class"], where + ".class");
  if (v.className != "View" && v.className != "SpriteView") {
    fail(where + ".class", "unknown view class \"" + v.className + "\" (View or SpriteView)");
  }
  if (j.contains("frame"))
    v.frame = frame(j["frame"], where + ".frame");
  if (j.contains("backgroundColor"))
    v.backgroundColor = color(j["backgroundColor"], where + ".backgroundColor");
  if (j.contains("autoresizingMask"))
    v.autoresizingMask = autoresizing(j["autoresizingMask"], where + ".autoresizingMask");
  if (j.contains("userInteractionEnabled")) {
    if (!j["userInteractionEnabled"].is_boolean())
      fail(where + ".userInteractionEnabled", "expected true or false");
    v.userInteractionEnabled = j["userInteractionEnabled"].get<bool>();
  }
  if (j.contains("superview")) {
    const std::string s = text(j["superview"], where + ".superview");
    if (s != "window" && s != "view")
      fail(where + ".superview", "expected \"window\" or \"view\"");
    v.inWindow = s == "window";
  }
  if (j.contains("subviews")) {
    if (!j["subviews"].is_array())
      fail(where + ".subviews", "expected a list");
    for (size_t i = 0; i < j["subviews"].size(); ++i) {
      v.subviews.push_back(
          parseView(j["subviews"][i], where + ".subviews[" + std::to_string(i) + "]", depth + 1));
    }
  }
  return v;
}

InterfaceLayout::ControllerSpec controller(const json& j, const std::string& where, int depth) {
  if (depth > kDeepestNesting)
    fail(where, "nested too deeply");
  if (!j.is_object())
    fail(where, "expected an object");
  InterfaceLayout::ControllerSpec c;
  if (!j.contains("class"))
    fail(where, "a view controller needs a class");
  c.className = text(j["class"], where + ".class");
  if (j.contains("frame"))
    c.frame = frame(j["frame"], where + ".frame");
  if (j.contains("view"))
    c.view = parseView(j["view"], where + ".view", depth + 1);
  if (j.contains("viewControllers")) {
    const json& list = j["viewControllers"];
    if (!list.is_array())
      fail(where + ".viewControllers", "expected a list");
    for (size_t i = 0; i < list.size(); ++i) {
      c.viewControllers.push_back(
          controller(list[i], where + ".viewControllers[" + std::to_string(i) + "]", depth + 1));
    }
  }
  if (c.className == "NavigationController" && c.viewControllers.empty()) {
    fail(where, "a navigation controller needs a root view controller");
  }
  if (j.contains("outlets")) {
    if (!j["outlets"].is_object())
      fail(where + ".outlets", "expected an object of views");
    for (const auto& [name, desc] : j["outlets"].items()) {
      c.outlets.emplace_back(name, parseView(desc, where + ".outlets." + name, depth + 1));
    }
  }
  return c;
}

DeviceProfile parseProfile(const std::string& name, const json& j, const std::string& where) {
  if (!j.is_object())
    fail(where, "expected an object");
  DeviceProfile p;
  p.name = name;
  const std::string idiom = j.contains("idiom") ? text(j["idiom"], where + ".idiom") : "phone";
  if (idiom != "phone" && idiom != "pad")
    fail(where + ".idiom", "expected \"phone\" or \"pad\"");
  p.idiom = idiom == "pad" ? Device::Idiom::Pad : Device::Idiom::Phone;
  if (!j.contains("scene"))
    fail(where, "a profile needs a scene size");
  p.scene = size(j["scene"], where + ".scene");
  if (j.contains("bannerStrip")) {
    p.bannerStrip = number(j["bannerStrip"], where + ".bannerStrip");
    if (p.bannerStrip < 0)
      fail(where + ".bannerStrip", "must not be negative");
  }
  return p;
}

Rect resolve(const InterfaceLayout::FrameSpec& f, const DeviceProfile& p) {
  if (f.named == "window")
    return {{0, 0}, p.window()};
  if (f.named == "scene")
    return {{0, 0}, p.scene};
  if (f.named == "banner")
    return {{0, p.scene.height}, {p.scene.width, p.bannerStrip}};
  return f.rect;
}

std::shared_ptr<View> build(const InterfaceLayout::ViewSpec& desc, const DeviceProfile& p,
                            std::shared_ptr<SpriteView>& firstSprite) {
  std::shared_ptr<View> v;
  if (desc.className == "SpriteView") {
    auto sprite = std::make_shared<SpriteView>();
    if (!firstSprite)
      firstSprite = sprite;
    v = sprite;
  } else {
    v = std::make_shared<View>();
  }
  if (desc.frame)
    v->setFrame(resolve(*desc.frame, p));
  if (desc.backgroundColor)
    v->setBackgroundColor(*desc.backgroundColor);
  v->setAutoresizingMask(desc.autoresizingMask);
  v->setUserInteractionEnabled(desc.userInteractionEnabled);
  for (const auto& sub : desc.subviews)
    v->addSubview(build(sub, p, firstSprite));
  return v;
}

struct Builder {
  const DeviceProfile& profile;
  const InterfaceLayout::ControllerClasses& classes;
  InterfaceLayout::Instance& out;
  std::vector<std::shared_ptr<View>>& windowViews;

  std::shared_ptr<ViewController> make(const InterfaceLayout::ControllerSpec& desc,
                                       const std::string& where) {
    std::shared_ptr<ViewController> c;
    if (desc.className == "NavigationController") {
      auto root = make(desc.viewControllers.front(), where + ".viewControllers[0]");
      auto nav = std::make_shared<NavigationController>(root);
      for (size_t i = 1; i < desc.viewControllers.size(); ++i) {
        nav->pushViewController(
            make(desc.viewControllers[i], where + ".viewControllers[" + std::to_string(i) + "]"),
            false);
      }
      c = nav;
    } else {
      auto it = classes.find(desc.className);
      if (it == classes.end() || !it->second) {
        fail(where + ".class", "unknown view controller class \"" + desc.className + "\"");
      }
      c = it->second();
      if (!c)
        fail(where + ".class", "the factory of \"" + desc.className + "\" made nothing");
    }
    std::shared_ptr<View> own;
    if (desc.view) {
      own = build(*desc.view, profile, out.spriteView);
      c->setView(own);
    }
    for (const auto& [name, viewSpec] : desc.outlets) {
      auto v = build(viewSpec, profile, out.spriteView);
      if (viewSpec.inWindow || !own) {
        windowViews.push_back(v);
      } else {
        own->addSubview(v);
      }
      if (auto* target = dynamic_cast<OutletTarget*>(c.get()))
        target->setOutlet(name, v);
    }
    return c;
  }
};

}  // namespace

Result<InterfaceLayout> InterfaceLayout::parse(std::string_view text) {
  const json doc = json::parse(text, nullptr, false);
  if (doc.is_discarded())
    return Error{"layout: not valid JSON"};
  try {
    if (!doc.is_object())
      fail("layout", "expected an object");
    InterfaceLayout layout;
    if (!doc.contains("profiles") || !doc["profiles"].is_object() || doc["profiles"].empty()) {
      fail("profiles", "expected an object with at least one device profile");
    }
    for (const auto& [name, desc] : doc["profiles"].items()) {
      layout.profiles_.push_back(parseProfile(name, desc, "profiles." + name));
    }
    if (!doc.contains("window") || !doc["window"].is_object())
      fail("window", "expected an object");
    const json& window = doc["window"];
    if (window.contains("backgroundColor")) {
      layout.windowColor_ = color(window["backgroundColor"], "window.backgroundColor");
    }
    if (!window.contains("rootViewController"))
      fail("window", "a window needs a rootViewController");
    layout.root_ = controller(window["rootViewController"], "window.rootViewController", 0);
    return layout;
  } catch (const LayoutError& e) {
    return Error{std::string("layout: ") + e.what()};
  } catch (const json::exception& e) {
    return Error{std::string("layout: ") + e.what()};
  }
}

Result<InterfaceLayout> InterfaceLayout::load(const ResourceStore& resources,
                                              std::string_view name) {
  const Result<std::string> text = resources.read(name, kLargestFile);
  if (!text)
    return Error{"layout: cannot read " + resources.location(name)};
  return parse(*text);
}

const DeviceProfile* InterfaceLayout::profile(std::string_view name) const {
  for (const auto& p : profiles_) {
    if (p.name == name)
      return &p;
  }
  return nullptr;
}

Result<InterfaceLayout::Instance> InterfaceLayout::instantiate(
    const DeviceProfile& profile, const ControllerClasses& classes) const {
  Instance out;
  out.profile = profile;
  try {
    Builder builder{profile, classes, out, out.windowViews_};
    out.rootViewController = builder.make(root_, "window.rootViewController");
  } catch (const LayoutError& e) {
    return Error{std::string("layout: ") + e.what()};
  }
  out.window = std::make_shared<Window>(profile.window());
  if (windowColor_)
    out.window->setBackgroundColor(*windowColor_);
  if (root_.frame)
    out.rootFrame_ = resolve(*root_.frame, profile);
  return out;
}

void InterfaceLayout::Instance::install() {
  window->setRootViewController(rootViewController);
  if (rootFrame_) {
    auto rootView = rootViewController->view();
    rootView->setFrame(*rootFrame_);
    rootView->setAutoresizingMask(0);
  }
  for (auto& v : windowViews_)
    window->addSubview(v);
}

}  // namespace kit
