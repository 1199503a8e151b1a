// A description as JSON and as CSV files.
#include "host/describe/describe.h"
#include "host/json.h"
#include "host/text.h"

#include <utility>

namespace studystats {
namespace {

using Figure = std::optional<double> ColumnSummary::*;

constexpr std::pair<const char*, Figure> kFigures[] = {
    {"mean", &ColumnSummary::mean},         {"sd", &ColumnSummary::sd},       {"min", &ColumnSummary::minimum},
    {"median", &ColumnSummary::median},     {"max", &ColumnSummary::maximum}, {"skewness", &ColumnSummary::skewness},
    {"kurtosis", &ColumnSummary::kurtosis},
};

const char* nameOf(ColumnKind kind) { return kind == ColumnKind::Numeric ? "numeric" : "text"; }

void jsonOrReason(Json value, bool present, const char* reason, const std::string& key, Json& object) {
  object[key] = present ? std::move(value) : Json(nullptr);
  if (!present) object[key + "_reason"] = reason;
}

Json jsonColumn(const ColumnSummary& column) {
  Json json{{"name", column.name},       {"kind", nameOf(column.kind)},   {"count", column.count},
            {"missing", column.missing}, {"different", column.different}, {"most_common", column.mostCommon}};
  if (column.kind == ColumnKind::Numeric) {
    for (const auto& [name, figure] : kFigures) {
      json[name] = jsonNumber(column.*figure);
      if (const char* reason = reasonFor(column, figure)) json[std::string(name) + "_reason"] = reason;
    }
    return json;
  }
  json["almost_numeric_cells"] = column.strayCount;
  Json strays = Json::array();
  for (const StrayCell& stray : column.strays) {
    Json cell{{"row", stray.row + 1}, {"text", stray.text}};
    if (stray.line > 0) cell["line"] = stray.line;
    strays.push_back(std::move(cell));
  }
  json["almost_numeric"] = std::move(strays);
  return json;
}

Json jsonMissing(const Description& description) {
  Json json{{"cells", description.cellsMissing}, {"rows", description.rowsWithMissing}};
  json["rows_kept"] = description.rows - description.rowsWithMissing;
  json["without_column"] = Json::array();
  for (const auto& one : description.withoutColumn)
    json["without_column"].push_back({{"column", one.column}, {"rows_kept", one.rowsKept}});
  json["together"] = Json::array();
  for (const auto& one : description.missingTogether)
    json["together"].push_back({{"first", one.first}, {"second", one.second}, {"rows", one.rows}});
  return json;
}

Json jsonTable(const Description& description) {
  Json json{{"name", description.table}, {"rows", description.rows}, {"columns", description.tableColumns}};
  const bool file = description.delimiter != '\0';
  jsonOrReason(std::string(1, description.delimiter), file, "no file", "delimiter", json);
  jsonOrReason(std::string(1, description.decimal), file, "no file", "decimal", json);
  const bool named = !description.idColumn.empty();
  jsonOrReason(description.idColumn, named, "no column names the rows", "id_column", json);
  jsonOrReason(description.idDifferent, named, "no column names the rows", "id_different", json);
  return json;
}

std::string columnsCsv(const Description& description) {
  CsvText csv;
  std::vector<std::string> heading{"column", "kind", "count", "missing", "different", "most_common"};
  for (const auto& [name, figure] : kFigures) heading.emplace_back(name);
  heading.emplace_back("almost_numeric_cells");
  csv.row(heading);
  for (const ColumnSummary& column : description.columns) {
    std::vector<std::string> cells{column.name,
                                   nameOf(column.kind),
                                   std::to_string(column.count),
                                   std::to_string(column.missing),
                                   std::to_string(column.different),
                                   std::to_string(column.mostCommon)};
    for (const auto& [name, figure] : kFigures)
      cells.push_back(column.*figure ? exact(*(column.*figure)) : std::string());
    cells.push_back(std::to_string(column.strayCount));
    csv.row(cells);
  }
  return csv.text();
}

std::string relatedCsv(const Description& description) {
  CsvText csv;
  csv.row({"first", "second", "r"});
  for (const RelatedColumns& pair : description.related) csv.row({pair.first, pair.second, exact(pair.r)});
  return csv.text();
}

std::string sameCsv(const Description& description) {
  CsvText csv;
  csv.row({"kept", "set_aside", "scale", "shift"});
  for (const SameInformation& same : description.same)
    csv.row({same.kept, same.setAside, exact(same.scale), exact(same.shift)});
  return csv.text();
}

}  // namespace

std::string toJson(const Description& description) {
  Json json;
  json["schema"] = "studystats.describe/1";
  json["table"] = jsonTable(description);
  json["columns"] = Json::array();
  for (const ColumnSummary& column : description.columns) json["columns"].push_back(jsonColumn(column));
  json["missing"] = jsonMissing(description);
  json["codes"] = description.codes;
  json["constant"] = description.constant;
  json["hardly_vary"] = description.hardlyVary;
  json["same_information"] = jsonSame(description.same);
  json["related"] = Json::array();
  for (const RelatedColumns& pair : description.related)
    json["related"].push_back({{"first", pair.first}, {"second", pair.second}, {"r", jsonNumber(pair.r)}});
  json["remarks"] = jsonRemarks(description.remarks);
  return jsonText(json);
}

std::vector<CsvFile> toTables(const Description& description) {
  return {{"columns.csv", columnsCsv(description)},
          {"related.csv", relatedCsv(description)},
          {"same.csv", sameCsv(description)}};
}

}  // namespace studystats
