// Discriminant analysis through the host layer, against published figures and brute force.
#include <studystats/engine.h>
#include <studystats/host.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

#include "host/da/canonical.h"
#include "host/da/run.h"
#include "tests/host/draws.h"

namespace studystats {
namespace {

Table example(const std::string& name) {
  return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name, {.asText = {"cultivar"}});
}

DiscriminantOptions ofClass(const std::string& column, Folds folds = {}) {
  return {.classColumn = column, .folds = folds};
}

const Remark* remarkOf(const Discriminant& result, const std::string& code) {
  const auto it = std::find_if(result.remarks.begin(), result.remarks.end(),
                               [&](const Remark& remark) { return remark.code == code; });
  return it == result.remarks.end() ? nullptr : &*it;
}

std::string sentence(const Table& table, const DiscriminantOptions& options) {
  try {
    discriminate(table, options);
  } catch (const Error& error) {
    return std::to_string(error.exitStatus()) + ": " + error.what();
  }
  return "nothing was thrown";
}

// Squared distances between the classes of iris: SAS/STAT User's Guide, PROC DISCRIM and CANDISC examples (89.86419,
// 179.38471, 17.20107). Coefficients and roots: R, MASS::lda(Species ~ ., iris), svd 48.642644, 4.579983; the
// eigenvalue is svd^2 (g - 1) / (n - g).
TEST(DiscriminantOfIris, HasThePublishedDistancesAndDirections) {
  DiscriminantOptions options = ofClass("Species", Folds::leaveOneOut());
  options.selection = {ClassSelection::Kind::All};
  const Discriminant iris = discriminate(example("iris.csv"), options);
  ASSERT_EQ(iris.chosen, (std::vector<std::string>{"Sepal.Length", "Sepal.Width", "Petal.Length", "Petal.Width"}));
  ASSERT_EQ(iris.functions.size(), 2u);
  EXPECT_NEAR(iris.functions[0].eigenvalue, 48.642644 * 48.642644 * 2 / 147, 1e-5);
  EXPECT_NEAR(iris.functions[1].eigenvalue, 4.579983 * 4.579983 * 2 / 147, 1e-6);
  const double published[2][4] = {{0.8293776, 1.5344731, -2.2012117, -2.8104603},
                                  {0.02410215, 2.16452123, -0.93192121, 2.83918785}};
  for (std::size_t k = 0; k < 2; ++k) {
    const double sign = iris.functions[k].coefficients[1] > 0 ? 1 : -1;
    for (std::size_t a = 0; a < 4; ++a)
      EXPECT_NEAR(sign * iris.functions[k].coefficients[a], published[k][a], 5e-7) << k << ' ' << a;
  }
  // Between class means the canonical scores are as far apart as the classes are.
  const double squared[3][3] = {{0, 89.86419, 179.38471}, {89.86419, 0, 17.20107}, {179.38471, 17.20107, 0}};
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t d = 0; d < 3; ++d) {
      double sum = 0;
      for (std::size_t k = 0; k < 2; ++k) sum += std::pow(iris.classes[c].scores[k] - iris.classes[d].scores[k], 2);
      EXPECT_NEAR(sum, squared[c][d], 1e-5);
    }
  ASSERT_TRUE(iris.validation);
  EXPECT_EQ(iris.validation->confusion.correct(), 147u);  // R, MASS::lda(..., CV = TRUE): 71, 84, 134 are wrong
  std::vector<std::string> wrong;
  for (const DiscriminantRow& row : iris.rows)
    if (row.heldOutClass != row.known) wrong.push_back(row.name);
  EXPECT_EQ(wrong, (std::vector<std::string>{"flower 71", "flower 84", "flower 134"}));
}

