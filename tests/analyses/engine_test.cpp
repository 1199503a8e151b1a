// What every analysis of the engine promises: bits that do not depend on where its folds run, a stop wherever it is
// asked whether to go on, and the figures of its entry point.
#include <gtest/gtest.h>
#include <studystats/analyses.h>
#include <studystats/engine.h>

#include <algorithm>
#include <cmath>
#include <thread>
#include <vector>

#include "tests/analyses/engine_runs.h"
#include "tests/analyses/example.h"
#include "tests/analyses/mlr_call.h"
#include "tests/analyses/pls_call.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;

engine::Folds drawnFolds(std::int32_t rows, std::int32_t seed) {
  engine::Generator generator(seed);
  return engine::Folds::drawn(rows, 7, rows / 4, generator);
}

template <class Run>
class Engine : public testing::Test {};

using Runs = testing::Types<RegressionRun, PartialLeastSquaresRun>;
TYPED_TEST_SUITE(Engine, Runs);

TYPED_TEST(Engine, GivesTheSameBitsWhereverItsFoldsRun) {
  const LatentTable data(40, 12, 1);
  const engine::Folds folds = drawnFolds(data.n, 5);
  TypeParam alone(data, folds.count(), 1), threaded(data, folds.count(), 3);
  const Told told = runInOrder(alone, folds.source());
  ASSERT_GT(told.size(), 400U);
  EXPECT_TRUE(sameBits(runOnThreads(threaded, folds.source(), 3), told));
  EXPECT_TRUE(sameBits(runInOrder(threaded, folds.source()), told)) << "the folds before are forgotten";
}

TYPED_TEST(Engine, RunsBesideAnother) {
  const LatentTable first(30, 10, 2), second(45, 8, 3);
  const engine::Folds ofFirst = drawnFolds(first.n, 6), ofSecond = drawnFolds(second.n, 7);
  TypeParam a(first, ofFirst.count(), 1), b(second, ofSecond.count(), 1), besideA(first, ofFirst.count(), 1),
      besideB(second, ofSecond.count(), 1);
  const Told toldA = runInOrder(a, ofFirst.source()), toldB = runInOrder(b, ofSecond.source());
  Told other;
  std::thread beside([&] { other = runInOrder(besideB, ofSecond.source()); });
  const Told one = runInOrder(besideA, ofFirst.source());
  beside.join();
  EXPECT_TRUE(sameBits(one, toldA));
  EXPECT_TRUE(sameBits(other, toldB));
}

// Large enough to be asked in the middle of folds, too.
TYPED_TEST(Engine, StopsWheneverItIsAskedAndStartsAfresh) {
  const LatentTable data(150, 420, 4);
  const engine::Folds folds = drawnFolds(data.n, 8);
  TypeParam run(data, folds.count(), 1);
  std::int32_t asked = 0, begun = 0, stopAt = 0;
  const auto ask = [&](const engine::Progress& progress) {
    begun += progress.begins ? 1 : 0;
    EXPECT_EQ(progress.fold, begun);
    EXPECT_EQ(progress.folds, begun == 0 ? 0 : folds.count());
    return ++asked != stopAt;
  };
  const Told told = runInOrder(run, folds.source(), ask);
  const std::int32_t polls = asked;
  EXPECT_EQ(begun, folds.count());
  EXPECT_GT(polls, begun + 3);
  for (stopAt = 1; stopAt <= polls; ++stopAt) {
    asked = begun = 0;
    EXPECT_TRUE(runInOrder(run, folds.source(), ask).empty());
    EXPECT_EQ(asked, stopAt) << "asked once more";
  }
  asked = begun = 0;
  EXPECT_TRUE(sameBits(runInOrder(run, folds.source(), ask), told));
}

// A checkpoint that throws is heard by the caller as it threw.
TYPED_TEST(Engine, LetsThroughWhatTheCheckpointThrows) {
  const LatentTable data(30, 6, 9);
  const engine::Folds folds = drawnFolds(data.n, 10);
  TypeParam run(data, folds.count(), 1);
  const Told told = runInOrder(run, folds.source());
  const auto fail = [](const engine::Progress& progress) -> bool { return progress.fold == 3 ? throw 7 : true; };
  EXPECT_THROW(runInOrder(run, folds.source(), fail), int);
  EXPECT_TRUE(sameBits(runInOrder(run, folds.source()), told));
}

// More memory than can be counted; nothing of the table is read.
TYPED_TEST(Engine, SaysWhenItsMemoryCannotBeHad) {
  LatentTable data(2, 2, 0);
  data.n = data.p = 2147483000;
  TypeParam run(data, 2, 2);
  EXPECT_FALSE(run.analysis);
  EXPECT_EQ(run.analysis.fit(), engine::Status::NoMemory);
}

// Dealt groups, one row at a time, and random subsets, of an entry point and of folds that are values.
struct PlannedAs {
  std::int32_t method, groups;
};
constexpr PlannedAs kPlans[] = {{1, 5}, {1, 0}, {2, 4}};

