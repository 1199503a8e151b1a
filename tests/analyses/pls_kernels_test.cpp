#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "analyses/pls/cross_validation.h"
#include "analyses/pls/kernels.h"
#include "analyses/pls/weighted_sums.h"
#include "tests/analyses/calls.h"
#include "tests/analyses/pls_call.h"
#include "tests/definition/pls.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;
constexpr double kUntouched = PlsCall::kUntouched;

std::size_t size(std::int32_t count) { return static_cast<std::size_t>(count); }

// A fused remainder is exact whatever the digits: divisors at the ends and just beside powers of two, quotients beside
// the middle of two numbers.
TEST(Quotient, OfAMultiplicationIsThatOfTheDivision) {
  std::mt19937_64 random(11);
  const auto mantissa = [&random] {
    const std::uint64_t bits = random() >> 12U, edge = random() % 8;
    const std::uint64_t digits = edge == 0 ? bits % 4 : edge == 1 ? ~(bits % 4) & 0xfffffffffffffU : bits;
    return std::bit_cast<double>(0x3ff0000000000000U | digits);
  };
  for (int k = 0; k < 300000; ++k) {
    const double d = std::ldexp(mantissa(), static_cast<int>(random() % 900) - 450);
    const double q = mantissa();
    const double x = k % 2 == 0 ? mantissa() : std::nextafter(q * d, (q + 1e-16) * d);
    const double scaled = std::ldexp(x, static_cast<int>(random() % 800) - 400);
    ASSERT_EQ(core::Multiply(d)(scaled), scaled / d) << std::hexfloat << scaled << " / " << d;
    ASSERT_EQ(core::Multiply(d)(-x), -x / d) << std::hexfloat << x << " / " << d;
  }
  EXPECT_EQ(core::Multiply(3.0)(0.0), 0.0);
}

struct Weighted {
  Numbers x, down, along, rowWeights, columnWeights;
  std::int32_t rows, columns, ld;
  double divisor;

  core::Block block() { return {{x.data(), ld}, rows, columns, core::smallestMagnitude(x.data(), std::ssize(x))}; }
  double cell(std::int32_t i, std::int32_t j) const { return x[size(j) * size(ld) + size(i)]; }

  Numbers columnSums() const {
    Numbers sums;
    for (std::int32_t j = 0; j < columns; ++j) {
      double sum = 0;
      for (std::int32_t i = 0; i < rows; ++i) sum += cell(i, j) * rowWeights[size(i)] / divisor;
      sums.push_back(sum);
    }
    return sums;
  }
  Numbers rowSums() const {
    Numbers sums;
    for (std::int32_t i = 0; i < rows; ++i) {
      double sum = 0;
      for (std::int32_t j = 0; j < columns; ++j) sum += cell(i, j) * columnWeights[size(j)] / divisor;
      sums.push_back(sum);
    }
    return sums;
  }
  void deflate() {
    for (std::int32_t j = 0; j < columns; ++j)
      for (std::int32_t i = 0; i < rows; ++i) x[size(j) * size(ld) + size(i)] -= down[size(i)] * along[size(j)];
  }
};

