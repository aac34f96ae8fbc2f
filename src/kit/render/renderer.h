#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "kit/foundation/geometry.h"
#include "kit/foundation/log.h"
#include "kit/platform/image_codec.h"
#include "kit/platform/render_target.h"
#include "kit/platform/resource_store.h"
#include "kit/render/image_library.h"
#include "kit/render/viewport.h"

namespace kit {

class Scene;
class View;

// Draws a view tree, and the scenes of the sprite views in it, into a render
// target: what the player sees each frame. Views draw in tree order with
// their presentation values (frame, alpha, background colour), then their
// content: a layer panel (rounded corners, drop shadow), label text, images,
// spinners, and a sprite view's scene (its draw list, mapped by the scene's
// scale mode, clipped to the view). Hidden views and nodes, and those at
// alpha 0, cost nothing.
//
// Everything that needs rasterising (SVG images at the pixel size they are
// drawn, text, panels) is made once and cached by what decides its pixels,
// so a steady frame only copies textures. Entries unused for a few seconds
// are released. Borrows the target, the image codec, the resources and the
// log; all outlive it.
// Main thread only.
class Renderer {
 public:
  // Resolves an image name ("car", "bg.png") to its SVG or PNG resource.
  using ImageResolver = ImageLibrary::Resolver;

  Renderer(RenderTarget& target, ImageCodec& codec, const ResourceStore& resources,
           ImageResolver images, Log& log);
  ~Renderer();
  Renderer(const Renderer&) = delete;
  Renderer& operator=(const Renderer&) = delete;

  // Clears the target (the bars around the content stay black) and draws
  // `root` and its subviews, placed by `viewport`. `nowNanos` is the frame's
  // monotonic time (spinners, the frame-rate counter).
  void drawFrame(const View& root, const Viewport& viewport, int64_t nowNanos);

  struct Stats {
    uint64_t frames = 0;
    uint64_t rasterizations = 0;  // images, texts and panels made so far
    uint64_t drawCalls = 0;       // in the last frame
    size_t cachedTextures = 0;
  };
  Stats stats() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace kit
