// Tables that own their cells, and views of cells that stay where they are.
#include <studystats/host/table.h>

#include <fmt/format.h>

#include <cmath>
#include <unordered_set>

#include "host/text.h"

namespace studystats {
namespace {

std::size_t lengthOf(const TableColumn& column) {
  return column.kind == ColumnKind::Numeric ? column.numbers.size() : column.texts.size();
}

TableView::Column viewed(const TableColumn& column) {
  return {column.name, column.kind, column.numbers, column.texts, column.strayCount, column.strays, column.askedAsText};
}

[[noreturn]] void refuseRepeatedName(const std::string& table, const std::string& column) {
  throw BadTable(fmt::format("{} has two columns called \"{}\".", table, column), {.file = table});
}

}  // namespace

std::size_t Table::rows() const { return columns.empty() ? 0 : lengthOf(columns.front()); }

const TableColumn* Table::find(std::string_view columnName) const {
  for (const TableColumn& column : columns)
    if (column.name == columnName) return &column;
  return nullptr;
}

bool TableView::Column::missing(std::size_t row) const {
  return kind == ColumnKind::Numeric ? std::isnan(numbers[row]) : texts[row].empty();
}

TableView::TableView(const Table& table)
    : name_(table.name.empty() ? "table" : table.name), delimiter_(table.delimiter), decimal_(table.decimal) {
  std::unordered_set<std::string_view> names;
  columns_.reserve(table.columns.size());
  for (const TableColumn& column : table.columns) {
    if (!names.insert(column.name).second) refuseRepeatedName(name_, column.name);
    add(viewed(column), lengthOf(column));
  }
}

void TableView::add(std::string name, std::span<const double> numbers) {
  if (find(name)) refuseRepeatedName(name_, name);
  add({.name = std::move(name), .kind = ColumnKind::Numeric, .numbers = numbers}, numbers.size());
}

void TableView::add(std::string name, std::span<const std::string> texts) {
  if (find(name)) refuseRepeatedName(name_, name);
  add({.name = std::move(name), .kind = ColumnKind::Text, .texts = texts}, texts.size());
}

void TableView::add(Column column, std::size_t length) {
  if (columns_.empty()) rows_ = length;
  if (length != rows_)
    throw BadTable(fmt::format("{}: column \"{}\" has {} where the columns before it have {}.", name_, column.name,
                               counted(length, "cell"), rows_),
                   {.file = name_, .column = static_cast<int>(columns_.size()) + 1});
  columns_.push_back(std::move(column));
}

const TableView::Column* TableView::find(std::string_view columnName) const {
  for (const Column& column : columns_)
    if (column.name == columnName) return &column;
  return nullptr;
}

}  // namespace studystats
