#include "kit/render/renderer.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <numbers>
#include <unordered_map>
#include <vector>

#include "kit/render/image_library.h"
#include "kit/render/panel_bitmap.h"
#include "kit/render/sprite_view.h"
#include "kit/render/text_metrics.h"
#include "kit/scene/draw_list.h"
#include "kit/scene/label_node.h"
#include "kit/ui/activity_indicator_view.h"
#include "kit/ui/image.h"
#include "kit/ui/image_view.h"
#include "kit/ui/label.h"

namespace kit {
namespace {

// Cached textures unused for this many frames (about five seconds) go.
constexpr uint64_t kKeepFrames = 300;
constexpr uint64_t kSweepEvery = 60;
// Most panels and view texts kept at once: an animated frame makes a new
// size every frame, and those must not pile up.
constexpr size_t kMostPanels = 48;
constexpr size_t kMostTexts = 256;
// Alphas below this draw nothing visible at 8 bits.
constexpr double kInvisible = 1.0 / 512;

bool sameScale(double a, double b) {
  return std::abs(a - b) < 1e-9;
}

// Whole pixels: clips are kept on the pixel grid.
struct PixelRect {
  int x = 0, y = 0, w = 0, h = 0;
  bool empty() const { return w <= 0 || h <= 0; }
  Rect rect() const { return {{double(x), double(y)}, {double(w), double(h)}}; }
};

// The overlap of two clips; an empty one at a's corner when they miss.
PixelRect intersect(const PixelRect& a, const PixelRect& b) {
  if (a.empty() || b.empty())
    return {a.x, a.y, 0, 0};
  PixelRect out;
  out.x = std::max(a.x, b.x);
  out.w = std::min(a.x + a.w, b.x + b.w) - out.x;
  out.y = std::max(a.y, b.y);
  out.h = std::min(a.y + a.h, b.y + b.h) - out.y;
  if (out.empty())
    return {a.x, a.y, 0, 0};
  return out;
}

PixelRect pixelRect(const Rect& r) {
  const int x0 = static_cast<int>(std::lround(r.minX())),
            y0 = static_cast<int>(std::lround(r.minY()));
  const int x1 = static_cast<int>(std::lround(r.maxX())),
            y1 = static_cast<int>(std::lround(r.maxY()));
  return {x0, y0, std::max(0, x1 - x0), std::max(0, y1 - y0)};
}

// A rectangle of node coordinates as it lands in pixels.
struct Placement {
  double cx = 0, cy = 0;  // centre, pixels
  double width = 0, height = 0;
  double degrees = 0;  // clockwise, as the screen turns (y down)
  bool mirrored = false;
  bool upright() const { return std::abs(degrees) < 1e-6 && !mirrored; }
};

Placement place(const AffineTransform& m, const Rect& nodeRect) {
  Placement p;
  const Point c = m.apply({nodeRect.midX(), nodeRect.midY()});
  p.cx = c.x;
  p.cy = c.y;
  p.width = nodeRect.size.width * std::hypot(m.a, m.b);
  p.height = nodeRect.size.height * std::hypot(m.c, m.d);
  p.degrees = std::atan2(m.b, m.a) * 180 / std::numbers::pi;
  // Node space is y up and pixels are y down, so an unmirrored map has a
  // negative determinant.
  p.mirrored = m.a * m.d - m.b * m.c > 0;
  return p;
}

}  // namespace

struct Renderer::Impl {
  struct Text {
    uint64_t version = 0;
    TextBlock block;
    Color color;
    double scale = 0;
    double baseline = 0;
    Size size;  // points
    TargetTexture texture;
    int width = 0, height = 0;
    uint64_t lastUsed = 0;
  };
  struct Panel {
    PanelStyle style;
    double scale = 0;
    TargetTexture texture;
    int width = 0, height = 0;
    Point origin;
    uint64_t lastUsed = 0;
  };
  struct Bitmap {
    std::weak_ptr<Image> image;
    TargetTexture texture;
    uint64_t lastUsed = 0;
  };
  struct Spinner {
    Color color;
    int side = 0;
    TargetTexture texture;
    uint64_t lastUsed = 0;
  };
  struct Counter {
    std::deque<int64_t> frameTimes;
    int64_t shownAt = 0;
    std::string text;
    uint64_t version = 0;
  };

  Impl(RenderTarget& target, ImageCodec& codec, const ResourceStore& resources,
       ImageResolver resolver, Log& log)
      : r(target), images(target, codec, resources, std::move(resolver), log) {
    const uint8_t whitePixel[4] = {255, 255, 255, 255};
    white = TargetTexture(r, whitePixel, 1, 1);
  }

