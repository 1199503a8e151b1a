// Partial least squares through the host layer, against its own definitions and figures of another program.
#include <studystats/host.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "tests/host/draws.h"

namespace studystats {
namespace {

Table example(const std::string& name) { return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name); }

PartialLeastSquaresOptions gasoline() {
  return {
      .responses = {"octane"}, .components = 8, .folds = Folds::leaveOneOut(), .data = {.scaling = Scaling::Centre}};
}

PartialLeastSquaresOptions oliveOil(const Folds& folds, Scaling scaling = Scaling::Autoscale) {
  return {.responses = {"yellow", "green", "brown", "glossy", "transp", "syrup"},
          .components = 4,
          .folds = folds,
          .data = {.scaling = scaling}};
}

const Remark* remarkOf(const PartialLeastSquares& result, const std::string& code) {
  const auto it = std::find_if(result.remarks.begin(), result.remarks.end(),
                               [&](const Remark& remark) { return remark.code == code; });
  return it == result.remarks.end() ? nullptr : &*it;
}

std::string sentence(const Table& table, const PartialLeastSquaresOptions& options) {
  try {
    partialLeastSquares(table, options);
  } catch (const Error& error) {
    return std::to_string(error.exitStatus()) + ": " + error.what();
  }
  return "nothing was thrown";
}

// PRESS ratios known for these spectra, to three decimals; with and without ten of them kept out.
TEST(PlsOfGasoline, KeepsThreeComponents) {
  PartialLeastSquaresOptions options = gasoline();
  const PartialLeastSquares all = partialLeastSquares(example("gasoline.csv"), options);
  const double ratios[] = {0.860, 0.299, 0.722, 1.030};
  for (std::size_t a = 0; a < 4; ++a) EXPECT_NEAR(all.responses[0].components[a].ratio, ratios[a], 5e-4) << a;
  EXPECT_EQ(all.kept, 3);
  options.data.test.rows.resize(10);
  std::iota(options.data.test.rows.begin(), options.data.test.rows.end(), 50u);
  const PartialLeastSquares fifty = partialLeastSquares(example("gasoline.csv"), options);
  const double fewer[] = {0.877, 0.228, 0.918, 1.100};
  for (std::size_t a = 0; a < 4; ++a) EXPECT_NEAR(fifty.responses[0].components[a].ratio, fewer[a], 5e-4) << a;
  EXPECT_EQ(fifty.kept, 3);
  ASSERT_TRUE(fifty.responses[0].predicted);
  EXPECT_EQ(fifty.responses[0].predicted->rows, 10u);
  const Remark* outside = remarkOf(fifty, "outside-domain");
  ASSERT_NE(outside, nullptr);
  EXPECT_EQ(outside->names.size(), 10u);
  // Its definition: the centring of the training rows alone within each fold.
  EXPECT_NEAR(*fifty.responses[0].centredInsideQ2, 0.9722, 5e-5);
}

// The equation, the scores with their loadings, and the figures are one model.
TEST(Pls, StructureAndEquationAgree) {
  for (const Scaling scaling : {Scaling::Autoscale, Scaling::Centre, Scaling::Pareto, Scaling::Range, Scaling::None}) {
    PartialLeastSquaresOptions options = oliveOil(Folds::leaveOneOut(), scaling);
    options.choice = {.kind = ComponentChoice::Kind::Number, .number = 3};
    const Table table = example("oliveoil.csv");
    const PartialLeastSquares result = partialLeastSquares(table, options);
    ASSERT_EQ(result.kept, 3);
    const double vips = std::inner_product(result.vip.begin(), result.vip.end(), result.vip.begin(), 0.0);
    EXPECT_NEAR(vips, 5, 1e-10) << "their squares sum to the number of descriptors";
    for (std::size_t a = 0; a < 3; ++a)
      for (std::size_t b = 0; b <= a; ++b) {
        double weights = 0, scores = 0, lengths = 0;
        for (std::size_t j = 0; j < 5; ++j) weights += result.weights(j, a) * result.weights(j, b);
        for (const PlsRow& row : result.rows) {
          scores += row.scores[a] * row.scores[b];
          lengths += row.scores[a] * row.scores[a];
        }
        EXPECT_NEAR(weights, a == b ? 1 : 0, 1e-9);
        if (a != b) {
          EXPECT_NEAR(scores / lengths, 0, 1e-6) << "scores are orthogonal";
        }
      }
    for (std::size_t k = 0; k < result.responses.size(); ++k) {
      const PlsResponse& response = result.responses[k];
      double rss = 0, unit = 0;
      for (std::size_t i = 0; i < result.rows.size(); ++i) {
        const PlsRow& row = result.rows[i];
        double byEquation = response.constant, byScores = 0;
        for (std::size_t j = 0; j < 5; ++j)
          byEquation += response.coefficients[j] * table.find(result.used.descriptors[j])->numbers[i];
        for (std::size_t a = 0; a < 3; ++a) byScores += row.scores[a] * result.responseLoadings(k, a);
        unit = scaling == Scaling::Autoscale ? response.sd : 1;
        EXPECT_NEAR(byEquation, row.fitted[k], 1e-9 * (1 + std::abs(response.constant)));
        EXPECT_NEAR(response.mean + unit * byScores, row.fitted[k], 1e-5 * response.sd)
            << "within the iteration's limit";
        rss += std::pow(row.fitted[k] - *row.observed[k], 2);
      }
      EXPECT_NEAR(rss / response.components[2].rss, 1, 1e-9);
    }
  }
}

// Every fold fitted again predicts what the analysis summed up. Draws that hold out some of the rows are weighted up to
// all of them.
void expectHeldOutToMakeThePress(const PartialLeastSquares& result, const std::string& table) {
  for (std::size_t k = 0; k < result.responses.size(); ++k)
    for (std::size_t a = 0; a < static_cast<std::size_t>(result.computed); ++a) {
      double press = 0;
      std::size_t rows = 0, held = 0;
      for (const PlsRow& row : result.rows) {
        if (row.role != Role::Model) continue;
        ++rows;
        if (row.timesHeldOut == 0) continue;
        ++held;
        EXPECT_EQ(row.timesHeldOut, 1u) << table;
        press += std::pow(row.heldOut[k][a] - *row.observed[k], 2);
      }
      press *= static_cast<double>(rows) / static_cast<double>(held);
      EXPECT_NEAR(press / result.responses[k].components[a].press, 1, 1e-9) << table << ' ' << k << ' ' << a;
    }
}

TEST(Pls, HeldOutPredictionsMakeThePress) {
  const struct {
    std::string table;
    PartialLeastSquaresOptions options;
  } cases[] = {{"oliveoil.csv", oliveOil({})},
               {"gasoline.csv", gasoline()},
               {"linnerud.csv", {.responses = {"Weight", "Waist", "Pulse"}, .components = 2}},
               {"bloodbrain.csv", {.responses = {"logBBB"}, .components = 5}},
               {"airquality.csv", {.responses = {"Ozone"}, .components = 3}},
               {"cement.csv", {.responses = {"y"}, .components = 2}},
               {"longley.csv", {.responses = {"Employed"}, .components = 3}},
               {"iris.csv", {.responses = {"Petal.Width"}, .components = 2}},
               {"wine.csv", {.responses = {"alcohol"}, .components = 4}}};
  for (const auto& [name, options] : cases) {
    const Table table = example(name);
    const auto run = [&table, &options = options](const Folds& folds) {
      PartialLeastSquaresOptions asked = options;
      asked.folds = folds;
      return partialLeastSquares(table, asked);
    };
    const Folds loo = table.rows() <= 70 ? Folds::leaveOneOut() : Folds::systematic(11);  // hundreds of folds are slow
    for (const Folds& folds : {Folds::systematic(3), Folds::systematic(7), loo})
      expectHeldOutToMakeThePress(run(folds), name);
    expectHeldOutToMakeThePress(test::withDrawsApart({3, 0.02}, run), name);
  }
}

// d = a + b + c but in the last two rows, one above and one below: a fold that holds both out (the first, dealt along
// y) trains on three dimensions, not four, in the centring of all rows.
TEST(Pls, MarksComponentsBeyondTheRankOfATrainingSet) {
  Table table{.name = "t.csv"};
  table.columns = {{.name = "a", .numbers = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3}},
                   {.name = "b", .numbers = {2, 7, 1, 8, 2, 8, 1, 8, 2, 8}},
                   {.name = "c", .numbers = {1, 4, 1, 4, 2, 1, 3, 5, 6, 2}},
                   {.name = "d", .numbers = {6, 12, 6, 13, 9, 18, 6, 19, 12, 14}},
                   {.name = "y", .numbers = {5, 8, 3, 9, 2, 7, 1.5, 4, 1, 4.5}}};
  for (const Scaling scaling : {Scaling::Autoscale, Scaling::Centre}) {
    const PartialLeastSquares result = partialLeastSquares(table, {.responses = {"y"},
                                                                   .components = 4,
                                                                   .choice = {ComponentChoice::Kind::Number, 0.95, 2},
                                                                   .folds = Folds::systematic(5),
                                                                   .data = {.scaling = scaling}});
    EXPECT_EQ(result.foldsWithout, (std::vector<std::size_t>{0, 0, 0, 1}));
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(result.rows[i].heldOutRank, i >= 8 ? 3u : 4u) << i;
    const Remark* remark = remarkOf(result, "beyond-rank");
    ASSERT_NE(remark, nullptr);
    EXPECT_EQ(remark->severity, Severity::Note) << "the model keeps fewer";
    EXPECT_TRUE(remark->text.starts_with("the training rows of 1 of 5 folds hold no component 4")) << remark->text;
    EXPECT_EQ(reportPage(result).tables.front().columns.back().heading, "folds without it");
  }
}

