#pragma once

namespace kit {

// Which of SDL's renderers draws a window: Auto takes an accelerated one with
// vsync on a real display (software when none can be made) and the software
// one on the invisible offscreen and dummy drivers, so that tests and
// screenshots have the same pixels everywhere; the others ask by name.
enum class RendererChoice { Auto, Accelerated, Software };

}  // namespace kit
