#pragma once

#include <memory>

#include "kit/platform/image_system.h"
#include "kit/platform/text_system.h"

namespace kit {

// The backend's text and image systems, owned together. The services' owner
// holds one in a shared_ptr (kit::Services lends it); the application installs it as
// current() while it lives, so Image, ImageContext, TextLayout and the other
// drawing functions reach the platform without a services handle. Test
// binaries install the backend's own for their whole run (tests/support).
//
// Installing is main-thread work; current() may be read from any thread. A
// worker that may run before or after the installation (the ad network's,
// which is detached on quitting) uses the services' graphics on its own
// thread instead (ThreadUse), keeping them alive.
class Graphics : public std::enable_shared_from_this<Graphics> {
 public:
  Graphics(std::unique_ptr<TextSystem> text, std::unique_ptr<ImageSystem> images);
  // Uninstalls itself if it is current().
  ~Graphics();
  Graphics(const Graphics&) = delete;
  Graphics& operator=(const Graphics&) = delete;

  TextSystem& text() { return *text_; }
  ImageSystem& images() { return *images_; }

  // The installed graphics. Drawing with none installed is a programming
  // error: it stops the program with a message naming the fix.
  static Graphics& current();
  // The installed graphics, or nullptr.
  static Graphics* installed();
  // Installs `graphics` (borrowed; nullptr uninstalls) and returns the one
  // installed before.
  static Graphics* setCurrent(Graphics* graphics);

  // Makes `graphics` current() on the calling thread while it lives, keeping
  // it alive whatever its owner does meanwhile; nullptr changes nothing.
  class ThreadUse {
   public:
    explicit ThreadUse(std::shared_ptr<Graphics> graphics);
    ~ThreadUse();
    ThreadUse(const ThreadUse&) = delete;
    ThreadUse& operator=(const ThreadUse&) = delete;

   private:
    std::shared_ptr<Graphics> graphics_;
    Graphics* before_;
  };

 private:
  std::unique_ptr<TextSystem> text_;
  std::unique_ptr<ImageSystem> images_;
};

}  // namespace kit
