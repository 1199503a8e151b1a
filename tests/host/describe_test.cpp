// Describing a table: its figures against R, its findings against plain counting, its page and files.
#include "host/preparation/related_columns.h"

#include <gtest/gtest.h>
#include <studystats/host.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <sstream>

namespace studystats {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kHuge = 1.7e308;

using Figure = std::optional<double> ColumnSummary::*;

Table example(const std::string& name) { return readTable(STUDYSTATS_SOURCE_DIR "/examples/" + name); }

Table tableOf(const std::map<std::string, std::vector<double>>& columns) {
  Table table;
  for (const auto& [name, numbers] : columns)
    table.columns.push_back({.name = name, .kind = ColumnKind::Numeric, .numbers = numbers});
  return table;
}

const ColumnSummary& column(const Description& description, const std::string& name) {
  for (const ColumnSummary& summary : description.columns)
    if (summary.name == name) return summary;
  throw std::out_of_range(name);
}

void expectLines(const std::string& page, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) EXPECT_NE(page.find(line + "\n"), std::string::npos) << line << "\n" << page;
}

void expectFits(const std::string& page) {
  std::istringstream in(page);
  for (std::string line; std::getline(in, line);) {
    EXPECT_LE(line.size(), 100U) << line;
    EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
  }
}

// mean, sd, min, median, max and sum((x - mean)^k) / n / sd^k by R 4.2.
struct FromR {
  const char* name;
  std::size_t count;
  double mean, sd, minimum, median, maximum, skewness, kurtosis;
};

const FromR kAirquality[] = {
    {"Ozone", 116, 42.1293103448276, 32.987884514434, 1, 31.5, 168, 1.20986555156197, 1.11224306699398},
    {"Solar.R", 146, 185.931506849315, 90.0584222283817, 7, 205, 334, -0.419289251989128, -1.00405806932578},
    {"Wind", 153, 9.95751633986928, 3.5230013522126, 1.7, 9.7, 20.7, 0.341027534935293, 0.0288646774585719},
    {"Day", 153, 15.8039215686275, 8.86452036842542, 1, 16, 31, 0.00260008257808161, -1.22244060374125},
};
const FromR kIris[] = {
    {"Sepal.Length", 150, 5.84333333333333, 0.828066127977863, 4.3, 5.8, 7.9, 0.308640729589268, -0.60581253484815},
    {"Petal.Length", 150, 3.758, 1.76529823325947, 1, 4.35, 6.9, -0.269410930305303, -1.41685743173086},
};

void expectFigures(const ColumnSummary& found, const FromR& wanted, double factor) {
  EXPECT_EQ(found.count, wanted.count) << wanted.name;
  const std::pair<double, std::optional<double>> pairs[] = {
      {wanted.mean * factor, found.mean},       {wanted.sd * factor, found.sd},
      {wanted.minimum * factor, found.minimum}, {wanted.median * factor, found.median},
      {wanted.maximum * factor, found.maximum}, {wanted.skewness, found.skewness},
      {wanted.kurtosis, found.kurtosis}};
  for (const auto& [expected, value] : pairs) {
    ASSERT_TRUE(value.has_value()) << wanted.name;
    EXPECT_NEAR(*value, expected, 2e-13 * std::max(factor, std::abs(expected))) << wanted.name;
  }
}

TEST(Describe, GivesTheFiguresOfR) {
  const Description air = describe(example("airquality.csv")), iris = describe(example("iris.csv"));
  for (const FromR& row : kAirquality) expectFigures(column(air, row.name), row, 1);
  for (const FromR& row : kIris) expectFigures(column(iris, row.name), row, 1);
  EXPECT_EQ(column(iris, "Species").different, 3U);
  EXPECT_EQ(column(iris, "Species").mostCommon, 50U);
}

TEST(Describe, GivesThemForNumbersWhoseSquaresOverflow) {
  for (const double factor : {std::ldexp(1.0, 1000), std::ldexp(1.0, -1000)}) {  // exact: the digits stay
    Table table = example("iris.csv");
    for (TableColumn& one : table.columns)
      for (double& cell : one.numbers) cell *= factor;
    const Description description = describe(table);
    for (const FromR& row : kIris) {
      FromR scaled = row;
      const ColumnSummary& found = column(description, row.name);
      EXPECT_NEAR(*found.mean / factor, scaled.mean, 1e-12);
      EXPECT_NEAR(*found.sd / factor, scaled.sd, 1e-12);
      EXPECT_NEAR(*found.kurtosis, scaled.kurtosis, 1e-12);
    }
    EXPECT_EQ(description.related.size(), 1U);
    EXPECT_NEAR(description.related[0].r, 0.962865431402796, 1e-13);  // R
  }
}