TEST(Pls, RowsKeptOutChangeNothingButTheirOwnPrediction) {
  Table table = example("oliveoil.csv");
  for (TableColumn& column : table.columns)
    if (column.name == "green") column.numbers[4] = column.numbers[11] = std::nan("");
  const PartialLeastSquares with = partialLeastSquares(table, oliveOil(Folds::systematic(5)));
  for (TableColumn& column : table.columns)
    for (const std::ptrdiff_t row : {11, 4}) {
      if (!column.numbers.empty()) column.numbers.erase(column.numbers.begin() + row);
      if (!column.texts.empty()) column.texts.erase(column.texts.begin() + row);
    }
  const PartialLeastSquares without = partialLeastSquares(table, oliveOil(Folds::systematic(5)));
  ASSERT_EQ(with.rows.size(), 16u);
  for (std::size_t k = 0; k < 6; ++k) {
    EXPECT_EQ(with.responses[k].coefficients, without.responses[k].coefficients);
    EXPECT_EQ(with.responses[k].coefficientErrors, without.responses[k].coefficientErrors);
  }
  for (std::size_t i = 0; i < 14; ++i) EXPECT_EQ(with.rows[i].heldOut, without.rows[i].heldOut);
  EXPECT_EQ(with.rows[15].role, Role::Predicted);
  EXPECT_FALSE(with.rows[15].observed[1]);
  EXPECT_EQ(with.responses[1].predicted, std::nullopt);
}