// Sizes around a block's, and numbers whose products underflow and overflow.
TEST(WeightedSums, EqualThePlainLoopsInEveryShapeAtEveryMagnitude) {
  std::mt19937_64 random(12);
  std::normal_distribution<double> normal;
  const double infinity = std::numeric_limits<double>::infinity();
  const double odd[] = {0, -0.0, 1e-200, 1e-300, 4e-324, 1e155, 1e300, infinity, std::nan("")};
  const double divisors[] = {1, 3, 0.7, 1e-130, 1e140, 1e-320, 1e200, infinity, std::nan("")};
  for (const std::int32_t rows : {0, 1, 7, 8, 9, 255, 256, 257})
    for (const std::int32_t columns : {0, 1, 7, 8, 9, 17})
      for (const double divisor : divisors)
        for (const int oddities : {0, 1, 5}) {
          Weighted w{{}, {}, {}, {}, {}, rows, columns, rows + 3, divisor};
          const auto fill = [&](Numbers& values, std::size_t n) {
            values.resize(n);
            for (double& value : values) value = normal(random);
            for (int k = 0; k < oddities && n > 0; ++k)
              values[random() % n] = odd[oddities == 1 ? random() % 5 : random() % 9];
          };
          fill(w.x, size(w.ld) * size(columns));
          for (auto* v : {&w.down, &w.rowWeights}) fill(*v, size(rows));
          for (auto* v : {&w.along, &w.columnWeights}) fill(*v, size(columns));

          core::Block block = w.block();
          Numbers down(size(columns)), along(size(rows));
          core::Pace unasked;
          core::columnSums(block, w.rowWeights.data(), divisor, down.data(), unasked);
          core::rowSums(block, w.columnWeights.data(), divisor, along.data(), unasked);
          EXPECT_TRUE(sameBits(down, w.columnSums())) << rows << " x " << columns << " / " << divisor;
          EXPECT_TRUE(sameBits(along, w.rowSums())) << rows << " x " << columns << " / " << divisor;

          Weighted deflated = w;
          deflated.deflate();
          core::deflateAndSum(block, w.down.data(), w.along.data(), w.columnWeights.data(), divisor, along.data(),
                              unasked);
          EXPECT_TRUE(sameBits(along, deflated.rowSums())) << rows << " x " << columns << " / " << divisor;
          EXPECT_TRUE(sameBits(w.x, deflated.x)) << rows << " x " << columns;
          core::MagnitudeKey smallest = core::kNoMagnitude;
          for (std::int32_t j = 0; j < columns; ++j)
            for (std::int32_t i = 0; i < rows; ++i) smallest = std::min(smallest, core::magnitudeKey(w.cell(i, j)));
          EXPECT_EQ(block.smallest, smallest);
        }
}

// Twelve million products each, of which a few million lie between two questions.
TEST(WeightedSums, AskOftenWhateverTheShape) {
  std::int64_t polls = 0;
  const auto count = [&polls](const engine::Progress&) { return ++polls > 0; };
  const engine::Checkpoint checkpoint(count);
  for (const auto& [rows, columns] : {std::pair{3000, 4000}, {200000, 60}, {50, 240000}}) {
    Numbers x(size(rows) * size(columns), 1.0), down(size(rows), 0.5), along(size(columns), 0.5);
    core::Block block{{x.data(), rows}, rows, columns, core::magnitudeKey(1.0)};
    const std::function<void(core::Pace&)> kernels[] = {
        [&](core::Pace& pace) { core::columnSums(block, down.data(), 1, along.data(), pace); },
        [&](core::Pace& pace) { core::rowSums(block, along.data(), 1, down.data(), pace); },
        [&](core::Pace& pace) { core::deflate(block, down.data(), along.data(), pace); },
        [&](core::Pace& pace) {
          core::deflateAndSum(block, down.data(), along.data(), along.data(), 1, down.data(), pace);
        }};
    for (const auto& kernel : kernels) {
      polls = 0;
      core::Pace pace(checkpoint);
      kernel(pace);
      EXPECT_GE(polls, 2) << &kernel - kernels << ": " << rows << " x " << columns;
    }
  }
}

struct Table {
  std::int32_t n, m, p, q;
  Numbers data;
};

Table nastyTable(std::mt19937_64& random) {
  const auto pick = [&random](auto... choices) {
    const std::common_type_t<decltype(choices)...> list[] = {choices...};
    return list[random() % sizeof...(choices)];
  };
  std::normal_distribution<double> normal;
  Table t{pick(0, 1, 2, 5, 8, 20, 65), 0, pick(0, 1, 2, 7, 9, 33), pick(0, 1, 1, 2, 3, 5), {}};
  t.m = t.p + t.q;
  for (std::int32_t j = 0; j < t.m; ++j) {
    const auto kind = random() % 8;
    for (std::int32_t i = 0; i < t.n; ++i)
      t.data.push_back(kind == 0            ? 0
                       : kind == 1 && j > 0 ? t.data[t.data.size() - size(t.n)]
                       : kind == 2          ? pick(1e-170, 1e-310) * normal(random)
                       : kind == 3          ? 1e6 * normal(random)
                       : kind == 4          ? pick(-1, 0, 1)
                                            : normal(random));
  }
  return t;
}