TEST(DescribePage, ShowsASmallTableWithMissingCells) {
  const Description description = describe(example("airquality.csv"));
  const std::string page = summary(description);
  expectLines(page, {"column   count  missing       mean        sd   min  median    max  skewness  kurtosis",
                     "Ozone      116       37   42.1293   32.9879    1      31.5  168       1.210     1.112",
                     "Wind       153        -    9.95752   3.52300   1.7     9.7   20.7     0.341     0.029",
                     "Missing     44 cells in 42 rows: Ozone 37, Solar.R 7, both in 2 rows.",
                     "            An analysis of all columns keeps 111 of 153 rows (--missing drop-rows, the default);",
                     "            without Ozone it keeps 146 (--exclude Ozone).",
                     "Codes?      Month (5 different whole numbers) and Day (31) would count as descriptors;",
                     "            leave them out with --exclude Month,Day if they only label the rows."});
  expectFits(page);
  EXPECT_TRUE(description.constant.empty() && description.same.empty() && description.hardlyVary.empty());
}

TEST(DescribePage, ShowsTheEndsOfAWideTableAndWhatNeedsAttention) {
  const Description description = describe(example("bloodbrain.csv"));
  const std::string page = summary(description);
  expectLines(page,
              {"Row names: compound (208 different texts)          Missing: none",
               "negative    208        -   0.00480769   0.0693375   0      0          1        14.215   201.029",
               "... 129 more numeric columns: --all lists them, --tables DIR writes them",
               "logBBB      208        -  -0.0188942    0.779321   -2.15   0.02       1.64     -0.464    -0.086",
               "  same information   hbdnr = ctdh;  fpsa1 = 1 - fnsa1;  a_acid ~ vsa_acid;  weight ~ mw (r 0.99997)",
               "  hardly vary        negative (207 of 208 rows equal), alert (206), a_acid, vsa_acid (201)",
               "  strongly related   31 pairs of columns with |r| > 0.95, 73 pairs with |r| > 0.90"});
  expectFits(page);
  EXPECT_TRUE(description.codes.empty());  // counts and yes-or-no descriptors are no labels
  EXPECT_EQ(page.find("peoe_vsa.0 "), std::string::npos);
  EXPECT_NE(summary(description, {.all = true}).find("\npeoe_vsa.0 "), std::string::npos);
}

TEST(DescribePage, NamesWhatStandsInTheWay) {
  std::string text = "sample,pIC50,kg,g,F,C,empty\n";
  for (int i = 0; i < 30; ++i)
    text += "m" + std::to_string(i % 29) + "," + (i == 7 ? "<4.0" : std::to_string(4 + i * 7 % 11)) + "," +
            std::to_string(i * 37) + "," + std::to_string(i * 37) + "000," + std::to_string(32 + 9 * (i * 3 % 17)) +
            "," + std::to_string(5 * (i * 3 % 17)) + ",\n";
  const Description description = describe(parseTable(text, "lab.csv"));
  const std::string page = summary(description);
  expectLines(page, {"  row names repeat   sample (29 different in 30 rows)", "  no values          empty",
                     "  almost numeric     pIC50 (1 of 30 cells: line 9, \"<4.0\")",
                     "  same information   kg = 0.001 * g;  F = 32 + 1.8 * C"});
  expectFits(page);
}

TEST(DescribePage, FitsAndStandsUpInEveryOddTable) {
  const std::vector<double> tenths(20, 0.1);
  std::map<std::string, std::vector<double>> wide;
  std::mt19937 random(1);
  for (int j = 0; j < 5000; ++j)
    for (int i = 0; i < 50; ++i) wide["column " + std::to_string(j)].push_back(static_cast<double>(random()));
  const std::string longName(93, 'n');
  std::vector<Table> tables{tableOf({}),
                            tableOf({{"a", {}}, {"b", {}}}),
                            tableOf({{"a", {1}}, {"b", {kNan}}}),
                            tableOf({{"a", {kNan, kNan, kNan}}, {"b", {kNan, kNan, 2}}}),
                            tableOf({{"a", tenths}, {longName, tenths}}),
                            tableOf({{"a", {kHuge, -kHuge, kHuge}}, {longName, {1e-308, 5e-324, 0}}}),
                            tableOf(wide)};
  tables.push_back({.columns = {{.name = "t", .kind = ColumnKind::Text, .texts = {"x", "", "x"}}}});
  for (const Table& table : tables)
    for (const bool all : {false, true}) {
      const Description description = describe(table);
      expectFits(summary(description, {.all = all && table.columns.size() < 100}));
      EXPECT_EQ(nlohmann::json::parse(toJson(description))["columns"].size(), table.columns.size());
    }
  const Description constant = describe(tables[4]);
  EXPECT_EQ(constant.constant, (std::vector<std::string>{"a", longName}));
  EXPECT_EQ(column(constant, "a").mean, 0.1);
  EXPECT_EQ(column(constant, "a").sd, 0.0);
  EXPECT_FALSE(column(constant, "a").skewness.has_value());
  EXPECT_TRUE(describe(tables[2]).constant.empty());  // one row says nothing about spread
}

