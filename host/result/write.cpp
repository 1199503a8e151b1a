#include "host/result/write.h"

#include "host/json_writer.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace studystats {
namespace {

void writeFields(const ResultPart& part, std::size_t row, JsonWriter& json) {
  for (const Field& field : part.fields)
    if (field.present) {
      json.key(field.name);
      writeCell(field.value(row), json);
    }
}

void writePart(const ResultPart& part, JsonWriter& json) {
  if (part.list) {
    json.beginList(true);
    for (std::size_t row = 0; row < part.rows; ++row) {
      json.beginObject();
      writeFields(part, row, json);
      json.endObject();
    }
    json.endList();
  } else if (part.rows == 0) {
    json.null();
  } else {
    json.beginObject(true);
    writeFields(part, 0, json);
    for (const ResultPart& inner : part.parts) {
      json.key(inner.name);
      writePart(inner, json);
    }
    json.endObject();
  }
}

// Full precision, where shown() rounds.
std::string csvCell(const Cell& cell) {
  if (cell.absent()) return {};
  if (const auto* number = std::get_if<double>(&cell.value)) return exact(*number);
  if (const auto* list = std::get_if<std::vector<Cell>>(&cell.value)) {
    std::vector<std::string> parts;
    for (const Cell& one : *list) parts.push_back(csvCell(one));
    return fmt::format("{}", fmt::join(parts, "; "));
  }
  return shown(cell, kText);
}

Align alignOf(Format format) {
  switch (format.kind) {
    case CellKind::Text:
    case CellKind::Count:
      return Align::Left;
    case CellKind::Flag:
    case CellKind::Whole:
    case CellKind::Probability:
    case CellKind::Share:
      return Align::Right;
    default:
      return Align::Point;
  }
}

}  // namespace

void writeCell(const Cell& cell, JsonWriter& json) {
  if (const auto* flag = std::get_if<bool>(&cell.value)) {
    json.flag(*flag);
  } else if (const auto* whole = std::get_if<std::int64_t>(&cell.value)) {
    json.whole(*whole);
  } else if (const auto* text = std::get_if<std::string>(&cell.value)) {
    json.text(*text);
  } else if (const auto* list = std::get_if<std::vector<Cell>>(&cell.value)) {
    json.beginList();
    for (const Cell& one : *list) writeCell(one, json);
    json.endList();
  } else {
    json.number(cell.number());
  }
}

std::string jsonOf(const ResultPart& document) {
  JsonWriter json;
  writePart(document, json);
  return json.take() + '\n';
}

std::string csvOf(const ResultPart& list) {
  const std::vector<PartColumn> columns = columnsOf(list);
  CsvText csv;
  std::vector<std::string> cells(columns.size());
  std::transform(columns.begin(), columns.end(), cells.begin(), [](const PartColumn& column) { return column.name; });
  csv.row(cells);
  for (std::size_t row = 0; row < list.rows; ++row) {
    std::transform(columns.begin(), columns.end(), cells.begin(),
                   [&](const PartColumn& column) { return csvCell(column.value(row)); });
    csv.row(cells);
  }
  return csv.text();
}

std::vector<CsvFile> csvFiles(const ResultPart& document) {
  std::vector<CsvFile> files;
  for (const ResultPart& part : document.parts)
    if (part.list) files.push_back({part.name + ".csv", csvOf(part)});
  return files;
}

std::string textTable(const ResultPart& list, const std::vector<std::string>& fields, const TextOptions& options) {
  std::vector<std::size_t> rows(list.rows);
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  return textTable(list, fields, options, rows, rows.size());
}

std::string textTable(const ResultPart& list, const std::vector<std::string>& fields, const TextOptions& options,
                      const std::vector<std::size_t>& rows, std::size_t most) {
  TextTable table;
  std::vector<PartColumn> columns;
  for (const std::string& name : fields) {
    columns.push_back(columnOf(list, name));
    table.column(plain(columns.back().heading), alignOf(columns.back().format));
  }
  const std::size_t listed = options.all ? rows.size() : std::min(rows.size(), most);
  for (std::size_t k = 0; k < listed; ++k) {
    std::vector<std::string> cells;
    for (const PartColumn& column : columns)
      cells.push_back(shown(column.value(rows[k]), column.format, options.digits));
    table.row(std::move(cells));
  }
  if (listed < rows.size()) table.line(fmt::format("... {} more", rows.size() - listed));
  return table.text();
}

std::string textFrame(const ReportFrame& frame, const std::string& folds) {
  TextTable table;
  for (const std::string& heading : frame.headings) {
    const bool validated = heading == "cross-validated";
    table.column(plain(heading) + (validated && !folds.empty() ? fmt::format(" ({})", folds) : ""),
                 validated || &heading == &frame.headings.front() ? Align::Left : Align::Right);
  }
  for (std::vector<std::string> row : frame.rows) {
    for (std::string& cell : row) cell = plain(cell);
    table.row(std::move(row));
  }
  return table.text();
}

}  // namespace studystats