// Scores and distances are one geometry: with every canonical function kept, the distance of a row to a class mean
// exceeds that of their scores by what lies outside the functions, the same for every class.
TEST(Discriminant, ScoresAndDistancesAgree) {
  const Discriminant wine = discriminate(example("wine.csv"), ofClass("cultivar"));
  for (const DiscriminantRow& row : wine.rows) {
    std::vector<double> outside;
    double posteriors = 0;
    for (std::size_t c = 0; c < 3; ++c) {
      double sum = row.distances[c] * row.distances[c];
      for (std::size_t k = 0; k < 2; ++k) sum -= std::pow(row.scores[k] - wine.classes[c].scores[k], 2);
      outside.push_back(sum);
      posteriors += row.posteriors[c];
    }
    EXPECT_NEAR(outside[1], outside[0], 1e-8) << row.name;
    EXPECT_NEAR(outside[2], outside[0], 1e-8) << row.name;
    EXPECT_NEAR(posteriors, 1, 1e-12) << row.name;
  }
}

// The analysis's own eigenvalues and vectors, in its whitened coordinates, against those found again by the host.
TEST(Discriminant, FindsTheCanonicalProblemOfTheAnalysisAgain) {
  const Table table = example("wine.csv");
  const DiscriminantOptions options = ofClass("cultivar");
  const ProgressCallback nobody;
  const StopSignal never;
  Watch watch(nobody, never);
  const PreparedDiscriminant prepared = prepareDiscriminant(table, options, watch);
  std::vector<std::int32_t> classOf = prepared.classOf;
  for (std::int32_t& c : classOf) --c;
  const Grid& model = prepared.data.model;
  const auto n = static_cast<std::int32_t>(model.rows);
  const engine::Table rows{model.values.data(), n, 13, n};
  engine::Discriminant analysis(
      {.table = rows, .classOf = classOf, .classes = 3, .rules = {.choice = engine::VariableChoice::Everything}});
  engine::CanonicalModel canonical;
  ASSERT_EQ(analysis.fit(), engine::Status::Done);
  ASSERT_EQ(analysis.canonical(canonical), engine::Status::Done);
  const FittedClassifier fitted = fitClassifier(prepared, {.kind = ClassSelection::Kind::All}, watch, 0, 1);
  const CanonicalSpace space(model, prepared.classOf, 3, fitted.chosen);
  ASSERT_EQ(canonical.eigenvalues.size(), 2u);
  for (std::size_t k = 0; k < 2; ++k) {
    EXPECT_NEAR(space.eigenvalues()[k] / canonical.eigenvalues[k], 1, 1e-10);
    double same = 0;
    for (std::size_t a = 0; a < 13; ++a) same += space.vectors()(a, k) * canonical.vectors.data[a + k * 13];
    EXPECT_NEAR(std::abs(same), 1, 1e-8) << "up to the signs of the axes";
  }
  for (std::size_t i = 0; i < prepared.classOf.size(); ++i)
    for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(space.distance(model, i, c), fitted.distances(i, c), 1e-9);
}

// With one descriptor the definition is short enough to be written out.
TEST(Discriminant, WithOneDescriptorScalesItsDistances) {
  const Table table = example("iris.csv");
  DiscriminantOptions options = ofClass("Species", Folds::leaveOneOut());
  options.data.columns = {"Petal.Width"};
  const Discriminant result = discriminate(table, options);
  const std::vector<double>& x = table.find("Petal.Width")->numbers;
  double mean[3] = {}, within = 0, between = 0, grand = 0;
  for (std::size_t i = 0; i < 150; ++i) mean[i / 50] += x[i] / 50;
  for (std::size_t i = 0; i < 150; ++i) within += std::pow(x[i] - mean[i / 50], 2);
  for (const double m : mean) grand += m / 3;
  for (const double m : mean) between += 50 * std::pow(m - grand, 2);
  EXPECT_NEAR(result.functions[0].eigenvalue, between / within, 1e-9);
  EXPECT_NEAR(result.rows[7].distances[2], std::abs(x[7] - mean[2]) / std::sqrt(within / 147), 1e-10);
  EXPECT_NE(remarkOf(result, "one-descriptor"), nullptr);

  // Without row 83, which is of the second class.
  double others = 0, left = 0;
  for (std::size_t i = 50; i < 100; ++i) others += i == 83 ? 0 : x[i] / 49;
  for (std::size_t i = 0; i < 150; ++i) left += i == 83 ? 0 : std::pow(x[i] - (i / 50 == 1 ? others : mean[i / 50]), 2);
  const double sd = std::sqrt(left / 146);
  ASSERT_EQ(result.rows[83].heldOutDistances.size(), 3u);
  EXPECT_NEAR(result.rows[83].heldOutDistances[0], std::abs(x[83] - mean[0]) / sd, 1e-6);
  EXPECT_NEAR(result.rows[83].heldOutDistances[1], std::abs(x[83] - others) / sd, 1e-6);
  EXPECT_NEAR(result.rows[83].heldOutDistances[2], std::abs(x[83] - mean[2]) / sd, 1e-6);
}

