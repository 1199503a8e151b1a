// A description as a page: how each column is spread, what is missing, and what says the same.
#include "host/preparation/used_text.h"
#include "host/report/charts.h"
#include "host/report/data.h"
#include "host/report/describe_data.h"
#include "host/report/page_parts.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace studystats {
namespace {

constexpr std::size_t kPanels = 16;       // columns drawn beside each other
constexpr std::size_t kHeatMap = 36;      // columns of the correlation heat map
constexpr std::size_t kWrittenSide = 10;  // of which each cell has room for its number
constexpr std::size_t kMissing = 40;      // columns with missing cells, most first
constexpr std::size_t kFindings = 12;     // names that a finding lists

std::string nameOfFile(const Description& description) {
  return description.table.substr(description.table.find_last_of('/') + 1);
}

std::vector<std::string> numericColumns(const Description& description) {
  std::vector<std::string> names;
  for (const ColumnSummary& column : description.columns)
    if (column.kind == ColumnKind::Numeric && column.count > 0 && column.name != description.idColumn)
      names.push_back(column.name);
  return names;
}

// All columns when they are few, else those of the strongest pairs, in table order.
std::vector<std::string> heatMapColumns(const Description& description, const std::vector<std::string>& numeric) {
  if (numeric.size() <= kHeatMap) return numeric;
  std::unordered_set<std::string> wanted;
  for (const RelatedColumns& pair : description.related) {
    if (wanted.size() + 2 > kHeatMap) break;
    wanted.insert(pair.first);
    wanted.insert(pair.second);
  }
  std::vector<std::string> names;
  for (const std::string& name : numeric)
    if (wanted.contains(name)) names.push_back(name);
  return names;
}

std::string answerOf(const Description& description) {
  std::string text = fmt::format("{}, {}", counted(description.rows, "row", "rows"),
                                 counted(description.columns.size(), "column", "columns"));
  if (description.cellsMissing == 0) {
    text += ", no cell missing";
  } else {
    text += fmt::format("; {} in {}, so that an analysis of all columns keeps {} rows",
                        counted(description.cellsMissing, "cell is missing", "cells are missing"),
                        counted(description.rowsWithMissing, "row", "rows"),
                        description.rows - description.rowsWithMissing);
    if (!description.withoutColumn.empty())
      text += fmt::format(", without {} {}", description.withoutColumn.front().column,
                          description.withoutColumn.front().rowsKept);
  }
  const std::size_t still = description.constant.size() + description.hardlyVary.size();
  if (still > 0) text += fmt::format("; {} hardly or not at all", counted(still, "column varies", "columns vary"));
  if (!description.same.empty())
    text += fmt::format("; {} another", counted(description.same.size(), "column repeats", "columns repeat"));
  return text + ".";
}

ReportFrame frameOf(const Description& description) {
  const std::size_t numeric = static_cast<std::size_t>(
      std::count_if(description.columns.begin(), description.columns.end(),
                    [](const ColumnSummary& column) { return column.kind == ColumnKind::Numeric; }));
  return {{"", "value"},
          {{"numeric columns", std::to_string(numeric)},
           {"text columns", std::to_string(description.columns.size() - numeric)},
           {"rows without a missing cell", std::to_string(description.rows - description.rowsWithMissing)},
           {"pairs of columns with |r| > 0.90", std::to_string(description.related.size())}}};
}

Table columnsOf(const Description& description) {
  using Column = const ColumnSummary&;
  const auto rows = static_cast<double>(std::max<std::size_t>(description.rows, 1));
  ReportData data("columns");
  data.texts("key", description.columns, [](Column column) { return "d:" + column.name; })
      .texts("column", description.columns, [](Column column) { return column.name; })
      .texts("kind", description.columns,
             [](Column column) { return column.kind == ColumnKind::Numeric ? "numeric" : "text"; })
      .numbers("count", description.columns, [](Column column) { return column.count; })
      .numbers("missing", description.columns, [](Column column) { return column.missing; })
      .numbers("missingShare", description.columns,
               [&](Column column) { return static_cast<double>(column.missing) / rows; })
      .numbers("different", description.columns, [](Column column) { return column.different; })
      .numbers("mean", description.columns, [](Column column) { return column.mean; })
      .numbers("sd", description.columns, [](Column column) { return column.sd; })
      .numbers("minimum", description.columns, [](Column column) { return column.minimum; })
      .numbers("median", description.columns, [](Column column) { return column.median; })
      .numbers("maximum", description.columns, [](Column column) { return column.maximum; })
      .numbers("skewness", description.columns, [](Column column) { return column.skewness; })
      .numbers("kurtosis", description.columns, [](Column column) { return column.kurtosis; });
  return data.take();
}

// What deserves a look before modelling, a line each.
Table findingsOf(const Description& description) {
  std::vector<std::pair<std::string, std::string>> all;
  const auto add = [&](const char* what, const std::vector<std::string>& names) {
    if (!names.empty()) all.emplace_back(what, listed(names, kFindings));
  };
  add("constant", description.constant);
  add("hardly vary", description.hardlyVary);
  std::vector<std::string> same, stray;
  for (const SameInformation& one : description.same) same.push_back(sameAs(one));
  add("same information", same);
  add("perhaps labels", description.codes);
  for (const ColumnSummary& column : description.columns)
    if (column.strayCount > 0)
      stray.push_back(fmt::format("{} ({} cells are no numbers)", column.name, column.strayCount));
  add("almost numeric", stray);
  ReportData data("findings");
  data.texts("what", all, [](const auto& one) { return one.first; }).texts("columns", all, [](const auto& one) {
    return one.second;
  });
  return data.take();
}

Table relatedOf(const Description& description) {
  std::vector<RelatedColumns> pairs = description.related;
  pairs.resize(std::min(pairs.size(), kMostReportRows));
  ReportData data("related");
  data.texts("first", pairs, [](const RelatedColumns& pair) { return pair.first; })
      .texts("second", pairs, [](const RelatedColumns& pair) { return pair.second; })
      .numbers("r", pairs, [](const RelatedColumns& pair) { return pair.r; });
  return data.take();
}

Json histogramBars(int height, bool titles) {
  const Json title = titles ? Json("rows") : Json(nullptr);
  return {
      {"height", height},
      {"mark", {{"type", "bar"}, {"binSpacing", 0}, {"stroke", kPaper.light}, {"strokeWidth", 0.6}}},
      {"encoding",
       {{"x",
         {{"field", "low"},
          {"bin", "binned"},
          {"type", "quantitative"},
          {"title", nullptr},
          {"scale", {{"zero", false}, {"nice", false}}},
          {"axis", {{"tickCount", titles ? 10 : 4}}}}},
        {"x2", {{"field", "high"}}},
        {"y",
         {{"field", "count"}, {"type", "quantitative"}, {"title", title}, {"axis", {{"tickCount", titles ? 6 : 3}}}}},
        {"tooltip", tips({{"column", "column", false}, {"low", "from"}, {"high", "to"}, {"count", "rows"}})}}}};
}

ReportFigure everyHistogram(const std::vector<std::string>& columns) {
  Json views = Json::array();
  for (const std::string& column : columns) {
    views.push_back(onlyWhere(histogramBars(70, false), "datum.column == " + Json(column).dump()));
    views.back()["title"] = {{"text", column}, {"limit", 140}};
  }
  return {"histograms", "How the values are spread", fmt::format("Histograms of {} columns.", columns.size()),
          "A bar is the number of rows with a value in its range; every column has scales of its own.",
          finished(panels("histogram", std::move(views), 75, 48))};
}

ReportFigure oneHistogram(const std::vector<std::string>& columns) {
  Json chart = histogramBars(280, true);
  chart["data"] = {{"name", "histogram"}};
  chart["width"] = "container";
  chart["params"] = Json::array({{{"name", "column"},
                                  {"value", columns.front()},
                                  {"bind", {{"input", "select"}, {"options", columns}, {"name", "column "}}}}});
  chart["transform"] = Json::array({{{"filter", "datum.column == column"}}});
  return {"histogram", "How the values of a column are spread",
          fmt::format("Histogram of one of {} columns that can be chosen.", columns.size()),
          "A bar is the number of rows with a value in its range.", finished(chart)};
}

ReportFigure missingCells(const Description& description, std::size_t gapped) {
  const std::size_t shownCount = std::min(gapped, kMissing);
  Json chart = lines(
      "columns", 20, shownCount,
      Json::array(
          {{{"mark", {{"type", "bar"}}},
            {"encoding",
             {{"y", with(with(named("column", ""), "sort", {{"field", "missing"}, {"order", "descending"}}), "axis",
                         {{"labelLimit", 190}})},
              {"x", with(with(fromZero("missing", fmt::format("missing cells, of {}", description.rows)), "scale",
                              {{"domain", {0, description.rows}}}),
                         "axis", {{"tickMinStep", 1}})},
              {"tooltip", tips({{"column", "column", false}, {"missing", "missing"}, {"count", "present"}})}}}}}));
  chart["transform"] = Json::array({{{"filter", "datum.missing > 0"}},
                                    {{"window", Json::array({{{"op", "row_number"}, {"as", "rank"}}})},
                                     {"sort", Json::array({{{"field", "missing"}, {"order", "descending"}}})}},
                                    {{"filter", fmt::format("datum.rank <= {}", shownCount)}}});
  return {
      "missing", "Missing cells", fmt::format("Bars: the number of missing cells of {} columns.", shownCount),
      fmt::format(
          "The whole width is the table's {} rows. A row with a missing descriptor is dropped unless --missing says "
          "otherwise.",
          description.rows),
      finished(chart)};
}

ReportFigure correlations(std::size_t shownCount, std::size_t all) {
  const int side = static_cast<int>(std::clamp<std::size_t>(shownCount * 16, 160, 560));
  const Json y = with(named("first", ""), "axis", {{"labelLimit", 120}});
  const Json x = with(named("second", ""), "axis", {{"labelAngle", -60}, {"labelLimit", 100}});
  Json cells{{"mark", {{"type", "rect"}}},
             {"encoding",
              {{"x", x},
               {"y", y},
               {"color",
                {{"field", "sign"},
                 {"type", "nominal"},
                 {"title", nullptr},
                 {"scale", {{"domain", {"positive", "negative"}}, {"range", {kStrong.light, kOther.light}}}}}},
               {"opacity",
                {{"field", "size"},
                 {"type", "quantitative"},
                 {"scale", {{"domain", {0, 1}}, {"range", {0, 1}}}},
                 {"legend", nullptr}}},
               {"tooltip", tips({{"first", "", false}, {"second", "with", false}, {"r", "r"}})}}}};
  Json layers = Json::array({cells});
  if (shownCount <= kWrittenSide) {
    Json text = cells;
    text["mark"] = {{"type", "text"}, {"fontSize", 11}};
    text["encoding"].erase("opacity");
    text["encoding"]["text"] = {{"field", "r"}, {"type", "quantitative"}, {"format", ".2f"}};
    text["encoding"]["color"] = {{"condition", {{"test", "datum.size > 0.6"}, {"value", kPaper.light}}},
                                 {"value", kInk.light}};
    layers.push_back(std::move(text));
  }
  Json chart = layered("correlations", side, std::move(layers));
  const std::string cut =
      shownCount < all ? fmt::format(" The {} columns of the strongest pairs, of {}.", shownCount, all) : "";
  return {
      "correlations", "Correlations", fmt::format("Heat map of the correlations between {} columns.", shownCount),
      "The stronger the colour, the closer to 1 or −1. Neighbouring blocks are columns that say nearly the same." + cut,
      finished(chart)};
}

std::vector<ReportTable> tablesOf(const Description& description) {
  std::vector<ReportTable> tables{{"columns",
                                   "Columns",
                                   "",
                                   "columns",
                                   {{"column", "column"},
                                    {"count", "count", CellKind::Whole},
                                    {"missing", "missing", CellKind::Whole},
                                    {"mean", "mean", CellKind::Number, 5},
                                    {"sd", "sd", CellKind::Number, 4},
                                    {"minimum", "min", CellKind::Value, 6},
                                    {"median", "median", CellKind::Value, 6},
                                    {"maximum", "max", CellKind::Value, 6},
                                    {"skewness", "skewness", CellKind::Fixed, 2},
                                    {"kurtosis", "kurtosis", CellKind::Fixed, 2},
                                    {"different", "different", CellKind::Whole},
                                    {"kind", "kind"}}}};
  tables.push_back(
      {"findings", "Look at these before modelling", "", "findings", {{"what", "finding"}, {"columns", "columns"}}});
  if (!description.related.empty())
    tables.push_back({"related",
                      "Strongly related columns",
                      "",
                      "related",
                      {{"first", "column"}, {"second", "with"}, {"r", "r", CellKind::Fixed, 5}}});
  return tables;
}

std::vector<ReportEntry> cardOf(const Description& description, const ReportContext& context) {
  std::vector<ReportEntry> card{
      {"Table", fmt::format("{}: {}, {}", description.table, counted(description.rows, "row", "rows"),
                            counted(description.tableColumns, "column", "columns"))}};
  if (description.tableColumns != description.columns.size())
    card.push_back({"Described", counted(description.columns.size(), "column", "columns")});
  card.push_back({"Row names", description.idColumn.empty() ? "rows are numbered" : description.idColumn});
  if (description.delimiter != '\0')
    card.push_back({"File", fmt::format("cells between \"{}\", decimal {}",
                                        description.delimiter == '\t' ? "\\t" : std::string(1, description.delimiter),
                                        description.decimal == ',' ? "comma" : "point")});
  const std::vector<ReportEntry> made = madeBy(context);
  card.insert(card.end(), made.begin(), made.end());
  return card;
}

}  // namespace

