// The interface layout as data: profiles, the controller tree, outlets and
// frames, and the errors a broken file gives.
#include <gtest/gtest.h>

#include "kit/backends/files/file_resource_store.h"
#include "kit/render/interface_layout.h"
#include "kit/render/sprite_view.h"
#include "kit/ui/navigation_controller.h"
#include "kit/ui/window.h"

namespace kit {
namespace {

// Records what a host controller sees when its view loads.
class ProbeController : public ViewController, public OutletTarget {
 public:
  void setOutlet(const std::string& name, std::shared_ptr<View> view) override {
    if (name == "adView")
      adView = view;
  }
  void viewDidLoad() override {
    loadedWithSize = view()->bounds().size;
    adViewAtLoad = adView.lock() != nullptr;
  }
  std::weak_ptr<View> adView;
  Size loadedWithSize;
  bool adViewAtLoad = false;
};

class LayoutTest : public ::testing::Test {
 protected:
  InterfaceLayout mainLayout() {
    auto layout = InterfaceLayout::load(FileResourceStore(TWINLANES_RESOURCES), "layout/main.json");
    EXPECT_TRUE(layout) << layout.error();
    return *layout;
  }
  InterfaceLayout::ControllerClasses classes() {
    return {{"ViewController", [this] {
               probe = std::make_shared<ProbeController>();
               return probe;
             }}};
  }
  // The reason `json` is refused, or "" when it is accepted.
  static std::string refusal(const std::string& json) {
    auto parsed = InterfaceLayout::parse(json);
    return parsed ? "" : parsed.error();
  }
  std::shared_ptr<ProbeController> probe;
};

TEST_F(LayoutTest, TheMainLayoutHasAPhoneAndAPadWithTheSceneOverTheBannerStrip) {
  const InterfaceLayout layout = mainLayout();
  const DeviceProfile* phone = layout.profile("phone");
  const DeviceProfile* pad = layout.profile("pad");
  ASSERT_TRUE(phone && pad);
  EXPECT_EQ(phone->scene, (Size{320, 568}));
  EXPECT_EQ(pad->idiom, Device::Idiom::Pad);
  EXPECT_EQ(pad->window(), (Size{768, 1114}));
  EXPECT_EQ(layout.profile("watch"), nullptr);

  // On the phone the sprite view is the scene's area and the banner strip lies under it.
  auto app = layout.instantiate(*phone, classes());
  ASSERT_TRUE(app) << app.error();
  app->install();
  auto nav = std::dynamic_pointer_cast<NavigationController>(app->window->rootViewController());
  ASSERT_TRUE(nav);
  EXPECT_EQ(nav->topViewController(), probe);
  EXPECT_EQ(app->window->bounds().size, (Size{320, 618}));
  EXPECT_EQ(probe->view(), app->spriteView);
  EXPECT_EQ(app->spriteView->convertRectToView(app->spriteView->bounds(), nullptr),
            (Rect{{0, 0}, {320, 568}}));
  auto adView = probe->adView.lock();
  ASSERT_TRUE(adView);
  EXPECT_EQ(adView->superview(), app->window);
  EXPECT_EQ(adView->frame(), (Rect{{0, 568}, {320, 50}}));
  // A point in the strip belongs to the banner container, not the scene.
  EXPECT_EQ(app->window->hitTest({160, 600}), adView);
  EXPECT_EQ(app->window->hitTest({160, 300}), app->spriteView);
}

TEST_F(LayoutTest, ControllersFindTheirOutletsAndTheSceneSizeWhenTheirViewLoads) {
  DeviceProfile pad = *mainLayout().profile("pad");
  pad.scene = {600, 800};  // a size given on the command line
  auto app = mainLayout().instantiate(pad, classes());
  ASSERT_TRUE(app) << app.error();
  app->install();
  EXPECT_EQ(probe->loadedWithSize, (Size{600, 800}));
  EXPECT_TRUE(probe->adViewAtLoad);
  EXPECT_EQ(probe->adView.lock()->frame(), (Rect{{0, 800}, {600, 90}}));
}

TEST_F(LayoutTest, BrokenFilesAndUnknownClassesAreRefusedWithThePlaceOfTheFault) {
  const std::string profiles = R"({"profiles": {"p": {"scene": [10, 10]}}, )";
  const std::string window = R"("window": {"rootViewController": {"class": "ViewController"}})";
  auto root = [&](const std::string& controller) {
    return profiles + R"("window": {"rootViewController": )" + controller + "}}";
  };
  EXPECT_EQ(refusal(profiles + window + "}"), "");
  const std::pair<std::string, std::string> cases[] = {
      {"{", "not valid JSON"},
      {"[]", "expected an object"},
      {R"({"profiles": {}, )" + window + "}", "profiles"},
      {R"({"profiles": {"p": {"scene": [10, -1]}}, )" + window + "}", "profiles.p.scene"},
      {R"({"profiles": {"p": {"scene": [10, 10], "idiom": "tv"}}, )" + window + "}",
       "profiles.p.idiom"},
      {root(R"({"class": "ViewController", "view": {"frame": "moon"}})"),
       "window.rootViewController.view.frame"},
      {root(R"({"class": "NavigationController"})"), "root view controller"},
      {root(R"({"class": "ViewController", "view": {"class": "Button"}})"), "unknown view class"},
  };
  for (const auto& [json, reason] : cases)
    EXPECT_NE(refusal(json).find(reason), std::string::npos) << json << " -> " << refusal(json);

  auto missing = InterfaceLayout::load(FileResourceStore("/nonexistent"), "main.json");
  EXPECT_FALSE(missing);
  EXPECT_NE(missing.error().find("cannot read"), std::string::npos);
  auto unknown = mainLayout().instantiate(*mainLayout().profile("phone"), {});
  EXPECT_FALSE(unknown);
  EXPECT_NE(unknown.error().find("unknown view controller class \"ViewController\""),
            std::string::npos)
      << unknown.error();
}

}  // namespace
}  // namespace kit
