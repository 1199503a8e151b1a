// Folds that a column gives. The same rows held out together give the figures of the analysis's own validation, which
// deals them.
#include <studystats/host.h>

#include <gtest/gtest.h>

#include <cmath>

namespace studystats {
namespace {

Table example(const std::string& name) { return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name); }

// The table with a column that holds each row's fold.
template <class Result>
Table withFolds(Table table, const Result& result) {
  TableColumn column{.name = "fold", .kind = ColumnKind::Text};
  for (const auto& row : result.rows) column.texts.push_back("part " + std::to_string(row.fold));
  table.columns.push_back(std::move(column));
  return table;
}

TEST(ColumnFolds, ValidateARegressionAsDealtOnesDo) {
  const Table table = example("bloodbrain.csv");
  RegressionOptions options{.response = "logBBB", .maxSteps = 12, .folds = Folds::systematic(5)};
  const Regression dealt = regress(table, options);
  options.folds = Folds::byColumn("fold");
  const Regression given = regress(withFolds(table, dealt), options);
  ASSERT_TRUE(given.validation);
  EXPECT_EQ(given.plan.folds, 5u);
  EXPECT_NEAR(given.validation->press / dealt.validation->press, 1, 1e-12);
  EXPECT_NEAR(given.validation->q2, dealt.validation->q2, 1e-12);
  EXPECT_NEAR(*given.validation->fixedSetQ2, *dealt.validation->fixedSetQ2, 1e-12);
  ASSERT_EQ(given.terms.size(), dealt.terms.size());
  for (std::size_t a = 0; a < given.terms.size(); ++a) {
    EXPECT_EQ(given.terms[a].foldsChosen, dealt.terms[a].foldsChosen);
    EXPECT_NEAR(*given.terms[a].foldSpread / *dealt.terms[a].foldSpread, 1, 1e-9);
  }
  for (std::size_t i = 0; i < given.rows.size(); ++i)
    EXPECT_NEAR(*given.rows[i].heldOut, *dealt.rows[i].heldOut, 1e-12);
}

TEST(ColumnFolds, ValidatePartialLeastSquaresAsDealtOnesDo) {
  const Table table = example("oliveoil.csv");
  PartialLeastSquaresOptions options{.responses = {"yellow", "brown"}, .components = 4, .folds = Folds::systematic(4)};
  const PartialLeastSquares dealt = partialLeastSquares(table, options);
  options.folds = Folds::byColumn("fold");
  const PartialLeastSquares given = partialLeastSquares(withFolds(table, dealt), options);
  EXPECT_EQ(given.kept, dealt.kept);
  for (std::size_t k = 0; k < 2; ++k) {
    for (std::size_t a = 0; a < 4; ++a)
      EXPECT_NEAR(given.responses[k].components[a].press / dealt.responses[k].components[a].press, 1, 1e-9);
    for (std::size_t j = 0; j < 5; ++j)
      EXPECT_NEAR(given.responses[k].coefficientErrors[j] / dealt.responses[k].coefficientErrors[j], 1, 1e-8);
  }
}

TEST(ColumnFolds, ValidateDiscriminantAnalysisAsDealtOnesDo) {
  const Table table = example("iris.csv");
  DiscriminantOptions options{.classColumn = "Species", .folds = Folds::systematic(6)};
  const Discriminant dealt = discriminate(table, options);
  options.folds = Folds::byColumn("fold");
  const Discriminant given = discriminate(withFolds(table, dealt), options);
  EXPECT_EQ(given.validation->confusion.counts, dealt.validation->confusion.counts);
  for (std::size_t j = 0; j < given.descriptors.size(); ++j)
    EXPECT_EQ(given.descriptors[j].foldsChosen, dealt.descriptors[j].foldsChosen);
}

TEST(ColumnFolds, AreRefusedWhereTheyLeaveARowOut) {
  Table table = example("cement.csv");
  TableColumn column{.name = "batch", .kind = ColumnKind::Text, .texts = std::vector<std::string>(13, "a")};
  table.columns.push_back(column);
  const auto told = [&] {
    try {
      regress(table, {.response = "y", .folds = Folds::byColumn("batch")});
    } catch (const BadOptions& error) {
      return std::string(error.what());
    }
    return std::string("nothing was thrown");
  };
  EXPECT_NE(told().find("puts every row into one fold"), std::string::npos);
  table.columns.back().texts[4] = "";
  EXPECT_NE(told().find("says no fold for"), std::string::npos);
  table.columns.back().name = "bach";
  EXPECT_NE(told().find("Did you mean \"bach\"?"), std::string::npos);
}

}  // namespace
}  // namespace studystats