  RenderTarget& r;
  ImageLibrary images;
  TargetTexture white;
  uint64_t frame = 0;
  uint64_t made = 0;  // rasterisations other than named images
  uint64_t drawCalls = 0;
  int64_t now = 0;
  Viewport viewport;
  std::vector<PixelRect> clips;

  std::unordered_map<const void*, Text> sceneTexts;  // per label node
  std::unordered_map<const void*, Text> viewTexts;   // per label view, and counters
  std::vector<Panel> panels;
  std::unordered_map<const Image*, Bitmap> bitmaps;
  std::vector<Spinner> spinners;
  std::unordered_map<const void*, Counter> counters;

  // --- Clipping ---------------------------------------------------------------

  void pushClip(const PixelRect& rect) {
    clips.push_back(clips.empty() ? rect : intersect(clips.back(), rect));
    r.setClip(clips.back().rect());
  }
  void popClip() {
    clips.pop_back();
    r.setClip(clips.empty() ? std::nullopt : std::optional<Rect>(clips.back().rect()));
  }
  bool clippedAway(const Placement& p) const {
    if (clips.empty())
      return false;
    const double reach = std::hypot(p.width, p.height) / 2;
    const PixelRect& c = clips.back();
    return p.cx + reach < c.x || p.cx - reach > c.x + c.w || p.cy + reach < c.y ||
           p.cy - reach > c.y + c.h;
  }

  // --- Primitives -------------------------------------------------------------

  void copy(TextureId texture, const Placement& p, double alpha, bool opaque,
            Color tint = {1, 1, 1, 1}) {
    TexturedQuad quad;
    quad.texture = texture;
    quad.destination = {{p.cx - p.width / 2, p.cy - p.height / 2}, {p.width, p.height}};
    quad.rotationDegrees = p.upright() ? 0 : p.degrees;
    quad.flipVertical = !p.upright() && p.mirrored;
    quad.alpha = alpha;
    quad.tint = tint;
    quad.blend = opaque && alpha >= 1 ? TargetBlend::None : TargetBlend::Blend;
    ++drawCalls;
    r.drawQuad(quad);
  }

  void fill(const Placement& p, Color color, double alpha) {
    const double a = color.alpha * alpha;
    if (a < kInvisible)
      return;
    if (p.upright()) {
      r.fillRect({{p.cx - p.width / 2, p.cy - p.height / 2}, {p.width, p.height}},
                 color.withAlpha(a), a >= 1 ? TargetBlend::None : TargetBlend::Blend);
      ++drawCalls;
      return;
    }
    copy(white.id(), p, a, false, color);
  }

  // --- Texts --------------------------------------------------------------------

  // The entry for `key` showing `block` in `color` at `scale`; rasterised only
  // when one of those (or the owner's content version) changed.
  Text* text(std::unordered_map<const void*, Text>& cache, const void* key, uint64_t version,
             const TextBlock& block, Color color, double scale, Size area, bool withBaseline) {
    auto it = cache.find(key);
    if (it != cache.end()) {
      Text& t = it->second;
      if (t.version == version && sameScale(t.scale, scale) && t.color == color &&
          t.block == block) {
        t.lastUsed = frame;
        return t.texture ? &t : nullptr;
      }
    }
    Text t;
    t.version = version;
    t.block = block;
    t.color = color;
    t.scale = scale;
    t.lastUsed = frame;
    TextLayout layout(block);
    t.size = layout.size();
    if (withBaseline)
      t.baseline = firstBaseline(block);
    const TextBitmap bitmap = layout.render(area, scale, color);
    t.texture = TargetTexture(r, bitmap.rgba.data(), bitmap.width, bitmap.height);
    t.width = bitmap.width;
    t.height = bitmap.height;
    ++made;
    Text& stored = cache[key] = std::move(t);
    return stored.texture ? &stored : nullptr;
  }

  // --- Scene ----------------------------------------------------------------------

  void drawItem(const DrawItem& item, const AffineTransform& toPixels, double alpha) {
    const AffineTransform m = toPixels.concatenating(item.transform);
    const double a = alpha * item.alpha;
    if (a < kInvisible)
      return;
    switch (item.kind) {
      case DrawItem::Kind::Texture: {
        const Rect rect{
            {-item.anchorPoint.x * item.size.width, -item.anchorPoint.y * item.size.height},
            item.size};
        const Placement p = place(m, rect);
        if (clippedAway(p) || !item.textureName)
          return;
        const auto* image = images.get(*item.textureName, static_cast<int>(std::lround(p.width)),
                                       static_cast<int>(std::lround(p.height)), frame);
        if (image)
          copy(image->texture, p, a, image->opaque);
        return;
      }
      case DrawItem::Kind::Color: {
        const Rect rect{
            {-item.anchorPoint.x * item.size.width, -item.anchorPoint.y * item.size.height},
            item.size};
        const Placement p = place(m, rect);
        if (!clippedAway(p))
          fill(p, item.color, a);
        return;
      }
      case DrawItem::Kind::Label:
        drawLabelNode(item, m, a);
        return;
    }
  }

