// Stepwise regression through the host layer, against R, certified values and its own definitions.
#include <studystats/analyses.h>
#include <studystats/host.h>
#include <studystats/host/host_monitor.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/analyses/calls.h"
#include "tests/host/documented.h"
#include "tests/host/draws.h"

namespace studystats {
namespace {

Table example(const std::string& name) { return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name); }

std::vector<std::string> stepsOf(const Regression& model) {
  std::vector<std::string> steps;
  for (const SelectionStep& step : model.steps) steps.push_back((step.entered ? "+" : "-") + step.descriptor);
  return steps;
}

std::string sentence(const Table& table, const RegressionOptions& options) {
  try {
    regress(table, options);
  } catch (const Error& error) {
    return std::to_string(error.exitStatus()) + ": " + error.what();
  }
  return "nothing was thrown";
}

// The textbook run: x4, x1, x2 enter, x4 leaves. Draper & Smith, Applied Regression Analysis; figures of the final fit
// from R 4.2.2, lm(y ~ x1 + x2): summary, confint, hatvalues, rstandard, and VIF as 1 / (1 - R2 of x1 on x2).
TEST(RegressionOfCement, TakesTheTextbookPathAndAgreesWithR) {
  const Regression model =
      regress(example("cement.csv"), {.response = "y", .corrLimit = 1, .folds = Folds::leaveOneOut()});
  EXPECT_EQ(stepsOf(model), (std::vector<std::string>{"+x4", "+x1", "+x2", "-x4"}));
  EXPECT_NEAR(*model.steps[0].partialF, 22.80, 0.005);
  EXPECT_NEAR(*model.steps[3].partialF, 1.86, 0.005);
  ASSERT_EQ(model.terms.size(), 3u);
  const double coefficients[] = {52.5773488821, 1.46830574222, 0.662250491275};
  const double errors[] = {2.28617433450, 0.121300923606, 0.0458547214685};
  const double ps[] = {5.45657090149e-10, 2.69221217969e-07, 5.02896031564e-08};
  for (std::size_t a = 0; a < 3; ++a) {
    EXPECT_NEAR(model.terms[a].coefficient / coefficients[a], 1, 1e-10) << a;
    EXPECT_NEAR(*model.terms[a].standardError / errors[a], 1, 1e-10) << a;
    EXPECT_NEAR(*model.terms[a].p, ps[a], 2e-7) << a;
  }
  EXPECT_NEAR(*model.terms[1].vif, 1.055128985, 1e-8);
  EXPECT_NEAR(*model.terms[1].halfWidth, (1.73858104288 - 1.19803044155) / 2, 1e-9);
  EXPECT_NEAR(model.fit.s, 2.40633503852, 1e-10);
  EXPECT_NEAR(model.fit.r2, 0.978678374536, 1e-11);
  EXPECT_NEAR(model.rows[0].leverage, 0.251193306987, 1e-11);
  EXPECT_NEAR(*model.rows[2].standardised, -0.670609515328, 1e-10);
  ASSERT_TRUE(model.validation);
  EXPECT_NEAR(model.validation->press, 149.10, 0.005);  // published for leave-one-out of the whole selection
  EXPECT_NEAR(*model.validation->fixedSetQ2, 1 - 93.8825464259 / model.fit.sumSqTotal,
              1e-10);  // sum (e / (1 - h))^2, R
  EXPECT_EQ(model.plan.folds, 13u);
}

// NIST StRD, Longley: certified values; the example holds R's units, powers of ten apart.
TEST(RegressionOfLongley, HasTheCertifiedCoefficients) {
  const Regression model =
      regress(example("longley.csv"), {.response = "Employed", .selection = Selection::All, .corrLimit = 1});
  const double certified[] = {-3482258.63459582, 15.0618722713733,       -0.358191792925910E-01, -2.02022980381683,
                              -1.03322686717359, -0.511041056535807E-01, 1829.15146461355};
  const double certifiedErrors[] = {890420.383607373,  84.9149257747669,  0.334910077722432E-01, 0.488399681651699,
                                    0.214274163161675, 0.226073200069370, 455.478499142212};
  const double unit[] = {1e-3, 1e-3, 1, 1e-2, 1e-2, 1, 1e-3};
  for (std::size_t a = 0; a < 7; ++a) {
    EXPECT_NEAR(model.terms[a].coefficient / (certified[a] * unit[a]), 1, 1e-9) << a;
    EXPECT_NEAR(*model.terms[a].standardError / (certifiedErrors[a] * unit[a]), 1, 1e-9) << a;
  }
  EXPECT_TRUE(
      std::any_of(model.remarks.begin(), model.remarks.end(), [](const Remark& r) { return r.code == "collinear"; }));
}

// Every fold run again: its own selection predicts the rows that it held out, and the squares add up to PRESS. Draws
// that hold out some of the rows are weighted up to all of them.
void expectHeldOutToMakeThePress(const Regression& model, const char* table) {
  ASSERT_TRUE(model.validation) << table;
  double press = 0;
  std::size_t rows = 0, held = 0;
  for (const RegressionRow& row : model.rows) {
    if (row.role != Role::Model) continue;
    ++rows;
    if (row.timesHeldOut == 0) continue;
    ++held;
    EXPECT_EQ(row.timesHeldOut, 1u) << table;
    EXPECT_GE(row.fold, 1u);
    press += std::pow(*row.heldOut - *row.observed, 2);
  }
  press *= static_cast<double>(rows) / static_cast<double>(held);
  EXPECT_NEAR(press / model.validation->press, 1, 1e-9) << table << ' ' << model.plan.folds;
}

TEST(Regression, HeldOutPredictionsMakeThePress) {
  const struct {
    const char* table;
    const char* response;
  } cases[] = {{"bloodbrain.csv", "logBBB"}, {"airquality.csv", "Ozone"}, {"cement.csv", "y"},
               {"longley.csv", "Employed"},  {"linnerud.csv", "Waist"},   {"iris.csv", "Petal.Width"},
               {"wine.csv", "alcohol"},      {"oliveoil.csv", "glossy"},  {"gasoline.csv", "octane"}};
  for (const auto& one : cases) {
    const Table table = example(one.table);
    const auto run = [&](const Folds& folds) {
      return regress(table, {.response = one.response, .maxSteps = 8, .folds = folds});
    };
    const Folds loo = table.rows() <= 70 ? Folds::leaveOneOut() : Folds::systematic(11);  // hundreds of folds are slow
    for (const Folds& folds : {Folds::systematic(3), Folds::systematic(7), loo})
      expectHeldOutToMakeThePress(run(folds), one.table);
    expectHeldOutToMakeThePress(test::withDrawsApart({3, 0.02}, run), one.table);
  }
  const Regression random =
      regress(example("bloodbrain.csv"), {.response = "logBBB", .folds = Folds::random({12, 0.2}, 3)});
  std::size_t held = 0, never = 0;
  for (const RegressionRow& row : random.rows) {
    held += row.timesHeldOut;
    never += row.heldOut ? 0 : 1;
  }
  EXPECT_EQ(held, 12u * 42u) << "208 rows, a fifth of them a draw";
  EXPECT_EQ(never, static_cast<std::size_t>(std::count_if(random.rows.begin(), random.rows.end(),
                                                          [](const auto& row) { return row.timesHeldOut == 0; })));
}

TEST(Regression, ThatCannotBeValidatedShowsNoFigure) {
  Table table{.name = "t.csv"};
  table.columns = {{.name = "x", .numbers = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3}},
                   {.name = "a", .numbers = {1, 4, 2, 8, 5, 7, 1, 3, 2, 6}},
                   {.name = "b", .numbers = {1, 4, 2, 8, 5, 7, 1, 3, 2, 9}},  // equals a but for the last row
                   {.name = "y", .numbers = {2, 7, 1, 8, 2, 8, 1, 8, 2, 8}}};
  for (const Scaling scaling : {Scaling::None, Scaling::Autoscale}) {
    const Regression model = regress(table, {.response = "y",
                                             .selection = Selection::All,
                                             .corrLimit = 1,
                                             .folds = Folds::leaveOneOut(),
                                             .data = {.scaling = scaling}});
    ASSERT_FALSE(model.validation);
    EXPECT_NE(model.validation.error().find("a, b identical in its rows"), std::string::npos)
        << model.validation.error();
    EXPECT_NE(summary(model).find("not validated"), std::string::npos);
    EXPECT_EQ(summary(model).find("PRESS"), std::string::npos);
    EXPECT_NE(toJson(model).find("\"q2\": null"), std::string::npos);
    for (const RegressionTerm& term : model.terms) EXPECT_FALSE(term.foldSpread);
  }
}

