#include "analyses/pca/pca.h"

#include <gtest/gtest.h>
#include <studystats/analyses.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "numeric/matrix_view.h"
#include "tests/analyses/example.h"
#include "tests/definition/pca.h"

namespace studystats {
namespace {

using core::ConstMatrix;
using core::Matrix;

constexpr double kUntouched = -7.25;

struct Table {
  std::int32_t n, p;
  std::vector<double> cells = std::vector<double>(static_cast<std::size_t>(n) * static_cast<std::size_t>(p));
  Matrix view() { return {cells.data(), n}; }
};

struct Components {
  std::int32_t n, p, count = -7, status = -7;
  std::vector<double> values, vectors, covariance, explained, scores, means, deviations;

  using Routine = decltype(&PCAnal);
  Components(Table table, Routine routine = PCAnal, double before = kUntouched) : n(table.n), p(table.p) {
    const auto rows = static_cast<std::size_t>(std::max(n, 0)), columns = static_cast<std::size_t>(p);
    for (auto* perVariable : {&values, &means, &deviations}) perVariable->assign(columns, kUntouched);
    for (auto* square : {&vectors, &covariance, &explained}) square->assign(columns * columns, before);
    scores.assign(rows * columns, kUntouched);
    routine(table.cells.data(), n, p, &count, values.data(), vectors.data(), covariance.data(), explained.data(),
            scores.data(), means.data(), deviations.data(), &status);
  }
  double loading(int j, int k) const { return ConstMatrix{vectors.data(), p}(j, k); }
  double score(int i, int k) const { return ConstMatrix{scores.data(), n}(i, k); }
};

Table randomTable(std::int32_t n, std::int32_t p) {
  std::mt19937_64 random(20240608);
  std::normal_distribution<double> normal(2, 1);
  Table table{n, p};
  for (double& cell : table.cells) cell = normal(random);
  return table;
}

// The numeric columns of an example table.
Table exampleTable(const char* name, std::int32_t n, std::int32_t p) { return {n, p, exampleNumbers(name, n, p)}; }

void autoscale(Table& table) {
  for (int j = 0; j < table.p; ++j) {
    double* column = table.view().column(j);
    double sum = 0, squares = 0;
    for (int i = 0; i < table.n; ++i) sum += column[i];
    for (int i = 0; i < table.n; ++i) squares += std::pow(column[i] - sum / table.n, 2);
    for (int i = 0; i < table.n; ++i) column[i] = (column[i] - sum / table.n) / std::sqrt(squares / (table.n - 1));
  }
}

void expectColumn(const Components& pca, int k, double variance, const std::vector<double>& loadings) {
  EXPECT_NEAR(pca.values[static_cast<std::size_t>(k)], variance, 1e-13 * pca.values[0]);
  const double sign = pca.loading(0, k) * loadings[0] < 0 ? -1 : 1;
  for (int j = 0; j < pca.p; ++j)
    EXPECT_NEAR(sign * pca.loading(j, k), loadings[static_cast<std::size_t>(j)], 1e-12) << j << ", " << k;
}

// R 4.2.2, prcomp(iris[, 1:4]): sdev^2 and rotation; signs are arbitrary there.
TEST(Pca, AgreesWithRForIris) {
  const Components pca(exampleTable("iris.csv", 150, 4));
  ASSERT_EQ(pca.status, 0);
  EXPECT_EQ(pca.count, 4);
  expectColumn(pca, 0, 4.228241706034864,
               {0.3613865917853686, -0.08452251406456857, 0.8566706059498351, 0.3582891971515508});
  expectColumn(pca, 1, 0.2426707479286335,
               {-0.6565887712868419, -0.7301614347850269, 0.1733726627958567, 0.07548101991746359});
  expectColumn(pca, 2, 0.07820950004291934,
               {0.5820298513060652, -0.5979108301000853, -0.07623607582096326, -0.5458314320200756});
  expectColumn(pca, 3, 0.02383509297344943,
               {0.3154871929039758, -0.3197231036661287, -0.4798389869946345, 0.7536574252640456});
}

// R 4.2.2, prcomp(wine[, 2:14], scale. = TRUE).
TEST(Pca, AgreesWithRForAutoscaledWine) {
  Table wine = exampleTable("wine.csv", 178, 13);
  autoscale(wine);
  const Components pca(wine);
  ASSERT_EQ(pca.status, 0);
  const double variances[] = {4.705850252990421,  2.496973733411158,  1.446071969712501,  0.9189739237528256,
                              0.8532281783543202, 0.6416570314989332, 0.551028311941032,  0.348497363289253,
                              0.2888799426226629, 0.2509024822127304, 0.2257886396986889, 0.1687702348285478,
                              0.1033779356869288};
  for (std::size_t k = 0; k < 13; ++k) EXPECT_NEAR(pca.values[k], variances[k], 1e-13 * variances[0]) << k;
  expectColumn(pca, 0, variances[0],
               {-0.1443293954060115, 0.2451875802572208, 0.002051061444370977, 0.2393204054875352, -0.1419920419529873,
                -0.3946608450666304, -0.4229342967100591, 0.2985331029547154, -0.3134294883076887, 0.08861670472472274,
                -0.2967145635863813, -0.3761674107387129, -0.2867522268968052});
  // Of autoscaled data, the first component explains loading^2 * variance of each variable, all components everything.
  const ConstMatrix explained{pca.explained.data(), 13};
  for (int j = 0; j < 13; ++j) {
    EXPECT_NEAR(explained(j, 0), std::pow(pca.loading(j, 0), 2) * variances[0], 1e-13) << j;
    EXPECT_NEAR(explained(j, 12), 1, 1e-13) << j;
  }
}

// Largest violation of each property that components of any data have.
void expectComponents(Table& table, const Components& pca) {
  const int n = table.n, p = table.p;
  double notOrthonormal = 0, notReproduced = 0, otherVariance = 0, otherMean = 0;
  for (int k = 0; k < p; ++k) {
    const auto at = static_cast<std::size_t>(k);
    for (int l = 0; l < p; ++l) {
      double product = k == l ? -1 : 0;
      for (int j = 0; j < p; ++j) product += pca.loading(j, k) * pca.loading(j, l);
      notOrthonormal = std::max(notOrthonormal, std::abs(product));
    }
    double sum = 0;
    for (int i = 0; i < n; ++i) {
      double cell = 0;
      for (int l = 0; l < p; ++l) cell += pca.score(i, l) * pca.loading(k, l);
      notReproduced = std::max(notReproduced, std::abs(cell - table.view()(i, k)));
      sum += pca.score(i, k);
    }
    const bool degenerate = pca.deviations[at] == 1 && pca.values[at] < 0.5;
    const double variance = degenerate ? 0 : std::pow(pca.deviations[at], 2);
    otherVariance = std::max(otherVariance, std::abs(variance - pca.values[at]));
    otherMean = std::max(otherMean, std::abs(sum / n - pca.means[at]));
    EXPECT_GE(pca.values[at], k + 1 < p ? pca.values[at + 1] : 0.0) << k;
  }
  EXPECT_LT(std::max({notOrthonormal, notReproduced, otherVariance, otherMean}), 1e-12 * (p + pca.values[0]))
      << notOrthonormal << ' ' << notReproduced << ' ' << otherVariance << ' ' << otherMean;
}

TEST(Pca, HasOrthonormalLoadingsWhoseScoresReproduceTheData) {
  struct Shape {
    std::int32_t n, p, nComponents, rank;
  };
  for (const Shape& shape : {Shape{10, 3, 3, 3}, {3, 10, 2, 2}, {6, 6, 5, 5}, {300, 40, 40, 40}, {2, 1, 1, 1}}) {
    Table table = randomTable(shape.n, shape.p);
    const Components pca(table);
    SCOPED_TRACE(testing::Message() << shape.n << " x " << shape.p);
    ASSERT_EQ(pca.status, 0);
    EXPECT_EQ(pca.count, shape.nComponents);
    expectComponents(table, pca);
    for (std::int32_t k = 0; k < shape.p; ++k)
      EXPECT_EQ(pca.values[static_cast<std::size_t>(k)] > 1e-12 * pca.values[0], k < shape.rank) << k;

    for (int j = 0; j < table.p; ++j) std::swap(table.view()(0, j), table.view()(table.n - 1, j));
    const Components reordered(table);
    for (std::size_t k = 0; k < pca.values.size(); ++k)
      EXPECT_NEAR(reordered.values[k], pca.values[k], 1e-13 * shape.p * pca.values[0])
          << "rows in another order, " << k;
  }
}

TEST(Pca, EqualsTheDefinitionBitForBitAroundEveryBlockSize) {
  for (const std::int32_t n : {1, 2, 255, 256, 257, 515})
    for (const std::int32_t p : {1, 7, 8, 9, 17}) {
      const Table table = randomTable(n, p);
      const Components ours(table, PCAnal, 0.5), plain(table, definition::principalComponents, 0.5);
      const auto same = [](const std::vector<double>& a, const std::vector<double>& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](double x, double y) {
          return std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
        });
      };
      SCOPED_TRACE(testing::Message() << n << " x " << p);
      EXPECT_TRUE(same(ours.values, plain.values) && same(ours.vectors, plain.vectors));
      EXPECT_TRUE(same(ours.covariance, plain.covariance) && same(ours.explained, plain.explained));
      EXPECT_TRUE(same(ours.scores, plain.scores));
      EXPECT_TRUE(same(ours.means, plain.means) && same(ours.deviations, plain.deviations));
      EXPECT_TRUE(ours.count == plain.count && ours.status == plain.status);
    }
}

