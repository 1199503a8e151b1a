// From a table to the analysed block: what is used, what is dropped and why, and that the counts add up.
#include "host/preparation/preparation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

constexpr double kNo = std::numeric_limits<double>::quiet_NaN();

Table tableOf(std::vector<std::pair<std::string, std::vector<double>>> columns) {
  Table table{.name = "t.csv"};
  for (auto& [name, numbers] : columns) table.columns.push_back({.name = name, .numbers = std::move(numbers)});
  return table;
}

Prepared prepared(const Table& table, const DataOptions& options = {}, const Roles& roles = {}) {
  const ProgressCallback silent;
  const StopSignal never;
  Watch watch(silent, never);
  return prepare(table, roles, options, watch);
}

std::string sentence(const Table& table, const DataOptions& options, const Roles& roles = {}) {
  try {
    prepared(table, options, roles);
  } catch (const Error& error) {
    return error.what();
  }
  return "nothing was thrown";
}

bool remarked(const Prepared& result, const std::string& code) {
  return std::any_of(result.remarks.begin(), result.remarks.end(), [&](const Remark& r) { return r.code == code; });
}

// Rows r1 ... r6; b lacks one cell, c lacks two, d repeats a, e is constant.
Table gaps() {
  Table table = tableOf({{"a", {1, 2, 3, 4, 5, 7}},
                         {"b", {2, kNo, 1, 5, 4, 3}},
                         {"c", {1, kNo, 9, 3, kNo, 2}},
                         {"d", {12, 14, 16, 18, 20, 24}},
                         {"e", {0.1, 0.1, 0.1, 0.1, 0.1, 0.1}}});
  TableColumn names{.name = "compound", .kind = ColumnKind::Text};
  for (int i = 1; i <= 6; ++i) names.texts.push_back("r" + std::to_string(i));
  table.columns.push_back(names);
  return table;
}

TEST(MissingCells, AreSettledByTheRuleAndTheRecordAddsUp) {
  struct Case {
    Missing missing;
    std::vector<std::string> rows, descriptors;
    std::size_t filled, eliminated;
    double cell;  // of the block: row r2 of b, or r1 of a when b or r2 is gone
  };
  const Case cases[] = {
      {{Missing::Rule::DropRows}, {"r1", "r3", "r4", "r6"}, {"a", "b", "c"}, 0, 3, 1},
      {{Missing::Rule::DropColumns}, {"r1", "r2", "r3", "r4", "r5", "r6"}, {"a"}, 0, 3, 1},
      {{Missing::Rule::FillMean}, {"r1", "r2", "r3", "r4", "r5", "r6"}, {"a", "b", "c"}, 3, 0, 3},
      {{Missing::Rule::FillMedian}, {"r1", "r2", "r3", "r4", "r5", "r6"}, {"a", "b", "c"}, 3, 0, 3},
      {{Missing::Rule::FillValue, -8}, {"r1", "r2", "r3", "r4", "r5", "r6"}, {"a", "b", "c"}, 3, 0, -8},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.missing.rule));
    const Prepared result = prepared(gaps(), {.missing = c.missing, .scaling = Scaling::None});
    const UsedData& used = result.used;
    EXPECT_EQ(used.rows, c.rows);
    EXPECT_EQ(used.descriptors, c.descriptors);
    EXPECT_EQ(used.cellsFilled, c.filled);
    EXPECT_EQ(used.cellsEliminated, c.eliminated);
    EXPECT_EQ(c.filled > 0 ? result.model(1, 1) : result.model(0, 0), c.cell);
    for (const ExtractionCounts& counts : {used.rowCounts, used.columnCounts})
      EXPECT_EQ(counts.requested, counts.extracted + counts.missing + counts.eliminated);
    EXPECT_EQ(used.columnCounts.requested, 5u);
    EXPECT_EQ(used.columnCounts.extracted, c.descriptors.size());
    EXPECT_EQ(used.rowCounts.eliminated, 6 - c.rows.size());
    ASSERT_EQ(used.setAside.size(), 1u);  // d = 10 + 2 a
    EXPECT_EQ(used.setAside[0].setAside, "d");
    EXPECT_EQ(used.setAside[0].scale, 2);
    EXPECT_EQ(used.setAside[0].shift, 10);
    EXPECT_TRUE(remarked(result, "constant-columns"));  // ten cells of 0.1 have a mean that is not 0.1
  }
}

