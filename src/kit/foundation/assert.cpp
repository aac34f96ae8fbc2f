#include "kit/foundation/assert.h"

#include <cstdio>
#include <cstdlib>

namespace kit {

void assertionFailed(const char* condition, const char* message, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: assertion failed: %s (%s)\n", file, line, message, condition);
#ifndef NDEBUG
  std::abort();
#endif
}

}  // namespace kit
