// Principal components through the host layer, against R and against their own definitions.
#include <studystats/host.h>

#include "host/watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace studystats {
namespace {

Table example(const std::string& name) { return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name); }

const ComponentRow& rowNamed(const PrincipalComponents& pca, const std::string& name) {
  return *std::find_if(pca.rows.begin(), pca.rows.end(), [&](const ComponentRow& row) { return row.name == name; });
}

std::size_t beyond(const PrincipalComponents& pca, double ComponentRow::*distance, double limit) {
  return static_cast<std::size_t>(
      std::count_if(pca.rows.begin(), pca.rows.end(), [&](const ComponentRow& row) { return row.*distance > limit; }));
}

// Expected: R 4.2.2, prcomp(wine[, 2:14], scale. = TRUE), qf and qchisq for the limits.
TEST(PrincipalComponentsOfWine, AgreeWithR) {
  const PrincipalComponents pca = principalComponents(example("wine.csv"), {.components = 3});
  const double eigenvalues[] = {4.705850252990, 2.496973733411, 1.446071969713, 0.918973923753, 0.853228178354};
  for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(pca.components[k].eigenvalue, eigenvalues[k], 1e-11) << k;
  EXPECT_NEAR(pca.explained(0, 2), 0.7443086112, 1e-9);
  EXPECT_NEAR(pca.explained(1, 2), 0.4206907178, 1e-9);
  EXPECT_NEAR(*pca.t2Limit, 8.10505233276, 1e-9);
  EXPECT_NEAR(*pca.qLimit, 11.8862296983, 1e-8);
  EXPECT_NEAR(rowNamed(pca, "wine 122").t2, 20.051060908, 1e-8);
  EXPECT_NEAR(rowNamed(pca, "wine 96").q, 24.53328045, 1e-7);
  EXPECT_EQ(beyond(pca, &ComponentRow::t2, *pca.t2Limit), 5u);
  EXPECT_EQ(beyond(pca, &ComponentRow::q, *pca.qLimit), 9u);
  EXPECT_EQ(pca.aboveOne, 3);
  EXPECT_EQ(pca.aboveBrokenStick, 2);  // 0.362 > 0.245, 0.192 > 0.168, 0.111 < 0.129: sums of 1/i by hand
  EXPECT_EQ(pca.used.idColumn, "wine");
}

// Expected: R 4.2.2, prcomp of rows 1-150, the others centred and scaled with its center and scale.
TEST(PrincipalComponentsOfWine, PlaceRowsKeptOutAsRDoes) {
  PrincipalComponentsOptions options{.components = 2};
  for (std::size_t i = 150; i < 178; ++i) options.data.test.rows.push_back(i);
  const PrincipalComponents pca = principalComponents(example("wine.csv"), options);
  EXPECT_NEAR(pca.components[0].eigenvalue, 4.65493501116, 1e-10);
  const ComponentRow& row = rowNamed(pca, "wine 178");
  EXPECT_EQ(row.role, Role::Predicted);
  EXPECT_NEAR(std::abs(row.scores[0]), 2.30858069898, 1e-10);
  EXPECT_NEAR(std::abs(row.scores[1]), 4.47435542252, 1e-10);
}

TEST(PrincipalComponentsOfIris, KeepTheClassOutAndGiveItsMeans) {
  const PrincipalComponents pca =
      principalComponents(example("iris.csv"), {.classColumn = "Species", .data = {.scaling = Scaling::Centre}});
  // Published for the centred iris measurements: 4.228, 0.243, 0.0782, 0.0238; here with R's digits.
  const double eigenvalues[] = {4.2282417060349, 0.2426707479286, 0.0782095000429, 0.0238350929734};
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(pca.components[k].eigenvalue, eigenvalues[k], 1e-12) << k;
  EXPECT_FALSE(pca.aboveOne);
  ASSERT_EQ(pca.groups.size(), 3u);
  EXPECT_EQ(pca.groups[0].label, "setosa");
  for (std::size_t k = 0; k < 2; ++k) {  // centred scores: the groups' means balance
    double sum = 0;
    for (const ComponentGroup& group : pca.groups) sum += static_cast<double>(group.rows) * group.meanScores[k];
    EXPECT_NEAR(sum, 0, 1e-10);
  }
}

