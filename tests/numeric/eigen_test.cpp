#include "numeric/eigen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>
#include <random>
#include <string>

#include "tests/definition/eigen.h"
#include "tests/numeric/eigen_cases.h"

namespace studystats::test {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Element (i, j), i >= j, of matrices that take different ways through the solver.
enum Kind { kRandom, kGraded, kRepeated, kSplit, kPairs, kKinds };

double element(Kind kind, int i, int j, std::mt19937_64& random) {
  const double x = std::normal_distribution<double>()(random);
  switch (kind) {
    case kGraded:
      return x * std::pow(10.0, -0.1 * (i + j));
    case kRepeated:  // I + 1 1'
      return i == j ? 2.0 : 1.0;
    case kSplit:  // every third subdiagonal element of a tridiagonal matrix is zero: blocks of three
      return i - j > 1 || (i - j == 1 && i % 3 == 0) ? 0.0 : x;
    case kPairs:  // blocks of two: very many short sweeps
      return i - j > 1 || (i - j == 1 && i % 2 == 0) ? 0.0 : x;
    default:
      return x;
  }
}

EigenCall makeCall(Kind kind, int n, int spareRows, int want) {
  std::mt19937_64 random(20240611);
  EigenCall call(n + spareRows, n, want, kNaN);
  for (int j = 0; j < n; ++j)
    for (int i = j; i < n; ++i)
      call.a[call.at(static_cast<std::size_t>(i), static_cast<std::size_t>(j))] = element(kind, i, j, random);
  return call;
}

void expectDefinition(const EigenCall& start) {
  EigenCall fast = start, plain = start;
  fast.solve(core::EigSym);
  plain.solve(definition::eigSym);
  EXPECT_EQ(fast.ierr, plain.ierr);
  EXPECT_TRUE(sameBits(fast.w, plain.w)) << "w";
  EXPECT_TRUE(sameBits(fast.a, plain.a)) << "a";
  EXPECT_TRUE(sameBits(fast.z, plain.z)) << "z";
  EXPECT_TRUE(sameBits(fast.work2, plain.work2)) << "work2";
}

// Blocks are 4 columns, 16, 64 and 128 rows, 2048 rotations and 256 runs of rotations wide (the pairs at 400 have
// more).
TEST(EigSym, EqualsTheDefinitionBitForBitInEveryShape) {
  for (const int n : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 33, 63, 64, 65, 66, 127, 128, 129, 130, 193, 400})
    for (int kind = 0; kind < kKinds; ++kind)
      for (const int want : {0, 1}) {
        if (n == 400 && kind != kPairs) continue;
        SCOPED_TRACE("n " + std::to_string(n) + " kind " + std::to_string(kind) + " vectors " + std::to_string(want));
        expectDefinition(makeCall(static_cast<Kind>(kind), n, n % 3, want));
      }
}

// One element that is no ordinary number, everywhere in a matrix that fills a block and a bit more: every call ends,
// and values are not-a-numbers where the definition has them.
TEST(EigSym, EndsOnNumbersThatAreNone) {
  for (const double value : {kNaN, kInfinity, -kInfinity, 1e200, 1e308, 5e-324})
    for (std::size_t j = 0; j < 6; ++j)
      for (std::size_t i = j; i < 6; ++i)
        for (const int want : {0, 1}) {
          EigenCall call = makeCall(kRandom, 6, 1, want);
          call.a[call.at(i, j)] = value;
          SCOPED_TRACE(std::to_string(value) + " at " + std::to_string(i) + ',' + std::to_string(j));
          expectDefinition(call);
        }
  EigenCall large = makeCall(kRandom, 40, 0, 1);
  for (double& x : large.a) x *= 1e200;
  expectDefinition(large);
}

TEST(EigSym, WritesNothingWithoutAMatrix) {
  for (const int n : {0, -1}) {
    EigenCall call(2, 2, 1, 7.0);
    const EigenCall before = call;
    call.n = n;
    call.solve(core::EigSym);
    EXPECT_EQ(call.ierr, 0);
    EXPECT_TRUE(sameBits(call.w, before.w) && sameBits(call.z, before.z) && sameBits(call.a, before.a));
  }
}

// A = H_m ... H_1 diag(values) H_1 ... H_m with H = I - 2 u u'/u'u: a matrix with chosen eigenvalues.
EigenCall withEigenvalues(const Numbers& values) {
  const std::size_t n = values.size();
  EigenCall call(static_cast<std::int32_t>(n), static_cast<std::int32_t>(n), 1, 0.0);
  for (std::size_t i = 0; i < n; ++i) call.a[call.at(i, i)] = values[i];
  std::mt19937_64 random(20240612);
  std::normal_distribution<double> normal;
  for (int reflections = 0; reflections < 3; ++reflections) {
    Numbers u(n), p(n);
    double squares = 0, product = 0;
    for (double& x : u) x = normal(random), squares += x * x;
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) p[i] += call.a[call.at(i, j)] * u[j];
      product += p[i] * u[i];
    }
    for (std::size_t j = 0; j < n; ++j)
      for (std::size_t i = 0; i < n; ++i)
        call.a[call.at(i, j)] +=
            4 * product / squares / squares * u[i] * u[j] - 2 / squares * (p[i] * u[j] + u[i] * p[j]);
  }
  return call;
}

