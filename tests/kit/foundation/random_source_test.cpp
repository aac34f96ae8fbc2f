#include "kit/foundation/random_source.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

// The C library's own sequence for a seed: the source must repeat it exactly
// (this machine's C library is the GNU one the source follows).
std::vector<int> libcSequence(unsigned seed, int count) {
  std::srand(seed);
  std::vector<int> values;
  for (int i = 0; i < count; ++i)
    values.push_back(std::rand());
  return values;
}

std::vector<int> sourceSequence(kit::RandomSource& random, int count) {
  std::vector<int> values;
  for (int i = 0; i < count; ++i)
    values.push_back(random.next());
  return values;
}

TEST(RandomSource, RepeatsTheCLibrarySequenceForEverySeed) {
  for (unsigned seed : {0u, 1u, 2u, 42u, 1700000000u, 2147483647u, 2147483648u, 4294967295u}) {
    kit::RandomSource random(seed);
    EXPECT_EQ(sourceSequence(random, 1000), libcSequence(seed, 1000)) << "seed " << seed;
  }
}

TEST(RandomSource, ReseedingRestartsTheSequenceAndSourcesAreIndependent) {
  kit::RandomSource a(7), b(7);
  const std::vector<int> first = sourceSequence(a, 50);
  EXPECT_EQ(sourceSequence(b, 50), first);  // b did not move with a
  a.seed(7);
  EXPECT_EQ(sourceSequence(a, 50), first);
  kit::RandomSource unseeded;
  EXPECT_EQ(sourceSequence(unseeded, 10), libcSequence(1, 10));  // as rand() before srand()
}

}  // namespace