Table withoutClasses(Table table, const std::vector<std::size_t>& rows) {
  for (TableColumn& column : table.columns)
    if (column.name == "cultivar")
      for (const std::size_t row : rows) column.texts[row].clear();
  return table;
}

// 164 of 170: counted by hand from the table of the eight emptied classes; nothing but the eight differs from an
// analysis of a table that never had them.
TEST(Discriminant, RowsWithoutAClassChangeNothingButTheirOwnClass) {
  const std::vector<std::size_t> emptied{9, 44, 69, 100, 119, 130, 149, 174};
  const Table full = example("wine.csv");
  const Discriminant with = discriminate(withoutClasses(full, emptied), ofClass("cultivar"));
  Table shorter = full;
  for (TableColumn& column : shorter.columns)
    for (auto it = emptied.rbegin(); it != emptied.rend(); ++it) {
      const auto at = static_cast<std::ptrdiff_t>(*it);
      if (!column.numbers.empty()) column.numbers.erase(column.numbers.begin() + at);
      if (!column.texts.empty()) column.texts.erase(column.texts.begin() + at);
    }
  const Discriminant without = discriminate(shorter, ofClass("cultivar"));
  EXPECT_EQ(with.validation->confusion.counts, without.validation->confusion.counts);
  EXPECT_EQ(with.validation->confusion.total(), 170u);
  EXPECT_EQ(with.validation->confusion.correct(), 164u);
  EXPECT_EQ(with.chosen, without.chosen);
  EXPECT_EQ(with.functions[0].coefficients, without.functions[0].coefficients);
  ASSERT_EQ(with.rows.size(), 178u);
  for (std::size_t i = 0; i < 170; ++i) {
    EXPECT_EQ(with.rows[i].distances, without.rows[i].distances);
    EXPECT_EQ(with.rows[i].heldOutClass, without.rows[i].heldOutClass);
  }
  EXPECT_EQ(with.rows[175].name, "wine 131");
  EXPECT_EQ(with.rows[175].predicted, "class_1");
  EXPECT_EQ(with.rows[175].role, Role::Predicted);
}

// Every fold run again names the rows that the analysis only counts.
void expectRowsToMakeTheConfusion(const Discriminant& result) {
  std::map<std::string, std::size_t> right;
  std::size_t held = 0;
  for (const DiscriminantRow& row : result.rows) {
    held += row.timesHeldOut;
    if (row.timesHeldOut == 0) continue;
    if (row.heldOutClass == row.known) ++right[row.known];
    const auto nearest = std::min_element(row.heldOutDistances.begin(), row.heldOutDistances.end());
    const auto number = static_cast<std::size_t>(nearest - row.heldOutDistances.begin());
    EXPECT_EQ(row.heldOutClass, result.classes[number].name) << row.name;
  }
  for (const DiscriminantClass& entry : result.classes) EXPECT_EQ(right[entry.name], entry.heldOutCorrect);
  EXPECT_EQ(result.validation->confusion.total(), held);
}

TEST(Discriminant, NamesTheRowsThatItsConfusionMatrixCounts) {
  for (const char* name : {"iris.csv", "wine.csv"})
    for (const ClassSelection& selection : {ClassSelection{}, ClassSelection{ClassSelection::Kind::Number, 2}}) {
      const auto run = [table = example(name), name, &selection](const Folds& folds) {
        DiscriminantOptions options = ofClass(name[0] == 'i' ? "Species" : "cultivar", folds);
        options.selection = selection;
        return discriminate(table, options);
      };
      for (const Folds& folds : {Folds::systematic(3), Folds::systematic(7), Folds::leaveOneOut()}) {
        const Discriminant result = run(folds);
        expectRowsToMakeTheConfusion(result);
        for (const DiscriminantRow& row : result.rows) EXPECT_EQ(row.timesHeldOut, 1u);
      }
      expectRowsToMakeTheConfusion(test::withDrawsApart({3, 0.02}, run));
    }
  const Discriminant random = discriminate(example("wine.csv"), ofClass("cultivar", Folds::random({40, 0.1}, 5)));
  std::size_t held = 0;
  for (const DiscriminantRow& row : random.rows) held += row.timesHeldOut;
  EXPECT_EQ(held, 40u * 18u);
  EXPECT_EQ(random.validation->confusion.total(), held);
}

