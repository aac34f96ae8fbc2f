#include "kit/render/text_metrics.h"

#include "kit/foundation/graphics.h"

namespace kit {

double firstBaseline(const TextBlock& block) {
  if (block.text.empty())
    return 0;
  return Graphics::current().text().firstBaseline(block);
}

}  // namespace kit
