#pragma once

#include "kit/foundation/geometry.h"

// A banner size as the SDK names it: a fixed size in points.
struct GADAdSize {
  kit::Size size;
  unsigned flags = 0;
};

// The phone banner (320 × 50) and the tablet leaderboard (728 × 90).
inline constexpr GADAdSize kGADAdSizeBanner{{320, 50}, 0};
inline constexpr GADAdSize kGADAdSizeLeaderboard{{728, 90}, 0};

inline constexpr kit::Size CGSizeFromGADAdSize(GADAdSize size) {
  return size.size;
}