// 15 rows in two classes dealt into three folds. x and y are equal in the training rows of the first fold, whose
// covariance of x and y is 1 in every cell and so exactly singular.
Table equalInTheFirstFold() {
  Table table{.name = "t.csv"};
  const std::vector<double> x{3, 0, 1, 5, -1, 1, 2, -1, 10, 14, 11, 9, 17, 11, 9};
  std::vector<double> y = x;
  for (const std::size_t heldOut : {0, 3, 6, 9, 12}) y[heldOut] += heldOut % 2 == 0 ? 4 : -3;
  std::vector<std::string> classes(15, "a");
  std::fill(classes.begin() + 8, classes.end(), "b");
  table.columns = {{.name = "x", .numbers = x},
                   {.name = "y", .numbers = y},
                   {.name = "kind", .kind = ColumnKind::Text, .texts = classes}};
  return table;
}

TEST(Discriminant, SaysWhichFoldStartedTheValidationOver) {
  DiscriminantOptions options = ofClass("kind", Folds::systematic(3));
  options.selection = {ClassSelection::Kind::All};
  options.data.scaling = Scaling::None;
  const Table table = equalInTheFirstFold();
  const Discriminant result = discriminate(table, options);
  ASSERT_TRUE(result.validation);
  EXPECT_EQ(result.plan.kind, Folds::Kind::LeaveOneOut);
  EXPECT_EQ(result.plan.folds, 15u);
  EXPECT_EQ(result.validation->confusion.total(), 15u);
  const Remark* remark = remarkOf(result, "validation-restarted");
  ASSERT_NE(remark, nullptr);
  EXPECT_NE(remark->text.find("fold 1 of 3 became singular (in its training rows x and y are identical"),
            std::string::npos)
      << remark->text;
  for (const DiscriminantRow& row : result.rows) EXPECT_EQ(row.timesHeldOut, 1u);

  // Leave-one-out cannot be started over: eleven rows, the first of which alone tells x from y.
  Table eleven = table;
  const std::vector<double> x{4, 0, 1, -1, 1, -1, 10, 11, 9, 11, 9};
  eleven.columns[0].numbers = eleven.columns[1].numbers = x;
  eleven.columns[1].numbers[0] = 7;
  eleven.columns[2].texts = {"a", "a", "a", "a", "a", "a", "b", "b", "b", "b", "b"};
  options.folds = Folds::leaveOneOut();
  const Discriminant abandoned = discriminate(eleven, options);
  ASSERT_FALSE(abandoned.validation);
  EXPECT_NE(abandoned.validation.error().find("fold 1 of 11 became singular"), std::string::npos);
  EXPECT_EQ(summary(abandoned).find("cross-validated,"), std::string::npos);
  EXPECT_NE(toJson(abandoned).find("\"reason\": \"not validated: fold 1"), std::string::npos);
}

Table smallTable() {
  Table table{.name = "tox.csv"};
  table.columns = {{.name = "x", .numbers = {1, 2, 4, 3, 5, 9, 8, 11, 10, 12, 20}},
                   {.name = "z", .numbers = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3, 5}},
                   {.name = "same", .numbers = {7, 7, 7, 7, 7, 8, 8, 8, 8, 8, 9}},
                   {.name = "kind",
                    .kind = ColumnKind::Text,
                    .texts = {"low", "low", "low", "low", "low", "high", "high", "high", "high", "high", "odd"}}};
  return table;
}

