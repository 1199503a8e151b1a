#include "host/report/data.h"

#include "host/text.h"

#include <fmt/format.h>

#include <numeric>

namespace studystats {
namespace {

TableColumn dataColumn(const PartColumn& column, const std::vector<std::size_t>& rows) {
  const CellKind kind = column.format.kind;
  const bool text = kind == CellKind::Text || kind == CellKind::Flag || column.format.list;
  TableColumn data{.name = column.name, .kind = text ? ColumnKind::Text : ColumnKind::Numeric};
  for (const std::size_t row : rows) {
    const Cell cell = column.value(row);
    if (!text)
      data.numbers.push_back(cell.number());
    else
      data.texts.push_back(cell.absent() ? std::string() : shown(cell, column.format));
  }
  return data;
}

Table dataOf(const ResultPart& list, const std::vector<std::size_t>& rows, const Getter& key) {
  Table data{.name = list.name};
  data.columns.push_back(dataColumn({"key", "", kText, key}, rows));
  for (const PartColumn& column : columnsOf(list)) data.columns.push_back(dataColumn(column, rows));
  return data;
}

}  // namespace

Table pageData(const ResultPart& list, const std::string& prefix, const std::string& keyField) {
  std::vector<std::size_t> rows(list.rows);
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  const PartColumn named = columnOf(list, keyField);
  return dataOf(list, rows, [&](std::size_t row) { return prefix + shown(named.value(row), named.format); });
}

Table pageRows(const ResultPart& rows) {
  return dataOf(rows, shownRows(rows.rows), [](std::size_t row) { return "r" + std::to_string(row); });
}

ReportTable pageTable(const ResultPart& list, const std::string& title, const std::string& note,
                      const std::vector<std::string>& fields) {
  ReportTable table{list.name, title, note, list.name, {}};
  for (const std::string& name : fields) {
    const PartColumn column = columnOf(list, name);
    table.columns.push_back({column.name, column.heading, column.format.kind, column.format.digits});
  }
  return table;
}

std::vector<std::size_t> shownRows(std::size_t n) {
  const std::size_t shown = std::min(n, kMostReportRows);
  std::vector<std::size_t> numbers;
  for (std::size_t k = 0; k < shown; ++k) numbers.push_back(k * n / shown);
  return numbers;
}

std::string samplingText(std::size_t n) {
  if (n <= kMostReportRows) return {};
  return fmt::format("{} of {} rows, spread evenly over the table", kMostReportRows, n);
}

}  // namespace studystats
