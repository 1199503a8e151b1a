#include <gtest/gtest.h>
#include <studystats/engine.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "tests/analyses/engine_runs.h"
#include "tests/definition/pls.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;
using Rows = std::vector<std::int32_t>;
using engine::Filling;
using engine::Scaling;
using engine::Status;

std::size_t size(std::int32_t count) { return static_cast<std::size_t>(count); }

// A table of its own, and models of it by plain loops: what is missing filled, columns prepared one by one, and then
// the plain transcriptions of a fit and a prediction.
struct PlainModel {
  PlainModel(const LatentTable& from, const Rows& training, const engine::Preparation& preparation,
             std::int32_t components)
      : data(from), q(2), nComponents(components) {
    for (std::int32_t j = 0; j < data.p + q; ++j) findUnits(training, preparation, j);
    Numbers cells;
    for (std::int32_t j = 0; j < data.p + q; ++j)
      for (const std::int32_t i : training) cells.push_back(prepared(i, j));
    const std::int32_t n = static_cast<std::int32_t>(training.size()), m = data.p + q;
    w.resize(size(data.p) * size(nComponents));
    l = w;
    c.resize(size(nComponents) * size(q));
    b.resize(size(nComponents));
    coefs.resize(w.size() * size(q));
    std::int32_t status = -1;
    definition::plsFit(cells.data(), &n, &m, &data.p, &q, &nComponents, w.data(), l.data(), c.data(), b.data(),
                       coefs.data(), &status);
    EXPECT_EQ(status, 0);
  }

  double cell(std::int32_t i, std::int32_t j) const { return data.cells[size(i) + size(j) * size(data.n)]; }
  double prepared(std::int32_t i, std::int32_t j) const {
    const double value = std::isnan(cell(i, j)) ? fill[size(j)] : cell(i, j);
    return (value - shift[size(j)]) / scale[size(j)];
  }

  void findUnits(const Rows& rows, const engine::Preparation& preparation, std::int32_t j) {
    Numbers present;
    for (const std::int32_t i : rows)
      if (!std::isnan(cell(i, j))) present.push_back(cell(i, j));
    std::sort(present.begin(), present.end());
    const std::size_t half = present.size() / 2;
    const double mean = std::accumulate(present.begin(), present.end(), 0.0) / static_cast<double>(present.size());
    fill.push_back(preparation.filling == Filling::Value  ? preparation.fillValue
                   : preparation.filling == Filling::Mean ? mean
                   : present.size() % 2 == 1              ? present[half]
                                                          : (present[half - 1] + present[half]) / 2);
    present.resize(rows.size(), fill.back());
    const engine::ColumnPreparation& rule = j < data.p ? preparation.descriptors : preparation.responses;
    const auto n = static_cast<double>(present.size());
    double sum = 0, squares = 0;
    for (const double value : present) sum += value;
    for (const double value : present) squares += std::pow(value - sum / n, 2);
    const double sd = std::sqrt(squares / (n - 1));
    const auto [least, most] = std::minmax_element(present.begin(), present.end());
    shift.push_back(rule.centre ? sum / n : 0);
    scale.push_back(rule.scaling == Scaling::Autoscale ? sd
                    : rule.scaling == Scaling::Pareto  ? std::sqrt(sd)
                    : rule.scaling == Scaling::Range   ? (*most - *least) / 2
                                                       : 1);
  }

  // Of row i by 1, 2, ... components, table units.
  Numbers predictions(std::int32_t i, std::int32_t k) const {
    Numbers sample(w.size()), contributions(size(nComponents)), sums = contributions;
    for (std::int32_t j = 0; j < data.p; ++j) sample[size(j)] = prepared(i, j);
    definition::plsPrd(sample.data(), &nComponents, &data.p, &nComponents, c.data() + k * nComponents, b.data(),
                       w.data(), l.data(), contributions.data(), sums.data());
    for (double& sum : sums) sum = sum * scale[size(data.p + k)] + shift[size(data.p + k)];
    return sums;
  }

  // The same for one number of components, by a fold's equation in table units.
  double byEquation(const engine::PartialLeastSquaresFold& fold, std::int32_t i, std::int32_t a, std::int32_t k) const {
    double sum = fold.intercepts[size(a + nComponents * k)];
    for (std::int32_t j = 0; j < data.p; ++j) {
      const double x = prepared(i, j) * scale[size(j)] + shift[size(j)];
      sum += fold.coefficients[size(j + data.p * (a + nComponents * k))] * x;
    }
    return sum;
  }

