// The parts that every result's JSON has: numbers, grids, remarks and the data card.
#include "host/json.h"

#include "host/folds.h"
#include "host/preparation/preparation.h"

namespace studystats {
namespace {

Json jsonDropped(const std::vector<Dropped>& dropped) {
  Json list = Json::array();
  for (const Dropped& one : dropped) list.push_back({{"name", one.name}, {"reason", one.reason}});
  return list;
}

Json jsonCounts(const ExtractionCounts& counts) {
  return {{"requested", counts.requested},
          {"extracted", counts.extracted},
          {"missing", counts.missing},
          {"eliminated", counts.eliminated}};
}

}  // namespace

Json jsonNumbers(std::span<const double> values) {
  Json list = Json::array();
  for (const double value : values) list.push_back(jsonNumber(value));
  return list;
}

Json jsonGrid(const Grid& grid) {
  Json rows = Json::array();
  for (std::size_t i = 0; i < grid.rows; ++i) {
    Json row = Json::array();
    for (std::size_t j = 0; j < grid.columns; ++j) row.push_back(jsonNumber(grid(i, j)));
    rows.push_back(std::move(row));
  }
  return rows;
}

Json jsonRemarks(const std::vector<Remark>& remarks) {
  Json list = Json::array();
  for (const Remark& remark : remarks)
    list.push_back({{"severity", remark.severity == Severity::Warning ? "warning" : "note"},
                    {"code", remark.code},
                    {"text", remark.text},
                    {"names", remark.names}});
  return list;
}

Json jsonSame(const std::vector<SameInformation>& same) {
  Json list = Json::array();
  for (const SameInformation& one : same)
    list.push_back({{"kept", one.kept},
                    {"set_aside", one.setAside},
                    {"scale", jsonNumber(one.scale)},
                    {"shift", jsonNumber(one.shift)}});
  return list;
}

Json jsonUsed(const UsedData& used) {
  Json json;
  json["table"] = used.table;
  json["table_rows"] = used.tableRows;
  json["table_columns"] = used.tableColumns;
  json["id_column"] = used.idColumn.empty() ? Json(nullptr) : Json(used.idColumn);
  if (used.idColumn.empty()) json["id_column_reason"] = "rows are numbered";
  json["rows"] = used.rows;
  json["predicted_rows"] = used.predictedRows;
  json["descriptors"] = used.descriptors;
  json["dropped_rows"] = jsonDropped(used.droppedRows);
  json["dropped_columns"] = jsonDropped(used.droppedColumns);
  json["set_aside"] = jsonSame(used.setAside);
  json["cells_filled"] = used.cellsFilled;
  json["cells_eliminated"] = used.cellsEliminated;
  json["row_counts"] = jsonCounts(used.rowCounts);
  json["column_counts"] = jsonCounts(used.columnCounts);
  json["formulas"] = used.formulas;
  json["scaling"] = nameOf(used.scaling);
  json["shift"] = jsonNumbers(used.shift);
  json["scale"] = jsonNumbers(used.scale);
  return json;
}

Json jsonPlan(const FoldPlan& plan) {
  return {{"folds", plan.folds},
          {"scheme", describedFolds(plan)},
          {"held_out_least", plan.smallest},
          {"held_out_most", plan.largest},
          {"seed", plan.seed}};
}

std::string jsonText(const Json& json) { return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n'; }

}  // namespace studystats
