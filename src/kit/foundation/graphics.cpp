#include "kit/foundation/graphics.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace kit {
namespace {

// Not an owner: the installed graphics' owner outlives its installation.
// Atomic because workers (the ad network's) draw with it.
std::atomic<Graphics*> gInstalled{nullptr};
// A worker's own, set by ThreadUse; it wins over the installed graphics.
thread_local Graphics* tThreadGraphics = nullptr;

}  // namespace

Graphics::Graphics(std::unique_ptr<TextSystem> text, std::unique_ptr<ImageSystem> images)
    : text_(std::move(text)), images_(std::move(images)) {}

Graphics::~Graphics() {
  Graphics* self = this;
  gInstalled.compare_exchange_strong(self, nullptr);
}

Graphics& Graphics::current() {
  Graphics* installed = Graphics::installed();
  if (!installed) {
    std::fputs(
        "kit::Graphics: drawing or measuring with no graphics installed (an Application "
        "installs its services' graphics; tools and tests install makeBackendGraphics())\n",
        stderr);
    std::abort();
  }
  return *installed;
}

Graphics* Graphics::installed() {
  if (tThreadGraphics)
    return tThreadGraphics;
  return gInstalled.load(std::memory_order_acquire);
}

Graphics::ThreadUse::ThreadUse(std::shared_ptr<Graphics> graphics)
    : graphics_(std::move(graphics)), before_(tThreadGraphics) {
  if (graphics_)
    tThreadGraphics = graphics_.get();
}

Graphics::ThreadUse::~ThreadUse() {
  tThreadGraphics = before_;
}

Graphics* Graphics::setCurrent(Graphics* graphics) {
  return gInstalled.exchange(graphics, std::memory_order_acq_rel);
}

}  // namespace kit