  // Descriptor, component, response; table units.
  Numbers tableCoefficients() const {
    Numbers table = coefs;
    const std::size_t p = size(data.p), perResponse = p * size(nComponents);
    for (std::size_t e = 0; e < table.size(); ++e) table[e] *= scale[p + e / perResponse] / scale[e % p];
    return table;
  }

  const LatentTable& data;
  std::int32_t q, nComponents;
  Numbers fill, shift, scale, w, l, c, b, coefs;
};

void expectNear(std::span<const double> found, const Numbers& expected, double relative, const char* what) {
  ASSERT_EQ(found.size(), expected.size()) << what;
  double largest = 0, difference = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    largest = std::max(largest, std::fabs(expected[i]));
    difference = std::max(difference, std::fabs(found[i] - expected[i]));
  }
  EXPECT_LE(difference, relative * largest) << what;
}

// Root((G - 1) / G * sum (b - mean)^2).
Numbers jackknifeErrors(const std::vector<Numbers>& coefs) {
  Numbers errors;
  const auto folds = static_cast<double>(coefs.size());
  for (std::size_t e = 0; e < coefs[0].size(); ++e) {
    double mean = 0, squares = 0;
    for (const Numbers& fold : coefs) mean += fold[e] / folds;
    for (const Numbers& fold : coefs) squares += std::pow(fold[e] - mean, 2);
    errors.push_back(std::sqrt(squares * (folds - 1) / folds));
  }
  return errors;
}

constexpr engine::Preparation kPreparations[] = {
    {.descriptors = {true, Scaling::None}, .responses = {true, Scaling::None}, .filling = Filling::Mean},
    {.descriptors = {true, Scaling::Autoscale}, .responses = {true, Scaling::Autoscale}, .filling = Filling::Median},
    {.descriptors = {true, Scaling::Pareto},
     .responses = {true, Scaling::Range},
     .filling = Filling::Value,
     .fillValue = 2},
    {.descriptors = {true, Scaling::Range}, .responses = {false, Scaling::Pareto}, .filling = Filling::Mean},
};

// Columns far from mean 0, some rows in no model.
TEST(PartialLeastSquares, PreparesEveryFitByItsOwnRowsAlone) {
  const LatentTable data(40, 7, 11);
  const std::int32_t a = 3, nFolds = 4, left = 37;
  Rows modelRows(size(left)), foldOf(size(data.n), -1);
  std::iota(modelRows.begin(), modelRows.end(), 0);
  for (std::int32_t i = 0; i < left; ++i) foldOf[size(i)] = i * 5 % nFolds;
  const engine::Folds folds = engine::Folds::grouped(foldOf);
  for (const engine::Preparation& preparation : kPreparations) {
    const auto at = static_cast<int>(&preparation - kPreparations);
    engine::PartialLeastSquares pls({.table = data.table(2),
                                     .responses = 2,
                                     .components = a,
                                     .rows = modelRows,
                                     .preparation = preparation,
                                     .coefficients = true,
                                     .coefficientErrors = true});
    ASSERT_EQ(pls.fit(), Status::Done);
    const PlainModel all(data, modelRows, preparation, a);
    expectNear(pls.model().coefficients, all.tableCoefficients(), 1e-10, "coefficients");
    expectNear(pls.model().prepared.scale, all.scale, 1e-13, "scale");

    Numbers press(size(a * 2));
    std::vector<Numbers> coefs;
    const auto keep = [&](const engine::PartialLeastSquaresFold& fold) {
      const PlainModel plain(data, {fold.rows.training.begin(), fold.rows.training.end()}, preparation, a);
      EXPECT_EQ(fold.rows.training.size() + fold.rows.heldOut.size(), size(left));
      coefs.push_back(plain.tableCoefficients());
      for (std::int32_t k = 0; k < 2; ++k)
        for (std::size_t i = 0; i < fold.rows.heldOut.size(); ++i) {
          const std::int32_t row = fold.rows.heldOut[i];
          const Numbers predicted = plain.predictions(row, k);
          for (std::int32_t c = 0; c < a; ++c) {
            EXPECT_NEAR(fold.prediction(i, c, k), predicted[size(c)], 1e-10) << at;
            EXPECT_NEAR(fold.prediction(i, c, k), plain.byEquation(fold, row, c, k), 1e-10) << at;
            press[size(c + a * k)] += std::pow(plain.cell(row, data.p + k) - predicted[size(c)], 2);
          }
        }
    };
    ASSERT_EQ(pls.validate(folds.source(), {}, keep), Status::Done);
    expectNear(pls.validation().press, press, 1e-10, "press");
    expectNear(pls.validation().coefficientErrors, jackknifeErrors(coefs), 1e-9, "errors");
  }
}

