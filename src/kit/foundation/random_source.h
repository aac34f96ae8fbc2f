#pragma once

#include <array>
#include <cstdint>

namespace kit {

// The game's source of random numbers, owned by the application and lent to
// whoever draws from it. It reproduces the C library's srand()/rand() sequence
// of the GNU C library bit for bit (its additive feedback generator with 31
// words of state), so a seed plays the same run on every backend and every C
// library, and recorded runs stay valid. Not thread-safe; one per owner.
class RandomSource {
 public:
  static constexpr int kMax = 2147483647;  // the largest value next() returns

  explicit RandomSource(uint32_t seed = 1) { seed_(seed); }

  // Restarts the sequence, as srand(seed) does.
  void seed(uint32_t seed) { seed_(seed); }
  // The next value in 0..kMax, as rand() gives it.
  int next();

 private:
  void seed_(uint32_t seed);

  std::array<int32_t, 31> state_{};
  int front_ = 0;
  int rear_ = 0;
};

}  // namespace kit
