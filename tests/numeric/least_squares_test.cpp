#include "numeric/least_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "numeric/column_products.h"
#include "numeric/cross_products.h"
#include "numeric/matrix_view.h"
#include "tests/definition/least_squares.h"

namespace studystats::core {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kUntouched = -7.25;
using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;

bool same(double a, double b) {
  return (a == b && std::signbit(a) == std::signbit(b)) || (std::isnan(a) && std::isnan(b));
}

bool same(const Numbers& a, const Numbers& b) {
  bool all = a.size() == b.size();
  for (std::size_t i = 0; all && i < a.size(); ++i) all = same(a[i], b[i]);
  return all;
}

// A regression with spare rows, which nobody may read, its response last, and everything that RegFit writes.
struct Fit {
  std::int32_t n, p, ld, yCol = p;
  float corrLimit = 1;
  Numbers x, c, means, r;
  Integers flags;
  Numbers inv, coef, t, numbers;
  Integers integers, inList, outList;

  Fit(std::int32_t rows, std::int32_t columns) : n(rows), p(columns), ld(rows + 3) {
    const auto width = static_cast<std::size_t>(p);
    x.assign(static_cast<std::size_t>(ld) * width, kNan);
    c.assign(width * width, 0);
    r = c;
    means.assign(width, 0);
    flags.assign(width, 0);
  }
  Matrix data() { return {x.data(), ld}; }
  void summarise() {
    CrsPrd(x.data(), &ld, &p, &n, &p, c.data(), means.data());
    const ConstMatrix products{c.data(), p};
    for (int i = 0; i < p; ++i)
      for (int j = 0; j < p; ++j)
        Matrix{r.data(), p}(i, j) = i == j ? 1 : correlationOf(products(i, j), products(i, i), products(j, j));
  }
  const Fit& run(decltype(&RegFit) routine = RegFit) {
    const auto width = static_cast<std::size_t>(p);
    inv.assign(width * width, kUntouched);
    coef.assign(width, kUntouched);
    t = coef;
    integers.assign(3, -7);
    inList.assign(width, -7);
    outList = inList;
    float f = -7.25F, s = -7.25F;
    double intercept = kUntouched;
    routine(x.data(), &ld, &p, &n, &yCol, flags.data(), c.data(), means.data(), inv.data(), r.data(), &corrLimit,
            coef.data(), &intercept, &integers[0], &integers[1], t.data(), &f, &s, &integers[2], inList.data(),
            outList.data());
    numbers = {intercept, f, s};
    return *this;
  }
  std::int32_t enter() const { return integers[0]; }
  std::int32_t weakest() const { return integers[1]; }
  std::int32_t status() const { return integers[2]; }
};

// Small integers make ties, and every fifth column repeats an earlier one, is constant, or is continuous.
Fit nastyFit(std::int32_t n, std::int32_t p, std::int32_t nIn, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  Fit fit(n, p);
  for (int j = 0; j < p; ++j) {
    const auto kind = random() % 10;
    for (int i = 0; i < n; ++i)
      fit.data()(i, j) = kind == 0 && j > 0 ? fit.data()(i, j / 2)
                         : kind == 1        ? 3
                         : kind < 6         ? static_cast<int>(random() % 4)
                                            : normal(random);
  }
  for (int k = 0; k < nIn; ++k) fit.flags[random() % static_cast<std::size_t>(p)] = 1;
  fit.corrLimit = random() % 2 == 0 ? 0.6F : 1.0F;
  fit.summarise();
  return fit;
}

TEST(Fit, EqualsThePlainTranscriptionBitForBitInEveryShape) {
  int nSingular = 0, nCandidates = 0;
  for (const int n : {0, 1, 2, 7, 8, 9, 17, 70})
    for (const int p : {1, 2, 6, 64, 65, 66, 130})
      for (const int nIn : {0, 1, 3, 4, 5, 9}) {
        const auto seed = static_cast<std::uint64_t>(n * 10000 + p * 10 + nIn);
        Fit fast = nastyFit(n, p, nIn, seed), plain = fast;
        fast.run();
        plain.run(definition::regFit);
        ASSERT_EQ(fast.integers, plain.integers) << n << " x " << p << ", " << nIn << " in";
        ASSERT_TRUE(fast.inList == plain.inList && fast.outList == plain.outList) << seed;
        ASSERT_TRUE(same(fast.numbers, plain.numbers)) << seed;
        ASSERT_TRUE(same(fast.coef, plain.coef) && same(fast.t, plain.t) && same(fast.inv, plain.inv)) << seed;
        nSingular += fast.status() == 1;
        nCandidates += fast.enter() > 0;
      }
  EXPECT_GT(nSingular, 10);
  EXPECT_GT(nCandidates, 100);
}

TEST(Fit, EmptyConstantAndRepeatedVariables) {
  Fit fit(5, 4);  // two equal variables, a constant one, and the response
  const double rows[5][4] = {{1, 1, 3, 2}, {2, 2, 3, 3}, {3, 3, 3, 7}, {4, 4, 3, 8}, {5, 5, 3, 10}};
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j < 4; ++j) fit.data()(i, j) = rows[i][j];
  fit.summarise();

