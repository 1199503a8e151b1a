#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "analyses/da/selection.h"
#include "tests/analyses/da_call.h"
#include "tests/analyses/da_examples.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;

// The rows of classes 2 and 3, numbered anew.
DaCall twoKindsOfIris() {
  const DaCall all = iris();
  DaCall call(100, 4, 2);
  for (std::ptrdiff_t i = 0; i < 100; ++i) {
    call.classOf[static_cast<std::size_t>(i)] = i < 50 ? 1 : 2;
    for (std::ptrdiff_t j = 0; j < 4; ++j) call.cell(i, j) = all.data[static_cast<std::size_t>(50 + i + j * all.n)];
  }
  return call;
}

void expectNear(const double* values, const Numbers& expected, double relative, const char* what) {
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(values[i], expected[i], relative * std::fabs(expected[i])) << what << ' ' << i;
}

// A direction has no sign of its own, and neither have the eigenvectors that its coordinates belong to.
void expectDirection(const double* vector, const Numbers& expected) {
  for (std::size_t a = 0; a < expected.size(); ++a)
    EXPECT_NEAR(std::fabs(vector[a]), std::fabs(expected[a]), 1e-9) << a;
}

void expectRow(const DaCall& call, std::ptrdiff_t i, const Numbers& expected) {
  for (std::ptrdiff_t c = 0; c < call.g; ++c)
    EXPECT_FLOAT_EQ(call.distances[static_cast<std::size_t>(i - 1 + c * call.n)],
                    static_cast<float>(expected[static_cast<std::size_t>(c)]))
        << "sample " << i << ", class " << c + 1;
}

// Figures of R 4.2.2: mahalanobis() to the class means with the pooled covariance, the same anew without each sample,
// and eigen() of solve(W) B; for the directions eigen(W), its vectors divided by the roots of its values, and eigen()
// of B in those coordinates. lda() of MASS 7.3-58.2 with equal priors gives the same confusion matrices.
TEST(DisAnl, GivesTheFiguresOfLinearDiscriminantAnalysis) {
  DaCall call = iris();
  call.selectMode = 2;
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.confusion, (Integers{50, 0, 0, 0, 48, 1, 0, 2, 49})) << "true class x predicted class, by columns";
  EXPECT_EQ(call.cvConfusion, (Integers{50, 0, 0, 0, 48, 1, 0, 2, 49}));
  EXPECT_FLOAT_EQ(call.cvFraction[0], 147.0F / 150);
  EXPECT_EQ(call.cvClassFraction, (std::vector<float>{1, 0.96F, 0.98F}));
  EXPECT_EQ(Integers({call.nSteps(), call.selectOrder[0], call.nCanonical()}), Integers({1, 0, 2}));
  EXPECT_FLOAT_EQ(call.stepFraction[0], 147.0F / 150);
  expectRow(call, 1, {0.539527423245892, 9.94408112536997, 13.84877764207798});
  expectRow(call, 75, {8.969192398065083, 1.29042599221797, 4.78771992913228});
  expectRow(call, 150, {12.400074527955480, 3.46089090237849, 1.98163578978647});
  expectNear(call.canonValues.data(), {32.191929198278025, 0.285391042623077}, 1e-11, "canonical value");
  expectDirection(&call.canonVectors[0], {0.399460233522323, 0.548947195532630, 0.675923067315295, 0.286734206927312});
  expectDirection(&call.canonVectors[4], {0.416199550220542, 0.808586124287131, 0.280438992367474, 0.307116241131027});

  call = wine();
  call.selectMode = 2;
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.confusion, (Integers{59, 0, 0, 0, 71, 0, 0, 0, 48}));
  EXPECT_EQ(call.cvConfusion, (Integers{59, 1, 0, 0, 69, 0, 0, 1, 48}));
  expectRow(call, 1, {3.36782510085212, 7.12703349342346, 9.55186119273591});
  expectRow(call, 89, {5.77186760386924, 2.49753557963970, 6.08923467087219});
  expectRow(call, 178, {9.39047879220356, 8.24848678461353, 3.11142868594392});
  expectNear(call.canonValues.data(), {9.08173943504248, 4.12846904563948}, 1e-11, "canonical value");
  expectDirection(
      &call.canonVectors[0],
      {0.35582399139285742, 0.00942931693161664, 0.16808607477423618, 0.20256611525891716, 0.07692785511547477,
       0.68524713267403004, 0.24946541748370155, 0.21346837704161961, 0.12180044948163057, 0.38939696768993820,
       0.15071634862218194, 0.11380235983595557, 0.13637962645985960});
}

