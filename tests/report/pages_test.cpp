// What stands on the pages of all analyses: charts and tables over data that exist, links that lead somewhere, figures
// of a validation only where there was one.
#include "tests/report/pages.h"
#include "host/report/colours.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>

namespace studystats::test {
namespace {

using Json = nlohmann::json;

// Every string below a key of this name, alone or in a list.
void collect(const Json& value, const std::string& key, std::set<std::string>& found) {
  if (value.is_object() && value.contains(key)) {
    const Json& named = value[key];
    for (const Json& one : named.is_array() ? named : Json::array({named}))
      if (one.is_string()) found.insert(one.get<std::string>());
  }
  if (value.is_structured())
    for (const Json& part : value) collect(part, key, found);
}

// Every string, wherever it stands.
void collectStrings(const Json& value, std::set<std::string>& found) {
  if (value.is_string()) found.insert(value.get<std::string>());
  if (value.is_structured())
    for (const Json& part : value) collectStrings(part, found);
}

void collectDataNames(const Json& value, std::set<std::string>& found) {
  if (value.is_object() && value.contains("data") && value["data"].contains("name"))
    found.insert(value["data"]["name"].get<std::string>());
  if (value.is_structured())
    for (const Json& part : value) collectDataNames(part, found);
}

const Table* dataOf(const ReportPage& page, const std::string& name) {
  const auto found =
      std::find_if(page.data.begin(), page.data.end(), [&](const Table& one) { return one.name == name; });
  return found == page.data.end() ? nullptr : &*found;
}

// Fields that a chart can use: columns of its data, what its transforms make, keys of values written into it.
std::set<std::string> fieldsOf(const ReportPage& page, const Json& chart) {
  std::set<std::string> fields, names;
  collectDataNames(chart, names);
  for (const std::string& name : names) {
    const Table* data = dataOf(page, name);
    EXPECT_NE(data, nullptr) << name;
    if (data == nullptr) continue;
    for (const TableColumn& column : data->columns) fields.insert(column.name);
  }
  collect(chart, "as", fields);
  const std::function<void(const Json&)> inlineKeys = [&](const Json& value) {
    if (value.is_object() && value.contains("values") && value["values"].is_array())
      for (const Json& record : value["values"])
        if (record.is_object())
          for (const auto& entry : record.items()) fields.insert(entry.key());
    if (value.is_structured())
      for (const Json& part : value) inlineKeys(part);
  };
  inlineKeys(chart);
  return fields;
}

TEST(Pages, ShowOnlyDataThatTheyHold) {
  constexpr const char* kFieldLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
  const Json palette = Json::parse(colourNames());
  for (const auto& [what, page] : pagesOfEveryAnalysis()) {
    SCOPED_TRACE(what);
    EXPECT_FALSE(page.answer.empty());
    EXPECT_FALSE(page.figures.empty());
    std::set<std::string> anchors{"data-card", "reading", "answer", "figures", "tables"};
    for (const ReportFigure& figure : page.figures) {
      SCOPED_TRACE(figure.name);
      EXPECT_TRUE(anchors.insert(figure.name).second) << "two parts of one name";
      EXPECT_FALSE(figure.title.empty() || figure.alternative.empty() || figure.caption.empty());
      const Json chart = Json::parse(figure.chart);
      std::set<std::string> used;
      collect(chart, "field", used);
      std::set<std::string> texts;
      collectStrings(chart, texts);
      for (const std::string& text : texts) {
        for (std::size_t at = 0; (at = text.find("datum.", at)) != std::string::npos;) {
          at += 6;
          used.insert(text.substr(at, text.find_first_not_of(kFieldLetters, at) - at));
        }
        const bool colour = text.size() == 7 && text[0] == '#';
        EXPECT_TRUE(!colour || palette.contains(text)) << text << " has no counterpart on a dark page";
      }
      const std::set<std::string> known = fieldsOf(page, chart);
      for (const std::string& field : used) EXPECT_TRUE(known.contains(field)) << field;
    }
    for (const ReportTable& table : page.tables) {
      SCOPED_TRACE(table.name);
      EXPECT_TRUE(anchors.insert(table.name).second) << "two parts of one name";
      const Table* data = dataOf(page, table.data);
      ASSERT_NE(data, nullptr);
      for (const ReportColumn& column : table.columns) EXPECT_NE(data->find(column.field), nullptr) << column.field;
    }
    for (const ReportRemark& entry : page.remarks)
      EXPECT_TRUE(anchors.contains(entry.anchor)) << entry.remark.code << " leads to " << entry.anchor;
  }
}

TEST(Pages, AreWrittenAsChartsThatHoldTheirData) {
  for (const auto& [what, page] : pagesOfEveryAnalysis()) {
    const std::vector<CsvFile> files = chartFiles(page);
    ASSERT_EQ(files.size(), page.figures.size());
    for (std::size_t k = 0; k < files.size(); ++k) {
      EXPECT_EQ(files[k].name, "figure-" + page.figures[k].name + ".vl.json");
      const Json chart = Json::parse(files[k].content);
      EXPECT_TRUE(chart["$schema"].get<std::string>().ends_with("/vega-lite/v6.json"));
      EXPECT_NE(chart.value("width", Json()), "container") << what << ' ' << files[k].name;
      std::set<std::string> names;
      collectDataNames(chart, names);
      for (const std::string& name : names)
        EXPECT_EQ(chart["datasets"][name].size(), dataOf(page, name)->rows()) << what << ' ' << name;
    }
  }
}

// What can be read on a page: all but the charts, which draw only the series that they are given.
std::string everything(ReportPage page) {
  for (ReportFigure& figure : page.figures) {
    for (const Json& param : Json::parse(figure.chart).value("params", Json::array()))
      if (param["name"] == "series")
        for (const Json& series : param["value"]) figure.caption += ' ' + series.get<std::string>();
    figure.chart = "{}";
  }
  return reportHtml(page, {});
}

// Rows of which one decides: left out, a and b are equal.
Table abandoned() {
  Table table{.name = "t.csv"};
  table.columns = {{.name = "x", .numbers = {3, 1, 4, 1, 5, 9, 2, 6, 5, 3}},
                   {.name = "a", .numbers = {1, 4, 2, 8, 5, 7, 1, 3, 2, 6}},
                   {.name = "b", .numbers = {1, 4, 2, 8, 5, 7, 1, 3, 2, 9}},
                   {.name = "y", .numbers = {2, 7, 1, 8, 2, 8, 1, 8, 2, 8}}};
  return table;
}

TEST(Pages, OfAnAbandonedValidationHaveItsReasonAndNoneOfItsFigures) {
  const Regression model = regress(
      abandoned(), {.response = "y", .selection = Selection::All, .corrLimit = 1, .folds = Folds::leaveOneOut()});
  ASSERT_FALSE(model.validation);
  const ReportPage page = reportPage(model);
  EXPECT_NE(page.banner.find(model.validation.error()), std::string::npos) << page.banner;
  const std::string html = everything(page);
  EXPECT_NE(html.find("class=\"banner\" role=\"alert\">Not validated: "), std::string::npos);
  for (const char* figure : {"q²", "q2", "PRESS", "held out"})
    EXPECT_EQ(html.find(figure), std::string::npos) << figure;

  const std::string validated =
      everything(reportPage(regress(abandoned(), {.response = "y", .folds = Folds::systematic(2)})));
  for (const char* figure : {"q²", "PRESS", "held out"})
    EXPECT_NE(validated.find(figure), std::string::npos) << figure << ": else the search above finds nothing anywhere";
  EXPECT_EQ(validated.find("role=\"alert\">"), std::string::npos);
}

// The sentence and the bold figures of the frame are cross-validated ones, never those of the fit.
TEST(Pages, AnswerWithCrossValidatedFigures) {
  Regression model = regress(example("cement.csv"), {.response = "y", .folds = Folds::leaveOneOut()});
  const std::string before = reportPage(model).answer;
  model.fit = {};
  model.responseMean = model.responseSd = 0;
  EXPECT_EQ(reportPage(model).answer, before);
  RegressionValidation other = *model.validation;
  other.q2 = -0.25;
  model.validation = other;
  EXPECT_NE(reportPage(model).answer.find("no better than by the mean (q² = −0.250)"), std::string::npos)
      << reportPage(model).answer;

  Discriminant classes = discriminate(example("iris.csv"), {.classColumn = "Species"});
  const std::string answer = reportPage(classes).answer;
  std::fill(classes.fitted.counts.begin(), classes.fitted.counts.end(), 1u);
  for (DiscriminantClass& one : classes.classes) one.fittedCorrect = 0;
  EXPECT_EQ(reportPage(classes).answer, answer);
}

// Rows held out once, twice and never: the sentence under each figure says what its points are.
TEST(Pages, SayWhatRandomDrawsHeldOut) {
  Regression model = regress(example("cement.csv"), {.response = "y", .folds = Folds::random({3, 0.2})});
  for (RegressionRow& row : model.rows) {
    row.timesHeldOut = 0;
    row.heldOut.reset();
  }
  for (const auto& [row, times] : {std::pair{0, 2}, {3, 1}, {4, 1}, {7, 3}, {12, 1}}) {
    model.rows[static_cast<std::size_t>(row)].timesHeldOut = static_cast<std::size_t>(times);
    model.rows[static_cast<std::size_t>(row)].heldOut = 90;
  }
  std::size_t said = 0;
  for (const ReportFigure& figure : reportPage(model).figures)
    said += figure.caption.ends_with(
                "3 random draws held out 5 of 13 rows, 2 of them more than once: their points are "
                "means.")
                ? 1
                : 0;
  EXPECT_EQ(said, 2u) << "observed against predicted, and residuals";
}

// A point lies below the line, nearer to another class, where the fold that left its row out put it elsewhere.
TEST(Pages, ShowTheDistancesOfRowsLeftOut) {
  const ReportPage page =
      reportPage(discriminate(example("iris.csv"), {.classColumn = "Species", .folds = Folds::leaveOneOut()}));
  const Table* rows = dataOf(page, "rows");
  const std::vector<double>&own = rows->find("own")->numbers, &other = rows->find("other")->numbers;
  const std::vector<std::string>& verdicts = rows->find("verdict")->texts;
  for (std::size_t i = 0; i < 150; ++i) EXPECT_EQ(other[i] < own[i], verdicts[i] == "wrong when left out") << i;
  EXPECT_EQ(std::count(verdicts.begin(), verdicts.end(), "wrong when left out"), 3);
}

// Draper & Smith, Applied Regression Analysis: R2 along the textbook path is 67.5, 97.2, 98.2 and, without x4, 97.9 %.
TEST(Pages, FollowTheSelectionWithTheExplainedShareOfEachStep) {
  const Regression model =
      regress(example("cement.csv"), {.response = "y", .corrLimit = 1, .folds = Folds::leaveOneOut()});
  const ReportPage page = reportPage(model);
  const std::vector<double>& r2 = dataOf(page, "steps")->find("r2")->numbers;
  ASSERT_EQ(r2.size(), 4u);
  const double published[] = {0.6745, 0.9725, 0.9823, 0.9787};
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(r2[k], published[k], 5e-5) << k;
}

TEST(Pages, DrawManyRowsEvenlyAndSaySo) {
  constexpr std::size_t kRows = 12000;
  Table table{.name = "long.csv"};
  TableColumn x{.name = "x"}, y{.name = "y"};
  for (std::size_t i = 0; i < kRows; ++i) {
    x.numbers.push_back(static_cast<double>(i));
    y.numbers.push_back(static_cast<double>(i % 97) + static_cast<double>(i) / 100);
  }
  table.columns = {std::move(x), std::move(y)};
  const ReportPage page = reportPage(regress(table, {.response = "y", .folds = Folds::systematic(2)}));
  const std::vector<std::string>& rows = dataOf(page, "rows")->find("name")->texts;
  ASSERT_EQ(rows.size(), kMostReportRows);
  for (std::size_t k = 1; k < rows.size(); ++k) {
    const long gap = std::stol(rows[k]) - std::stol(rows[k - 1]);
    ASSERT_TRUE(gap == 2 || gap == 3) << rows[k];
  }
  EXPECT_TRUE(std::any_of(page.remarks.begin(), page.remarks.end(),
                          [](const ReportRemark& entry) { return entry.remark.code == "rows-sampled"; }));
  const ReportPage few = reportPage(regress(example("cement.csv"), {.response = "y"}));
  EXPECT_EQ(dataOf(few, "rows")->rows(), 13u);
  EXPECT_TRUE(std::none_of(few.remarks.begin(), few.remarks.end(),
                           [](const ReportRemark& entry) { return entry.remark.code == "rows-sampled"; }));
}

// Colours are looked up by the rows' names, whatever was dropped before them.
TEST(Pages, ColourEachRowByItsOwnCell) {
  Table table = example("iris.csv");
  table.columns[1].numbers[2] = std::numeric_limits<double>::quiet_NaN();  // the third row is dropped
  const TableView view(table);
  const ReportPage page = reportPage(principalComponents(table, {}), {.table = &view});
  const Table& rows = *dataOf(page, "rows");
  ASSERT_EQ(rows.rows(), 149u);
  for (const std::size_t k : {0u, 1u, 2u, 3u, 148u}) {
    const std::size_t row = k < 2 ? k : k + 1;
    EXPECT_EQ(rows.find("name")->texts[k], table.columns[0].texts[row]);
    EXPECT_EQ(rows.find("c0")->numbers[k], table.columns[1].numbers[row]);
  }
}

}  // namespace
}  // namespace studystats::test