// Scores are orthogonal, come from the rotations, and leave of the responses what is said.
TEST(PartialLeastSquares, TellsPartsThatFitTogether) {
  const LatentTable data(30, 8, 12);
  const std::int32_t n = data.n, p = data.p, a = 4;
  engine::PartialLeastSquares pls({.table = data.table(2),
                                   .responses = 2,
                                   .components = a,
                                   .preparation = kPreparations[1],
                                   .scores = true,
                                   .coefficients = true});
  ASSERT_EQ(pls.fit(), Status::Done);
  const engine::PartialLeastSquaresModel m = pls.model();
  EXPECT_EQ(m.components, a);
  EXPECT_EQ(m.rank, a);
  Rows rows(size(n));
  std::iota(rows.begin(), rows.end(), 0);
  const PlainModel plain(data, rows, kPreparations[1], 1);
  Numbers total(2), left(size(2 * a));
  for (std::int32_t c = 0; c < a; ++c) {
    const auto scores = m.scores.subspan(size(c * n), size(n));
    for (std::int32_t d = 0; d <= c; ++d) {
      const auto other = m.scores.subspan(size(d * n), size(n));
      const double product = std::inner_product(scores.begin(), scores.end(), other.begin(), 0.0);
      EXPECT_NEAR(product, c == d ? m.scoreSquares[size(c)] : 0, 1e-10 * m.scoreSquares[0]) << c << ' ' << d;
    }
    for (std::int32_t i = 0; i < n; ++i) {
      double sum = 0;
      for (std::int32_t j = 0; j < p; ++j) sum += plain.prepared(i, j) * m.rotations[size(j + p * c)];
      EXPECT_NEAR(sum, scores[size(i)], 1e-10);
    }
  }
  for (std::int32_t k = 0; k < 2; ++k)
    for (std::int32_t i = 0; i < n; ++i) {
      const double y = plain.cell(i, p + k);
      total[size(k)] += std::pow(y - plain.shift[size(p + k)], 2);
      for (std::int32_t c = 0; c < a; ++c) {
        double sum = m.intercepts[size(c + a * k)];
        for (std::int32_t j = 0; j < p; ++j)
          sum += m.coefficients[size(j + p * (c + a * k))] *
                 (std::isnan(plain.cell(i, j)) ? m.prepared.fill[size(j)] : plain.cell(i, j));
        left[size(c + a * k)] += std::pow(y - sum, 2);
      }
    }
  expectNear(m.totalSquares, total, 1e-12, "total");
  expectNear(m.residualSquares, left, 1e-10, "residual");
}

// Four descriptors of which the last is zero but in row 5: the fold without that row holds three components. And a
// response that one component explains, among descriptors that are orthogonal and equally long, but not exact numbers.
TEST(PartialLeastSquares, CountsTheComponentsThatRowsHold) {
  std::mt19937_64 random(3);
  std::normal_distribution<double> normal;
  Numbers cells(12 * 5);
  for (double& value : cells) value = normal(random);
  for (std::size_t i = 0; i < 12; ++i) cells[36 + i] = i == 5 ? 2 : 0;
  Rows each(12);
  std::iota(each.begin(), each.end(), 0);
  engine::PartialLeastSquares pls({.table = {cells.data(), 12, 5, 12}, .components = 4});
  const engine::Folds folds = engine::Folds::grouped(each);
  ASSERT_EQ(pls.validate(folds.source(), {},
                         [&](const engine::PartialLeastSquaresFold& fold) {
                           EXPECT_EQ(fold.rank, fold.rows.heldOut[0] == 5 ? 3 : 4) << fold.rows.heldOut[0];
                           EXPECT_EQ(fold.components, 4);
                         }),
            Status::Done);
  EXPECT_TRUE(pls.validation().coefficientErrors.empty());
  ASSERT_EQ(pls.fit(), Status::Done);
  EXPECT_EQ(pls.model().rank, 4);

  Numbers design(8 * 4);
  for (std::size_t i = 0; i < 8; ++i)
    for (std::size_t j = 0; j < 3; ++j) {
      design[i + 8 * j] = (i >> j & 1U) == 0 ? 0.1 : -0.1;
      design[i + 24] += static_cast<double>(j + 1) / 3 * design[i + 8 * j];
    }
  engine::PartialLeastSquares exact({.table = {design.data(), 8, 4, 8}, .components = 3});
  ASSERT_EQ(exact.fit(), Status::Done);
  EXPECT_EQ(exact.model().rank, 1);
  EXPECT_LT(exact.model().residualSquares[0], 1e-30);
}