TEST(Pca, OfConstantColumnsHasNoVarianceAndUnitDeviations) {
  Table table{6, 3};
  for (std::size_t i = 0; i < 18; ++i) table.cells[i] = i < 6 ? 1.5 : i < 12 ? -2 : 4;
  const Components pca(table);
  EXPECT_EQ(pca.status, 0);
  EXPECT_EQ(pca.values, std::vector<double>(3, 0));
  EXPECT_EQ(pca.covariance, std::vector<double>(9, 0));
  EXPECT_EQ(pca.explained, std::vector<double>(9, 0));
  EXPECT_EQ(pca.deviations, std::vector<double>(3, 1));
}

TEST(Pca, OfOneSampleDecomposesWhatTheCallerLeft) {
  Table table{1, 2, {3, 4}};
  const Components pca(table);  // the lower triangle of [a a; a a] with a = -7.25: eigenvalues 0 and 2a
  EXPECT_EQ(pca.status, 0);
  EXPECT_EQ(pca.count, 0);
  EXPECT_EQ(pca.covariance, std::vector<double>(4, kUntouched));
  EXPECT_NEAR(pca.values[0], 0, 1e-14);
  EXPECT_EQ(pca.values[1], 0) << "-14.5 is below 0";
  EXPECT_EQ(pca.deviations, std::vector<double>(2, 1));
  EXPECT_EQ(pca.means, pca.scores);

  // [2 1; 1 2], whose eigenvalues are 3 and 1, and anything above the diagonal.
  double data[] = {3, 4}, covariance[] = {2, 1, 9, 2}, out[6][4];
  std::int32_t count, status;
  PCAnal(data, 1, 2, &count, out[0], out[1], covariance, out[2], out[3], out[4], out[5], &status);
  EXPECT_EQ(status, 0);
  EXPECT_NEAR(out[0][0], 3, 1e-15);
  EXPECT_NEAR(out[0][1], 1, 1e-15);
  EXPECT_EQ(std::vector<double>(covariance, covariance + 4), (std::vector<double>{2, 1, 1, 2}));
}

TEST(Pca, WithoutSamplesOrVariablesComputesNothing) {
  for (const auto& [n, p] : {std::pair{0, 2}, {-4, 2}, {3, 0}}) {
    Table table{n, p, std::vector<double>(2)};
    const Components pca(table);
    EXPECT_EQ(pca.status, 1);
    EXPECT_EQ(pca.count, -7);
    EXPECT_EQ(pca.values, std::vector<double>(static_cast<std::size_t>(p), kUntouched));
  }
  std::int32_t status = -7;
  PCAnal(nullptr, 3, -2, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &status);
  EXPECT_EQ(status, 1);
}

// One wild cell, at either end of a table with several blocks: the call ends, and says that its result is no number.
TEST(Pca, OfDataThatAreNotNumbersEnds) {
  for (const double wild : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e300})
    for (const std::size_t at : {std::size_t{0}, std::size_t{20 * 9 - 1}}) {
      Table table = randomTable(20, 9);
      table.cells[at] = wild;
      const Components pca(table);
      EXPECT_TRUE(pca.status != 0 || !std::isfinite(pca.values[0])) << wild << " in cell " << at;
    }
}

}  // namespace
}  // namespace studystats
