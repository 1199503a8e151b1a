// Columns by name: which patterns match, and which name was perhaps meant. The tables of cases follow from the
// contracts in names.h.
#include "host/names.h"

#include <gtest/gtest.h>

namespace studystats {
namespace {

using Strings = std::vector<std::string>;

const std::vector<double> kNoCells;

TableView tableOf(const Strings& names) {
  TableView table;
  table.setName("table.csv");
  for (const std::string& name : names) table.add(name, kNoCells);
  return table;
}

TEST(Names, NearestIsTheSmallestSlipOrAPartOfAName) {
  const Strings names = {"logBBB", "malic_acid", "Sepal.Length", "Ozone", "x1", "x2", "clogp", "900  nm"};
  struct {
    const char* asked;
    const char* nearest;
  } const cases[] = {
      {"logBB", "logBBB"},               // a letter left out
      {"LOGBBB", "logBBB"},              // letters in the other case
      {"Sepal Length", "Sepal.Length"},  // a letter replaced
      {"Oznoe", "Ozone"},                // two neighbours swapped
      {"900 nm", "900  nm"},             // a blank left out
      {"X2", "x2"},                      // the other case is nearer than another figure
      {"x3", "x1"},                      // of equals the first
      {"acid", "malic_acid"},            // a part
      {"sepal.length_cm", "Sepal.Length"},
      {"q", ""},  // every letter another: nothing
      {"weight", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(nearestName(c.asked, names), c.nearest) << c.asked;
  EXPECT_EQ(nearestName("x", {}), "");
}

TEST(Names, PatternsMatchLiterallyThenAsRangesThenAsGlobs) {
  const TableView table = tableOf({"a", "vsa_1", "vsa_2", "x..y", "[ab]", "b", "x*", "xyz", "a.1"});
  struct {
    Strings patterns;
    std::vector<std::size_t> columns;
  } const cases[] = {
      {{}, {}},
      {{"b", "a", "b"}, {0, 5}},  // in table order, each once
      {{"vsa_*"}, {1, 2}},
      {{"?"}, {0, 5}},
      {{"[ab]"}, {4}},  // a name that is a glob
      {{"[ab]*"}, {0, 5, 8}},
      {{"x*"}, {6}},    // a name that is a glob, though the glob would match more
      {{"x..y"}, {3}},  // a name that looks like a range
      {{"vsa_1..[ab]"}, {1, 2, 3, 4}},
      {{"x..y..b"}, {3, 4, 5}},  // a range from a name that holds dots
      {{"a..a"}, {0}},
      {{"*"}, {0, 1, 2, 3, 4, 5, 6, 7, 8}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(matchingColumns(table, c.patterns, "--columns"), c.columns) << ::testing::PrintToString(c.patterns);
  EXPECT_EQ(columnNamed(table, "[ab]", "--response"), 4u);
}

TEST(Names, RefusalsNameTheTableTheOptionAndTheNearestName) {
  const TableView table = tableOf({"alcohol", "malic_acid", "ash", "hue"});
  const auto refusal = [&](const std::string& pattern) -> std::string {
    try {
      matchingColumns(table, {"ash", pattern}, "--columns");
    } catch (const BadOptions& error) {
      EXPECT_EQ(error.where().option, "--columns");
      EXPECT_EQ(error.where().file, "table.csv");
      return error.what() + (error.suggestion().empty() ? "" : " [" + error.suggestion() + "]");
    }
    return "matched";
  };
  EXPECT_EQ(refusal("acid"),
            "--columns acid matches no column of table.csv. Did you mean \"malic_acid\"? [malic_acid]");
  EXPECT_EQ(refusal("nosuch*"), "--columns nosuch* matches no column of table.csv.");
  EXPECT_EQ(refusal("Alcohl*"),
            "--columns Alcohl* matches no column of table.csv. Did you mean \"alcohol\"? [alcohol]");
  EXPECT_EQ(refusal("ash..huw"), "--columns ash..huw: table.csv has no column \"huw\". Did you mean \"hue\"? [hue]");
  EXPECT_EQ(refusal("hue..ash"), "--columns hue..ash: in table.csv \"ash\" stands before \"hue\". Try ash..hue.");
  try {
    columnNamed(table, "Hue ", "--response");
    ADD_FAILURE();
  } catch (const BadOptions& error) {
    EXPECT_STREQ(error.what(), "table.csv has no column \"Hue \". Did you mean \"hue\"?");
    EXPECT_EQ(error.suggestion(), "hue");
    EXPECT_EQ(error.where().option, "--response");
  }
}

TEST(TableViews, RefuseRepeatedNamesAndColumnsOfOtherLength) {
  const std::vector<double> two{1, 2}, three{1, 2, 3};
  TableView view;
  view.add("x", two);
  EXPECT_THROW(view.add("x", two), BadTable);
  EXPECT_THROW(view.add("y", three), BadTable);
  EXPECT_EQ(view.columns().size(), 1u);

  Table table;
  table.columns.resize(2);
  table.columns[0].name = table.columns[1].name = "x";
  EXPECT_THROW(TableView{table}, BadTable);
  table.columns[1].name = "y";
  table.columns[1].kind = ColumnKind::Text;
  table.columns[1].texts = {"a", ""};
  EXPECT_THROW(TableView{table}, BadTable);
  table.columns[0].numbers = {0, 1};
  EXPECT_TRUE(TableView(table).columns()[1].missing(1));
}

}  // namespace
}  // namespace studystats
