// Rows and their names, and the columns that an analysis is asked to use.
#include "host/preparation/block.h"

#include "host/names.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace studystats {
namespace {

bool contains(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool namesEveryRowOnce(const TableView::Column& column, std::size_t rows) {
  std::unordered_set<std::string_view> seen;
  for (std::size_t i = 0; i < rows; ++i)
    if (column.missing(i) || !seen.insert(column.texts[i]).second) return false;
  return rows > 0;
}

// 1, 2, ... n: a row number that was saved as a column.
bool countsRows(const TableView::Column& column) {
  for (std::size_t i = 0; i < column.numbers.size(); ++i)
    if (column.numbers[i] != static_cast<double>(i + 1)) return false;
  return column.numbers.size() > 2;
}

std::string strayText(const TableView::Column& column, std::size_t position) {
  const StrayCell& cell = column.strays.front();
  const std::string where =
      cell.line > 0 ? fmt::format("line {}, column {}", cell.line, position + 1) : fmt::format("row {}", cell.row + 1);
  return fmt::format("column \"{}\" is text because of {}: {}, \"{}\"", column.name,
                     counted(column.strayCount, "cell", "cells"), where, cell.text);
}

[[noreturn]] void refuseText(const TableView& table, std::size_t position, const std::string& option) {
  const TableView::Column& column = table.columns()[position];
  Where where{.file = table.name(), .column = static_cast<int>(position + 1), .option = option};
  if (column.strayCount == 0)
    throw BadOptions(fmt::format("column \"{}\" of {} is text and cannot be a {}.", column.name, table.name(),
                                 option == "--response" ? "response" : "descriptor"),
                     where);
  where.line = column.strays.front().line;
  where.cell = column.strays.front().text;
  throw BadOptions(fmt::format("{}. Correct the cell, or --missing-as \"{}\" to treat it as missing.",
                               strayText(column, position), where.cell),
                   where);
}

// What a column is used for other than as a descriptor; empty when it is free.
std::string otherUse(const TableView::Column& column, const Roles& roles, const DataOptions& options,
                     const TableView::Column* id) {
  if (contains(roles.responses, column.name)) return "response";
  if (column.name == roles.classColumn) return "class";
  if (column.name == roles.foldColumn) return "folds";
  if (id && column.name == id->name) return "row names";
  if (!options.test.column.empty() && column.name == options.test.column) return "marks test rows";
  return {};
}

}  // namespace

std::size_t Block::modelRows() const {
  return static_cast<std::size_t>(
      std::count_if(rows.begin(), rows.end(), [](const BlockRow& row) { return row.role == Role::Model; }));
}

void requireNumeric(const TableView& table, const std::string& column, const std::string& option) {
  const std::size_t j = columnNamed(table, column, option);
  if (table.columns()[j].kind == ColumnKind::Text) refuseText(table, j, option);
}

std::string cellText(const TableView::Column& column, std::size_t row) {
  if (column.kind == ColumnKind::Text) return column.texts[row];
  return std::isnan(column.numbers[row]) ? std::string() : exact(column.numbers[row]);
}

const TableView::Column* idColumn(const TableView& table, const std::string& asked, const Roles& roles) {
  if (!asked.empty()) return &table.columns()[columnNamed(table, asked, "--id")];
  if (!table.rowNames().empty()) return nullptr;
  for (const TableView::Column& column : table.columns()) {
    const bool free = column.kind == ColumnKind::Text && !column.askedAsText && column.strayCount == 0 &&
                      column.name != roles.classColumn && column.name != roles.foldColumn &&
                      !contains(roles.responses, column.name);
    if (free && namesEveryRowOnce(column, table.rows())) return &column;
  }
  return nullptr;
}

std::vector<std::string> rowNames(const TableView& table, const TableView::Column* id, std::vector<Remark>& remarks) {
  std::vector<std::string> names(table.rows());
  std::unordered_set<std::string> taken;
  UniqueNameGenerator unique;
  std::vector<std::string> mended;
  for (std::size_t i = 0; i < names.size(); ++i) {
    names[i] = id ? cellText(*id, i) : i < table.rowNames().size() ? table.rowNames()[i] : std::to_string(i + 1);
    if (names[i].empty()) names[i] = fmt::format("row {}", i + 1);
    if (id || !table.rowNames().empty()) {
      const std::string asked = names[i];
      names[i] = unique.UniqueName(asked);
      if (names[i] != asked) mended.push_back(names[i]);
    }
  }
  if (!mended.empty())
    remarks.push_back({Severity::Note, "row-names-repeat",
                       fmt::format("{} repeat an earlier one and got a counter: {}.",
                                   counted(mended.size(), "row name", "row names"), listed(mended, 4)),
                       mended});
  return names;
}

std::vector<std::size_t> descriptorColumns(const TableView& table, const Roles& roles, const DataOptions& options,
                                           const TableView::Column* id, std::vector<Dropped>& dropped,
                                           std::vector<Remark>& remarks) {
  const std::vector<TableView::Column>& columns = table.columns();
  std::vector<bool> excluded(columns.size(), false);
  for (const std::size_t j : matchingColumns(table, options.exclude, "--exclude")) excluded[j] = true;
  const bool all = options.columns.empty();
  const std::vector<std::size_t> asked =
      matchingColumns(table, all ? std::vector<std::string>{"*"} : options.columns, "--columns");

  std::vector<std::size_t> chosen;
  for (const std::size_t j : asked) {
    const TableView::Column& column = columns[j];
    const bool byName = !all && contains(options.columns, column.name);
    const std::string use = otherUse(column, roles, options, id);
    if (excluded[j]) {
      dropped.push_back({column.name, "excluded"});
    } else if (!use.empty()) {
      if (byName && use != "row names")
        throw BadOptions(fmt::format("column \"{}\" cannot be a descriptor: it is the {}.", column.name, use),
                         {.file = table.name(), .option = "--columns"});
      dropped.push_back({column.name, use});
    } else if (column.kind == ColumnKind::Text) {
      if (byName || (!all && column.strayCount > 0)) refuseText(table, j, "--columns");
      dropped.push_back({column.name, "text"});
      if (column.strayCount > 0 && column.strays.front().line == 0)  // else the reader of the file has said so
        remarks.push_back({Severity::Warning,
                           "almost-numeric",
                           fmt::format("{}; it is not used. Correct the cell, or --missing-as \"{}\" to treat it as "
                                       "missing.",
                                       strayText(column, j), column.strays.front().text),
                           {column.name}});
    } else {
      if (countsRows(column))
        remarks.push_back({Severity::Warning,
                           "counts-rows",
                           fmt::format("{} counts the rows from 1 to {} and is used as a descriptor. If it only names "
                                       "the rows, say --id {}.",
                                       column.name, table.rows(), column.name),
                           {column.name}});
      chosen.push_back(j);
    }
  }
  return chosen;
}

}  // namespace studystats