TEST(Describe, TellsLabelsFromCounts) {
  std::map<std::string, std::vector<double>> columns;
  std::mt19937 random(2);
  std::poisson_distribution<int> poisson(2);
  for (int i = 0; i < 120; ++i) {
    columns["class 1 to 3"].push_back(1 + i % 3);
    columns["class 0 to 2"].push_back(i % 3);
    columns["weekday"].push_back(1 + i % 7);
    columns["count"].push_back(poisson(random));
    columns["yes"].push_back(i % 2);
    columns["even only"].push_back(2 * (i % 4));
    columns["halves"].push_back(0.5 * (i % 4));
    columns["charge"].push_back(i % 3 - 1);
    columns["row"].push_back(i + 1);
  }
  const Description description = describe(tableOf(columns));
  EXPECT_EQ(description.codes, (std::vector<std::string>{"class 0 to 2", "class 1 to 3", "weekday"}));
  ASSERT_EQ(description.remarks.size(), 1U);
  EXPECT_EQ(description.remarks[0].names, std::vector<std::string>{"row"});
}

TEST(Describe, CountsMissingCellsAsAPlainLoopDoes) {
  std::mt19937 random(3);
  const std::size_t rows = 150, columns = 6;
  std::map<std::string, std::vector<double>> cells;
  for (std::size_t j = 0; j < columns; ++j)
    for (std::size_t i = 0; i < rows; ++i)
      cells[std::string(1, static_cast<char>('a' + j))].push_back(
          random() % (3 + 4 * j) == 0 ? kNan : static_cast<double>(i % 37));
  cells["empty"].assign(rows, kNan);
  const Description description = describe(tableOf(cells));
  cells.erase("empty");

  const auto rowsWith = [&](auto wanted) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < rows; ++i) count += wanted(i);
    return count;
  };
  const auto complete = [&](std::size_t i, const std::string& without) {
    for (const auto& [name, numbers] : cells)
      if (name != without && std::isnan(numbers[i])) return false;
    return true;
  };
  EXPECT_EQ(description.rowsWithMissing, rowsWith([&](std::size_t i) { return !complete(i, ""); }));
  ASSERT_EQ(description.withoutColumn.size(), columns);
  for (const auto& one : description.withoutColumn)
    EXPECT_EQ(one.rowsKept, rowsWith([&](std::size_t i) { return complete(i, one.column); })) << one.column;
  ASSERT_FALSE(description.missingTogether.empty());
  for (const auto& pair : description.missingTogether)
    EXPECT_EQ(pair.rows, rowsWith([&](std::size_t i) {
                return std::isnan(cells[pair.first][i]) && std::isnan(cells[pair.second][i]);
              }));
}

// r by its formula, over the rows in which both are present.
double plainCorrelation(const std::vector<double>& x, const std::vector<double>& y) {
  double n = 0, mx = 0, my = 0, xx = 0, yy = 0, xy = 0;
  for (std::size_t i = 0; i < x.size(); ++i)
    if (!std::isnan(x[i] + y[i])) ++n, mx += x[i], my += y[i];
  for (std::size_t i = 0; i < x.size(); ++i)
    if (!std::isnan(x[i] + y[i])) {
      xx += (x[i] - mx / n) * (x[i] - mx / n);
      yy += (y[i] - my / n) * (y[i] - my / n);
      xy += (x[i] - mx / n) * (y[i] - my / n);
    }
  return n < 3 || xx == 0 || yy == 0 ? 0 : xy / std::sqrt(xx * yy);
}

