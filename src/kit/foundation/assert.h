#pragma once

// Programmer mistakes (a null child, a road index out of range, a zero timer
// interval) are loud in development and harmless for players:
//
//   if (!KIT_ASSERT(child != nullptr, "addChild of a null node")) return;
//
// Debug and sanitizer builds (no NDEBUG) print the failed condition with its
// place and abort. Release builds print the same line to stderr and the
// expression yields false, so the caller refuses the call and play goes on.
// Outside data (files, replies, scripts) is never checked with this: bad input
// is an expected failure and reported through kit::Result.

namespace kit {

// Reports a failed KIT_ASSERT; aborts unless NDEBUG is defined.
void assertionFailed(const char* condition, const char* message, const char* file, int line);

}  // namespace kit

#define KIT_ASSERT(condition, message) \
  ((condition) ? true : (::kit::assertionFailed(#condition, message, __FILE__, __LINE__), false))
