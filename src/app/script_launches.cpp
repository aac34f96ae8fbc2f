#include "app/script_launches.h"

#include "kit/foundation/preferred_languages.h"

ScriptLaunches::ScriptLaunches(Options options) : options_(std::move(options)) {
  platform_ = std::make_unique<kit::HeadlessPlatform>(options_.prefsDir, options_.resourceDir);
  platform_->clock.setNow(options_.startTime);
  bringUp();
}

ScriptLaunches::~ScriptLaunches() {
  tearDown();
}

void ScriptLaunches::bringUp() {
  kit::registerPreferredLanguages(platform_->defaults, options_.language);
  ads_.start(platform_->services(), true);
  host_ = std::make_unique<AppScenarioHost>(
      AppScenarioHost::Options{options_.resourceDir, options_.window, options_.windowScale,
                               options_.progressDemo, options_.renderer, options_.windows},
      platform_->services(), ads_);
}

void ScriptLaunches::tearDown() {
  // Everything that borrows the services goes before them.
  if (host_)
    host_->end();
  host_.reset();
  ads_.stop();
}

void ScriptLaunches::relaunch() {
  const int64_t wall = platform_->clock.now();
  const int64_t mono = platform_->clock.monotonicNanos();
  const kit::Device device = platform_->device;
  tearDown();
  // The preferences are written as the old launch's services go, and read
  // back by the new ones.
  platform_.reset();
  platform_ = std::make_unique<kit::HeadlessPlatform>(options_.prefsDir, options_.resourceDir);
  platform_->clock.advance(mono);
  platform_->clock.setNow(wall);
  platform_->device = device;
  bringUp();
}