TEST(RelatedColumns, AreThoseOfTheFormulaInEveryShape) {
  std::mt19937 random(4);
  std::normal_distribution<double> normal;
  for (const std::size_t rows : {2U, 3U, 31U, 33U, 70U})
    for (const std::size_t count : {1U, 64U, 65U, 150U}) {
      std::vector<std::vector<double>> columns(count, std::vector<double>(rows));
      for (std::size_t j = 0; j < count; ++j)
        for (std::size_t i = 0; i < rows; ++i) {
          const double common = j == 0 ? 0 : columns[j - 1][i];
          columns[j][i] = 1e4 * (j % 3 == 0) + (std::isnan(common) ? 0 : std::fmod(common, 1e3)) + normal(random);
          if (j % 4 == 1 && random() % 3 == 0) columns[j][i] = kNan;
        }
      const ProgressCallback silent;
      const StopSignal never;
      Watch watch(silent, never);
      const std::vector<std::span<const double>> views(columns.begin(), columns.end());
      const RelatedPairs found = relatedColumns(views, 0.8, 1000000, watch, 0, 100);
      std::size_t expected = 0;
      for (std::size_t k = 0; k < count; ++k)
        for (std::size_t j = k + 1; j < count && rows > 2; ++j)
          expected += std::abs(plainCorrelation(columns[k], columns[j])) > 0.8;
      EXPECT_EQ(found.found, expected) << rows << " x " << count;
      ASSERT_EQ(found.strongest.size(), expected);
      for (const RelatedPair& pair : found.strongest)
        EXPECT_NEAR(pair.r, plainCorrelation(columns[pair.first], columns[pair.second]), 1e-9);
      const RelatedPairs few = relatedColumns(views, 0.8, 5, watch, 0, 100);
      EXPECT_EQ(few.found, expected);
      for (std::size_t i = 0; i < few.strongest.size(); ++i) EXPECT_EQ(few.strongest[i].r, found.strongest[i].r);
    }
}

TEST(DescribeFiles, ReadBackTheSameNumbers) {
  const Description description = describe(example("airquality.csv"));
  const nlohmann::json json = nlohmann::json::parse(toJson(description));
  EXPECT_EQ(json["schema"], "studystats.describe/1");
  const std::vector<CsvFile> files = toTables(description);
  ASSERT_EQ(files.size(), 3U);
  const Table csv = parseTable(files[0].content, files[0].name);
  const std::pair<const char*, Figure> figures[] = {{"mean", &ColumnSummary::mean},
                                                    {"sd", &ColumnSummary::sd},
                                                    {"kurtosis", &ColumnSummary::kurtosis},
                                                    {"median", &ColumnSummary::median}};
  for (std::size_t j = 0; j < description.columns.size(); ++j)
    for (const auto& [name, figure] : figures) {
      EXPECT_EQ(json["columns"][j][name].get<double>(), *(description.columns[j].*figure));
      EXPECT_EQ(csv.find(name)->numbers[j], *(description.columns[j].*figure));
    }
  EXPECT_EQ(json["missing"]["without_column"][0]["rows_kept"], 146);  // R: complete.cases() without Ozone
  EXPECT_EQ(json["codes"], nlohmann::json({"Month", "Day"}));
}

TEST(DescribeFiles, SayWhyAFigureIsAbsent) {
  const nlohmann::json columns = nlohmann::json::parse(
      toJson(describe(tableOf({{"a", {kNan, kNan}}, {"b", {kNan, 4}}, {"c", {4, 4}}}))))["columns"];
  EXPECT_TRUE(columns[0]["mean"].is_null());
  EXPECT_EQ(columns[0]["mean_reason"], "no value");
  EXPECT_EQ(columns[1]["mean"], 4.0);
  EXPECT_EQ(columns[1]["sd_reason"], "one value");
  EXPECT_EQ(columns[2]["sd"], 0.0);
  EXPECT_EQ(columns[2]["skewness_reason"], "constant");
}

TEST(Describe, StopsWhenAsked) {
  DescribeOptions options;
  double last = -1;
  options.progress = [&](const Progress& progress) {
    EXPECT_GE(progress.percent, last);
    last = progress.percent;
    return true;
  };
  describe(example("iris.csv"), options);
  EXPECT_EQ(last, 100);
  options.progress = [](const Progress& progress) { return progress.percent < 70; };
  EXPECT_THROW(describe(example("iris.csv"), options), Stopped);
  EXPECT_THROW(describe(example("iris.csv"), {.columns = {"nosuch*"}}), BadOptions);
}

}  // namespace
}  // namespace studystats
