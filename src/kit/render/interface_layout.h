#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/color.h"
#include "kit/foundation/device.h"
#include "kit/foundation/geometry.h"
#include "kit/foundation/result.h"
#include "kit/platform/resource_store.h"

namespace kit {

class SpriteView;
class View;
class ViewController;
class Window;

// A device the application plays the part of: its idiom, the area of the
// sprite view (the scene) and the banner strip under it. The window is the
// two stacked.
struct DeviceProfile {
  std::string name = "phone";
  Device::Idiom idiom = Device::Idiom::Phone;
  Size scene{320, 568};
  double bannerStrip = 50;

  Size window() const { return {scene.width, scene.height + bannerStrip}; }
};

// A controller that takes views from the layout by name (the platform's
// outlets). The layout connects them before the controller's view loads, so
// viewDidLoad finds them in place.
class OutletTarget {
 public:
  virtual ~OutletTarget() = default;
  virtual void setOutlet(const std::string& name, std::shared_ptr<View> view) = 0;
};

// The application's main interface layout, read from JSON: the device
// profiles, the window, its root view controller (a navigation controller
// holds further controllers), each controller's view, and views connected to
// controllers as outlets. Frames are numbers [x, y, width, height] or one of
// the profile's rectangles "window", "scene" and "banner" (the strip under
// the scene). See resources/layout/main.json. Plain data once parsed;
// instantiate() makes the objects.
class InterfaceLayout {
 public:
  using ControllerFactory = std::function<std::shared_ptr<ViewController>()>;
  using ControllerClasses = std::map<std::string, ControllerFactory, std::less<>>;

  // nullopt and a one-line reason when the text is not a usable layout.
  [[nodiscard]] static Result<InterfaceLayout> parse(std::string_view json);
  // The layout in resource `name` ("layout/main.json").
  [[nodiscard]] static Result<InterfaceLayout> load(const ResourceStore& resources,
                                                    std::string_view name);

  const std::vector<DeviceProfile>& profiles() const { return profiles_; }
  // The profile of that name, or nullptr.
  const DeviceProfile* profile(std::string_view name) const;

  // The objects of one launch. install() puts them on screen.
  struct Instance {
    DeviceProfile profile;
    std::shared_ptr<Window> window;
    std::shared_ptr<ViewController> rootViewController;
    // The first sprite view of the layout (the one the frame loop runs).
    std::shared_ptr<SpriteView> spriteView;

    // Makes the root controller the window's (its views load, so each
    // controller's viewDidLoad runs here), gives its view the layout's frame
    // and adds the window-level views above it.
    void install();

   private:
    friend class InterfaceLayout;
    std::optional<Rect> rootFrame_;
    std::vector<std::shared_ptr<View>> windowViews_;
  };

  // Builds the window and controllers for `profile`. Controllers of classes
  // other than the built-in NavigationController come from `classes`; an
  // unknown class is an error.
  [[nodiscard]] Result<Instance> instantiate(const DeviceProfile& profile,
                                             const ControllerClasses& classes) const;

  // The parsed form (public so the loader's helpers can fill it).
  struct FrameSpec {
    std::string named;  // "window", "scene", "banner", or empty for `rect`
    Rect rect;
  };
  struct ViewSpec {
    std::string className = "View";
    std::optional<FrameSpec> frame;
    std::optional<Color> backgroundColor;
    unsigned autoresizingMask = 0;
    bool userInteractionEnabled = true;
    bool inWindow = false;  // outlets only: a subview of the window, not of the controller's view
    std::vector<ViewSpec> subviews;
  };
  struct ControllerSpec {
    std::string className;
    std::optional<FrameSpec> frame;  // of its view, when it is the root
    std::optional<ViewSpec> view;
    std::vector<ControllerSpec> viewControllers;
    std::vector<std::pair<std::string, ViewSpec>> outlets;
  };

 private:
  std::vector<DeviceProfile> profiles_;
  std::optional<Color> windowColor_;
  ControllerSpec root_;
};

}  // namespace kit
