#include "host/preparation/preparation.h"

#include "host/names.h"
#include "host/preparation/same_information.h"
#include "host/preparation/standardisation.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/tables.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats {
namespace {

// What was asked for, as a record; the names of all rows and of the descriptor columns.
StatsDataInput request(const TableView& table, const Block& block) {
  std::vector<std::string> columns, rows;
  for (const BlockColumn& column : block.columns) columns.push_back(column.source);
  for (const BlockRow& row : block.rows) rows.push_back(row.name);
  return StatsDataInput(table.name(), 1, columns, rows);
}

std::vector<BlockRow> rowsOf(const TableView& table, const std::vector<std::string>& names, Role role) {
  std::vector<BlockRow> rows;
  rows.reserve(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) rows.push_back({names[i], role, &table, i});
  return rows;
}

// Marks the rows that the options keep out of the model.
void markTestRows(Block& block, const TableView& table, const TestRows& test) {
  for (const std::size_t row : test.rows) {
    if (row >= table.rows())
      throw BadOptions(fmt::format("--test-rows names row {}; {} has {}.", row + 1, table.name(),
                                   counted(table.rows(), "row", "rows")),
                       {.file = table.name(), .option = "--test-rows"});
    block.rows[row].role = Role::Predicted;
  }
  if (test.column.empty()) return;
  const TableView::Column& column = table.columns()[columnNamed(table, test.column, "--test-column")];
  bool any = false;
  for (std::size_t i = 0; i < table.rows(); ++i)
    if (cellText(column, i) == test.value) {
      block.rows[i].role = Role::Predicted;
      any = true;
    }
  if (!any)
    throw BadOptions(fmt::format("no row of {} has \"{}\" in {}, so --test-column keeps nothing out.", table.name(),
                                 test.value, test.column),
                     {.file = table.name(), .option = "--test-column"});
}

// A row without a response, or with an infinite one, cannot be trained on.
void markWithoutResponse(Block& block, const Roles& roles) {
  std::vector<std::string> wanted = roles.responses;
  if (!roles.classColumn.empty()) wanted.push_back(roles.classColumn);
  for (BlockRow& row : block.rows)
    for (const std::string& response : wanted) {
      const TableView::Column* column = row.table->find(response);
      const bool infinite = column && column->kind == ColumnKind::Numeric && std::isinf(column->numbers[row.tableRow]);
      if (!column || infinite || column->missing(row.tableRow)) row.role = Role::Predicted;
    }
}

// Appends the rows of another table, columns by name.
void appendTestTable(Block& block, const TableView& table, const Roles& roles, const DataOptions& options,
                     std::vector<Remark>& remarks) {
  const TableView& other = *options.test.table;
  const bool sameId = !options.id.empty() && other.find(options.id);
  const TableView::Column* id = sameId ? other.find(options.id) : idColumn(other, {}, roles);
  UniqueNameGenerator unique;
  for (const BlockRow& row : block.rows) unique.UniqueName(row.name);
  std::vector<BlockRow> rows = rowsOf(other, rowNames(other, id, remarks), Role::Predicted);
  for (BlockRow& row : rows) row.name = unique.UniqueName(row.name);

  for (BlockColumn& column : block.columns) {
    const std::size_t j = columnNamed(other, column.source, "--test");
    const TableView::Column& cells = other.columns()[j];
    if (cells.kind != ColumnKind::Numeric)
      throw BadOptions(
          fmt::format("column \"{}\" is numeric in {} and text in {}.", column.source, table.name(), other.name()),
          {.file = other.name(), .column = static_cast<int>(j + 1), .option = "--test"});
    column.cells.insert(column.cells.end(), cells.numbers.begin(), cells.numbers.end());
  }
  block.rows.insert(block.rows.end(), rows.begin(), rows.end());
}

// An infinite cell has no place on any scale.
void infinitiesAreMissing(Block& block) {
  for (BlockColumn& column : block.columns)
    for (double& cell : column.cells)
      if (std::isinf(cell)) cell = std::numeric_limits<double>::quiet_NaN();
}

std::vector<double> modelCells(const Block& block, const BlockColumn& column) {
  std::vector<double> cells;
  cells.reserve(block.rows.size());
  for (std::size_t i = 0; i < block.rows.size(); ++i)
    if (block.rows[i].role == Role::Model) cells.push_back(column.cells[i]);
  return cells;
}

// The model's rows as the library's dense table, prepared column by column.
Grid modelGrid(const Block& block, const std::vector<BlockRow>& rows, Scaling scaling, const Roles& roles,
               UsedData& used) {
  const std::int32_t n = count32(rows.size()), p = count32(block.columns.size());
  CompleteDataArray table(n, p);
  std::vector<std::string> sources, names;
  for (std::int32_t j = 0; j < p; ++j) {
    BlockColumn column = block.columns[static_cast<std::size_t>(j)];
    std::vector<double> cells = modelCells(block, column);
    table.SetColumnData(j, &cells);
    table.SetColumnHeading(j, column.name);
    table.SetColumnFormula(j, column.formula);
    sources.push_back(column.source);
  }
  for (const BlockRow& row : rows) names.push_back(row.name);
  table.SetColumnsUsed(&sources);
  table.SetRowsUsed(&names);

  Grid grid{rows.size(), block.columns.size(), {}};
  table.GetDataColumnMajor(&grid.values);
  for (std::size_t j = 0; j < grid.columns; ++j)
    standardise(std::span(grid.values).subspan(j * grid.rows, grid.rows), block.columns[j].name, scaling, roles, used);
  return grid;
}

[[noreturn]] void refuseFarRow(const UsedData& used, const BlockRow& row, const BlockColumn& column, double cell) {
  throw NotComputed(
      fmt::format("{} has {} in {}, too far from the rows of the model to calculate with. Correct the cell, or leave "
                  "the row out.",
                  shownRow(used, row.name), exact(cell), column.name));
}

Grid predictedGrid(const Block& block, const UsedData& used, std::size_t rows) {
  Grid grid{rows, block.columns.size(), {}};
  grid.values.reserve(rows * block.columns.size());
  for (std::size_t j = 0; j < block.columns.size(); ++j)
    for (std::size_t i = 0; i < block.rows.size(); ++i) {
      if (block.rows[i].role != Role::Predicted) continue;
      const double cell = block.columns[j].cells[i];
      grid.values.push_back((cell - used.shift[j]) / used.scale[j]);
      if (!(std::abs(grid.values.back()) <= kMostSize)) refuseFarRow(used, block.rows[i], block.columns[j], cell);
    }
  return grid;
}

// "x -> log ( x )", "x * z", or "x * z (2) = x * z" where the name was taken.
std::string madeText(const BlockColumn& column) {
  if (column.source != "Derived") return column.source + " -> " + column.name;
  return column.name == column.formula ? column.name : column.name + " = " + column.formula;
}

// The extraction, recorded as the library's own record has it.
void record(const StatsDataInput& asked, const Prepared& prepared, const Block& block, UsedData& used) {
  StatsDataFactoryResults results;
  std::vector<std::string> names;
  asked.GetRows(&names);
  results.AddToRowsRequested(names);
  asked.GetColumns(&names);
  results.AddToColumnsRequested(names);
  for (const std::vector<BlockRow>* rows : {&prepared.modelRows, &prepared.predictedRows})
    for (const BlockRow& row : *rows) results.AddToRowsExtracted(row.name);
  for (const Dropped& row : used.droppedRows) results.AddToRowsEliminated(row.name);
  for (const BlockColumn& column : block.columns) {
    if (column.source != "Derived") results.AddToColumnsExtracted(column.source);
    if (column.formula.empty()) continue;
    results.AddToColumnFormulae(column.formula);
    used.formulas.push_back(madeText(column));
  }
  results.AddToColumnHeadings(used.descriptors);
  std::vector<std::string> extracted;
  results.GetColumnsExtracted(&extracted);
  std::sort(extracted.begin(), extracted.end());
  for (const std::string& name : names)
    if (!std::binary_search(extracted.begin(), extracted.end(), name)) results.AddToColumnsEliminated(name);
  results.SetNumCellsEliminated(count32(used.cellsEliminated));
  results.SetNumCellsDefaulted(count32(used.cellsFilled));

  const auto size = [](std::int32_t count) { return static_cast<std::size_t>(count); };
  used.rowCounts = {size(results.NumRowsRequested()), size(results.NumRowsExtracted()), size(results.NumRowsMissing()),
                    size(results.NumRowsEliminated())};
  used.columnCounts = {size(results.NumColumnsRequested()), size(results.NumColumnsExtracted()),
                       size(results.NumColumnsMissing()), size(results.NumColumnsEliminated())};
}

Block extract(const TableView& table, const Roles& roles, const DataOptions& options, UsedData& used,
              std::vector<Remark>& remarks) {
  const TableView::Column* id = idColumn(table, options.id, roles);
  used.idColumn = id ? id->name : std::string();
  Block block;
  block.rows = rowsOf(table, rowNames(table, id, remarks), Role::Model);
  for (const std::size_t j : descriptorColumns(table, roles, options, id, used.droppedColumns, remarks)) {
    const TableView::Column& column = table.columns()[j];
    block.columns.push_back(
        {column.name, column.name, {}, {column.numbers.begin(), column.numbers.end()}, {{{column.name, {}}}}});
  }
  markTestRows(block, table, options.test);
  if (options.test.table) appendTestTable(block, table, roles, options, remarks);
  if (roles.predictWithoutResponse) markWithoutResponse(block, roles);
  infinitiesAreMissing(block);
  return block;
}

}  // namespace