// After a component that does not converge, loadings and inner coefficient are as they were.
TEST(PlsCmp, EqualsThePlainTranscriptionBitForBit) {
  std::mt19937_64 random(13);
  for (int k = 0; k < 2000; ++k) {
    Table x = nastyTable(random);
    std::vector<Numbers> outputs[2];
    std::int32_t status[2];
    for (const bool plain : {false, true}) {
      Numbers t(size(x.n) + 1, kUntouched), w(size(x.p) + 1, kUntouched), l = w, c(size(x.q) + 1, kUntouched), b(2, -7);
      (plain ? definition::plsCmp : core::PlsCmp)(x.data.data(), &x.n, &x.m, &x.p, &x.q, t.data(), w.data(), l.data(),
                                                  c.data(), b.data(), &status[plain]);
      outputs[plain] = {t, w, l, c, b};
    }
    ASSERT_EQ(status[0], status[1]) << k;
    for (std::size_t v = 0; v < 5; ++v) ASSERT_TRUE(sameBits(outputs[0][v], outputs[1][v])) << k << ' ' << v;
  }
}

TEST(PlsCmp, GivesLoadingsOfUnitLengthAndZerosForAZeroResponse) {
  const std::int32_t n = 4, m = 3, p = 2;
  Numbers data = {1, -1, 2, -2, 3, 1, -4, 0, 2, 1, -1, -2}, t(4), w(2), l(2), c(2);
  double b = 0;
  std::int32_t q = 1, status = -1;
  core::PlsCmp(data.data(), &n, &m, &p, &q, t.data(), w.data(), l.data(), c.data(), &b, &status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(l[0] * l[0] + l[1] * l[1], 1, 1e-15);
  EXPECT_NEAR(w[0] * l[0] + w[1] * l[1], 1, 1e-15) << "they carry the norm";
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(t[i], data[i] * w[0] + data[4 + i] * w[1], 1e-14) << "t = Xw";

  // Twice the same response.
  q = 2;
  data.insert(data.end(), data.begin() + 8, data.begin() + 12);
  core::PlsCmp(data.data(), &n, &m, &p, &q, t.data(), w.data(), l.data(), c.data(), &b, &status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(c[0], std::sqrt(0.5), 1e-15);
  EXPECT_EQ(c[0], c[1]);

  std::fill(data.begin() + 8, data.end(), 0.0);
  core::PlsCmp(data.data(), &n, &m, &p, &q, t.data(), w.data(), l.data(), c.data(), &b, &status);
  EXPECT_EQ(status, 0);
  for (const auto* zeros : {&t, &w, &c}) EXPECT_EQ(*zeros, Numbers(zeros->size(), 0.0));
  EXPECT_EQ(b, 0);
}

// Response weights as long as the 32-bit number nearest to 1e-10, which is a little longer, are left alone.
TEST(PlsCmp, NormalisesResponseWeightsAboveAVerySmallLength) {
  const std::int32_t n = 1, m = 2, p = 1, q = 1;
  const double limit = 1e-10F;
  for (const auto& [y, c] : {std::pair{limit, limit}, {1e-10, 1e-10}, {std::nextafter(limit, 1), 1.0}}) {
    const Numbers data = {1, y};
    double t, w, l, respWeight, b;
    std::int32_t status = -1;
    core::PlsCmp(data.data(), &n, &m, &p, &q, &t, &w, &l, &respWeight, &b, &status);
    EXPECT_EQ(respWeight, c) << y;
  }
}

// X'Y has singular values 1e6 and 1e6 + 2: the direction turns by a millionth of its way in a pass.
TEST(PlsCmp, GivesUpAfterAThousandPasses) {
  const std::int32_t n = 4, m = 4, p = 2, q = 2;
  const Numbers data = {1, -1, 0, 0, 0, 0, 1, -1, 5e5 + 1, -5e5 - 1, 1, -1, 1, -1, 5e5 + 1, -5e5 - 1};
  Numbers t(4), w(2), l(2, kUntouched), c(2);
  double b = kUntouched;
  std::int32_t status = -1;
  core::PlsCmp(data.data(), &n, &m, &p, &q, t.data(), w.data(), l.data(), c.data(), &b, &status);
  EXPECT_EQ(status, 2);
  EXPECT_GT(c[0], 0);
  EXPECT_EQ(l[0], kUntouched);
  EXPECT_EQ(b, kUntouched);
}

// Worked by hand: x = (1, 2); w = (1, 1), (1, -1); p = (1/2, 1/2), (1, 0); b = 2, 3; C = 1/2, 5. Scores 3 and, of
// (-1/2, 1/2), -1.
TEST(PlsPrd, AppliesComponentsOneByOneAndDeflatesUntilTheLast) {
  const Numbers weights = {1, 1, 1, -1}, loadings = {0.5, 0.5, 1, 0}, c = {0.5, 5}, b = {2, 3};
  const std::int32_t p = 2;
  const auto predict = [&](std::int32_t nUse, std::int32_t nModel) {
    Numbers work = {1, 2, kUntouched, kUntouched, kUntouched, kUntouched}, contrib(2, kUntouched), cumulative = contrib;
    core::PlsPrd(work.data(), &nUse, &p, &nModel, c.data(), b.data(), weights.data(), loadings.data(), contrib.data(),
                 cumulative.data());
    work.insert(work.end(), contrib.begin(), contrib.end());
    work.insert(work.end(), cumulative.begin(), cumulative.end());
    return work;
  };
  constexpr double u = kUntouched;
  EXPECT_EQ(predict(2, 2), (Numbers{1, 2, -0.5, 0.5, u, u, 3, -15, 3, -12}));
  EXPECT_EQ(predict(2, 3), (Numbers{1, 2, -0.5, 0.5, 0.5, 0.5, 3, -15, 3, -12})) << "one column more";
  EXPECT_EQ(predict(1, 2), (Numbers{1, 2, -0.5, 0.5, u, u, 3, u, 3, u}));
  EXPECT_EQ(predict(1, 1), (Numbers{1, 2, u, u, u, u, 3, u, 3, u}));
  EXPECT_EQ(predict(0, 2), (Numbers{1, 2, u, u, u, u, u, u, u, u}));
}

// What is left of the data, too, after the last component and after one that does not converge.
TEST(PlsFit, EqualsThePlainTranscription) {
  std::mt19937_64 random(14);
  int nFailedLater = 0;
  for (int k = 0; k < 600; ++k) {
    const Table x = nastyTable(random);
    const std::int32_t nComponents = static_cast<std::int32_t>(random() % 5);
    std::vector<Numbers> outputs[2];
    Numbers coefs[2];
    std::int32_t status[2];
    for (const bool plain : {false, true}) {
      Numbers data = x.data, w(size(x.p) * size(nComponents) + 1, kUntouched), l = w,
              c(size(x.q) * size(nComponents) + 1, kUntouched), b(size(nComponents) + 1, kUntouched);
      coefs[plain].assign(size(x.p) * size(nComponents) * size(x.q) + 1, kUntouched);
      (plain ? definition::plsFit : core::PlsFit)(data.data(), &x.n, &x.m, &x.p, &x.q, &nComponents, w.data(), l.data(),
                                                  c.data(), b.data(), coefs[plain].data(), &status[plain]);
      outputs[plain] = {w, l, c, b, data};
    }
    ASSERT_EQ(status[0], status[1]) << k;
    nFailedLater += status[0] != 0 && outputs[0][3][0] != kUntouched;
    for (std::size_t v = 0; v < 5; ++v) ASSERT_TRUE(sameBits(outputs[0][v], outputs[1][v])) << k << ' ' << v;
    ASSERT_LE(relativeDifference(coefs[0], coefs[1]), 1e-12) << k;
  }
  EXPECT_GT(nFailedLater, 0);
}

}  // namespace
}  // namespace studystats