TEST(MissingCells, AreRefusedWithTheColumnsToExclude) {
  Table table = tableOf({{"a", {1, 2, 3, 4, 5}}, {"solubility", {kNo, kNo, 1, kNo, kNo}}, {"b", {2, kNo, 3, 1, 7}}});
  EXPECT_EQ(sentence(table, {}),
            "too few rows are left: 1 of 5 rows have no missing descriptor cell (missing: solubility 4, b 1). Try "
            "--exclude solubility (4 rows), or --missing drop-columns.");
  EXPECT_EQ(sentence(table, {.missing = {.rule = Missing::Rule::Fail}}),
            "1 has no value in solubility (5 missing cells in all), and --missing fail was asked for. Try --missing "
            "drop-rows.");
  table.columns[1].numbers.assign(5, kNo);  // nothing at all: not a reason to lose the rows
  const Prepared result = prepared(table);
  EXPECT_EQ(result.used.rows.size(), 4u);
  EXPECT_TRUE(remarked(result, "empty-columns"));
}

TEST(Descriptors, AreTheNumericColumnsWithoutAnotherUse) {
  Table table = gaps();
  table.columns.push_back({.name = "nr", .numbers = {1, 2, 3, 4, 5, 6}});
  table.columns.push_back({.name = "ic50",
                           .kind = ColumnKind::Text,
                           .texts = {"1", "2", "<4.0", "3", "7", "9"},
                           .strayCount = 1,
                           .strays = {{2, 4, "<4.0"}}});
  const DataOptions fill{.missing = {.rule = Missing::Rule::FillMean}};
  const Prepared result = prepared(table, fill, {.responses = {"b"}, .classColumn = "c"});
  EXPECT_EQ(result.used.descriptors, (std::vector<std::string>{"a", "nr"}));
  EXPECT_EQ(result.used.idColumn, "compound");
  EXPECT_TRUE(remarked(result, "counts-rows"));
  EXPECT_FALSE(remarked(result, "almost-numeric"));  // said once, by the reader of the file
  EXPECT_EQ(sentence(table, {.columns = {"ic50"}}),
            "column \"ic50\" is text because of 1 cell: line 4, column 8, \"<4.0\". Correct the cell, or --missing-as "
            "\"<4.0\" to treat it as missing.");
  EXPECT_EQ(sentence(table, {.columns = {"compound", "a"}, .id = "nr"}),
            "column \"compound\" of t.csv is text and cannot be a descriptor.");
  EXPECT_EQ(sentence(table, {.columns = {"b"}}, {.responses = {"b"}}),
            "column \"b\" cannot be a descriptor: it is the response.");
  EXPECT_EQ(sentence(table, {}, {.responses = {"B"}}), "t.csv has no column \"B\". Did you mean \"b\"?");
}

TEST(Scales, ComeFromTheModelsRowsAlone) {
  // Model rows 1, 2, 3, 6: mean 3, sd sqrt(14 / 3), half range 2.5 about 3.5.
  const Table table = tableOf({{"x", {1, 100, 2, 3, 6}}, {"y", {4, 5, 1, 1, 2}}});
  const double sd = std::sqrt(14.0 / 3);
  struct Case {
    Scaling scaling;
    double shift, scale;
  };
  for (const Case& c : {Case{Scaling::Autoscale, 3, sd}, Case{Scaling::Pareto, 3, std::sqrt(sd)},
                        Case{Scaling::Range, 3.5, 2.5}, Case{Scaling::Centre, 3, 1}, Case{Scaling::None, 0, 1}}) {
    SCOPED_TRACE(nameOf(c.scaling));
    const Prepared result = prepared(table, {.scaling = c.scaling, .test = {.rows = {1}}});
    EXPECT_DOUBLE_EQ(result.used.shift[0], c.shift);
    EXPECT_DOUBLE_EQ(result.used.scale[0], c.scale);
    EXPECT_EQ(result.model(3, 0), (6 - result.used.shift[0]) / result.used.scale[0]);
    EXPECT_EQ(result.predicted(0, 0), (100 - result.used.shift[0]) / result.used.scale[0]);
  }
}

