#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "numeric/validation.h"
#include "tests/analyses/da_call.h"
#include "tests/analyses/da_examples.h"

namespace studystats {
namespace {

using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;

// Two variables that differ in the rows listed alone. Within every class and every set of rows that a fold of these
// tests trains on without them, the values have mean 0 and squares that sum to a power of two, as n - g is one: the
// variances are 1, their reciprocals exact, and the covariance is exactly singular.
DaCall twins(const Numbers& values, std::int32_t firstClassSize, const Integers& differentRows) {
  DaCall call(static_cast<std::int32_t>(values.size()), 2, 2);
  for (std::size_t i = 0; i < values.size(); ++i) {
    call.classOf[i] = static_cast<std::int32_t>(i) < firstClassSize ? 1 : 2;
    call.data[i] = call.data[i + values.size()] = values[i];
  }
  for (const std::int32_t row : differentRows) call.cell(row - 1, 1) += 1 + 0.25 * row;
  call.selectMode = 2;
  return call;
}

Integers percentagesOf(std::int32_t nReports, std::int32_t nFolds) {
  Integers percentages;
  for (std::int32_t f = 1; f <= nReports; ++f) percentages.push_back(10 + 90 * f / nFolds);
  return percentages;
}

Integers joined(Integers first, const Integers& then) {
  first.insert(first.end(), then.begin(), then.end());
  return first;
}

TEST(DisAnl, ValidatesAnewOneByOneWhenASelectionFailsInAFold) {
  // Group 1 holds the odd rows; the even ones are alike in both variables.
  const Numbers values = {-1, 1, -1, 1, 0, -1, 1, -1, 1, 0, -1, 1, -1, 1, 0, -1, 1, -1, 1, 0};
  const DaCall table = twins(values, 10, {1, 3, 7, 11, 13, 19});
  StoppingHost oneByOneHost(0), host(0);
  DaCall oneByOne = table, call = table;
  oneByOne.monitor = &oneByOneHost.monitor;
  oneByOne.run();
  ASSERT_EQ(oneByOne.status(), 0);
  call.groups = 2;
  call.monitor = &host.monitor;
  call.run();
  EXPECT_EQ(call.status(), 0);
  EXPECT_EQ(host.percentages, joined(percentagesOf(1, 2), percentagesOf(20, 20))) << "fold 1 of 2 fails";
  EXPECT_EQ(core::cvGroups, 0) << "stays so until the next analysis";
  EXPECT_EQ(differences(call, oneByOne), "") << "nothing is left of the first course";
  EXPECT_EQ(call.cvSelCount, (Integers{20, 20}));
}

TEST(DisAnl, EndsWhenTheSelectionFailsInAFoldAgain) {
  // Row 2 is the only one that differs: without it, alone or with the even rows, the variables are alike.
  const Numbers values = {-1, 1, 1, 1, -1, -1, 1, -1, 0, 0, -1, 1, 1, -1, -1, 1, 1, -1, 0};
  const DaCall table = twins(values, 10, {2});
  for (const auto& [groups, reports, courses] :
       {std::tuple{2, joined(percentagesOf(2, 2), percentagesOf(2, 19)), 2}, {0, percentagesOf(2, 19), 1}}) {
    StoppingHost host(0);
    DaCall call = table;
    call.groups = groups;
    call.monitor = &host.monitor;
    call.run();
    EXPECT_EQ(call.status(), 1);
    EXPECT_EQ(host.percentages, reports) << courses;
    EXPECT_EQ(core::cvGroups, groups) << "as the caller asked";
    EXPECT_EQ(call.cvSelCount, (Integers{1, 1})) << "the last course's first fold";
    EXPECT_EQ(call.cvFraction[0], -7.25F);
  }
}

// The outputs of which a call wrote anything, in the order of the arguments.
std::string written(const DaCall& call) {
  std::string names;
  const auto look = [&names](const char* name, const auto& values) {
    for (const auto value : values)
      if (value != static_cast<decltype(value)>(-7.25)) return void(names += std::string(name) + ' ');
  };
  look("modelRows", call.modelRows);
  look("canonVectors", call.canonVectors);
  look("canonValues", call.canonValues);
  look("stepFraction", call.stepFraction);
  look("stepClassFraction", call.stepClassFraction);
  look("cvFraction", call.cvFraction);
  look("cvClassFraction", call.cvClassFraction);
  look("distances", call.distances);
  look("selected", call.selected);
  look("cvSelCount", call.cvSelCount);
  look("selectOrder", call.selectOrder);
  look("confusion", call.confusion);
  look("cvConfusion", call.cvConfusion);
  look("nSteps", Integers{call.nSteps()});
  look("nCanonical", Integers{call.nCanonical()});
  return names;
}

TEST(DisAnl, WritesAtEachStatusWhatItPromises) {
  DaCall done = iris();
  done.run();
  EXPECT_EQ(done.status(), 0);
  EXPECT_EQ(written(done),
            "modelRows canonVectors canonValues stepFraction stepClassFraction cvFraction cvClassFraction distances "
            "selected cvSelCount selectOrder confusion cvConfusion nSteps nCanonical ");

  StoppingHost stopsAtOnce(1);
  DaCall stopped = iris();
  stopped.monitor = &stopsAtOnce.monitor;
  stopped.run();
  EXPECT_EQ(stopped.status(), 999);
  EXPECT_EQ(stopped.goesOn(), 0);
  EXPECT_EQ(written(stopped),
            "modelRows stepFraction stepClassFraction selected cvSelCount selectOrder confusion "
            "cvConfusion nSteps ");
  EXPECT_EQ(stopped.confusion, done.confusion);
  EXPECT_EQ(stopped.cvConfusion, Integers(9, 0));

  // Alike in both variables: the second step meets the pair.
  DaCall singular = twins({-1, 1, -1, 1, 0, 9, 11, 9, 11, 10}, 5, {});
  singular.selectMode = 3;
  singular.run();
  EXPECT_EQ(singular.status(), 1);
  EXPECT_EQ(written(singular), "modelRows stepFraction stepClassFraction selected selectOrder nSteps ");
  EXPECT_EQ(singular.nSteps(), 1);
  EXPECT_EQ(singular.selected, (Integers{1, 0}));

  // Every sample lies nearest to the mean of class 1, which has none.
  DaCall empty(6, 2, 2);
  std::fill_n(empty.classOf.begin(), 6, 2);
  empty.run();
  EXPECT_EQ(empty.status(), 2);
  EXPECT_EQ(written(empty), "modelRows selected nSteps ");
  EXPECT_EQ(empty.nSteps(), 0);

  // Numbers that make no analysis.
  DaCall unknownInModel = iris(), beyond = iris(), asManyClasses(3, 2, 3), noClasses(3, 2, 0), manyClasses(3, 2, 2),
         negative(3, 2, 2), lacking(3, 2, 2);
  unknownInModel.classOf[70] = 0;
  beyond.classOf[149] = 4;
  std::fill_n(asManyClasses.classOf.begin(), 3, 1);
  manyClasses.g = std::numeric_limits<std::int32_t>::max();
  negative.n = -5;
  lacking.p = -1;
  for (DaCall* call : {&unknownInModel, &beyond, &asManyClasses, &noClasses, &manyClasses, &negative, &lacking}) {
    const std::int32_t g = call->g;
    call->g = std::min(g, 3);
    call->clearOutputs();
    call->g = g;
    call->call(DisAnl);
    EXPECT_EQ(call->status(), 1) << call->n << ' ' << call->p << ' ' << g;
    EXPECT_EQ(call->goesOn(), 1);
    EXPECT_EQ(call->nSteps(), 0);
    EXPECT_EQ(written(*call), "nSteps ") << call->n << ' ' << call->p << ' ' << g;
  }
}

// Whether a sample of unknown class stands among the others or not, they fare alike, their groups included: it stands
// behind them in the validation order. The fraction counts it.
TEST(DisAnl, ClassifiesSamplesOfUnknownClassAndNothingElseChanges) {
  const DaCall known = iris();
  const Integers like = {75, 1, 150};  // rows of iris, counted from 1, that the unknown ones repeat
  DaCall call(153, 4, 3);
  for (std::ptrdiff_t i = 0; i < 153; ++i) {
    const std::ptrdiff_t row = i < 3 ? like[static_cast<std::size_t>(i)] - 1 : i - 3;
    for (std::ptrdiff_t j = 0; j < 4; ++j) call.cell(i, j) = known.data[static_cast<std::size_t>(row + j * known.n)];
    call.classOf[static_cast<std::size_t>(i)] = i < 3 ? 0 : known.classOf[static_cast<std::size_t>(row)];
    call.inModel[static_cast<std::size_t>(i)] = i >= 3;
  }
  DaCall alone = known;
  call.groups = alone.groups = 5;
  call.run();
  alone.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(Differences()
                .compare("canonVectors", call.canonVectors, alone.canonVectors)
                .compare("canonValues", call.canonValues, alone.canonValues)
                .compare("stepFraction", call.stepFraction, alone.stepFraction)
                .compare("stepClassFraction", call.stepClassFraction, alone.stepClassFraction)
                .compare("cvClassFraction", call.cvClassFraction, alone.cvClassFraction)
                .compare("selectOrder", call.selectOrder, alone.selectOrder)
                .compare("confusion", call.confusion, alone.confusion)
                .compare("cvConfusion", call.cvConfusion, alone.cvConfusion)
                .names(),
            "");
  EXPECT_FLOAT_EQ(call.cvFraction[0], alone.cvFraction[0] * 150 / 153);
  Integers order = alone.modelRows;
  for (std::int32_t& row : order) row += 3;
  EXPECT_EQ(call.modelRows, joined(order, {1, 2, 3}));
  for (std::size_t i = 0; i < 3; ++i)
    for (std::size_t c = 0; c < 3; ++c)
      EXPECT_EQ(call.distances[i + 153 * c], alone.distances[static_cast<std::size_t>(like[i] - 1) + 150 * c]);
}

TEST(DisAnl, StopsAtAnyReportAndTheNextAnalysisIsAsEver) {
  DaCall reference = wine();
  reference.groups = 6;
  reference.run();
  for (std::int32_t k = 1; k <= 6; ++k) {
    StoppingHost host(k);
    DaCall stopped = wine(), next = wine();
    stopped.groups = next.groups = 6;
    stopped.monitor = &host.monitor;
    stopped.run();
    EXPECT_EQ(stopped.status(), 999);
    EXPECT_EQ(host.percentages, percentagesOf(k, 6));
    EXPECT_EQ(stopped.cvSelCount[6], k - 1) << "flavanoids, which every fold chooses";
    next.run();
    EXPECT_EQ(differences(next, reference), "") << k;
  }
}

// A host may answer a report with another analysis, or change its arrays: that gives no useful result, and no harm.
TEST(DisAnl, OutlivesWhatTheHostDoesMeanwhile) {
  static constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  DaCall call = iris(), other = iris();
  StoppingHost host(0);
  call.monitor = &host.monitor;
  host.meanwhile = [&call](std::size_t) { call.classOf[70] = kMost; };
  call.run();
  EXPECT_EQ(call.status(), 1) << "as a fold that cannot be fitted";

  // The settings of the other one make row 1, which is outside the model, a training row.
  call = iris();
  call.inModel[0] = 0;
  call.classOf[0] = kMost;
  call.monitor = &host.monitor;
  other.method = 2;
  host.meanwhile = [&other](std::size_t) { other.run(); };
  call.run();
  EXPECT_EQ(call.status(), 1);

  call = iris();
  call.monitor = &host.monitor;
  host.meanwhile = [&call](std::size_t) { std::fill(call.cvConfusion.begin(), call.cvConfusion.end(), kMost); };
  call.run();
  EXPECT_EQ(call.status(), 0);
  EXPECT_EQ(call.cvConfusion, Integers(9, kMost)) << "counts do not wrap";
}

// One variable: distances are plain differences, and the canonical function is a placeholder. A class without samples
// has mean 0, and a fraction that is not a number.
TEST(DisAnl, TakesOneVariableAndClassesWithoutSamples) {
  DaCall call(6, 1, 3);
  call.data = {1, 2, 3, 11, 12, 13};
  call.classOf = {1, 1, 1, 3, 3, 3, 0, 0, 0, 0, 0, 0};
  call.run();
  ASSERT_EQ(call.status(), 0);
  EXPECT_EQ(call.distances, (std::vector<float>{1, 0, 1, 9, 10, 11, 1, 2, 3, 11, 12, 13, 11, 10, 9, 1, 0, 1}));
  EXPECT_EQ(Numbers({call.canonVectors[0], call.canonValues[0], double(call.nCanonical())}), Numbers({1, 1, 1}));
  EXPECT_EQ(call.confusion, (Integers{3, 0, 0, 0, 0, 0, 0, 0, 3})) << "1 lies as far from 2 as from 0: the lower class";
  EXPECT_TRUE(std::isnan(call.cvClassFraction[1]) && std::isnan(call.stepClassFraction[1]));
}

}  // namespace
}  // namespace studystats
