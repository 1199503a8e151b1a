#include <gtest/gtest.h>
#include <studystats/engine/discriminant.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <thread>
#include <vector>

#include "numeric/validation.h"
#include "tests/analyses/da_call.h"
#include "tests/analyses/da_examples.h"
#include "tests/analyses/da_nasty.h"
#include "tests/analyses/polls.h"

namespace studystats {
namespace {

using engine::CanonicalModel;
using engine::Discriminant;
using engine::DiscriminantFold;
using engine::DiscriminantModel;
using engine::DiscriminantRules;
using engine::DiscriminantValidation;
using engine::FoldRows;
using engine::Folds;
using engine::Status;
using engine::Table;
using engine::VariableChoice;
using Integers = std::vector<std::int32_t>;
using Numbers = std::vector<double>;
using Floats = std::vector<float>;

template <class Number>
std::vector<std::remove_const_t<Number>> copied(std::span<Number> numbers) {
  return {numbers.begin(), numbers.end()};
}

double at(const Table& table, std::int32_t i, std::int32_t j) { return table.data[i + std::ptrdiff_t{j} * table.ld]; }

// The rules of a call of DisAnl, whose steps are not limited.
DiscriminantRules rulesOf(const DaCall& call) {
  DiscriminantRules rules{.number = std::max(call.nSelect, 1), .mostVariables = call.p};
  rules.choice = call.selectMode == 0                       ? VariableChoice::Automatic
                 : call.selectMode == 1                     ? VariableChoice::Number
                 : call.selectMode == 2 && call.nSelect < 1 ? VariableChoice::Everything
                                                            : VariableChoice::EveryStep;
  return rules;
}

// A call of DisAnl as a task: classes from 0, and the rows of the model listed.
struct EngineTask {
  explicit EngineTask(const DaCall& call)
      : task{.table = {call.data.data(), call.n, call.p, call.n}, .classes = call.g, .rules = rulesOf(call)} {
    for (std::size_t i = 0; i < call.inModel.size(); ++i) {
      classOf.push_back(call.inModel[i] == 1 ? call.classOf[i] - 1 : -1);
      if (call.inModel[i] == 1) rows.push_back(static_cast<std::int32_t>(i));
    }
    task.classOf = classOf;
    task.rows = rows;
  }
  EngineTask(const EngineTask&) = delete;
  EngineTask& operator=(const EngineTask&) = delete;

  Integers classOf, rows;
  engine::DiscriminantTask task;
};

// The groups that DisAnl deals along its order; rows outside the model are held out every time.
struct DealtFolds {
  const DaCall& call;
  std::int32_t groups;

