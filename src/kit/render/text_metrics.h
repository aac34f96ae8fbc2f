#pragma once

#include "kit/ui/text_layout.h"

namespace kit {

// Distance in points from the top of a laid-out block to the baseline of its
// first line (the same fonts and metrics as TextLayout); 0 for empty text.
// Scene labels aligned on their baseline need it.
double firstBaseline(const TextBlock& block);

}  // namespace kit
