// Columns whose squares leave the range of a double, in every analysis: where the preparation divides by the spread
// they change nothing, elsewhere they are refused by name.
//
// Expected: a power of two changes the exponent of a number and no digit, so what does not depend on a column's unit
// comes out the same to the bit, and what is in its unit is multiplied by it.
#include <studystats/host.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace studystats {
namespace {

const double kFactors[] = {std::ldexp(1.0, 512), std::ldexp(1.0, 664), std::ldexp(1.0, -565), std::ldexp(1.0, -664)};

Table example(const std::string& name) { return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name); }

std::vector<double>& numbersOf(Table& table, const std::string& column) {
  return std::find_if(table.columns.begin(), table.columns.end(),
                      [&](const TableColumn& one) { return one.name == column; })
      ->numbers;
}

Table multiplied(Table table, const std::string& column, double factor) {
  for (double& cell : numbersOf(table, column)) cell *= factor;
  return table;
}

using Figures = std::vector<double>;

void add(Figures& figures, const Figures& more, double unit = 1) {
  for (const double figure : more) figures.push_back(figure / unit);
}

// Predictions of the rows that a model was trained on, by the model as a file has it.
void addPredictions(Figures& figures, const Model& model, const Table& table, double unit) {
  for (const Prediction& prediction : Model::parse(model.json(), "model.json").predict(table)) {
    add(figures, prediction.values, unit);
    add(figures, prediction.scores, unit);
    add(figures, prediction.distances);
    figures.push_back(prediction.inDomain() ? 1 : 0);
  }
}

Figures ofRegression(const Table& table, Scaling scaling) {
  const Regression result = regress(table, {.response = "y", .corrLimit = 1, .data = {.scaling = scaling}});
  Figures figures{result.fit.r2, result.validation->q2, *result.conditionNumber};
  for (const RegressionTerm& term : result.terms) figures.push_back(*term.t);
  for (const RegressionRow& row : result.rows) {
    add(figures, {row.fitted, *row.heldOut}, result.fit.s);
    figures.push_back(row.leverage);
  }
  addPredictions(figures, result.model, table, result.fit.s);
  return figures;
}

Figures ofPls(const Table& table, Scaling scaling) {
  const PartialLeastSquares result =
      partialLeastSquares(table, {.responses = {"yellow"}, .components = 3, .data = {.scaling = scaling}});
  Figures figures = result.vip;
  for (const PlsRow& row : result.rows) {
    add(figures, row.fitted, result.responses[0].sd);
    add(figures, {row.t2, row.q / *result.qLimit});
  }
  return figures;
}

Figures ofPca(const Table& table, Scaling scaling) {
  const PrincipalComponents result = principalComponents(table, {.components = 3, .data = {.scaling = scaling}});
  Figures figures = result.loadings.values;
  for (const Component& component : result.components) figures.push_back(component.explained);
  for (const ComponentRow& row : result.rows) add(figures, {row.t2, row.q / *result.qLimit});
  addPredictions(figures, result.model, table, std::sqrt(result.components[0].eigenvalue));
  return figures;
}

Figures ofDiscriminant(const Table& table, Scaling scaling) {
  const Discriminant result =
      discriminate(table, {.classColumn = "Species", .folds = Folds::systematic(5), .data = {.scaling = scaling}});
  Figures figures;
  for (const DiscriminantStep& step : result.steps) add(figures, {step.fraction, step.distances});
  for (const DiscriminantRow& row : result.rows) add(figures, row.distances);
  addPredictions(figures, result.model, table, 1);
  return figures;
}

Figures ofClusters(const Table& table, Scaling scaling) {
  const Clusters result = cluster(table, {.clusters = 3, .data = {.scaling = scaling}});
  Figures figures;
  for (const ClusterRow& row : result.rows) {
    figures.push_back(static_cast<double>(*row.cluster));
    figures.push_back(row.distance / result.clusters[0].farthest);
  }
  return figures;
}

// An analysis of an example table, and what of it does not depend on the unit of a column that is scaled, nor on a unit
// that all columns have in common.
const struct Analysis {
  const char* table;
  const char* column;
  Figures (*figures)(const Table& table, Scaling scaling);
} kAnalyses[] = {{"cement.csv", "x1", ofRegression},
                 {"oliveoil.csv", "Acidity", ofPls},
                 {"wine.csv", "ash", ofPca},
                 {"iris.csv", "Petal.Length", ofDiscriminant},
                 {"iris.csv", "Petal.Length", ofClusters}};

std::string sentence(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& error) {
    return std::to_string(error.exitStatus()) + ": " + error.what();
  }
  return "nothing was thrown";
}

void expectRefused(const std::string& said, const std::string& column, double factor, const std::string& remedy) {
  EXPECT_TRUE(said.starts_with("1: the values of " + column + ", ")) << said;
  EXPECT_NE(said.find(factor > 1 ? "too large to calculate with. " + remedy : "too small to calculate with. " + remedy),
            std::string::npos)
      << said;
}

TEST(Sizes, OfAColumnThatIsScaledChangeNothing) {
  for (const Analysis& analysis : kAnalyses)
    for (const Scaling scaling : {Scaling::Autoscale, Scaling::Range}) {
      const Table table = example(analysis.table);
      const Figures expected = analysis.figures(table, scaling);
      for (const double factor : kFactors)
        EXPECT_EQ(analysis.figures(multiplied(table, analysis.column, factor), scaling), expected)
            << analysis.table << ' ' << factor;
    }
}

