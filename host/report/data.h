// The data of a page, and which of many rows it shows.
#pragma once

#include <studystats/host/report.h>

#include "host/result/part.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

// Columns of one length, filled from a list of things.
class ReportData {
 public:
  explicit ReportData(std::string name) { table_.name = std::move(name); }

  template <class Things, class Value>
  ReportData& numbers(std::string field, const Things& things, Value value) {
    TableColumn column{.name = std::move(field)};
    for (const auto& thing : things) column.numbers.push_back(number(value(thing)));
    table_.columns.push_back(std::move(column));
    return *this;
  }

  template <class Things, class Value>
  ReportData& texts(std::string field, const Things& things, Value value) {
    TableColumn column{.name = std::move(field), .kind = ColumnKind::Text};
    for (const auto& thing : things) column.texts.push_back(value(thing));
    table_.columns.push_back(std::move(column));
    return *this;
  }

  Table take() { return std::move(table_); }

 private:
  static double number(double value) { return value; }
  static double number(std::size_t value) { return static_cast<double>(value); }
  static double number(const std::optional<double>& value) {
    return value.value_or(std::numeric_limits<double>::quiet_NaN());
  }

  Table table_;
};

// A list of a result as data: numbers and texts, the elements of spread lists as columns of their own. What `keyField`
// says of a record, behind `prefix`, is its key: marks and rows of equal keys light together.
Table pageData(const ResultPart& list, const std::string& prefix, const std::string& keyField);

// The same for a result's rows, as many as a page shows; the key is the row's place.
Table pageRows(const ResultPart& rows);

// The fields of these names as a table.
ReportTable pageTable(const ResultPart& list, const std::string& title, const std::string& note,
                      const std::vector<std::string>& fields);

// Numbers 0 ... n - 1, or kMostReportRows of them spread evenly.
std::vector<std::size_t> shownRows(std::size_t n);

// "5000 of 12345 rows, spread evenly over the table"; empty when all are shown.
std::string samplingText(std::size_t n);

// The rows that a page shows of a result's.
template <class Row>
std::vector<const Row*> shown(const std::vector<Row>& rows) {
  std::vector<const Row*> list;
  for (const std::size_t i : shownRows(rows.size())) list.push_back(&rows[i]);
  return list;
}

// The data "rows" with what every row has: a key, its name and its role.
template <class Row>
ReportData rowData(const std::vector<Row>& rows) {
  ReportData data("rows");
  const std::vector<std::size_t> numbers = shownRows(rows.size());
  data.texts("key", numbers, [](std::size_t i) { return "r" + std::to_string(i); })
      .texts("name", numbers, [&](std::size_t i) { return rows[i].name; })
      .texts("role", numbers, [&](std::size_t i) { return rows[i].role == Role::Model ? "model" : "predicted"; });
  return data;
}

}  // namespace studystats