TEST(Regression, IsUntouchedByRowsWithoutAResponse) {
  const Table plain = example("cement.csv");
  Table more = plain;
  for (TableColumn& column : more.columns) {
    if (column.kind == ColumnKind::Text)
      column.texts.push_back("new mix");
    else
      column.numbers.push_back(column.name == "y" ? std::numeric_limits<double>::quiet_NaN() : 20);
  }
  const Regression a = regress(plain, {.response = "y"}), b = regress(more, {.response = "y"});
  EXPECT_EQ(a.validation->q2, b.validation->q2);
  for (std::size_t i = 0; i < a.rows.size(); ++i) EXPECT_EQ(a.rows[i].fitted, b.rows[i].fitted);
  ASSERT_EQ(b.rows.size(), a.rows.size() + 1);
  EXPECT_EQ(b.rows.back().role, Role::Predicted);
  EXPECT_NEAR(b.rows.back().fitted, b.equation.evaluate(std::vector<double>(b.equation.terms.size(), 20)), 1e-9);
}

TEST(Regression, GivesTheSameEquationForEveryPreparation) {
  const Table table = example("bloodbrain.csv");
  const Regression model = regress(table, {.response = "logBBB", .maxSteps = 12});
  for (const Scaling scaling : {Scaling::None, Scaling::Centre, Scaling::Pareto, Scaling::Range}) {
    const Regression other = regress(table, {.response = "logBBB", .maxSteps = 12, .data = {.scaling = scaling}});
    ASSERT_EQ(stepsOf(other), stepsOf(model));
    for (std::size_t a = 0; a < model.terms.size(); ++a)
      EXPECT_NEAR(other.terms[a].coefficient / model.terms[a].coefficient, 1, 1e-8) << model.terms[a].name;
    EXPECT_NEAR(other.validation->q2, model.validation->q2, 1e-9);
  }
  for (std::size_t i = 0; i < model.rows.size(); ++i) {  // the equation on the table's own numbers
    std::vector<double> values;
    for (const Equation::Term& term : model.equation.terms) values.push_back(table.find(term.name)->numbers[i]);
    EXPECT_NEAR(model.equation.evaluate(values), model.rows[i].fitted, 1e-12 * 2.15) << i;  // |logBBB| reaches 2.15
  }
}