TEST(Sizes, ThatAreTakenChangeNothingWhenAllColumnsHaveThem) {
  for (const Analysis& analysis : kAnalyses)
    for (const Scaling scaling : {Scaling::Pareto, Scaling::Centre, Scaling::None}) {
      const Table table = example(analysis.table);
      const int most = analysis.figures == ofDiscriminant ? 94 : 186;  // 1e28, 1e56; even, for square roots
      for (const int power : {most, -most}) {
        Table other = table;
        for (TableColumn& column : other.columns)
          for (double& cell : column.numbers) cell = std::ldexp(cell, power);
        EXPECT_EQ(analysis.figures(other, scaling), analysis.figures(table, scaling)) << analysis.table << ' ' << power;
      }
    }
}

TEST(Sizes, OfAColumnThatIsNotScaledAreRefusedByItsName) {
  for (const Analysis& analysis : kAnalyses)
    for (const double factor : kFactors) {
      const Table table = multiplied(example(analysis.table), analysis.column, factor);
      for (const Scaling scaling : {Scaling::Pareto, Scaling::Centre, Scaling::None})
        expectRefused(sentence([&] { analysis.figures(table, scaling); }), analysis.column, factor,
                      "Try --scale autoscale");
    }
  for (const double factor : kFactors) {  // no scaling can help these
    const std::string multiply = "Multiply the column by a power of ten";
    const Table y = multiplied(example("cement.csv"), "y", factor);
    const Table yellow = multiplied(example("oliveoil.csv"), "yellow", factor);
    const Table beyond = multiplied(multiplied(example("wine.csv"), "ash", factor), "ash", std::sqrt(factor));
    const Table iris = multiplied(example("iris.csv"), "Sepal.Width", factor);
    for (const Scaling scaling : {Scaling::Autoscale, Scaling::None}) {
      expectRefused(sentence([&] { ofRegression(y, scaling); }), "y", factor, multiply);
      expectRefused(sentence([&] { ofPls(yellow, scaling); }), "yellow", factor, multiply);
      expectRefused(sentence([&] { ofPca(beyond, scaling); }), "ash", factor, multiply);
    }
    expectRefused(sentence([&] { cluster(iris, {.distance = Distance::Tanimoto, .clusters = 2}); }), "Sepal.Width",
                  factor, multiply);
  }
}

// The analysis keeps sums of squared residuals of its steps in 32 bits, which end at 1e38.
TEST(Sizes, OfAResponseMultiplyWhatIsInItsUnit) {
  const Table table = example("cement.csv");
  const RegressionOptions options{.response = "y", .corrLimit = 1, .folds = Folds::leaveOneOut()};
  const Regression plain = regress(table, options);
  for (const int power : {80, -80, 160, -160}) {
    const double factor = std::ldexp(1.0, power);
    const Regression result = regress(multiplied(table, "y", factor), options);
    ASSERT_EQ(result.steps.size(), 4u) << "the textbook path";
    for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(result.steps[k].s, factor * plain.steps[k].s) << k;
    EXPECT_EQ(result.fit.sumSqResidual, factor * factor * plain.fit.sumSqResidual);
    EXPECT_EQ(result.validation->press, factor * factor * plain.validation->press);
    EXPECT_EQ(result.validation->q2, plain.validation->q2);
    for (std::size_t a = 0; a < 3; ++a) {
      EXPECT_EQ(result.terms[a].coefficient, factor * plain.terms[a].coefficient);
      EXPECT_EQ(*result.terms[a].standardError, factor * *plain.terms[a].standardError);
      EXPECT_EQ(*result.terms[a].foldSpread, factor * *plain.terms[a].foldSpread);
    }
    EXPECT_EQ(result.equation.text().find("000000"), std::string::npos) << result.equation.text();
  }
  const Table oil = multiplied(example("oliveoil.csv"), "yellow", 1e-20);
  const std::string text = summary(partialLeastSquares(oil, {.responses = {"yellow"}}));
  EXPECT_EQ(text.find("0.00000"), std::string::npos) << text;
}

// A row that is only predicted does not stop a model that is at hand, and is refused where the table is.
TEST(Sizes, OutOfTheReachOfAModelGiveNoPrediction) {
  const double infinity = std::numeric_limits<double>::infinity();
  Table table = example("cement.csv");
  const Model model = regress(table, {.response = "y", .corrLimit = 1}).model;
  numbersOf(table, "x2")[4] = 1e200;
  const std::vector<Prediction> predictions = model.predict(table);
  EXPECT_EQ(predictions[4].missing, "x2");
  EXPECT_FALSE(predictions[4].inDomain());
  EXPECT_TRUE(predictions[5].inDomain());
  EXPECT_EQ(sentence([&] { regress(table, {.response = "y", .data = {.test = {.rows = {4}}}}); }),
            "1: mix 5 has 1e+200 in x2, too far from the rows of the model to calculate with. Correct the cell, or "
            "leave the row out.");

  table = example("cement.csv");
  numbersOf(table, "y")[4] = infinity;  // as an application's memory may hold it: no response
  EXPECT_EQ(regress(table, {.response = "y"}).rows.back().role, Role::Predicted);
  numbersOf(table, "y")[4] = 1e200;
  EXPECT_TRUE(sentence([&] {
                regress(table, {.response = "y", .data = {.test = {.rows = {4}}}});
              }).starts_with("1: the values of y, 72.5 to 1e+200, are too large"));
}

}  // namespace
}  // namespace studystats