// Orthonormal columns, A v = w v and the chosen eigenvalues in descending order, all to 1e-14 n |A|.
void expectDecomposition(const EigenCall& solved, const EigenCall& start, Numbers values) {
  std::sort(values.rbegin(), values.rend());
  const std::size_t n = values.size();
  const double unit = 1e-14 * static_cast<double>(n),
               size = std::max(std::fabs(values.front()), std::fabs(values.back()));
  ASSERT_EQ(solved.ierr, 0);
  for (std::size_t k = 0; k < n; ++k) {
    EXPECT_NEAR(solved.w[k], values[k], unit * size) << k;
    for (std::size_t l = 0; l <= k; ++l) {
      double product = 0;
      for (std::size_t i = 0; i < n; ++i) product += solved.z[solved.at(i, k)] * solved.z[solved.at(i, l)];
      EXPECT_NEAR(product, k == l ? 1.0 : 0.0, unit) << k << ' ' << l;
    }
    for (std::size_t i = 0; i < n; ++i) {
      double image = 0;
      for (std::size_t j = 0; j < n; ++j) image += start.a[start.at(i, j)] * solved.z[solved.at(j, k)];
      EXPECT_NEAR(image, solved.w[k] * solved.z[solved.at(i, k)], unit * size) << i << ' ' << k;
    }
  }
}

TEST(EigSym, FindsChosenEigenvaluesWithOrthonormalVectors) {
  Numbers distinct(70), repeated(70, 3.0), zeros(70, 0.0), graded(70);
  for (int k = 0; k < 70; ++k) {
    const auto at = static_cast<std::size_t>(k);
    distinct[at] = k - 20;
    repeated[at] += k % 3;
    graded[at] = std::pow(10.0, -12.0 * k / 69);
  }
  zeros[7] = zeros[50] = 5.0;
  for (const Numbers& values : {distinct, repeated, zeros, graded}) {
    const EigenCall start = withEigenvalues(values);
    EigenCall solved = start;
    solved.solve(core::EigSym);
    expectDecomposition(solved, start, values);
  }
}

// The second-difference matrix has the eigenvalues 2 + 2 cos(k pi/(n+1)), k = 1...n.
TEST(EigSym, FindsTheKnownSpectrumOfSecondDifferences) {
  const int n = 150;
  for (const int want : {0, 1}) {
    EigenCall call(n, n, want, 0.0);
    for (std::size_t i = 0; i < call.length(); ++i) {
      call.a[call.at(i, i)] = 2.0;
      if (i > 0) call.a[call.at(i, i - 1)] = -1.0;
    }
    call.solve(core::EigSym);
    for (int k = 1; k <= n; ++k)
      EXPECT_NEAR(call.w[static_cast<std::size_t>(k - 1)], 2 + 2 * std::cos(k * std::numbers::pi / (n + 1)), 1e-13);
  }
}

// Nothing is reflected in a matrix of minus zeros, and its elements come through with their signs.
TEST(Tred2, KeepsTheSignsOfZeros) {
  const std::int32_t n = 9;
  const Numbers a(81, -0.0);
  Numbers d(9), e(9), z(81), plainD(9), plainE(9), plainZ(81);
  core::Tred2(&n, &n, a.data(), d.data(), e.data(), z.data());
  definition::tred2(&n, &n, a.data(), plainD.data(), plainE.data(), plainZ.data());
  EXPECT_TRUE(sameBits(d, plainD) && sameBits(e, plainE) && sameBits(z, plainZ));
  EXPECT_TRUE(std::signbit(d[0]) && std::signbit(e[1]));
}

TEST(Pythag, IsNotANumberForNotANumberAndForTwoInfinities) {
  for (const double other : {0.0, -0.0, 1.0, kInfinity, kNaN}) {
    EXPECT_TRUE(std::isnan(core::Pythag(&kNaN, &other))) << other;
    EXPECT_TRUE(std::isnan(core::Pythag(&other, &kNaN))) << other;
  }
  const double one = 1.0, minusInfinity = -kInfinity;
  EXPECT_TRUE(std::isnan(core::Pythag(&kInfinity, &minusInfinity)));
  EXPECT_EQ(core::Pythag(&minusInfinity, &one), kInfinity);
}

}  // namespace
}  // namespace studystats::test