engine::Folds sameFolds(const PlannedAs& plan, std::int32_t n, const std::vector<std::int32_t>& orderFromOne) {
  engine::Generator generator(77);
  generator();  // what the seeding call of Nmrand returns
  if (plan.method != 1) return engine::Folds::drawn(n, plan.groups, (n + plan.groups - 1) / plan.groups, generator);
  std::vector<std::int32_t> order;
  for (std::int32_t i = 0; i < n; ++i) order.push_back(orderFromOne[static_cast<std::size_t>(i)] - 1);
  return engine::Folds::dealt(order, plan.groups == 0 ? n : plan.groups);
}

TEST(EngineOfPartialLeastSquares, GivesTheBitsOfItsEntryPoint) {
  for (const PlannedAs& plan : kPlans) {
    PlsCall call(20, 3, 2, 3);
    call.data = exampleNumbers("linnerud.csv", 20, 5);
    call.centre(true);
    call.means.assign(5, 0.0);
    call.scaled = 0;
    call.method = plan.method;
    call.groups = plan.groups;
    Nmrand(-77);
    call.run();
    ASSERT_EQ(call.status(), 0);

    const engine::Folds folds = sameFolds(plan, 20, call.rowOrder);
    engine::PartialLeastSquares pls({.table = {call.data.data(), 20, 5, 20},
                                     .responses = 2,
                                     .components = 3,
                                     .coefficients = true,
                                     .coefficientErrors = true});
    ASSERT_EQ(pls.fit(), engine::Status::Done);
    ASSERT_EQ(pls.validate(folds.source()), engine::Status::Done);
    const engine::PartialLeastSquaresModel model = pls.model();
    const engine::PartialLeastSquaresValidation sums = pls.validation();
    const auto equal = [](std::span<const double> ours, const Numbers& theirs) {
      return sameBits(Numbers(ours.begin(), ours.end()), Numbers(theirs.begin(), theirs.end() - 1));
    };
    EXPECT_TRUE(equal(model.totalSquares, call.tss) && equal(model.residualSquares, call.rss));
    EXPECT_TRUE(equal(model.coefficients, call.coefs) && equal(sums.coefficientErrors, call.coefErrors));
    EXPECT_TRUE(equal(sums.press, call.press)) << plan.method << ' ' << plan.groups;
    const engine::ComponentErrors errors{3, sums.press, model.residualSquares, model.totalSquares};
    EXPECT_EQ(engine::componentsByRatio(errors, 1.0), call.kept());
  }
}

TEST(EngineOfRegression, GivesTheBitsOfItsEntryPoint) {
  for (const PlannedAs& plan : kPlans) {
    MlrCall call(60, 15);
    call.data = exampleNumbers("bloodbrain.csv", 60, 15);
    call.method = plan.method;
    call.groups = plan.groups;
    call.fEnter = call.fRemove = 1;
    call.corrLimit = 0.95F;
    call.maxSteps = 5;
    for (std::size_t j = 0; j < 15; ++j) call.scale[j] = 2 + static_cast<double>(j), call.shift[j] = 0.5;
    Nmrand(-77);
    call.run();
    ASSERT_EQ(call.status(), 0);

    const engine::Folds folds = sameFolds(plan, 60, call.rowIds);
    engine::Regression regression({.table = {call.data.data(), 60, 15, 60},
                                   .rules = {call.fEnter, call.fRemove, call.corrLimit, call.maxSteps},
                                   .scale = call.scale,
                                   .shift = call.shift},
                                  folds.count());
    ASSERT_EQ(regression.fit(), engine::Status::Done);
    ASSERT_EQ(regression.validate(folds.source()), engine::Status::Done);
    const engine::RegressionModel model = regression.model();
    const engine::RegressionValidation sums = regression.validation();
    Numbers ours = {model.equation.intercept, sums.press, sums.interceptSpread},
            theirs = {call.intercept(), call.press(), call.interceptSd()};
    ASSERT_EQ(std::ssize(model.equation.descriptors), call.nIn());
    for (std::size_t a = 0; a < model.equation.descriptors.size(); ++a) {
      const auto j = static_cast<std::size_t>(call.inList[a] - 1);
      ours.insert(ours.end(), {model.equation.coefficients[a], sums.spreads[a] / call.scale[j]});
      theirs.insert(theirs.end(), {call.coef[a], call.cvCoefSd[j]});
      EXPECT_EQ(model.equation.descriptors[a], call.inList[a] - 1);
    }
    EXPECT_TRUE(sameBits(ours, theirs)) << plan.method << ' ' << plan.groups;
    EXPECT_NEAR(model.totalSquares - model.residualSquares, call.sumSq[0], 1e-12 * call.sumSq[0]);
    EXPECT_TRUE(std::equal(sums.timesChosen.begin(), sums.timesChosen.end(), call.selCount.begin()));
  }
}