  FoldRows operator()(std::int32_t fold, std::span<std::int32_t> rows) const {
    std::vector<bool> trained(call.inModel.size(), false);
    for (std::int32_t i = 0; i < call.n; ++i) {
      const auto row = static_cast<std::size_t>(call.modelRows[static_cast<std::size_t>(i)] - 1);
      trained[row] = call.inModel[row] == 1 && i % groups != fold;
    }
    std::size_t nTrained = 0, nListed = 0;
    for (const bool wanted : {true, false}) {
      for (std::size_t i = 0; i < trained.size(); ++i)
        if (trained[i] == wanted) rows[nListed++] = static_cast<std::int32_t>(i);
      if (wanted) nTrained = nListed;
    }
    return {rows.first(nTrained), rows.subspan(nTrained, nListed - nTrained)};
  }
};

// Outputs of DisAnl in which an engine's model differs; empty when there are none.
std::string modelDifferences(Discriminant& analysis, const DaCall& call, Status status) {
  const DiscriminantModel& model = analysis.model();
  Differences found;
  const auto nSteps = static_cast<std::ptrdiff_t>(call.nSteps());
  Integers order;
  Floats fractions, shares, given;
  for (const engine::DiscriminantStep& step : model.steps) {
    order.push_back(step.variable + 1);
    fractions.push_back(step.fraction);
    shares.insert(shares.end(), step.classFractions.begin(), step.classFractions.end());
  }
  for (std::ptrdiff_t k = 0; k < nSteps; ++k)
    for (std::ptrdiff_t c = 0; c < call.g; ++c)
      given.push_back(call.stepClassFraction[static_cast<std::size_t>(k + c * call.p)]);
  found.compare("selectOrder", order, Integers(call.selectOrder.begin(), call.selectOrder.begin() + nSteps))
      .compare("stepFraction", fractions, Floats(call.stepFraction.begin(), call.stepFraction.begin() + nSteps))
      .compare("stepClassFraction", shares, given);
  if (status != Status::Done) return found.names();

  Integers selected(call.selected.size(), 0);
  for (const std::int32_t j : model.variables) selected[static_cast<std::size_t>(j)] = 1;
  return found.compare("selected", selected, call.selected)
      .compare("confusion", copied(model.confusion), call.confusion)
      .names();
}

std::string validationDifferences(const DiscriminantValidation& validation, const DaCall& call) {
  Floats shares;
  for (std::size_t c = 0; c < validation.correct.size(); ++c)
    shares.push_back(static_cast<float>(validation.correct[c]) / static_cast<float>(validation.validated[c]));
  Differences found;
  found.compare("cvSelCount", copied(validation.timesChosen), call.cvSelCount)
      .compare("cvConfusion", copied(validation.confusion), call.cvConfusion);
  if (call.status() == 0) found.compare("cvClassFraction", shares, call.cvClassFraction);
  return found.names();
}

// Distances and canonical functions that DisAnl gives in the end.
std::string lastDifferences(Discriminant& analysis, const DaCall& call) {
  const auto n = static_cast<std::size_t>(call.n), g = static_cast<std::size_t>(call.g);
  if (analysis.model().variables.size() == 1) return "";  // plain differences there, and a placeholder
  Numbers distances(n * g);
  Integers predicted(n);
  EXPECT_EQ(analysis.place({call.data.data(), call.n, call.p, call.n}, {}, distances.data(), call.n, predicted),
            Status::Done);
  CanonicalModel canonical;
  EXPECT_EQ(analysis.canonical(canonical), Status::Done);
  Numbers values, vectors;
  for (std::int32_t k = 0; k < call.nCanonical(); ++k)
    for (std::int32_t a = 0; a < canonical.vectors.rows; ++a)
      vectors.push_back(call.canonVectors[static_cast<std::size_t>(a + k * call.p)]);
  values.assign(call.canonValues.begin(), call.canonValues.begin() + call.nCanonical());
  return Differences()
      .compare("distances", Floats(distances.begin(), distances.end()), call.distances)
      .compare("canonValues", copied(canonical.eigenvalues), values)
      .compare("canonVectors",
               Numbers(canonical.vectors.data, canonical.vectors.data + canonical.vectors.rows * call.nCanonical()),
               vectors)
      .names();
}

TEST(DiscriminantEngine, GivesTheBitsOfTheEntryPointOnNastyTables) {
  int nDone = 0, nFailed = 0, nRestarted = 0;
  for (std::uint64_t seed = 0; seed < 1200; ++seed) {
    DaCall call = nastyCase(seed).call;
    call.method = 1;
    for (std::size_t i = 0; i < call.inModel.size(); ++i)
      if (call.inModel[i] != 1) call.classOf[i] = 0;
    call.run();
    const EngineTask own(call);
    Discriminant analysis(own.task);
    ASSERT_TRUE(analysis);
    Status status = analysis.fit();
    ASSERT_EQ(modelDifferences(analysis, call, status), "") << "seed " << seed;
    if (status == Status::Done) {
      DealtFolds dealt{call, call.groups < 1 ? call.n : std::min(call.groups, call.n)};
      status = analysis.validate(engine::FoldSource(dealt.groups, 1, dealt));
      if (status != Status::Done && call.groups != 0) {
        dealt.groups = call.n;
        status = analysis.validate(engine::FoldSource(dealt.groups, 1, dealt));
        ++nRestarted;
      }
      ASSERT_EQ(validationDifferences(analysis.validation(), call), "") << "seed " << seed;
      if (call.status() == 0) {
        ASSERT_EQ(lastDifferences(analysis, call), "") << "seed " << seed;
      }
    }
    ASSERT_EQ(static_cast<std::int32_t>(status), call.status()) << "seed " << seed;
    (status == Status::Done ? nDone : nFailed) += 1;
  }
  EXPECT_GT(nDone, 300);
  EXPECT_GT(nFailed, 300);
  EXPECT_GT(nRestarted, 50);
}

TEST(DiscriminantEngine, GivesTheBitsOfTheEntryPointForRandomFolds) {
  for (const std::int32_t groups : {4, 0}) {
    DaCall call = wine();
    call.method = 2;
    call.groups = groups;
    call.fraction = groups > 0 ? 2.5F : 0.1F;
    Nmrand(-17);
    call.run();
    ASSERT_EQ(call.status(), 0);
    const EngineTask own(call);
    Discriminant analysis(own.task);
    ASSERT_EQ(analysis.fit(), Status::Done);
    const core::ValidationPlan plan = core::planValidation({2, groups, call.fraction}, call.n);
    engine::Generator generator(17);
    generator();  // the number that setting the seed returned
    const Folds folds = Folds::drawn(call.n, plan.folds, plan.leaveOut, generator);
    ASSERT_EQ(analysis.validate(folds.source()), Status::Done);
    EXPECT_EQ(validationDifferences(analysis.validation(), call), "") << groups;
  }
}

// DisAnl takes the step that the automatic selection refused when it is told to take one more.
TEST(DiscriminantEngine, TellsWhichStepEndedTheSelection) {
  DaCall call = wine();
  const EngineTask own(call);
  Discriminant analysis(own.task);
  ASSERT_EQ(analysis.fit(), Status::Done);
  const DiscriminantModel& model = analysis.model();
  const std::size_t nSteps = model.steps.size();
  call.selectMode = 1;
  call.nSelect = static_cast<std::int32_t>(nSteps) + 1;
  call.run();
  ASSERT_NE(model.refused, nullptr);
  EXPECT_EQ(model.refused->variable + 1, call.selectOrder[nSteps]);
  EXPECT_EQ(model.refused->fraction, call.stepFraction[nSteps]);
  for (std::size_t c = 0; c < 3; ++c)
    EXPECT_EQ(model.refused->classFractions[c], call.stepClassFraction[nSteps + c * 13]);

  // The distances between the class means of the model, added up in 64 bits.
  double sum = 0;
  for (const auto& [c, d] : {std::pair{0, 1}, {0, 2}, {1, 2}}) {
    double squared = 0;
    for (std::int32_t a = 0; a < model.means.rows; ++a)
      for (std::int32_t b = 0; b < model.means.rows; ++b)
        squared += (at(model.means, a, c) - at(model.means, a, d)) * at(model.inverse, a, b) *
                   (at(model.means, b, c) - at(model.means, b, d));
    sum += std::sqrt(squared);
  }
  EXPECT_NEAR(model.steps.back().distances, sum, 1e-6 * sum);
  EXPECT_LT(model.refused->distances, 1.05 * sum);

  // Steps end at the limit, whatever the rules say.
  engine::DiscriminantTask limited = own.task;
  limited.rules.mostVariables = 2;
  Discriminant two(limited);
  ASSERT_EQ(two.fit(), Status::Done);
  EXPECT_EQ(two.model().variables.size(), 2U);
  EXPECT_EQ(two.model().refused, nullptr);
}

// By hand: deviations -1, 0, 1 twice make a variance of 4 / 3, the total scatter is 154, that between classes 150.
TEST(DiscriminantEngine, MeasuresOneVariableInItsStandardDeviations) {
  const Numbers data = {1, 2, 3, 11, 12, 13}, other = {5, 2};
  const Integers classOf = {0, 0, 0, 2, 2, 2}, listed = {1, 0, 1};
  Discriminant analysis({.table = {data.data(), 6, 1, 6}, .classOf = classOf, .classes = 3});
  ASSERT_EQ(analysis.fit(), Status::Done);
  EXPECT_NEAR(*analysis.model().inverse.data, 0.75, 1e-15);
  EXPECT_EQ(copied(analysis.model().classSizes), (Integers{3, 0, 3}));
  Numbers distances(9);
  Integers predicted(3);
  ASSERT_EQ(analysis.place({other.data(), 2, 1, 2}, listed, distances.data(), 3, predicted), Status::Done);
  const double sd = std::sqrt(4.0 / 3), expected[] = {0, 3, 0, 2, 5, 2, 10, 7, 10};
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(distances[i], expected[i] / sd, 1e-14) << i;
  EXPECT_EQ(predicted, (Integers{0, 0, 0})) << "of equal distances the lower class";

  CanonicalModel canonical;
  ASSERT_EQ(analysis.canonical(canonical), Status::Done);
  EXPECT_NEAR(*canonical.withinScatter.data, 4, 1e-14);
  EXPECT_NEAR(*canonical.betweenScatter.data, 150, 1e-12);
  EXPECT_NEAR(canonical.eigenvalues[0], 37.5, 1e-12);

  // A fold that trains on all but the last row: deviations -1, 0, 1, -1/2, 1/2 and a variance of 2.5 / 2.
  const Integers groupOf = {1, 1, 1, 1, 1, 0};
  const Folds folds = Folds::grouped(groupOf);
  const DiscriminantFold fold = analysis.fold(folds.source(), 0);
  ASSERT_EQ(fold.status, Status::Done);
  for (std::int32_t c = 0; c < 3; ++c)
    EXPECT_NEAR(at(fold.distances, 0, c), (c == 0 ? 11 : c == 1 ? 13 : 1.5) / std::sqrt(1.25), 1e-14) << c;
  EXPECT_EQ(copied(fold.predicted), Integers{2});
}

TEST(DiscriminantEngine, WhitensTheScatterWithinClasses) {
  const DaCall call = wine();
  const EngineTask own(call);
  Discriminant analysis(own.task);
  ASSERT_EQ(analysis.fit(), Status::Done);
  CanonicalModel canonical;
  ASSERT_EQ(analysis.canonical(canonical), Status::Done);
  const std::int32_t m = canonical.whitening.rows;
  ASSERT_EQ(m, 5);
  for (std::int32_t k = 0; k < m; ++k)
    for (std::int32_t l = 0; l < m; ++l) {
      double product = 0;
      for (std::int32_t a = 0; a < m; ++a)
        for (std::int32_t b = 0; b < m; ++b)
          product += at(canonical.whitening, k, a) * at(canonical.withinScatter, a, b) * at(canonical.whitening, l, b);
      EXPECT_NEAR(product, k == l ? 1 : 0, 1e-12);
    }
}

// Classes whose means differ a little in every variable.
DaCall randomCall(std::int32_t n, std::int32_t p, std::int32_t g, std::uint64_t seed) {
  DaCall call(n, p, g);
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  for (std::int32_t i = 0; i < n; ++i) call.classOf[static_cast<std::size_t>(i)] = i % g + 1;
  for (std::ptrdiff_t j = 0; j < p; ++j)
    for (std::ptrdiff_t i = 0; i < n; ++i)
      call.cell(i, j) = normal(random) + 0.2 * static_cast<double>((i % g + j) % g);
  return call;
}

Folds dealtFolds(std::int32_t n, std::int32_t groups) {
  Integers order(static_cast<std::size_t>(n));
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<std::int32_t>(i);
  return Folds::dealt(order, groups);
}

// Anything of variables x variables would be 80 gigabytes.
TEST(DiscriminantEngine, TakesManyVariablesWhenFewAreChosen) {
  DaCall call = randomCall(15, 100'000, 3, 20240710);
  call.selectMode = 1;
  call.nSelect = 2;
  const EngineTask own(call);
  engine::DiscriminantTask task = own.task;
  for (const std::int32_t most : {4, 0}) {
    task.rules.mostVariables = most;
    Discriminant analysis(task);
    ASSERT_TRUE(analysis);
    ASSERT_EQ(analysis.fit(), Status::Done);
    EXPECT_EQ(analysis.model().variables.size(), 2U);
  }
  task.table = {nullptr, 15, 2'000'000'000, 15};
  task.rules.choice = VariableChoice::Everything;
  Discriminant everything(task);
  EXPECT_FALSE(everything);
  EXPECT_EQ(everything.fit(), Status::NoMemory);
}

// Everything of a fit, its folds and what follows, one number after the other; the status that ended it.
struct Outcome {
  Status status = Status::Done;
  Numbers numbers;

  template <class Values>
  void keep(const Values& values) {
    numbers.insert(numbers.end(), values.begin(), values.end());
  }
  void keep(const DiscriminantFold& fold) {
    keep(fold.variables);
    keep(fold.predicted);
    for (std::int32_t c = 0; c < fold.distances.columns; ++c)
      for (std::int32_t i = 0; i < fold.distances.rows; ++i) numbers.push_back(at(fold.distances, i, c));
  }
};

Outcome runAll(Discriminant& analysis, const DaCall& call, const Folds& folds, const engine::Checkpoint& checkpoint) {
  Outcome run;
  Numbers distances(static_cast<std::size_t>(call.n) * static_cast<std::size_t>(call.g));
  CanonicalModel canonical;
  run.status = analysis.fit(checkpoint);
  if (run.status == Status::Done)
    run.status = analysis.validate(folds.source(), checkpoint, [&](const DiscriminantFold& fold) { run.keep(fold); });
  if (run.status == Status::Done) run.status = analysis.canonical(canonical, checkpoint);
  if (run.status == Status::Done)
    run.status =
        analysis.place({call.data.data(), call.n, call.p, call.n}, {}, distances.data(), call.n, {}, checkpoint);
  if (run.status != Status::Done) return run;
  run.keep(distances);
  run.keep(canonical.eigenvalues);
  run.keep(analysis.model().confusion);
  run.keep(analysis.validation().confusion);
  run.keep(analysis.validation().timesChosen);
  return run;
}

TEST(DiscriminantEngine, StopsAtAnyPollAndTheNextRunIsAsEver) {
  for (const VariableChoice choice : {VariableChoice::Everything, VariableChoice::Number}) {
    const bool steps = choice == VariableChoice::Number;
    const DaCall call = randomCall(200, steps ? 300 : 70, steps ? 2 : 3, 20240711);
    const EngineTask own(call);
    engine::DiscriminantTask task = own.task;
    task.rules = {.choice = choice, .number = 4};
    const Folds folds = dealtFolds(call.n, 2);
    Discriminant analysis(task), stopped(task);
    PollCounter all;
    const Outcome reference = runAll(analysis, call, folds, all);
    ASSERT_EQ(reference.status, Status::Done);
    ASSERT_GT(all.polls, 6);
    EXPECT_EQ(all.begun, 2);
    for (std::int64_t k = 1; k <= all.polls; ++k) {
      PollCounter stopping{.stopAt = k};
      EXPECT_EQ(runAll(stopped, call, folds, stopping).status, Status::Stopped) << k;
      EXPECT_EQ(stopping.polls, k) << "asked no more";
      if (k % 5 != 1) continue;
      EXPECT_TRUE(sameBits(runAll(stopped, call, folds, {}).numbers, reference.numbers)) << k;
    }
  }
}

// The folds on two threads, last one first, each with a place of its own.
TEST(DiscriminantEngine, RunsFoldsOnSeveralThreadsInAnyOrder) {
  constexpr std::int32_t nFolds = 6;
  const DaCall call = wine();
  const EngineTask own(call);
  const Folds folds = dealtFolds(call.n, nFolds);
  Discriminant inOrder(own.task), apart(own.task, nFolds);
  Outcome expected, found;
  ASSERT_EQ(inOrder.validate(folds.source(), {}, [&](const DiscriminantFold& fold) { expected.keep(fold); }),
            Status::Done);
  std::vector<DiscriminantFold> ran(nFolds);
  const auto runHalf = [&](std::int32_t last) {
    for (std::int32_t f = last; f >= 0; f -= 2) ran[static_cast<std::size_t>(f)] = apart.fold(folds.source(), f, {}, f);
  };
  std::thread other(runHalf, nFolds - 1);
  runHalf(nFolds - 2);
  other.join();
  for (const DiscriminantFold& fold : ran) {
    found.keep(fold);
    apart.add(fold);
  }
  EXPECT_TRUE(sameBits(found.numbers, expected.numbers));
  EXPECT_EQ(copied(apart.validation().confusion), copied(inOrder.validation().confusion));
  EXPECT_EQ(copied(apart.validation().timesChosen), copied(inOrder.validation().timesChosen));
}

// Multiplications and additions of each step, counted by hand.
TEST(DiscriminantEngine, AsksWhetherToGoOnInEveryStep) {
  constexpr std::int64_t n = 300, p = 120, g = 3;
  const DaCall call = randomCall(n, p, g, 20240712), wide = randomCall(60, 20'000, g, 20240713);
  const EngineTask own(call), ownWide(wide);
  engine::DiscriminantTask task = own.task, wideTask = ownWide.task;
  const auto expectAsked = [](std::int64_t polls, std::int64_t operations) {
    EXPECT_GE(polls, operations / kBetweenPolls);
  };
  task.rules = {.choice = VariableChoice::Everything};
  Discriminant analysis(task);
  PollCounter fitting, validating, functions, placing;
  ASSERT_EQ(analysis.fit(fitting), Status::Done);
  const std::int64_t pooling = 2 * n * p * p / 2, inverting = 2 * p * p * p, classifying = 2 * n * g * p * p;
  expectAsked(fitting.polls, pooling + inverting + 2 * classifying);
  ASSERT_EQ(analysis.validate(dealtFolds(n, 3).source(), validating), Status::Done);
  EXPECT_EQ(validating.begun, 3);
  expectAsked(validating.polls - 3, 2 * pooling + 3 * inverting + classifying);
  CanonicalModel canonical;
  ASSERT_EQ(analysis.canonical(canonical, functions), Status::Done);
  expectAsked(functions.polls, p * p * p * p);
  Numbers distances(n * g);
  ASSERT_EQ(analysis.place(task.table, {}, distances.data(), n, {}, placing), Status::Done);
  expectAsked(placing.polls, classifying);

  // Scans of all candidates, none of which takes long: variances, one column of covariances, two scans.
  wideTask.rules = {.choice = VariableChoice::Number, .number = 2};
  Discriminant scanning(wideTask);
  PollCounter scans;
  ASSERT_EQ(scanning.fit(scans), Status::Done);
  expectAsked(scans.polls, 60 * 20'000 * (5 + 3) + 20'000 * (g + 2 * 60 * g * 4));
}

}  // namespace
}  // namespace studystats
