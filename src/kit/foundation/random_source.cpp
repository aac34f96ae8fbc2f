#include "kit/foundation/random_source.h"

namespace kit {

namespace {
constexpr int kDegree = 31;
constexpr int kSeparation = 3;
constexpr int kDiscarded = 310;  // outputs thrown away after seeding, as the C library does
}  // namespace

void RandomSource::seed_(uint32_t seed) {
  // A zero seed would leave the state all zeros; the C library uses 1 then.
  int32_t word = seed == 0 ? 1 : static_cast<int32_t>(seed);
  state_[0] = word;
  for (int i = 1; i < kDegree; ++i) {
    // word = 16807 * word mod (2^31 - 1), by Schrage's method without overflow.
    const int32_t hi = word / 127773;
    const int32_t lo = word % 127773;
    word = 16807 * lo - 2836 * hi;
    if (word < 0) word += 2147483647;
    state_[i] = word;
  }
  front_ = kSeparation;
  rear_ = 0;
  for (int i = 0; i < kDiscarded; ++i) next();
}

int RandomSource::next() {
  // Unsigned addition: the state words wrap modulo 2^32, as in the C library.
  const uint32_t sum = static_cast<uint32_t>(state_[front_]) + static_cast<uint32_t>(state_[rear_]);
  state_[front_] = static_cast<int32_t>(sum);
  const int result = static_cast<int>(sum >> 1);
  if (++front_ >= kDegree) front_ = 0;
  if (++rear_ >= kDegree) rear_ = 0;
  return result;
}

}  // namespace kit
