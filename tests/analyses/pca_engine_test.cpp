#include <gtest/gtest.h>
#include <studystats/analyses.h>
#include <studystats/engine/principal_components.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

#include "tests/analyses/calls.h"
#include "tests/analyses/example.h"
#include "tests/analyses/polls.h"

namespace studystats {
namespace {

using engine::PrincipalComponents;
using engine::PrincipalComponentsModel;
using engine::Side;
using engine::Status;
using engine::Table;
using Numbers = std::vector<double>;

Numbers randomNumbers(std::int32_t n, std::int32_t p, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal(2, 1);
  Numbers cells(static_cast<std::size_t>(n) * static_cast<std::size_t>(p));
  for (double& cell : cells) cell = normal(random);
  return cells;
}

double at(const Table& table, std::int32_t i, std::int32_t j) { return table.data[i + std::ptrdiff_t{j} * table.ld]; }

Numbers cells(const Table& table) {
  Numbers all;
  for (std::int32_t j = 0; j < table.columns; ++j)
    for (std::int32_t i = 0; i < table.rows; ++i) all.push_back(at(table, i, j));
  return all;
}

Numbers leading(const Numbers& all, std::int32_t rows, std::int32_t columns) {
  return {all.begin(), all.begin() + std::ptrdiff_t{rows} * columns};
}

// Everything of a fit, one number after the other.
Numbers everything(const PrincipalComponentsModel& model) {
  Numbers all;
  for (const auto& part : {model.eigenvalues, model.scoreMeans, model.scoreDeviations, model.means, model.variances})
    all.insert(all.end(), part.begin(), part.end());
  for (const Table& part : {model.loadings, model.scores, model.covariance, model.explained}) {
    const Numbers numbers = cells(part);
    all.insert(all.end(), numbers.begin(), numbers.end());
  }
  return all;
}

TEST(PrincipalComponentsEngine, GivesTheBitsOfTheEntryPointAsFarAsItIsAsked) {
  constexpr std::int32_t n = 178, p = 13, ld = 181;
  const Numbers wine = exampleNumbers("wine.csv", n, p);
  Numbers apart(std::size_t{ld} * p), values(p), vectors(p * p), covariance(p * p), explained(p * p), scores(n * p),
      means(p), deviations(p);
  for (std::size_t j = 0; j < p; ++j) std::copy_n(&wine[j * n], n, &apart[j * ld]);
  std::int32_t supported = 0, status = -1;
  PCAnal(wine.data(), n, p, &supported, values.data(), vectors.data(), covariance.data(), explained.data(),
         scores.data(), means.data(), deviations.data(), &status);
  ASSERT_EQ(status, 0);

  for (const Side side : {Side::Variables, Side::Smaller})
    for (const std::int32_t k : {-1, 0, 5, 40}) {
      const std::int32_t taken = k < 0 ? p : std::min(k, p);
      for (const bool all : {true, false}) {
        PrincipalComponents components({.table = {apart.data(), n, p, ld},
                                        .side = side,
                                        .components = k,
                                        .scores = all,
                                        .covariance = all,
                                        .explained = all});
        ASSERT_EQ(components.fit(), Status::Done);
        const PrincipalComponentsModel& model = components.model();
        EXPECT_EQ(model.supported, supported);
        Differences found;
        found.compare("values", Numbers(model.eigenvalues.begin(), model.eigenvalues.end()), values)
            .compare("loadings", cells(model.loadings), leading(vectors, p, taken));
        for (std::size_t j = 0; j < p; ++j) EXPECT_EQ(model.variances[j], covariance[j * p + j]);
        if (all)
          found.compare("covariance", cells(model.covariance), covariance)
              .compare("explained", cells(model.explained), leading(explained, p, taken))
              .compare("scores", cells(model.scores), leading(scores, n, taken))
              .compare("means", Numbers(model.scoreMeans.begin(), model.scoreMeans.end()), leading(means, 1, taken))
              .compare("deviations", Numbers(model.scoreDeviations.begin(), model.scoreDeviations.end()),
                       leading(deviations, 1, taken));
        EXPECT_EQ(found.names(), "") << k << " components";
        EXPECT_TRUE(all || (model.covariance.data == nullptr && model.scores.data == nullptr));
      }
    }
}

// Two rows lie 3 apart along (1, 2, -2): variance 9 / 2. The second of three loadings is the first of the largest.
TEST(PrincipalComponentsEngine, FromTheRowsHasTheLineOfTwoPoints) {
  const Numbers data = {4, 3, 7, 5, -1, 1};
  PrincipalComponents components({.table = {data.data(), 2, 3, 2}, .side = Side::Smaller});
  ASSERT_EQ(components.fit(), Status::Done);
  const PrincipalComponentsModel& model = components.model();
  ASSERT_EQ(model.eigenvalues.size(), 1U);
  EXPECT_EQ(model.supported, 1);
  EXPECT_NEAR(model.eigenvalues[0], 4.5, 1e-14);
  const double loadings[] = {1 / 3.0, 2 / 3.0, -2 / 3.0};
  for (std::int32_t j = 0; j < 3; ++j) EXPECT_NEAR(at(model.loadings, j, 0), loadings[j], 1e-15) << j;
  for (std::int32_t i = 0; i < 2; ++i)
    EXPECT_NEAR(at(model.scores, i, 0),
                data[static_cast<std::size_t>(i)] / 3 + data[static_cast<std::size_t>(i) + 2] * 2 / 3 -
                    data[static_cast<std::size_t>(i) + 4] * 2 / 3,
                1e-14);
  EXPECT_NEAR(model.scoreDeviations[0], std::sqrt(4.5), 1e-14);
}

struct Wide {
  const char* name;
  std::int32_t n, p, rank;
  Numbers cells;
};

// The last row again in the place of the first, and the mean of all others in the place of the second.
Numbers dependentRows(std::int32_t n, std::int32_t p) {
  Numbers all = randomNumbers(n, p, 20240702);
  for (std::int32_t j = 0; j < p; ++j) {
    double* column = all.data() + std::ptrdiff_t{j} * n;
    column[0] = column[n - 1];
    column[1] = 0;
    for (std::int32_t i = 0; i < n; ++i) column[1] += i == 1 ? 0 : column[i] / (n - 1);
  }
  return all;
}

// The two sides share the eigensolver and no other step. An eigenvector is known to rounding over the gap that
// separates its eigenvalue from the others.
TEST(PrincipalComponentsEngine, FromTheRowsAgreesWithTheCovarianceMatrix) {
  const Wide tables[] = {{"spectra", 60, 401, 59, exampleNumbers("gasoline.csv", 60, 401)},
                         {"random", 30, 200, 29, randomNumbers(30, 200, 20240701)},
                         {"dependent rows", 20, 70, 17, dependentRows(20, 70)},
                         {"one row fewer", 12, 13, 11, randomNumbers(12, 13, 20240703)},
                         {"constant", 5, 9, 0, Numbers(45, 2.5)}};
  for (const Wide& table : tables) {
    SCOPED_TRACE(table.name);
    const Table view{table.cells.data(), table.n, table.p, table.n};
    PrincipalComponents rows({.table = view, .side = Side::Smaller, .covariance = true, .explained = true}),
        variables({.table = view, .covariance = true, .explained = true});
    ASSERT_EQ(rows.fit(), Status::Done);
    ASSERT_EQ(variables.fit(), Status::Done);
    const PrincipalComponentsModel &one = rows.model(), &other = variables.model();
    EXPECT_TRUE(sameBits(cells(one.covariance), cells(other.covariance)));
    const auto nComponents = static_cast<std::size_t>(table.n - 1);
    ASSERT_EQ(one.eigenvalues.size(), nComponents);
    const double largest = std::max(other.eigenvalues[0], 1e-300), rounding = largest * table.p * 2.3e-16;
    for (std::size_t k = 0; k < nComponents; ++k) {
      const auto column = static_cast<std::int32_t>(k);
      EXPECT_NEAR(one.eigenvalues[k], other.eigenvalues[k], rounding) << k;
      double squares = 0, product = 0, most = 0;
      for (std::int32_t j = 0; j < table.p; ++j) {
        const double loading = at(one.loadings, j, column);
        squares += loading * loading;
        product += loading * at(other.loadings, j, column);
        if (std::fabs(loading) > std::fabs(most)) most = loading;
      }
      if (column >= table.rank) {
        EXPECT_EQ(one.eigenvalues[k], 0) << k;
        EXPECT_EQ(squares, 0) << k;
        continue;
      }
      EXPECT_NEAR(squares, 1, 1e-13) << k;
      EXPECT_GT(most, 0) << k;
      const double above = k > 0 ? other.eigenvalues[k - 1] - other.eigenvalues[k] : largest;
      const double gap = std::min(above, other.eigenvalues[k] - other.eigenvalues[k + 1]);
      EXPECT_NEAR(std::fabs(product), 1, std::pow(rounding / gap, 2) + 1e-12) << k;
      for (std::int32_t i = 0; i < table.n; ++i)
        EXPECT_NEAR(at(one.scores, i, column), at(other.scores, i, column) * (product > 0 ? 1 : -1),
                    100 * std::sqrt(largest) * (rounding / gap + 1e-12))
            << i << ' ' << k;
    }
    for (std::int32_t j = 0; j < table.p; ++j)
      EXPECT_NEAR(at(one.explained, j, table.n - 2), at(other.explained, j, table.p - 1), 1e-10) << j;
    // All components together: the centred data.
    for (std::int32_t i = 0; i < table.n; ++i)
      for (std::int32_t j = 0; j < table.p; ++j) {
        double cell = one.means[static_cast<std::size_t>(j)];
        for (std::int32_t k = 0; k < table.n - 1; ++k)
          cell += (at(one.scores, i, k) - one.scoreMeans[static_cast<std::size_t>(k)]) * at(one.loadings, j, k);
        ASSERT_NEAR(cell, at(view, i, j), 1e-11 * (1 + std::sqrt(largest))) << i << ' ' << j;
      }
  }
}

TEST(PrincipalComponentsEngine, RefusesWhatItCannotDo) {
  const Numbers data(6, 1.0);
  for (const Table& table : {Table{data.data(), 1, 3, 1}, {data.data(), 3, 0, 3}, {data.data(), -2, 3, 1}}) {
    PrincipalComponents components({.table = table});
    EXPECT_EQ(components.fit(), Status::Singular);
  }
  PrincipalComponents tooLarge({.table = {nullptr, 2, 2147483647, 2}});
  EXPECT_FALSE(tooLarge);
  EXPECT_EQ(tooLarge.fit(), Status::NoMemory);
}

// From the rows nothing is columns x columns: that would be 80 gigabytes.
TEST(PrincipalComponentsEngine, FromTheRowsTakesManyColumns) {
  const Numbers data = randomNumbers(4, 100'000, 20240704);
  PrincipalComponents components({.table = {data.data(), 4, 100'000, 4}, .side = Side::Smaller});
  EXPECT_EQ(components.fit(), Status::Done);
  EXPECT_EQ(components.model().eigenvalues.size(), 3U);
}

std::int64_t pollsOf(const engine::PrincipalComponentsTask& task) {
  PollCounter counter;
  PrincipalComponents components(task);
  EXPECT_EQ(components.fit(counter), Status::Done);
  return counter.polls;
}

// Multiplications and additions of each step, counted by hand.
TEST(PrincipalComponentsEngine, AsksWhetherToGoOnInEveryStep) {
  constexpr std::int64_t n = 300, p = 250, wide = 20'000, few = 40;
  const Numbers data = randomNumbers(n, p, 20240705), wideData = randomNumbers(few, wide, 20240706);
  const Table table{data.data(), n, p, n}, wideTable{wideData.data(), few, wide, few};
  const auto expectAsked = [](std::int64_t polls, std::int64_t operations) {
    EXPECT_GE(polls, operations / kBetweenPolls);
  };
  const std::int64_t values = pollsOf({.table = table, .components = 0, .scores = false});
  expectAsked(values, n * p * p + 4 * p * p * p / 3 * 2);  // products of one triangle; reduction and transformation
  expectAsked(pollsOf({.table = table}) - values, 2 * n * p * p + 3 * n * p);
  const std::int64_t fromRows = pollsOf({.table = wideTable, .side = Side::Smaller, .components = 0, .scores = false});
  expectAsked(fromRows, 2 * few * wide + few * few * wide);
  expectAsked(pollsOf({.table = wideTable, .side = Side::Smaller, .scores = false}) - fromRows, 2 * few * few * wide);
  expectAsked(pollsOf({.table = wideTable, .side = Side::Smaller}) - fromRows, 4 * few * few * wide);
}

TEST(PrincipalComponentsEngine, StopsAtAnyPollAndTheNextFitIsAsEver) {
  const Numbers data = randomNumbers(70, 160, 20240707);
  const Table table{data.data(), 70, 160, 70};
  for (const Side side : {Side::Variables, Side::Smaller}) {
    const engine::PrincipalComponentsTask task{.table = table, .side = side, .covariance = true, .explained = true};
    PrincipalComponents reference(task), stopped(task);
    PollCounter all;
    ASSERT_EQ(reference.fit(all), Status::Done);
    ASSERT_GT(all.polls, 0);
    for (std::int64_t k = 1; k <= all.polls; ++k) {
      PollCounter stopping{.stopAt = k};
      EXPECT_EQ(stopped.fit(stopping), Status::Stopped);
      EXPECT_EQ(stopping.polls, k) << "asked no more";
      if (k % 5 != 1) continue;
      ASSERT_EQ(stopped.fit(), Status::Done);
      EXPECT_TRUE(sameBits(everything(stopped.model()), everything(reference.model()))) << k;
    }
  }
}

TEST(PrincipalComponentsEngine, RunsOnSeveralThreadsAtOnce) {
  const Numbers data = randomNumbers(40, 90, 20240708);
  const engine::PrincipalComponentsTask task{.table = {data.data(), 40, 90, 40}, .side = Side::Smaller};
  PrincipalComponents reference(task), first(task), second(task);
  ASSERT_EQ(reference.fit(), Status::Done);
  std::thread other([&] { second.fit(); });
  EXPECT_EQ(first.fit(), Status::Done);
  other.join();
  EXPECT_TRUE(sameBits(everything(first.model()), everything(reference.model())));
  EXPECT_TRUE(sameBits(everything(second.model()), everything(reference.model())));
}

}  // namespace
}  // namespace studystats