TEST(RandomFolds, AreRepeatedByTheirSeedAlone) {
  const Table table = example("cement.csv");
  const auto q2 = [&](std::int32_t seed) {
    return regress(table, {.response = "y", .folds = Folds::random({.draws = 30, .heldOut = 0.25}, seed)})
        .validation->q2;
  };
  const double first = q2(1), other = q2(2);
  EXPECT_NE(first, other);
  EXPECT_EQ(first, q2(1));
}

TEST(Regression, StopsAtAnyReportAndRunsAgainAsIfNothingHadBeen) {
  const Table table = example("cement.csv");
  std::size_t reports = 0;
  const Regression whole =
      regress(table, {.response = "y", .progress = [&](const Progress&) { return ++reports > 0; }});
  EXPECT_GT(reports, whole.plan.folds);
  for (std::size_t stopAt = 1; stopAt <= reports; ++stopAt) {
    std::size_t seen = 0;
    EXPECT_THROW(regress(table, {.response = "y", .progress = [&](const Progress&) { return ++seen < stopAt; }}),
                 Stopped);
    EXPECT_EQ(seen, stopAt);
  }
  struct Upset {};
  EXPECT_THROW(
      regress(table, {.response = "y",
                      .progress = [](const Progress& p) { return p.stage == "folds" ? throw Upset() : true; }}),
      Upset);
  EXPECT_EQ(regress(table, {.response = "y"}).validation->press, whole.validation->press);
}

