#include "kit/ui/line_breaker.h"

#include <algorithm>
#include <cmath>

namespace kit {
namespace {

constexpr std::string_view kEllipsis = "\u2026";

// Length in bytes of the UTF-8 sequence starting with `lead` (1 for stray
// continuation bytes, so bad input still advances).
size_t sequenceLength(unsigned char lead) {
  if (lead >= 0xF0)
    return 4;
  if (lead >= 0xE0)
    return 3;
  if (lead >= 0xC0)
    return 2;
  return 1;
}

// The characters of `text`, each as its UTF-8 bytes.
std::vector<std::string_view> characters(std::string_view text) {
  std::vector<std::string_view> out;
  for (size_t i = 0; i < text.size();) {
    const size_t n = std::min(sequenceLength(static_cast<unsigned char>(text[i])), text.size() - i);
    out.push_back(text.substr(i, n));
    i += n;
  }
  return out;
}

// CJK ideographs, kana and fullwidth forms may break on either side.
bool breaksAround(std::string_view character) {
  if (character.size() < 3)
    return false;
  const auto b0 = static_cast<unsigned char>(character[0]);
  return b0 >= 0xE3 && b0 <= 0xEF &&
         !(b0 == 0xEF && static_cast<unsigned char>(character[1]) < 0xBC);
}

// Pieces that may not be split across lines in a mode, in order: words with
// their trailing spaces (WordWrap), single characters (CharWrap).
std::vector<std::string> piecesOf(std::string_view paragraph, LineBreakMode mode) {
  std::vector<std::string> pieces;
  std::string current;
  bool inSpaces = false;
  for (std::string_view c : characters(paragraph)) {
    if (mode == LineBreakMode::CharWrap) {
      pieces.emplace_back(c);
      continue;
    }
    const bool space = c == " ";
    if ((inSpaces && !space) || (breaksAround(c) && !current.empty())) {
      pieces.push_back(std::move(current));
      current.clear();
    }
    current += c;
    inSpaces = space;
    if (breaksAround(c)) {
      pieces.push_back(std::move(current));
      current.clear();
      inSpaces = false;
    }
  }
  if (!current.empty())
    pieces.push_back(std::move(current));
  return pieces;
}

std::string_view withoutTrailingSpaces(std::string_view text) {
  while (!text.empty() && text.back() == ' ')
    text.remove_suffix(1);
  return text;
}

// Greedy filling of lines `maxWidth` wide.
std::vector<std::string> wrap(std::string_view paragraph, LineBreakMode mode, double maxWidth,
                              const MeasureRun& measure) {
  std::vector<std::string> lines;
  std::string line;
  auto fits = [&](const std::string& text) {
    return measure(withoutTrailingSpaces(text)) <= maxWidth + 1e-6;
  };
  for (const std::string& piece : piecesOf(paragraph, mode)) {
    if (fits(line + piece)) {
      line += piece;
      continue;
    }
    if (!line.empty()) {
      lines.push_back(std::move(line));
      line.clear();
    }
    if (fits(piece)) {
      line = piece;
      continue;
    }
    // A word wider than the line breaks between its characters.
    for (std::string_view c : characters(piece)) {
      if (!line.empty() && !fits(line + std::string(c))) {
        lines.push_back(std::move(line));
        line.clear();
      }
      line += c;
    }
  }
  lines.push_back(std::move(line));
  return lines;
}

// `text` shortened with an ellipsis at its end, start or middle until it fits.
std::string ellipsized(std::string_view text, LineBreakMode mode, double maxWidth,
                       const MeasureRun& measure) {
  std::vector<std::string_view> chars = characters(text);
  auto join = [](const std::vector<std::string_view>& cs, size_t from, size_t to) {
    std::string out;
    for (size_t i = from; i < to; ++i)
      out += cs[i];
    return out;
  };
  for (size_t keep = chars.size();; --keep) {
    std::string candidate;
    if (mode == LineBreakMode::TruncateHead) {
      candidate = std::string(kEllipsis) + join(chars, chars.size() - keep, chars.size());
    } else if (mode == LineBreakMode::TruncateMiddle) {
      const size_t head = (keep + 1) / 2;
      candidate = join(chars, 0, head) + std::string(kEllipsis) +
                  join(chars, chars.size() - (keep - head), chars.size());
    } else {
      candidate = std::string(withoutTrailingSpaces(join(chars, 0, keep))) + std::string(kEllipsis);
    }
    if (keep == 0 || measure(candidate) <= maxWidth + 1e-6)
      return candidate;
  }
}

bool truncates(LineBreakMode mode) {
  return mode == LineBreakMode::TruncateHead || mode == LineBreakMode::TruncateTail ||
         mode == LineBreakMode::TruncateMiddle;
}

}  // namespace

BrokenText breakLines(const TextBlock& block, const MeasureRun& measure, double lineHeight) {
  BrokenText out;
  if (block.text.empty() || !(block.box.width > 0) || !(block.box.height > 0) || !(lineHeight > 0))
    return out;
  std::vector<std::string> lines;
  std::string_view rest = block.text;
  while (true) {
    const size_t end = rest.find('\n');
    for (std::string& line :
         wrap(rest.substr(0, end), block.lineBreakMode, block.box.width, measure))
      lines.push_back(std::move(line));
    if (end == std::string_view::npos)
      break;
    rest.remove_prefix(end + 1);
  }
  size_t shown = lines.size();
  if (block.box.height < TextBlock::kUnbounded)
    shown = std::min(shown, static_cast<size_t>(std::floor(block.box.height / lineHeight + 1e-9)));
  if (block.numberOfLines > 0)
    shown = std::min(shown, static_cast<size_t>(block.numberOfLines));
  if (shown == 0)
    return out;
  if (shown < lines.size() && truncates(block.lineBreakMode)) {
    // The last line shown carries what is left over, shortened.
    std::string last = lines[shown - 1];
    for (size_t i = shown; i < lines.size(); ++i)
      last += lines[i];
    lines[shown - 1] = ellipsized(last, block.lineBreakMode, block.box.width, measure);
  }
  double widest = 0;
  for (size_t i = 0; i < shown; ++i) {
    const std::string text(withoutTrailingSpaces(lines[i]));
    const double width = measure(text);
    widest = std::max(widest, width);
    out.lines.push_back({text, width});
  }
  out.size = {std::ceil(widest - 1e-6), std::ceil(lineHeight * static_cast<double>(shown) - 1e-6)};
  return out;
}

}  // namespace kit
