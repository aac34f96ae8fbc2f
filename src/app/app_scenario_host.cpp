#include "app/app_scenario_host.h"

#include "app/scenario_runner.h"

#include "kit/render/sprite_view.h"
#include "kit/scene/frame_driver.h"
#include "kit/ui/window.h"

AppScenarioHost::AppScenarioHost(Options options, const kit::Services& services, HostServices& host)
    : options_(std::move(options)),
      services_(services),
      host_(host),
      idle_(std::make_unique<kit::FrameDriver>(services.runLoop)) {}

void AppScenarioHost::start(kit::Size viewSize, std::optional<unsigned> seed) {
  GameApplication::Options options;
  options.application.icon = options_.resourceDir / "icons" / "twinlanes-256.png";
  options.application.profile = services_.device.isPad() ? "pad" : "phone";
  options.application.sceneSize = viewSize;
  options.application.window = options_.window;
  options.application.windowScale = options_.windowScale;
  options.application.renderer = options_.renderer;
  options.seed = seed;
  game_ = std::make_unique<GameApplication>(options, host_, services_, options_.windows);
  if (const kit::Status launched = game_->launch(); !launched) {
    game_.reset();
    throw ScriptError(launched.error());
  }
  if (options_.progressDemo)
    progressDemo_ = runProgressDemo(game_->application().window(), services_.runLoop);
}

std::shared_ptr<GameScene> AppScenarioHost::scene() const {
  return game_ ? game_->scene() : nullptr;
}

kit::FrameDriver& AppScenarioHost::frameDriver() {
  return game_ ? game_->application().frameDriver() : *idle_;
}

void AppScenarioHost::frameDidRun() {
  if (!game_)
    return;
  game_->application().pollEvents();
  game_->application().finishFrame();
}

kit::Application* AppScenarioHost::application() const {
  return game_ ? &game_->application() : nullptr;
}

void AppScenarioHost::end() {
  if (!game_)
    return;
  progressDemo_.reset();
  game_->application().terminate();
  game_.reset();
}

kit::Status AppScenarioHost::screenshot(const std::string& file) {
  if (!game_ || !game_->application().hasWindow())
    return kit::Error{"screenshots need a window: run without --headless"};
  return game_->application().saveScreenshot(file);
}

namespace {

// Visible views in drawing order, from the first one drawn after the sprite
// view on (its subviews included).
void collectAbove(const kit::View& view, const kit::View* sprite, double alpha, bool& above,
                  kit::Value::Array& out) {
  if (view.isHidden())
    return;
  alpha *= view.presentationAlpha();
  if (alpha <= 0)
    return;
  if (above) {
    const kit::Rect frame =
        view.superview() ? view.superview()->convertRectToView(view.presentationFrame(), nullptr)
                         : view.presentationFrame();
    out.emplace_back(kit::Value::Dictionary{
        {"class", view.className()},
        {"frame",
         kit::Value::Array{frame.origin.x, frame.origin.y, frame.size.width, frame.size.height}},
        {"alpha", alpha}});
  }
  if (&view == sprite)
    above = true;
  for (const auto& sub : view.subviews())
    collectAbove(*sub, sprite, alpha, above, out);
}

}  // namespace

kit::Value::Dictionary AppScenarioHost::describeWindow() const {
  if (!game_)
    return {};
  kit::Application& app = game_->application();
  const auto window = app.window();
  if (!window)
    return {};
  const kit::Size size = window->bounds().size;
  kit::Value::Array views;
  bool above = false;
  collectAbove(*window, app.spriteView().get(), 1, above, views);
  return kit::Value::Dictionary{
      {"window",
       kit::Value::Dictionary{
           {"w", size.width},
           {"h", size.height},
           {"scale", app.viewport().pixelsPerPoint()},
           {"renderer", app.platformWindow() ? app.platformWindow()->rendererName() : "none"},
           {"vsync", app.platformWindow() && app.platformWindow()->vsync()}}},
      {"views", std::move(views)}};
}