  void drawLabelNode(const DrawItem& item, const AffineTransform& m, double alpha) {
    const LabelNode& label = *item.label;
    TextBlock block;
    block.text = label.text();
    block.font = Font::fontWithName(label.fontName(), label.fontSize());
    block.lineBreakMode = LineBreakMode::Clip;
    const double scale = std::sqrt(std::abs(m.a * m.d - m.b * m.c));
    const bool baseline = label.verticalAlignmentMode() == LabelVerticalAlignmentMode::Baseline;
    Text* t = text(sceneTexts, item.node, item.contentVersion, block, label.fontColor(), scale, {},
                   baseline);
    if (!t)
      return;
    const double w = t->size.width, h = t->size.height;
    double x = -w / 2, y = -h / 2;  // lower-left corner in node space (y up)
    switch (label.horizontalAlignmentMode()) {
      case LabelHorizontalAlignmentMode::Center:
        break;
      case LabelHorizontalAlignmentMode::Left:
        x = 0;
        break;
      case LabelHorizontalAlignmentMode::Right:
        x = -w;
        break;
    }
    switch (label.verticalAlignmentMode()) {
      case LabelVerticalAlignmentMode::Center:
        break;
      case LabelVerticalAlignmentMode::Top:
        y = -h;
        break;
      case LabelVerticalAlignmentMode::Bottom:
        y = 0;
        break;
      case LabelVerticalAlignmentMode::Baseline:
        y = t->baseline - h;
        break;
    }
    Placement p = place(m, {{x, y}, {w, h}});
    // Drawn pixel for pixel: the bitmap already has the drawn size.
    p.width = t->width;
    p.height = t->height;
    if (!clippedAway(p))
      copy(t->texture.id(), p, alpha, false);
  }

  void drawScene(const SpriteView& view, const Rect& rect, double alpha) {
    const std::shared_ptr<Scene>& scene = view.scene();
    if (!scene)
      return;
    const AffineTransform toPixels =
        viewport.pointsToPixels()
            .concatenating(AffineTransform::translation(rect.origin.x, rect.origin.y))
            .concatenating(scene->sceneToView(rect.size));
    pushClip(pixelRect(viewport.pointsToPixels().applyToRect(rect)));
    const std::vector<DrawItem> items = buildDrawList(*scene);
    for (const DrawItem& item : items)
      drawItem(item, toPixels, alpha);
    popClip();
    if (view.showsFPS() || view.showsNodeCount())
      drawCounters(view, rect, items.size());
  }

  void drawCounters(const SpriteView& view, const Rect& rect, size_t nodes) {
    Counter& c = counters[&view];
    c.frameTimes.push_back(now);
    while (c.frameTimes.size() > 60)
      c.frameTimes.pop_front();
    if (c.text.empty() || now - c.shownAt > 500'000'000) {
      c.shownAt = now;
      std::string line;
      if (view.showsNodeCount())
        line += "nodes:" + std::to_string(nodes);
      if (view.showsFPS() && c.frameTimes.size() > 1) {
        const double span = double(c.frameTimes.back() - c.frameTimes.front()) / 1e9;
        const double fps = span > 0 ? double(c.frameTimes.size() - 1) / span : 0;
        if (!line.empty())
          line += "  ";
        line += std::to_string(static_cast<int>(std::lround(fps))) + " fps";
      }
      if (line != c.text)
        ++c.version;
      c.text = line;
    }
    TextBlock block;
    block.text = c.text;
    block.font = Font::systemFontOfSize(12);
    Text* t =
        text(viewTexts, &c, c.version, block, Color::white(), viewport.pixelsPerPoint(), {}, false);
    if (!t)
      return;
    const Rect box{{rect.maxX() - t->size.width - 6, rect.maxY() - t->size.height - 4}, t->size};
    const Rect px = viewport.pointsToPixels().applyToRect(box);
    Placement p{px.midX(), px.midY(), double(t->width), double(t->height)};
    fill(Placement{px.midX(), px.midY(), px.size.width + 8, px.size.height + 4},
         Color{0, 0, 0, 0.5}, 1);
    copy(t->texture.id(), p, 1, false);
  }

