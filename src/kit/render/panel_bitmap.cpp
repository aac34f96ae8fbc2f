#include "kit/render/panel_bitmap.h"

#include "kit/foundation/graphics.h"

namespace kit {

PanelBitmap rasterizePanel(const PanelStyle& style, double scale) {
  return Graphics::current().images().rasterizePanel(style, scale);
}

PanelBitmap rasterizeSpinner(double side, double scale, Color color, int spokes) {
  return Graphics::current().images().rasterizeSpinner(side, scale, color, spokes);
}

}  // namespace kit