void setAsideRepeats(Block& block, UsedData& used, std::vector<Remark>& remarks) {
  std::vector<std::vector<double>> cells;
  std::vector<std::size_t> varying;  // position of each compared column in the block
  std::vector<bool> gone(block.columns.size(), false);
  std::vector<std::string> constants, repeats;
  for (std::size_t j = 0; j < block.columns.size(); ++j) {
    std::vector<double> column = modelCells(block, block.columns[j]);
    if (isConstant(column)) {
      gone[j] = true;
      constants.push_back(block.columns[j].name);
      used.droppedColumns.push_back(
          {block.columns[j].name, column.empty() ? "constant" : fmt::format("constant, all {}", exact(column[0]))});
    } else {
      varying.push_back(j);
      cells.push_back(std::move(column));
    }
  }
  const std::vector<std::span<const double>> spans(cells.begin(), cells.end());
  for (const SamePair& pair : sameInformation(spans)) {
    const std::size_t kept = varying[pair.kept], aside = varying[pair.setAside];
    gone[aside] = true;
    used.setAside.push_back({block.columns[kept].name, block.columns[aside].name, pair.scale, pair.shift});
    repeats.push_back(fmt::format("{} (as {})", block.columns[aside].name, block.columns[kept].name));
  }
  if (!constants.empty())
    remarks.push_back(
        {Severity::Note, "constant-columns",
         fmt::format("{} set aside: {}.", counted(constants.size(), "constant column was", "constant columns were"),
                     listed(constants)),
         constants});
  if (!repeats.empty())
    remarks.push_back({Severity::Note, "duplicate-columns",
                       fmt::format("{} another up to scale, sign and shift and {} set aside: {}.",
                                   counted(repeats.size(), "column repeats", "columns repeat"),
                                   repeats.size() == 1 ? "was" : "were", listed(repeats)),
                       repeats});
  eraseColumns(block, gone);
}