  // --- Views ------------------------------------------------------------------------

  void drawLayer(const View& view, const Rect& rect, double alpha) {
    const Color fillColor = view.presentationBackgroundColor();
    const bool shadow = view.shadowOpacity() > 0 && view.shadowColor().alpha > 0;
    if (fillColor.alpha * alpha < kInvisible && !shadow)
      return;
    const Rect px = viewport.pointsToPixels().applyToRect(rect);
    if (view.cornerRadius() <= 0 && !shadow) {
      fill({px.midX(), px.midY(), px.size.width, px.size.height}, fillColor, alpha);
      return;
    }
    PanelStyle style;
    style.size = rect.size;
    style.cornerRadius = view.cornerRadius();
    style.fill = fillColor;
    style.shadowColor = view.shadowColor();
    style.shadowOpacity = view.shadowOpacity();
    style.shadowRadius = view.shadowRadius();
    style.shadowOffset = view.shadowOffset();
    const Panel* panel = this->panel(style, viewport.pixelsPerPoint());
    if (!panel)
      return;
    const double x = std::round(px.minX()) - panel->origin.x;
    const double y = std::round(px.minY()) - panel->origin.y;
    copy(panel->texture.id(),
         {x + panel->width / 2.0, y + panel->height / 2.0, double(panel->width),
          double(panel->height)},
         alpha, false);
  }

  const Panel* panel(const PanelStyle& style, double scale) {
    for (Panel& p : panels) {
      if (sameScale(p.scale, scale) && p.style == style) {
        p.lastUsed = frame;
        return &p;
      }
    }
    PanelBitmap bitmap = rasterizePanel(style, scale);
    ++made;
    Panel p;
    p.style = style;
    p.scale = scale;
    p.texture = TargetTexture(r, bitmap.rgba.data(), bitmap.width, bitmap.height);
    p.width = bitmap.width;
    p.height = bitmap.height;
    p.origin = bitmap.origin;
    p.lastUsed = frame;
    if (!p.texture)
      return nullptr;
    if (panels.size() >= kMostPanels) {
      panels.erase(std::min_element(panels.begin(), panels.end(),
                                    [](auto& a, auto& b) { return a.lastUsed < b.lastUsed; }));
    }
    panels.push_back(std::move(p));
    return &panels.back();
  }

  void drawLabelView(const Label& label, const Rect& rect, double alpha) {
    if (label.text().empty())
      return;
    TextBlock block = label.textBlock();
    block.box = rect.size;
    Text* t = text(viewTexts, &label, 0, block, label.textColor(), viewport.pixelsPerPoint(),
                   rect.size, false);
    if (!t)
      return;
    const Rect px = viewport.pointsToPixels().applyToRect(rect);
    const double x = std::round(px.minX()), y = std::round(px.minY());
    copy(t->texture.id(),
         {x + t->width / 2.0, y + t->height / 2.0, double(t->width), double(t->height)}, alpha,
         false);
  }