  fit.run();
  EXPECT_EQ(fit.status(), 0);
  EXPECT_EQ(fit.weakest(), 0);
  EXPECT_EQ(fit.enter(), 2) << "of equal candidates the later";
  EXPECT_EQ(fit.numbers, (Numbers{6, 0, std::sqrt(46.0F / 4.0F)}));  // mean; F = 0; sqrt(46 / 4)

  fit.flags = {1, 0, 1, 0};
  fit.run();
  EXPECT_EQ(fit.coef[0], 2.1);  // 21 / 10
  EXPECT_EQ(fit.coef[1], 0.0) << "a constant variable";
  EXPECT_EQ(fit.weakest(), 3);
  EXPECT_EQ(fit.t[1], kUntouched) << "outside the model";

  fit.flags = {1, 1, 0, 0};
  EXPECT_EQ(fit.run().status(), 1);
  EXPECT_EQ(fit.inList, (Integers{1, 2, 0, 0}));
  EXPECT_EQ(fit.numbers, (Numbers{kUntouched, -7.25, -7.25}));
}

TEST(EntryCandidate, IsHeldAgainstTheCorrelationLimit) {
  Fit fit = nastyFit(30, 3, 0, 5);
  std::mt19937_64 random(20240613);
  std::normal_distribution<double> normal;
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i < 30; ++i) fit.data()(i, j) = normal(random);
  fit.flags = {1, 0, 0};
  fit.summarise();
  fit.r[1] = 0.5;  // of candidate 2 with the model
  for (const auto& [limit, enter] : {std::pair{0.5F, 2}, {0.4999F, 0}, {0.49999F, 2}, {1.0F, 2}}) {
    fit.corrLimit = limit;
    EXPECT_EQ(fit.run().enter(), enter) << limit;
  }
}

TEST(TValues, WeakestIsTheLaterOfEqualsAndNeverNotANumber) {
  struct Row {
    Numbers coef;
    std::int32_t weakest;
  };
  const double infinity = std::numeric_limits<double>::infinity();
  for (const Row& row : {Row{{2, -1, 1}, 5},
                         {{1, 2, 3}, 1},
                         {{kNan, 2, kNan}, 3},
                         {{kNan, kNan, kNan}, 0},
                         {{infinity, infinity, kNan}, 3}}) {
    const Integers inList = {1, 3, 5};
    const Numbers inv = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const std::int32_t nIn = 3, n = 8;
    const double rss = 4;
    Numbers t(5, kUntouched);
    std::int32_t weakest = -7;
    TVals(&rss, &nIn, inList.data(), &n, row.coef.data(), &nIn, inv.data(), t.data(), &weakest);
    EXPECT_EQ(weakest, row.weakest);
    EXPECT_TRUE(same(t, {row.coef[0], kUntouched, row.coef[1], kUntouched, row.coef[2]}));  // s = 1
  }
}

struct Inverse {
  Numbers a;
  std::int32_t status = -7;
  Inverse(Numbers matrix, std::int32_t n, std::int32_t ld, decltype(&InvMat) routine = InvMat) : a(matrix) {
    routine(&n, &ld, a.data(), &status);
  }
};