TEST(PooledCovariance, IsThatOfTheIrises) {
  DaCall call = iris();
  const std::int32_t n = call.n, p = call.p, sizes[] = {50, 50, 50};
  Numbers means(12), within(16);
  std::int32_t status = -1;
  core::nClasses = 3;
  core::DaPool(call.data.data(), call.classOf.data(), &n, &p, &n, &p, means.data(), within.data(), sizes, &status);
  ASSERT_EQ(status, 0);
  expectNear(means.data(), {5.006, 3.428, 1.462, 0.246, 5.936, 2.770, 4.260, 1.326, 6.588, 2.974, 5.552, 2.026}, 1e-14,
             "mean");
  expectNear(within.data(),
             {0.2650081632653061, 0.0927210884353742, 0.167514285714286, 0.0384013605442177, 0.0927210884353742,
              0.1153877551020408, 0.055243537414966, 0.0327102040816327, 0.1675142857142858, 0.0552435374149660,
              0.185187755102041, 0.042665306122449, 0.0384013605442177, 0.0327102040816327, 0.0426653061224490,
              0.0418816326530612},
             1e-13, "covariance");
}

// Two variables in room for three, of which none is counted when their number is below 0. By hand: means 1 and 5 of
// both, deviations -1, 0, 1 twice, 4 / (6 - 2).
TEST(PooledCovariance, LeavesZerosBehindTheVariables) {
  const Numbers data = {0, 1, 2, 4, 5, 6, 0, 1, 2, 4, 5, 6};
  const Integers classOf = {1, 1, 1, 2, 2, 2};
  const std::int32_t n = 6, room = 3, sizes[] = {3, 3};
  core::nClasses = 2;
  for (const std::int32_t p : {2, -20}) {
    Numbers means(6, -7), within(9, -7);
    std::int32_t status = -1;
    core::DaPool(data.data(), classOf.data(), &n, &room, &n, &p, means.data(), within.data(), sizes, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(means, p > 0 ? (Numbers{1, 1, 0, 5, 5, 0}) : Numbers(6));
    EXPECT_EQ(within, p > 0 ? (Numbers{1, 1, 0, 1, 1, 0, 0, 0, 0}) : Numbers(9));
  }
}

// The same two variables, which are one: their covariance has no inverse.
TEST(SubsetScores, OfASingularSubsetAreSharesOf0) {
  const Numbers data = {0, 1, 2, 4, 5, 6, 0, 1, 2, 4, 5, 6};
  const Integers classOf = {1, 1, 1, 2, 2, 2};
  const std::int32_t n = 6, p = 2, sizes[] = {3, 3}, both[] = {1, 1};
  core::nClasses = 2;
  const Numbers means = {1, 1, 5, 5}, within = {1, 1, 1, 1};
  Numbers winv(4, -7), work(4);
  float fraction = -7, shares[] = {-7, -7}, distance = -7;
  std::int32_t status = -1;
  core::DaEval(data.data(), classOf.data(), &n, &p, &n, &p, both, means.data(), within.data(), winv.data(), work.data(),
               &fraction, shares, &distance, sizes, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ((Numbers{shares[0], shares[1], fraction, distance}), (Numbers{0, 0, -7, -7}));
  EXPECT_EQ(winv, Numbers(4, -7));
}

struct Selected {
  const char* name;
  DaCall call;
  std::int32_t mode, nSelect, groups;
  Integers order;
  Numbers fractions;
  Integers confusion, selCount, cvConfusion;
};

// The same rules written in R 4.2.2 in 64-bit numbers, with solve() and mahalanobis().
TEST(DisAnl, SelectsAndValidatesTheSelectionAsAnIndependentProgram) {
  const Numbers wineFractions = {0.7921348315, 0.8876404494, 0.9438202247, 0.9719101124, 0.9775280899};
  const Integers wineResubstituted = {58, 1, 0, 1, 69, 1, 0, 1, 47};
  const Selected cases[] = {
      {"irises, left out one by one",
       iris(),
       0,
       0,
       0,
       {3, 1, 4, 2},
       {0.9466666667, 0.9666666667, 0.9733333333, 0.98},
       {50, 0, 0, 0, 48, 1, 0, 2, 49},
       {150, 150, 150, 150},
       {50, 0, 0, 0, 48, 1, 0, 2, 49}},
      {"wines, 7 folds",
       wine(),
       0,
       0,
       7,
       {7, 10, 13, 1, 2},
       wineFractions,
       wineResubstituted,
       {6, 2, 0, 2, 0, 0, 7, 0, 0, 7, 1, 3, 7},
       {55, 2, 0, 4, 67, 1, 0, 2, 47}},
      {"wines, left out one by one",
       wine(),
       0,
       0,
       0,
       {7, 10, 13, 1, 2},
       wineFractions,
       wineResubstituted,
       {178, 104, 0, 2, 0, 0, 178, 0, 0, 178, 0, 1, 178},
       {55, 1, 0, 4, 68, 1, 0, 2, 47}},
      {"wines, two variables",
       wine(),
       1,
       2,
       7,
       {7, 10},
       {0.7921348315, 0.8876404494},
       {50, 9, 0, 9, 61, 1, 0, 1, 47},
       {0, 0, 0, 0, 0, 0, 7, 0, 0, 6, 0, 0, 1},
       {50, 10, 0, 9, 59, 1, 0, 2, 47}},
      {"two kinds of iris, left out one by one",
       twoKindsOfIris(),
       0,
       0,
       0,
       {4, 2, 3, 1},
       {0.94, 0.95, 0.96, 0.97},
       {48, 1, 2, 49},
       {95, 100, 100, 100},
       {46, 1, 4, 49}},
      {"two kinds of iris, 7 folds",
       twoKindsOfIris(),
       0,
       0,
       7,
       {4, 2, 3, 1},
       {0.94, 0.95, 0.96, 0.97},
       {48, 1, 2, 49},
       {3, 6, 7, 7},
       {46, 1, 4, 49}},
  };
  for (const Selected& expected : cases) {
    SCOPED_TRACE(expected.name);
    DaCall call = expected.call;
    call.selectMode = expected.mode;
    call.nSelect = expected.nSelect;
    call.groups = expected.groups;
    call.run();
    ASSERT_EQ(call.status(), 0);
    const auto nSteps = static_cast<std::ptrdiff_t>(expected.order.size());
    ASSERT_EQ(call.nSteps(), nSteps);
    EXPECT_EQ(Integers(call.selectOrder.begin(), call.selectOrder.begin() + nSteps), expected.order);
    for (std::size_t k = 0; k < expected.fractions.size(); ++k)
      EXPECT_NEAR(call.stepFraction[k], expected.fractions[k], 1e-7);
    EXPECT_EQ(call.confusion, expected.confusion);
    EXPECT_EQ(call.cvSelCount, expected.selCount);
    EXPECT_EQ(call.cvConfusion, expected.cvConfusion);
  }
}

// Worked by hand: two variables of the same variance within three classes, whose means lie 2 apart. The first puts 4 of
// 12 samples nearer to another mean, the second none; but its third mean is a little less away.
TEST(DisAnl, TakesTheLargerDistanceUnlessFractionsDecideWithin1e5) {
  const double a = 0.9, b = a * std::sqrt(2.0), variance = 12 * a * a / 9;
  for (const auto& [less, taken] : {std::pair{0.9e-5, 2}, {1.2e-5, 1}}) {
    DaCall call(12, 2, 3);
    const Numbers first = {-b, 0, 0, b}, second = {-a, -a, a, a};
    for (std::size_t i = 0; i < 12; ++i) {
      const auto row = static_cast<std::ptrdiff_t>(i), c = row / 4;
      call.classOf[i] = static_cast<std::int32_t>(c) + 1;
      call.cell(row, 0) = 2.0 * static_cast<double>(c) + first[i % 4];
      call.cell(row, 1) = 2.0 * static_cast<double>(c) + second[i % 4] - (c == 2 ? less / 2 * std::sqrt(variance) : 0);
    }
    call.selectMode = 1;
    call.run();
    ASSERT_EQ(call.status(), 0);
    EXPECT_EQ(call.selectOrder[0], taken) << "distances differ by " << less;
    EXPECT_FLOAT_EQ(call.stepFraction[0], taken == 1 ? 8.0F / 12 : 1.0F);
  }
}

// Worked by hand: 2 of 8 samples stay wrong. The second variable is uncorrelated with the first within classes, so that
// squared distances add up: by its share of the first one's, the distance grows by the root of 1 + share.
TEST(DisAnl, TakesAStepThatClassifiesNoneBetterWhenTheDistanceGrowsBy5PerCent) {
  for (const auto& [share, nSteps] : {std::pair{0.1024, 1}, {0.1026, 2}}) {
    DaCall call(8, 2, 2);
    const Numbers first = {-1.5, -0.5, 0.5, 1.5}, second = {1, -1, -1, 1};
    const double variances[] = {10.0 / 6, 8.0 / 6}, apart = std::sqrt(share * 4 / variances[0] * variances[1]);
    for (std::size_t i = 0; i < 8; ++i) {
      const auto row = static_cast<std::ptrdiff_t>(i);
      call.classOf[i] = i < 4 ? 1 : 2;
      call.cell(row, 0) = first[i % 4] + (i < 4 ? 0 : 2);
      call.cell(row, 1) = second[i % 4] + (i < 4 ? 0 : apart);
    }
    call.run();
    ASSERT_EQ(call.status(), 0);
    EXPECT_EQ(call.nSteps(), nSteps) << share;
    EXPECT_EQ(call.stepFraction[static_cast<std::size_t>(nSteps - 1)], 0.75F);
  }
}

}  // namespace
}  // namespace studystats