  void drawImageView(const ImageView& view, const Rect& rect, double alpha) {
    const std::shared_ptr<Image>& image = view.image();
    if (!image || image->pixelWidth() <= 0 || image->pixelHeight() <= 0)
      return;
    Bitmap& b = bitmaps[image.get()];
    if (!b.texture || b.image.lock() != image) {
      const int w = image->pixelWidth(), h = image->pixelHeight();
      std::vector<uint8_t> rgba(static_cast<size_t>(w) * h * 4);
      for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
          const Image::Pixel px = image->pixelAt(x, y);
          uint8_t* out = rgba.data() + (static_cast<size_t>(y) * w + x) * 4;
          out[0] = px.red;
          out[1] = px.green;
          out[2] = px.blue;
          out[3] = px.alpha;
        }
      }
      b.image = image;
      b.texture = TargetTexture(r, rgba.data(), w, h);
      ++made;
    }
    b.lastUsed = frame;
    if (!b.texture)
      return;
    const Rect inBounds = view.imageRect(image->size());
    const Rect placed{{rect.origin.x + inBounds.origin.x - view.bounds().origin.x,
                       rect.origin.y + inBounds.origin.y - view.bounds().origin.y},
                      inBounds.size};
    const Rect px = viewport.pointsToPixels().applyToRect(placed);
    copy(b.texture.id(), {px.midX(), px.midY(), px.size.width, px.size.height}, alpha, false);
  }

  void drawSpinner(const ActivityIndicatorView& view, const Rect& rect, double alpha) {
    const double sidePoints = std::min(rect.size.width, rect.size.height);
    const int side = static_cast<int>(std::lround(sidePoints * viewport.pixelsPerPoint()));
    if (side <= 0)
      return;
    const Color color = view.color();
    auto it = std::find_if(spinners.begin(), spinners.end(),
                           [&](const Spinner& s) { return s.side == side && s.color == color; });
    if (it == spinners.end()) {
      PanelBitmap bitmap = rasterizeSpinner(sidePoints, viewport.pixelsPerPoint(), color,
                                            ActivityIndicatorView::kSpokes);
      ++made;
      spinners.push_back(
          {color, side, TargetTexture(r, bitmap.rgba.data(), bitmap.width, bitmap.height)});
      it = spinners.end() - 1;
    }
    it->lastUsed = frame;
    if (!it->texture)
      return;
    const Rect px = viewport.pointsToPixels().applyToRect(rect);
    Placement p{px.midX(), px.midY(), double(side), double(side)};
    p.degrees = view.spinAngle(now) * 180 / std::numbers::pi;
    copy(it->texture.id(), p, alpha, false);
  }

  // `origin`: the top-left corner of the superview's bounds, in root points.
  void drawView(const View& view, Point origin, double inherited) {
    if (view.isHidden())
      return;
    const double alpha = inherited * view.presentationAlpha();
    if (alpha < kInvisible)
      return;
    const Rect frameRect = view.presentationFrame();
    const Rect rect{{origin.x + frameRect.origin.x, origin.y + frameRect.origin.y}, frameRect.size};
    drawLayer(view, rect, alpha);
    const bool clips = view.clipsToBounds();
    if (clips)
      pushClip(pixelRect(viewport.pointsToPixels().applyToRect(rect)));
    if (const auto* sprite = dynamic_cast<const SpriteView*>(&view)) {
      drawScene(*sprite, rect, alpha);
    } else if (const auto* label = dynamic_cast<const Label*>(&view)) {
      drawLabelView(*label, rect, alpha);
    } else if (const auto* image = dynamic_cast<const ImageView*>(&view)) {
      drawImageView(*image, rect, alpha);
    } else if (const auto* spinner = dynamic_cast<const ActivityIndicatorView*>(&view)) {
      drawSpinner(*spinner, rect, alpha);
    }
    const Point inner{rect.origin.x - view.bounds().origin.x,
                      rect.origin.y - view.bounds().origin.y};
    for (const auto& sub : view.subviews())
      drawView(*sub, inner, alpha);
    if (clips)
      popClip();
  }

  void sweep() {
    if (frame % kSweepEvery != 0 || frame < kKeepFrames)
      return;
    const uint64_t oldest = frame - kKeepFrames;
    images.releaseUnused(oldest);
    auto stale = [oldest](const auto& entry) { return entry.second.lastUsed < oldest; };
    std::erase_if(sceneTexts, stale);
    std::erase_if(viewTexts, stale);
    std::erase_if(bitmaps, [oldest](const auto& e) {
      return e.second.lastUsed < oldest || e.second.image.expired();
    });
    std::erase_if(panels, [oldest](const Panel& p) { return p.lastUsed < oldest; });
    std::erase_if(spinners, [oldest](const Spinner& s) { return s.lastUsed < oldest; });
    if (viewTexts.size() > kMostTexts)
      viewTexts.clear();
  }
};

Renderer::Renderer(RenderTarget& target, ImageCodec& codec, const ResourceStore& resources,
                   ImageResolver images, Log& log)
    : impl_(std::make_unique<Impl>(target, codec, resources, std::move(images), log)) {}

Renderer::~Renderer() = default;

void Renderer::drawFrame(const View& root, const Viewport& viewport, int64_t nowNanos) {
  Impl& d = *impl_;
  ++d.frame;
  d.drawCalls = 0;
  d.now = nowNanos;
  d.viewport = viewport;
  d.clips.clear();
  d.r.setClip(std::nullopt);
  d.r.clear(Color::black());
  d.pushClip(pixelRect(viewport.contentPixels()));
  d.drawView(root, {0, 0}, 1);
  d.popClip();
  d.sweep();
}

Renderer::Stats Renderer::stats() const {
  const Impl& d = *impl_;
  Stats s;
  s.frames = d.frame;
  s.rasterizations = d.made + d.images.rasterizations();
  s.drawCalls = d.drawCalls;
  s.cachedTextures = d.images.textureCount() + d.sceneTexts.size() + d.viewTexts.size() +
                     d.panels.size() + d.bitmaps.size() + d.spinners.size();
  return s;
}

}  // namespace kit