TEST(TestRows, ComeByNumberByMarkOrFromAnotherTable) {
  Table table = gaps();
  const DataOptions fill{.missing = {.rule = Missing::Rule::FillMedian}};
  DataOptions byMark = fill;
  byMark.test.column = "b";
  byMark.test.value = "5";
  EXPECT_EQ(prepared(table, byMark).used.predictedRows, std::vector<std::string>{"r4"});
  EXPECT_EQ(prepared(table, byMark).used.descriptors, (std::vector<std::string>{"a", "c"}));

  Table other = gaps();
  std::swap(other.columns[0], other.columns[2]);  // columns are found by name, in any order
  const TableView otherView(other);
  DataOptions byTable = fill;
  byTable.test.table = &otherView;
  const Prepared result = prepared(table, byTable);
  EXPECT_EQ(result.used.predictedRows.size(), 6u);
  EXPECT_EQ(result.used.predictedRows[0], "r1 (2)");  // the name is taken
  EXPECT_EQ(result.predicted(5, 0), result.model(5, 0));
  other.columns.pop_back();
  other.columns.erase(other.columns.begin() + 1);
  const TableView poorer(other);
  byTable.test.table = &poorer;
  EXPECT_TRUE(sentence(table, byTable).starts_with("t.csv has no column \"b\".")) << sentence(table, byTable);

  EXPECT_EQ(sentence(table, {.test = {.rows = {6}}}), "--test-rows names row 7; t.csv has 6 rows.");
  EXPECT_EQ(sentence(table, {.test = {.column = "b", .value = "77"}}),
            "no row of t.csv has \"77\" in b, so --test-column keeps nothing out.");
}

TEST(MadeColumns, AreTransformsInPlaceAndProductsAppended) {
  const Table table = tableOf({{"x", {1, 10, 100, 1000}}, {"y", {2, 0, 5, 3}}, {"z", {1, 7, 2, 5}}});
  const DataOptions options{.scaling = Scaling::None,
                            .transforms = {{"x", Transform::Kind::Log10}, {"y", Transform::Kind::Ln}},
                            .derivations = {{Derivation::Kind::Quadratic, {"x", "z"}}}};
  const Prepared result = prepared(table, options);
  EXPECT_EQ(result.used.descriptors,
            (std::vector<std::string>{"log10 ( x )", "log ( y )", "z", "log10 ( x )^2", "z^2", "log10 ( x ) * z"}));
  EXPECT_TRUE(remarked(result, "outside-domain"));  // ln 0: row 2 is gone
  EXPECT_EQ(result.used.rows, (std::vector<std::string>{"1", "3", "4"}));
  EXPECT_DOUBLE_EQ(result.model(1, 0), 2);
  EXPECT_DOUBLE_EQ(result.model(1, 1), std::log(5.0));
  EXPECT_DOUBLE_EQ(result.model(2, 3), 9);
  EXPECT_DOUBLE_EQ(result.model(2, 5), 15);
  EXPECT_EQ(result.used.formulas, (std::vector<std::string>{"x -> log10 ( x )", "y -> log ( y )", "log10 ( x )^2",
                                                            "z^2", "log10 ( x ) * z"}));

  const Table small = tableOf({{"x", {1e-200, 2e-200, 3e-200}}, {"u", {0, 1, 0}}, {"v", {1, 0, 0}}});
  for (const DataOptions& squared : {DataOptions{.transforms = {{"x", Transform::Kind::Square}}},
                                     DataOptions{.derivations = {{Derivation::Kind::Squares, {"x"}}}}})
    EXPECT_NE(sentence(small, squared).find("^2 is too small for a number in every row."), std::string::npos);
  EXPECT_EQ(sentence(small, {.derivations = {{Derivation::Kind::CrossProducts, {"u", "v"}}}}), "nothing was thrown");

  EXPECT_EQ(sentence(table, {.transforms = {{"w", Transform::Kind::Ln}}}).substr(0, 46),
            "--transform w: there is no descriptor \"w\".");
  std::vector<std::pair<std::string, std::vector<double>>> many;
  for (int j = 0; j < 120; ++j) many.push_back({"v" + std::to_string(j), {1.0 * j, 2.0, 3.5 * j}});
  EXPECT_EQ(sentence(tableOf(many), {.derivations = {{Derivation::Kind::CrossProducts, {}}}}).substr(0, 71),
            "--derive would make 7140 columns of 120 descriptors; the limit is 5000.");
}

}  // namespace
}  // namespace studystats