// An analysis neither waits for one that runs, nor moves the generator that the application draws from.
TEST(Regression, SharesNothingWithTheApplication) {
  const Table table = example("cement.csv");
  const RegressionOptions drawn{.response = "y", .folds = Folds::random({.draws = 6, .heldOut = 0.25}, 3)};
  const double alone = regress(table, drawn).validation->press;
  Nmrrst();
  Nmrand(7);
  const float next = Nmrand(0);
  Nmrrst();
  Nmrand(7);
  double within = 0;
  RegressionOptions outer = drawn;
  outer.progress = [&](const Progress& progress) {
    if (progress.stage == "folds" && progress.done == 2) within = regress(table, drawn).validation->press;
    return true;
  };
  EXPECT_EQ(regress(table, outer).validation->press, alone);
  EXPECT_EQ(within, alone);
  EXPECT_EQ(Nmrand(0), next);
}

TEST(Regression, ReportsToAnApplicationsOwnWindow) {
  const Table table = example("cement.csv");
  StoppingHost patient(0), impatient(3);
  regress(table, {.response = "y", .progress = fromHostMonitor(patient.window())});
  EXPECT_EQ(patient.percentages.back(), 100);
  EXPECT_GE(patient.percentages.front(), 10);
  EXPECT_TRUE(std::is_sorted(patient.percentages.begin(), patient.percentages.end()));
  EXPECT_THROW(regress(table, {.response = "y", .progress = fromHostMonitor(impatient.window())}), Stopped);
  EXPECT_EQ(impatient.percentages.size(), 3u);
}

TEST(Regression, RefusesWithASentence) {
  const Table cement = example("cement.csv");
  Table flat = cement, few = cement;
  flat.columns.back().numbers.assign(13, 5);
  for (std::size_t i = 2; i < 13; ++i) few.columns.back().numbers[i] = std::numeric_limits<double>::quiet_NaN();
  const std::pair<std::string, std::string> cases[] = {
      {sentence(cement, {}), "2: --response NAME is missing"},
      {sentence(cement, {.response = "Y"}), "2: "},
      {sentence(cement, {.response = "mix"}), "2: column \"mix\" of "},
      {sentence(flat, {.response = "y"}), "1: y is 5 in every row of the model"},
      {sentence(few, {.response = "y"}), "1: too few rows"},
      {sentence(cement, {.response = "y", .folds = Folds::systematic(1)}), "2: --folds 1 leaves nothing"},
      {sentence(cement, {.response = "y", .folds = Folds::random({.heldOut = 0.9})}), "2: --folds random holds out"},
      {sentence(cement, {.response = "y", .fEnter = 0}), "2: --f-enter 0 lets everything in"},
      {sentence(cement, {.response = "y", .maxSteps = 0}), "2: --max-steps 0 leaves no step"},
      {sentence(cement, {.response = "y", .data = {.columns = {"x1", "y"}}}), "2: column \"y\" cannot be a descriptor"},
  };
  for (const auto& [said, expected] : cases) EXPECT_TRUE(said.starts_with(expected)) << said << "\nwanted " << expected;
  const Regression all = regress(cement, {.response = "y", .folds = Folds::systematic(13)});
  EXPECT_EQ(all.plan.kind, Folds::Kind::LeaveOneOut);
}

TEST(Regression, WritesTheJsonThatIsDocumented) {
  test::Documented document("mlr");
  const Table blood = example("bloodbrain.csv"), air = example("airquality.csv"), cement = example("cement.csv");
  document.compare(toJson(regress(blood, {.response = "logBBB", .maxSteps = 12, .data = {.test = {.rows = {3, 5}}}})));
  document.compare(toJson(regress(air, {.response = "Ozone",
                                        .folds = Folds::random({5, 0.2}),
                                        .data = {.transforms = {{.column = "Wind"}}, .derivations = {{}}}})));
  document.compare(toJson(regress(air, {.response = "Ozone", .data = {.missing = {.rule = Missing::Rule::FillMean}}})));
  document.compare(
      toJson(regress(cement, {.response = "y", .selection = Selection::All, .folds = Folds::leaveOneOut()})));
  Table twins = cement;  // rows held out leave two columns equal: not validated
  twins.columns.push_back({.name = "x5", .numbers = twins.find("x4")->numbers});
  twins.columns.back().numbers.back() += 1;
  const Regression abandoned =
      regress(twins, {.response = "y", .selection = Selection::All, .corrLimit = 1, .folds = Folds::leaveOneOut()});
  ASSERT_FALSE(abandoned.validation);
  document.compare(toJson(abandoned));
  document.expectAllSeen();
}

}  // namespace
}  // namespace studystats