TEST(Discriminant, SetsAsideWhatCannotBeAnalysedAndNamesIt) {
  const Discriminant result = discriminate(smallTable(), ofClass("kind", Folds::systematic(7)));
  ASSERT_EQ(result.classes.size(), 2u);
  EXPECT_EQ(result.classes[0].name, "low");
  EXPECT_EQ(result.used.rows.size(), 10u);
  const Remark* single = remarkOf(result, "single-member-classes");
  ASSERT_NE(single, nullptr);
  EXPECT_EQ(single->names, std::vector<std::string>{"odd"});
  const Remark* constant = remarkOf(result, "constant-within-classes");
  ASSERT_NE(constant, nullptr);
  EXPECT_EQ(constant->names, std::vector<std::string>{"same"});
  const Remark* small = remarkOf(result, "small-class");
  ASSERT_NE(small, nullptr);
  EXPECT_NE(small->text.find("class \"low\" has 5 rows, so only 5 of the 7 folds test it; its"), std::string::npos);
}

// The third column is the first but for a step between the classes: over all rows they differ, within classes not.
TEST(Discriminant, SetsAsideARepeatWithinTheClasses) {
  Table table = smallTable();
  for (std::size_t i = 0; i < 11; ++i)
    table.columns[2].numbers[i] = 30 - 3 * table.columns[0].numbers[i] + (i < 5 ? 7 : 0);
  const Discriminant result = discriminate(table, ofClass("kind", Folds::leaveOneOut()));
  const Remark* remark = remarkOf(result, "identical-within-classes");
  ASSERT_NE(remark, nullptr);
  EXPECT_EQ(remark->names, std::vector<std::string>{"same"});
  EXPECT_EQ(result.used.descriptors, (std::vector<std::string>{"x", "z"}));
}

TEST(Discriminant, OrdersClassesAndWeighsPriorsAsAsked) {
  DiscriminantOptions options = ofClass("kind", Folds::systematic(2));
  options.classOrder = {"high"};
  options.priors = {Priors::Kind::Given, {9, 1}};
  const Discriminant result = discriminate(smallTable(), options);
  ASSERT_EQ(result.classes[0].name, "high");
  EXPECT_DOUBLE_EQ(result.classes[0].prior, 0.9);
  const DiscriminantRow& row = result.rows[4];  // its definition: prior * exp(-d^2 / 2), over their sum
  const double high = 0.9 * std::exp(-row.distances[0] * row.distances[0] / 2);
  const double low = 0.1 * std::exp(-row.distances[1] * row.distances[1] / 2);
  EXPECT_NEAR(row.posteriors[0], high / (high + low), 1e-12);
}

TEST(Discriminant, RefusesInWords) {
  const Table table = smallTable();
  EXPECT_NE(sentence(table, {}).find("2: --class NAME is missing"), std::string::npos);
  DiscriminantOptions options = ofClass("kin");
  EXPECT_NE(sentence(table, options).find("no column \"kin\". Did you mean \"kind\"?"), std::string::npos);
  options = ofClass("kind");
  options.classOrder = {"middle"};
  EXPECT_NE(sentence(table, options).find("kind has no class \"middle\". Its classes: high, low, odd."),
            std::string::npos);
  options = ofClass("kind");
  options.priors = {Priors::Kind::Given, {1, 1, 1}};
  EXPECT_NE(sentence(table, options).find("--prior has 3 values for 2 classes (low, high)"), std::string::npos);
  options = ofClass("kind");
  options.data.columns = {"same"};
  EXPECT_NE(sentence(table, options).find("1: no descriptor is left"), std::string::npos);
  Table three = table;  // more descriptors than rows leave room for
  three.columns.push_back({.name = "u", .numbers = {2, 7, 1, 8, 3, 8, 1, 8, 2, 9, 4}});
  options = ofClass("kind");
  options.selection = {ClassSelection::Kind::All};
  options.data.test.rows = {1, 2, 3, 6, 7, 8};
  EXPECT_NE(sentence(three, options).find("1: 3 descriptors are too many for 4 rows in 2 classes"), std::string::npos)
      << sentence(three, options);
  EXPECT_THROW(discriminate(table, {.classColumn = "kind", .progress = [](const Progress&) { return false; }}),
               Stopped);
}

}  // namespace
}  // namespace studystats
