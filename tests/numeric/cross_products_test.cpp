#include "numeric/cross_products.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/definition/cross_products.h"

namespace studystats {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Routine = void (*)(const double*, const std::int32_t*, const std::int32_t*, const std::int32_t*,
                         const std::int32_t*, double*, double*);

// c, padded to a leading dimension of p + 2 with -1, then the means.
std::vector<double> outcome(Routine routine, const std::vector<double>& x, std::int32_t ld, std::int32_t n,
                            std::int32_t p) {
  const std::int32_t ldc = p + 2;
  std::vector<double> out(static_cast<std::size_t>(ldc * p + p), -1.0);
  routine(x.data(), &ld, &ldc, &n, &p, out.data(), out.data() + ldc * p);
  return out;
}

// Signs and payloads of not-a-numbers are the one thing that is not promised.
bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::bit_cast<std::uint64_t>(a[i]) != std::bit_cast<std::uint64_t>(b[i]) &&
        !(std::isnan(a[i]) && std::isnan(b[i])))
      return false;
  return a.size() == b.size();
}

TEST(CrossProducts, EqualTheDefinitionBitForBitInEveryShape) {
  std::mt19937_64 random(20240607);
  std::normal_distribution<double> normal(3, 1);
  for (const std::int32_t n : {0, 1, 2, 7, 8, 9, 17, 60})
    for (const std::int32_t p : {0, 1, 2, 8, 9, 15, 255, 256, 257, 514}) {
      const std::int32_t ld = n + 3;
      std::vector<double> x(static_cast<std::size_t>(ld * p), kNaN);  // spare rows: nobody may read them
      for (std::int32_t j = 0; j < p; ++j)
        for (std::int32_t i = 0; i < n; ++i) x[static_cast<std::size_t>(i + j * ld)] = normal(random);
      EXPECT_TRUE(sameBits(outcome(core::CrsPrd, x, ld, n, p), outcome(definition::crossProducts, x, ld, n, p)))
          << n << " x " << p;
    }
}

// An infinity or a not-a-number spoils its own row and column of c and no other, at any distance from a block's end;
// zeros of either sign give +0.
TEST(CrossProducts, KeepExceptionalValuesWhereTheyBelong) {
  for (const double value : {kNaN, kInfinity, -kInfinity, -0.0, 1e308})
    for (const std::int32_t n : {2, 8, 11})
      for (const std::int32_t at : {0, 9, 299}) {
        const std::int32_t p = 300;
        std::vector<double> x(static_cast<std::size_t>(n * p), value == 0 ? -0.0 : 1.5);
        x[static_cast<std::size_t>(n - 1 + at * n)] = value;
        EXPECT_TRUE(sameBits(outcome(core::CrsPrd, x, n, n, p), outcome(definition::crossProducts, x, n, n, p)))
            << value << " in column " << at << " of " << n << " rows";
      }
}

TEST(CrossProducts, LoseNoDigitsBesideALargeMean) {
  // 2^40 + {-1, 0, 1} and twice that: sums of squares 2, 8 and cross-product 4, exactly.
  const double big = 1099511627776.0;
  const std::vector<double> x = {big - 1, big, big + 1, 2 * big - 2, 2 * big, 2 * big + 2};
  EXPECT_EQ(outcome(core::CrsPrd, x, 3, 3, 2), (std::vector<double>{2, 4, -1, -1, 4, 8, -1, -1, big, 2 * big}));
}

TEST(CrossProducts, OfNoRowsAreZeroAroundMeansThatAreNotNumbers) {
  for (const std::int32_t n : {0, -5}) {
    const std::vector<double> out = outcome(core::CrsPrd, std::vector<double>(2, 1.0), 1, n, 2);
    EXPECT_EQ(std::vector<double>(out.begin(), out.begin() + 6), (std::vector<double>{0, 0, -1, -1, 0, 0})) << n;
    EXPECT_TRUE(std::isnan(out[8]) && std::isnan(out[9])) << n;
  }
}

}  // namespace
}  // namespace studystats
