#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "kit/platform/render_target.h"

namespace kit::web {

// The page's <canvas> as a render target, drawn through Canvas 2D: textures
// are offscreen canvases, quads are drawImage calls under a transform, and a
// tinted texture is composed once per colour (multiply, then the texture's
// own alpha through destination-in) and kept with the texture. The browser
// shows the canvas when the animation frame returns, so present() only
// closes the frame. The backing store is the canvas's CSS size times the
// device pixel ratio (PageLayout sizes it). Main thread only.
class CanvasTarget final : public RenderTarget {
 public:
  CanvasTarget();
  ~CanvasTarget() override;
  CanvasTarget(const CanvasTarget&) = delete;
  CanvasTarget& operator=(const CanvasTarget&) = delete;

  Size pixelSize() const override;
  TextureId createTexture(const uint8_t* rgba, int width, int height) override;
  void destroyTexture(TextureId texture) override;
  void clear(const Color& color) override;
  void fillRect(const Rect& rect, const Color& color, TargetBlend blend) override;
  void drawQuad(const TexturedQuad& quad) override;
  void setClip(const std::optional<Rect>& rect) override;
  void present() override;
  Result<std::vector<uint8_t>> readPixels(int& width, int& height) const override;

 private:
  std::vector<TextureId> textures_;
};

}  // namespace kit::web
