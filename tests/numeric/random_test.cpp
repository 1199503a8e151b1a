#include <gtest/gtest.h>
#include <studystats/analyses.h>
#include <studystats/engine/folds.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "tests/definition/random.h"

namespace studystats {
namespace {

// A table value as a number in [0, 1], in 32-bit arithmetic.
float number(std::int32_t tableValue) { return static_cast<float>(tableValue) * 1.0e-9F; }

// The values are stated with the generator's definition.
TEST(Random, GivesThePublishedSequence) {
  struct Row {
    std::vector<std::int32_t> seeds;   // of successive draws after a reset
    std::vector<std::int32_t> values;  // table values that they return, as numbers in [0, 1]
  };
  const Row rows[] = {
      {{0, 0, 0}, {533923850, 323008803, 401103978}},
      {{-1, 1, 1}, {298227348, 715119168, 33021107}},
      {{1}, {298227348}},
      {{0, -12345, 0}, {533923850, 860606660, 925464728}},  // a negative seed counts at any time
      {{0, 7}, {533923850, 323008803}},                     // any other only after a reset
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Nmrrst(), 0);
    for (std::size_t i = 0; i < row.seeds.size(); ++i)
      EXPECT_EQ(Nmrand(row.seeds[i]), number(row.values[i])) << "draw " << i << ", seed " << row.seeds[i];
  }
}

TEST(Random, KeepsGeneratorsOfTheirOwnApart) {
  Nmrrst();
  Nmrand(5);
  engine::Generator one(-1), two(0);
  EXPECT_EQ(one(), number(298227348));
  EXPECT_EQ(two(), number(533923850));
  EXPECT_EQ(one(), number(715119168));
  const float next = Nmrand(0);
  Nmrrst();
  Nmrand(5);
  EXPECT_EQ(Nmrand(0), next);
}

TEST(Random, WrapsForSeedsOfAnyMagnitude) {
  for (const std::int32_t seed :
       {-161803398, -161803399, -1161803398, -1161803399, -2000000000, -std::numeric_limits<std::int32_t>::max(),
        std::numeric_limits<std::int32_t>::min()}) {
    definition::Generator expected;
    for (int i = 0; i < 500; ++i)
      ASSERT_EQ(Nmrand(i == 0 ? seed : 0), expected.draw(i == 0 ? seed : 0)) << seed << " " << i;
  }
}

}  // namespace
}  // namespace studystats