ReportPage reportPage(const Description& description, const ReportContext& context) {
  ReportPage page;
  page.analysis = "describe";
  page.title = "Description of " + nameOfFile(description);
  page.subtitle = fmt::format("{}, {}", counted(description.rows, "row", "rows"),
                              counted(description.tableColumns, "column", "columns"));
  page.answer = answerOf(description);
  page.frame = frameOf(description);
  page.data = {columnsOf(description), findingsOf(description), relatedOf(description)};
  const std::vector<std::string> numeric = numericColumns(description);
  if (context.table != nullptr && !numeric.empty()) {
    page.data.push_back(histogramData(*context.table, numeric));
    if (numeric.size() <= kPanels) page.figures.push_back(everyHistogram(numeric));
    page.figures.push_back(oneHistogram(numeric));
  }
  const auto gapped =
      static_cast<std::size_t>(std::count_if(description.columns.begin(), description.columns.end(),
                                             [](const ColumnSummary& column) { return column.missing > 0; }));
  if (gapped > 0) page.figures.push_back(missingCells(description, gapped));
  const std::vector<std::string> related = heatMapColumns(description, numeric);
  if (context.table != nullptr && related.size() > 1) {
    page.data.push_back(correlationData(*context.table, related));
    page.figures.push_back(correlations(related.size(), numeric.size()));
  }
  page.tables = tablesOf(description);
  if (page.data[1].rows() == 0)
    std::erase_if(page.tables, [](const ReportTable& table) { return table.name == "findings"; });
  page.remarks = anchored(description.remarks, {{"related-columns-cut", "related"}, {"almost-numeric", "findings"}});
  page.card = cardOf(description, context);
  page.reading = {{"sd, skewness, kurtosis",
                   "sd = √(Σ(x − x̄)² / (n − 1)). Skewness and excess kurtosis are moments over n, divided by "
                   "sd³ and sd⁴; both are 0 for a normal distribution."},
                  {"r", "The correlation of two columns over the rows in which both are present."},
                  {"hardly vary", "At least 95 % of the rows have one value: such a column tells few rows apart."},
                  {"same information", "One column is a straight line of another: a model can use only one of them."},
                  {"perhaps labels",
                   "Few different whole numbers, each about as frequent: months, days or classes rather than a "
                   "measured quantity."}};
  return page;
}

}  // namespace studystats
