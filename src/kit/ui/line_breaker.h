#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/geometry.h"
#include "kit/ui/text_layout.h"

namespace kit {

// Line breaking for backends whose text engine only measures and draws runs
// (the browser's canvas): a TextBlock cut into lines with nothing but a
// width measurement and the font's line height. Paragraphs end at '\n';
// WordWrap breaks after spaces and between CJK characters (inside a word only
// when it is wider than the line), CharWrap after any character; lines that
// do not wholly fit the box's height or exceed numberOfLines are dropped, and
// the truncating modes end, begin or split the last line shown with "…" when
// text is left over. Widths are in the measurement's units (points).
struct BrokenLine {
  std::string text;
  double width = 0;
};

struct BrokenText {
  std::vector<BrokenLine> lines;
  // Whole points: the widest line by the lines' height; zero when nothing fits.
  Size size;
};

using MeasureRun = std::function<double(std::string_view)>;

BrokenText breakLines(const TextBlock& block, const MeasureRun& measure, double lineHeight);

}  // namespace kit