// A row only predicted changes no bit of anything but its own line.
TEST(PrincipalComponents, AreUntouchedByRowsThatAreOnlyPlaced) {
  const Table wine = example("wine.csv");
  Table longer = wine;
  std::mt19937_64 random(7);
  for (TableColumn& column : longer.columns) {
    if (column.kind == ColumnKind::Text) {
      column.texts.insert(column.texts.begin() + 40, "stranger");
      column.texts.push_back("stranger 2");
    } else {
      column.numbers.insert(column.numbers.begin() + 40, std::uniform_real_distribution(-1e6, 1e6)(random));
      column.numbers.push_back(std::numeric_limits<double>::quiet_NaN());
    }
  }
  for (const Missing::Rule rule : {Missing::Rule::DropRows, Missing::Rule::DropColumns, Missing::Rule::FillMean}) {
    const PrincipalComponentsOptions options{.components = 4, .data = {.missing = {.rule = rule}}};
    PrincipalComponentsOptions withStrangers = options;
    withStrangers.data.test.rows = {40, 179};
    const PrincipalComponents plain = principalComponents(wine, options);
    const PrincipalComponents more = principalComponents(longer, withStrangers);
    EXPECT_EQ(plain.loadings.values, more.loadings.values);
    EXPECT_EQ(plain.t2Limit, more.t2Limit);
    EXPECT_EQ(plain.qLimit, more.qLimit);
    EXPECT_EQ(plain.used.scale, more.used.scale);
    for (std::size_t i = 0; i < plain.rows.size(); ++i) {
      EXPECT_EQ(plain.rows[i].scores, more.rows[i].scores) << i;
      EXPECT_EQ(plain.rows[i].q, more.rows[i].q) << i;
    }
    EXPECT_EQ(more.rows.back().role, Role::Predicted);
  }
}

TEST(PrincipalComponents, OfMoreColumnsThanRowsLeaveNoResidualsAndNoLimits) {
  Table table{.name = "wide"};
  std::mt19937_64 random(11);
  std::normal_distribution<double> normal;
  for (int j = 0; j < 12; ++j) {
    TableColumn column{.name = "x" + std::to_string(j)};
    for (int i = 0; i < 5; ++i) column.numbers.push_back(normal(random));
    table.columns.push_back(column);
  }
  const PrincipalComponents pca = principalComponents(table, {.components = 50});
  EXPECT_EQ(pca.supported, 4);
  EXPECT_EQ(pca.kept, 4);
  EXPECT_EQ(pca.remarks.back().code, "components-lowered");
  EXPECT_TRUE(pca.t2Limit.has_value());  // 5 rows, 4 components
  EXPECT_FALSE(pca.qLimit.has_value());
  for (const ComponentRow& row : pca.rows) EXPECT_LT(row.q, 1e-20);
  for (std::size_t j = 0; j < 12; ++j) EXPECT_NEAR(pca.explained(j, 3), 1, 1e-12);
}