TEST(Pls, ChoosesComponentsAsAsked) {
  PartialLeastSquaresOptions options = gasoline();
  options.choice.kind = ComponentChoice::Kind::Minimum;
  const PartialLeastSquares least = partialLeastSquares(example("gasoline.csv"), options);
  const std::vector<PlsFigures>& figures = least.responses[0].components;
  for (const PlsFigures& one : figures) EXPECT_LE(figures[static_cast<std::size_t>(least.kept - 1)].press, one.press);
  options.choice = {.kind = ComponentChoice::Kind::Ratio, .limit = 1e-3};
  const PartialLeastSquares none = partialLeastSquares(example("gasoline.csv"), options);
  EXPECT_EQ(none.kept, 1);
  EXPECT_NE(summary(none).find("Chosen: 1 component, although"), std::string::npos);
  options = oliveOil(Folds::leaveOneOut());
  options.components = 50;
  const PartialLeastSquares lowered = partialLeastSquares(example("oliveoil.csv"), options);
  EXPECT_EQ(lowered.computed, 5);
  EXPECT_NE(remarkOf(lowered, "components-lowered"), nullptr);
}

TEST(Pls, RefusesInWords) {
  const Table table = example("oliveoil.csv");
  EXPECT_NE(sentence(table, {}).find("2: --response NAME is missing"), std::string::npos);
  EXPECT_NE(sentence(table, {.responses = {"yelow"}}).find("Did you mean \"yellow\"?"), std::string::npos);
  EXPECT_NE(sentence(table, {.responses = {"yellow", "yellow"}}).find("names yellow twice"), std::string::npos);
  EXPECT_NE(sentence(table, {.responses = {"oil"}}).find("2: "), std::string::npos);
  Table constant = table;
  for (TableColumn& column : constant.columns)
    if (column.name == "brown") std::fill(column.numbers.begin(), column.numbers.end(), 2.5);
  EXPECT_NE(sentence(constant, {.responses = {"yellow", "brown"}}).find("1: brown is 2.5 in every row"),
            std::string::npos);
  EXPECT_THROW(partialLeastSquares(
                   table, {.responses = {"yellow"}, .progress = [](const Progress& p) { return p.stage != "folds"; }}),
               Stopped);
}

}  // namespace
}  // namespace studystats