// X'Y has singular values 1e6 and 1e6 + 2: a fit of these rows goes round more than a thousand times.
TEST(PartialLeastSquares, EndsAtAFoldThatDoesNotConverge) {
  const Numbers cells = {1, -1, 0, 0, 0, 0, 1, -1, 5e5 + 1, -5e5 - 1, 1, -1, 1, -1, 5e5 + 1, -5e5 - 1};
  const Rows all = {0, 1, 2, 3}, two = {0, 1};
  engine::PartialLeastSquares pls({.table = {cells.data(), 4, 4, 4}, .responses = 2, .components = 1});
  const auto rows = [&](std::int32_t fold, std::span<std::int32_t>) -> engine::FoldRows {
    return {fold == 1 ? all : two, two};
  };
  Rows extracted;
  EXPECT_EQ(pls.validate({3, 1.0, rows}, {},
                         [&](const engine::PartialLeastSquaresFold& fold) { extracted.push_back(fold.components); }),
            Status::NotConverged);
  EXPECT_EQ(extracted, (Rows{1, 0}));
  EXPECT_EQ(pls.fit(), Status::NotConverged);
  EXPECT_EQ(pls.model().components, 0);
}

TEST(PartialLeastSquares, HasNothingToComputeOfImpossibleSizes) {
  const double cells[4] = {1, 2, 3, 4};
  for (const auto& [columns, responses, components] : {std::tuple{2, 3, 1}, {2, -1, 1}, {2, 1, 0}, {2, 1, -4}}) {
    engine::PartialLeastSquares pls(
        {.table = {cells, 2, columns, 2}, .responses = responses, .components = components});
    EXPECT_EQ(pls.fit(), Status::Singular);
    const engine::Folds folds = engine::Folds::grouped(Rows{0, 1});
    EXPECT_EQ(pls.validate(folds.source()), Status::Singular);
  }
  engine::PartialLeastSquares empty({.table = {nullptr, 0, 3, 0}, .components = 2, .coefficients = true});
  EXPECT_EQ(empty.fit(), Status::Done) << "a model of zeros";
  EXPECT_EQ(empty.model().rank, 0);
}

// Each phase is heard of every few million operations. Operations are counted from below: three passes over the data a
// component, two over a row's descriptors for each component of a prediction, and as many for each rotation where the
// model is beyond the rank of its rows.
TEST(PartialLeastSquares, AsksOftenWhateverTheShape) {
  struct Shape {
    std::int32_t n, p, rank, components;
  };
  for (const auto& [n, p, rank, components] :
       {Shape{2000, 2000, 9, 3}, {50, 5000, 2, 4}, {20000, 200, 9, 3}, {9, 300000, 9, 2}}) {
    std::mt19937_64 random(21);
    Numbers cells(size(n) * size(p + 1));
    for (std::size_t e = 0; e < cells.size(); ++e)
      cells[e] = e < size(n) * size(rank) || e >= size(n) * size(p) ? static_cast<double>(random() % 1000) - 499.5
                 : rank < components                                ? cells[e - size(n) * size(rank)]
                                                                    : static_cast<double>(e * 7919 % 1013) - 506;
    std::int64_t polls = 0;
    const auto count = [&polls](const engine::Progress&) { return ++polls > 0; };
    engine::PartialLeastSquares pls({.table = {cells.data(), n, p + 1, n}, .components = components});
    ASSERT_EQ(pls.fit(count), Status::Done);
    const std::int64_t data = std::int64_t{n} * p, fit = 3 * components * data;
    const std::int64_t rotations = rank < components ? 2 * std::int64_t{p} * p * components : 0;
    EXPECT_GE(polls, (fit + rotations) / 10'000'000) << n << " x " << p;

    // Few rows to train on, the others to predict.
    Rows list(size(n));
    std::iota(list.begin(), list.end(), 0);
    const auto rows = [&](std::int32_t, std::span<std::int32_t>) -> engine::FoldRows {
      return {std::span(list).first(4), list};
    };
    polls = 0;
    ASSERT_EQ(pls.validate({1, 1.0, rows}, count), Status::Done);
    EXPECT_GE(polls, 2 * components * data / 10'000'000) << n << " x " << p;
  }
}

}  // namespace
}  // namespace studystats