// Small integers: ties among pivots, and singular matrices by the dozen. Spare rows and columns are not touched.
TEST(MatrixInverse, TakesThePublishedPivotsInTheirOrder) {
  std::mt19937_64 random(20240612);
  int nSingular = 0;
  for (int n = 0; n <= 20; ++n)
    for (int repeat = 0; repeat < 20; ++repeat) {
      const auto ld = n + repeat % 3;
      Numbers a(static_cast<std::size_t>(ld * (n + 1)));
      for (double& v : a) v = repeat % 4 == 0 ? static_cast<int>(random() % 2) : static_cast<int>(random() % 7) - 3;
      const Inverse fast(a, n, ld), plain(a, n, ld, definition::invMat);
      ASSERT_EQ(fast.status, plain.status);
      ASSERT_TRUE(same(fast.a, plain.a)) << n << " repeat " << repeat;
      nSingular += fast.status;
      for (int i = 0; i < n && fast.status == 0; ++i)
        for (int j = 0; j < n; ++j) {
          double sum = 0, size = 0;
          for (int k = 0; k < n; ++k) {
            const double term = ConstMatrix{a.data(), ld}(i, k) * ConstMatrix{fast.a.data(), ld}(k, j);
            sum += term;
            size += std::fabs(term);
          }
          EXPECT_NEAR(sum, i == j ? 1 : 0, 1e-10 * (1 + size)) << "A times its inverse, n = " << n;
        }
    }
  EXPECT_GT(nSingular, 10);
}

TEST(MatrixInverse, SaysWhatCannotBeInverted) {
  EXPECT_EQ(Inverse({4}, 1, 1).a, Numbers{0.25});
  EXPECT_EQ(Inverse({1, 0, 0, 1}, 2, 2).a, (Numbers{1, 0, 0, 1}));
  EXPECT_EQ(Inverse({2, 2, 2, 2}, 2, 2).status, 1);
  EXPECT_EQ(Inverse({kNan, kNan, kNan, kNan}, 2, 2).status, 1);
  EXPECT_EQ(Inverse({kNan, 1, 1, kNan}, 2, 2).status, 1);
  EXPECT_EQ(Inverse({}, 0, 1).status, 0);
}

TEST(ColumnProducts, AreThoseOfTheWholeMatrix) {
  for (const int n : {0, 1, 7, 8, 9, 33})
    for (const int p : {1, 5, 127, 128, 129}) {
      Fit fit = nastyFit(n, p, 0, static_cast<std::uint64_t>(n + p));
      Obtained<ProductScratch> scratch(p, 3);
      Pace unasked;
      ColumnProducts products({fit.x.data(), fit.ld}, n, p, fit.means.data(), *scratch);
      for (const int j : {p - 1, 0, p / 2}) {
        products.require(j, unasked);
        for (int i = 0; i < p; ++i) {
          ASSERT_TRUE(same(products(i, j), fit.c[static_cast<std::size_t>(i + j * p)])) << n << " x " << p;
          ASSERT_TRUE(same(products(i, i), fit.c[static_cast<std::size_t>(i + i * p)])) << n << " x " << p;
          ASSERT_TRUE(i == j || same(products.correlation(i, j), fit.r[static_cast<std::size_t>(i + j * p)]));
        }
      }
    }
}

// Powers of two: y = 1 + 3 x1 - 5 x2 with x1' = (x1 - 4) / 2 and x2' = (x2 + 8) / 0.25.
TEST(UnScale, UndoesTheTransformation) {
  const Integers inList = {1, 3};
  const Numbers coef = {6, -1.25}, scale = {2, 4, 0.25, 1}, shift = {4, 99, -8, 0};
  Numbers spread = {8, 8, 8, 8}, error = {2, 2, 2, 2}, raw(2);
  const double intercept = 53;
  const std::int32_t nCols = 4, nIn = 2;
  double rawIntercept = 0;
  UnScale(coef.data(), &intercept, &nCols, &nIn, inList.data(), scale.data(), shift.data(), spread.data(), error.data(),
          raw.data(), &rawIntercept);
  EXPECT_EQ(raw, (Numbers{3, -5}));
  EXPECT_EQ(rawIntercept, 1);
  EXPECT_EQ(spread, (Numbers{4, 2, 32, 8}));
  EXPECT_EQ(error, (Numbers{1, 0.5, 8, 2}));
}

}  // namespace
}  // namespace studystats::core