std::int32_t count32(std::size_t n) {
  if (n > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
    throw NotComputed(fmt::format("{} are more than an analysis can count (2147483647).", n));
  return static_cast<std::int32_t>(n);
}

const char* nameOf(Scaling scaling) {
  switch (scaling) {
    case Scaling::Autoscale:
      return "autoscale";
    case Scaling::Pareto:
      return "pareto";
    case Scaling::Range:
      return "range";
    case Scaling::Centre:
      return "centre";
    case Scaling::None:
      return "none";
  }
  return "";
}

std::vector<std::string> labelsOf(const std::vector<BlockRow>& rows, const std::string& columnName) {
  std::vector<std::string> labels;
  labels.reserve(rows.size());
  for (const BlockRow& row : rows) {
    const TableView::Column* column = columnName.empty() ? nullptr : row.table->find(columnName);
    labels.push_back(column ? cellText(*column, row.tableRow) : std::string());
  }
  return labels;
}

Prepared prepare(const TableView& table, const Roles& roles, const DataOptions& options, Watch& watch) {
  for (const std::string& response : roles.responses) columnNamed(table, response, "--response");
  if (!roles.classColumn.empty()) columnNamed(table, roles.classColumn, "--class");
  if (!roles.foldColumn.empty()) columnNamed(table, roles.foldColumn, "--folds");

  Prepared prepared;
  UsedData& used = prepared.used;
  used.table = table.name();
  used.tableRows = table.rows();
  used.tableColumns = table.columns().size();
  used.scaling = options.scaling;

  Block block = extract(table, roles, options, used, prepared.remarks);
  const StatsDataInput asked = request(table, block);
  applyTransforms(block, options.transforms, prepared.remarks);
  settleMissing(block, options.missing, used, prepared.remarks);
  watch.check();
  deriveColumns(block, options.derivations, prepared.remarks);
  if (!roles.keepRepeats) setAsideRepeats(block, used, prepared.remarks);
  watch.check();

  for (const BlockRow& row : block.rows)
    (row.role == Role::Model ? prepared.modelRows : prepared.predictedRows).push_back(row);
  for (const BlockRow& row : prepared.modelRows) used.rows.push_back(row.name);
  for (const BlockRow& row : prepared.predictedRows) used.predictedRows.push_back(row.name);
  for (const BlockColumn& column : block.columns) {
    used.descriptors.push_back(column.name);
    used.recipes.push_back(column.recipe);
  }
  record(asked, prepared, block, used);
  prepared.model = modelGrid(block, prepared.modelRows, options.scaling, roles, used);
  prepared.predicted = predictedGrid(block, used, prepared.predictedRows.size());
  return prepared;
}

void requireDescriptors(const Prepared& prepared, const TableView& table, const char* varies) {
  if (!prepared.used.descriptors.empty()) return;
  throw NotComputed(
      fmt::format("no descriptor is left: {} has {}, and none of them is numeric, varies {} and is free of "
                  "another use. studystats describe shows why.",
                  table.name(), counted(table.columns().size(), "column", "columns"), varies));
}

}  // namespace studystats
