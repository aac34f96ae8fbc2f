// The interface layout as data: profiles, the controller tree, outlets and
// frames, and the errors a broken file gives.
#include <gtest/gtest.h>

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
    std::string error;
    auto layout = InterfaceLayout::load(TWINLANES_RESOURCES "/layout/main.json", &error);
    EXPECT_TRUE(layout) << error;
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
    std::string error;
    return InterfaceLayout::parse(json, &error) ? "" : error;
  }
  std::shared_ptr<ProbeController> probe;
};

TEST_F(LayoutTest, TheMainLayoutHasAPhoneAndAPadWithTheirBannerStrips) {
  const InterfaceLayout layout = mainLayout();
  const DeviceProfile* phone = layout.profile("phone");
  const DeviceProfile* pad = layout.profile("pad");
  ASSERT_TRUE(phone && pad);
  EXPECT_EQ(phone->scene, (Size{320, 568}));
  EXPECT_EQ(phone->window(), (Size{320, 618}));
  EXPECT_EQ(pad->idiom, Device::Idiom::Pad);
  EXPECT_EQ(pad->window(), (Size{768, 1114}));
  EXPECT_EQ(layout.profile("watch"), nullptr);
}

TEST_F(LayoutTest, TheSpriteViewIsTheScenesAreaAndTheBannerStripLiesUnderIt) {
  std::string error;
  auto app = mainLayout().instantiate(*mainLayout().profile("phone"), classes(), &error);
  ASSERT_TRUE(app) << error;
  app->install();
  auto nav = std::dynamic_pointer_cast<NavigationController>(app->window->rootViewController());
  ASSERT_TRUE(nav);
  EXPECT_EQ(nav->topViewController(), probe);
  EXPECT_EQ(app->window->bounds().size, (Size{320, 618}));
  ASSERT_TRUE(app->spriteView);
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
  std::string error;
  auto app = mainLayout().instantiate(pad, classes(), &error);
  ASSERT_TRUE(app) << error;
  app->install();
  EXPECT_EQ(probe->loadedWithSize, (Size{600, 800}));
  EXPECT_TRUE(probe->adViewAtLoad);
  EXPECT_EQ(probe->adView.lock()->frame(), (Rect{{0, 800}, {600, 90}}));
}

TEST_F(LayoutTest, AnUnknownControllerClassIsAnErrorNotACrash) {
  std::string error;
  auto app = mainLayout().instantiate(*mainLayout().profile("phone"), {}, &error);
  EXPECT_FALSE(app);
  EXPECT_NE(error.find("unknown view controller class \"ViewController\""), std::string::npos)
      << error;
}

TEST_F(LayoutTest, BrokenFilesAreRefusedWithThePlaceOfTheFault) {
  EXPECT_NE(refusal("{").find("not valid JSON"), std::string::npos);
  EXPECT_NE(refusal("[]").find("expected an object"), std::string::npos);
  const std::string window = R"("window": {"rootViewController": {"class": "ViewController"}})";
  EXPECT_EQ(refusal(R"({"profiles": {"p": {"scene": [10, 10]}}, )" + window + "}"), "");
  EXPECT_NE(refusal(R"({"profiles": {}, )" + window + "}").find("profiles"), std::string::npos);
  EXPECT_NE(refusal(R"({"profiles": {"p": {"scene": [10, -1]}}, )" + window + "}")
                .find("profiles.p.scene"),
            std::string::npos);
  EXPECT_NE(refusal(R"({"profiles": {"p": {"scene": [10, 10], "idiom": "tv"}}, )" + window + "}")
                .find("profiles.p.idiom"),
            std::string::npos);
  EXPECT_NE(refusal(R"({"profiles": {"p": {"scene": [10, 10]}}, "window": {"rootViewController":
              {"class": "ViewController", "view": {"frame": "moon"}}}})")
                .find("window.rootViewController.view.frame"),
            std::string::npos);
  EXPECT_NE(refusal(R"({"profiles": {"p": {"scene": [10, 10]}}, "window": {"rootViewController":
              {"class": "NavigationController"}}})")
                .find("root view controller"),
            std::string::npos);
  EXPECT_NE(refusal(R"({"profiles": {"p": {"scene": [10, 10]}}, "window": {"rootViewController":
              {"class": "ViewController", "view": {"class": "Button"}}}})")
                .find("unknown view class"),
            std::string::npos);
}

TEST_F(LayoutTest, AMissingFileIsAnError) {
  std::string error;
  EXPECT_FALSE(InterfaceLayout::load("/nonexistent/main.json", &error));
  EXPECT_NE(error.find("cannot read"), std::string::npos);
}

}  // namespace
}  // namespace kit