// Columns of a two-level design do not correlate, so that each eigenvalue is 1; two columns of r = 1/2 have 3/2 and
// 1/2, and of a stick in two pieces the longer one is 3/4 on average. Units in which the levels are rounded move them.
TEST(PrincipalComponents, CountNoEigenvalueThatRoundingAloneTakesAboveAMark) {
  for (const double unit : {1.0, 0.1, 0.3, 0.7, 1.1, 3.3, 1e-5, 123.456}) {
    Table design{.name = "design.csv"}, related = design;
    for (const unsigned effect : {1u, 2u, 4u, 3u, 7u}) {
      TableColumn& column = design.columns.emplace_back();
      column.name = std::to_string(effect);
      for (unsigned row = 0; row < 8; ++row)
        column.numbers.push_back(unit * (effect + (std::popcount(row & effect) % 2 == 0 ? 1.0 : -1.0)));
    }
    related.columns = {{.name = "a", .numbers = {101 * unit, 99 * unit, 100 * unit}},
                       {.name = "b", .numbers = {303 * unit, 300 * unit, 297 * unit}}};
    const PrincipalComponents five = principalComponents(design), two = principalComponents(related);
    EXPECT_EQ(five.aboveOne, 0) << unit;
    EXPECT_EQ(five.kept, 4) << "four of five explain the 80 % that are wanted; " << unit;
    EXPECT_EQ(two.aboveOne, 1) << unit;
    EXPECT_EQ(two.aboveBrokenStick, 0) << unit;
  }
}

TEST(PrincipalComponents, RefuseWhatTheyCannotDoWithASentence) {
  const Table wine = example("wine.csv");
  Table one = wine;
  for (TableColumn& column : one.columns) {
    column.numbers.erase(column.numbers.begin() + !column.numbers.empty(), column.numbers.end());
    column.texts.erase(column.texts.begin() + !column.texts.empty(), column.texts.end());
  }
  const auto sentence = [](const Table& table, const PrincipalComponentsOptions& options) -> std::string {
    try {
      principalComponents(table, options);
    } catch (const Error& error) {
      return std::to_string(error.exitStatus()) + ": " + error.what();
    }
    return "nothing was thrown";
  };
  EXPECT_TRUE(sentence(one, {}).starts_with("1: too few rows")) << sentence(one, {});
  EXPECT_TRUE(sentence(wine, {.data = {.exclude = {"*"}}}).starts_with("1: no descriptor is left"));
  EXPECT_TRUE(sentence(wine, {.components = -1}).starts_with("2: --components -1"));
  EXPECT_TRUE(sentence(wine, {.level = 1.0}).starts_with("2: --level 1"));
}

TEST(PrincipalComponents, ReportProgressThatNeverFallsAndStopAtAnyReport) {
  const Table wine = example("wine.csv");
  std::vector<double> percents;
  principalComponents(wine, {.progress = [&](const Progress& p) { return percents.push_back(p.percent), true; }});
  EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
  EXPECT_EQ(percents.front(), 0);
  EXPECT_EQ(percents.back(), 100);
  for (std::size_t stopAt = 1; stopAt <= percents.size(); ++stopAt) {
    std::size_t seen = 0;
    EXPECT_THROW(principalComponents(wine, {.progress = [&](const Progress&) { return ++seen < stopAt; }}), Stopped);
    EXPECT_EQ(seen, stopAt);
  }
  struct Token {
    bool stop_requested() const { return true; }
  };
  EXPECT_THROW(principalComponents(wine, {.stop = Token()}), Stopped);
}

// Folds that begin become reports, what lies between them is heard without one, and exceptions go straight through.
TEST(EngineWatch, CarriesTheCallersAnswerToTheEngine) {
  struct Upset {};
  std::vector<double> percents;
  const ProgressCallback callback = [&](const Progress& p) {
    percents.push_back(p.percent);
    EXPECT_EQ(p.text, "fold " + std::to_string(p.done + 1) + " of 4");
    if (p.done == 2) throw Upset();
    return true;
  };
  const StopSignal never;
  Watch watch(callback, never);
  EngineWatch asked(watch, "folds", 20, 80);
  const auto begins = [](std::int32_t fold) { return engine::Progress{fold, 4, true}; };
  EXPECT_TRUE(asked(begins(1)));
  EXPECT_TRUE(asked(begins(2)));
  EXPECT_TRUE(asked({2, 4, false}));  // too soon for another word
  EXPECT_THROW(asked(begins(3)), Upset);
  EXPECT_EQ(percents, (std::vector<double>{20, 35, 50}));
}

}  // namespace
}  // namespace studystats