// The table with every missing descriptor replaced by the median of the rows.
LatentTable filledBy(const LatentTable& data, std::span<const std::int32_t> rows) {
  LatentTable filled = data;
  for (std::size_t j = 0; j < static_cast<std::size_t>(data.p); ++j) {
    double* column = filled.cells.data() + j * static_cast<std::size_t>(data.n);
    Numbers present;
    for (const std::int32_t i : rows)
      if (!std::isnan(column[i])) present.push_back(column[i]);
    std::sort(present.begin(), present.end());
    const std::size_t half = present.size() / 2;
    const double median = present.size() % 2 == 1 ? present[half] : (present[half - 1] + present[half]) / 2;
    std::replace_if(
        column, column + data.n, [](double value) { return std::isnan(value); }, median);
  }
  return filled;
}

double residual(const LatentTable& data, const engine::LinearModel& model, std::int32_t row) {
  double sum = data.cells[static_cast<std::size_t>(data.p * data.n + row)] - model.intercept;
  for (std::size_t a = 0; a < model.descriptors.size(); ++a)
    sum -= model.coefficients[a] * data.cells[static_cast<std::size_t>(model.descriptors[a] * data.n + row)];
  return sum;
}

// Least squares of those rows: the residuals are orthogonal to the constant and to every descriptor of the model.
double furthestFromLeastSquares(const LatentTable& data, const engine::LinearModel& model,
                                std::span<const std::int32_t> rows) {
  double most = 0, sum = 0;
  for (const std::int32_t i : rows) sum += residual(data, model, i);
  most = std::fabs(sum);
  for (const std::int32_t j : model.descriptors) {
    double product = 0;
    for (const std::int32_t i : rows)
      product += residual(data, model, i) * data.cells[static_cast<std::size_t>(j * data.n + i)];
    most = std::max(most, std::fabs(product));
  }
  return most;
}

TEST(EngineOfRegression, PreparesEveryFitByItsOwnRowsAndTellsItInTableUnits) {
  const LatentTable data(40, 7, 31);
  std::vector<std::int32_t> all;
  for (std::int32_t i = 0; i < data.n; ++i) all.push_back(i);
  const engine::Folds folds = drawnFolds(data.n, 32);
  for (const std::int32_t maxSteps : {1, 3}) {
    engine::Regression regression({.table = data.table(1),
                                   .rules = {.fEnter = 1, .fRemove = 1, .maxSteps = maxSteps},
                                   .preparation = kAutoscaledAndFilled},
                                  folds.count());
    ASSERT_EQ(regression.fit(), engine::Status::Done);
    const LatentTable filled = filledBy(data, all);
    const engine::RegressionModel model = regression.model();
    ASSERT_EQ(std::ssize(model.equation.descriptors), maxSteps);
    EXPECT_LT(furthestFromLeastSquares(filled, model.equation, all), 1e-9);
    const engine::LinearModel nothing{};
    double left = 0, mean = 0, total = 0;
    for (const std::int32_t i : all) left += std::pow(residual(filled, model.equation, i), 2);
    for (const std::int32_t i : all) mean += residual(data, nothing, i) / data.n;
    for (const std::int32_t i : all) total += std::pow(residual(data, nothing, i) - mean, 2);
    EXPECT_NEAR(model.totalSquares, total, 1e-12 * total);
    EXPECT_NEAR(model.residualSquares, left, 1e-10 * left);
    EXPECT_NEAR(model.steps.back().s, std::sqrt(left / (data.n - 1 - maxSteps)), 1e-6 * std::sqrt(left));
    if (maxSteps == 1) {
      const double* x = filled.cells.data() + model.equation.descriptors[0] * data.n;
      double middle = 0, squares = 0;
      for (const std::int32_t i : all) middle += x[i] / data.n;
      for (const std::int32_t i : all) squares += std::pow(x[i] - middle, 2);
      EXPECT_NEAR(model.inverseDiagonal[0] * squares, 1, 1e-12);
    }

    double press = 0;
    const auto keep = [&](const engine::RegressionFold& fold) {
      const LatentTable ofFold = filledBy(data, fold.rows.training);
      EXPECT_LT(furthestFromLeastSquares(ofFold, fold.own, fold.rows.training), 1e-9);
      EXPECT_LT(furthestFromLeastSquares(ofFold, fold.refit, fold.rows.training), 1e-9);
      for (std::size_t i = 0; i < fold.predictions.size(); ++i) {
        const std::int32_t row = fold.rows.heldOut[i];
        const double error = residual(ofFold, fold.own, row);
        EXPECT_NEAR(data.cells[static_cast<std::size_t>(data.p * data.n + row)] - fold.predictions[i], error, 1e-10);
        press += folds.weight() * error * error;
      }
    };
    ASSERT_EQ(regression.validate(folds.source(), {}, keep), engine::Status::Done);
    EXPECT_NEAR(regression.validation().press, press, 1e-10 * press);
  }
}

}  // namespace
}  // namespace studystats
