// Missing descriptor cells: rows or columns dropped, or cells filled. The model's rows alone decide, so that rows which
// are only predicted change nothing.
#include "host/preparation/block.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

bool inModel(const BlockRow& row) { return row.role == Role::Model; }

struct Gaps {
  std::vector<std::size_t> ofColumn;  // missing cells of each column in the model's rows
  std::vector<std::size_t> ofRow;     // missing cells of each row
  std::size_t modelRows = 0;
  std::size_t completeRows = 0;  // of the model
};

Gaps countGaps(const Block& block) {
  Gaps gaps{std::vector<std::size_t>(block.columns.size(), 0), std::vector<std::size_t>(block.rows.size(), 0)};
  for (std::size_t j = 0; j < block.columns.size(); ++j)
    for (std::size_t i = 0; i < block.rows.size(); ++i)
      if (std::isnan(block.columns[j].cells[i])) {
        ++gaps.ofRow[i];
        if (inModel(block.rows[i])) ++gaps.ofColumn[j];
      }
  for (std::size_t i = 0; i < block.rows.size(); ++i)
    if (inModel(block.rows[i])) {
      ++gaps.modelRows;
      if (gaps.ofRow[i] == 0) ++gaps.completeRows;
    }
  return gaps;
}

// Names with counts, the largest first: "Ozone 37, Solar.R 7".
std::vector<std::string> gapsByColumn(const Block& block, const Gaps& gaps) {
  std::vector<std::size_t> order(block.columns.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return gaps.ofColumn[a] > gaps.ofColumn[b]; });
  std::vector<std::string> names;
  for (const std::size_t j : order)
    if (gaps.ofColumn[j] > 0) names.push_back(fmt::format("{} {}", block.columns[j].source, gaps.ofColumn[j]));
  return names;
}

// Leaves columns out, those with the most gaps first, until at least half of the rows are complete.
struct Rescue {
  std::vector<std::string> columns;
  std::size_t rows = 0;
};
Rescue columnsToExclude(Block block) {
  Rescue rescue;
  for (Gaps gaps = countGaps(block); block.columns.size() > 1 && 2 * gaps.completeRows < gaps.modelRows;
       gaps = countGaps(block)) {
    const auto worst = std::max_element(gaps.ofColumn.begin(), gaps.ofColumn.end()) - gaps.ofColumn.begin();
    rescue.columns.push_back(block.columns[static_cast<std::size_t>(worst)].source);
    block.columns.erase(block.columns.begin() + worst);
  }
  rescue.rows = countGaps(block).completeRows;
  return rescue;
}

[[noreturn]] void refuseTooFew(const Block& block, const Gaps& gaps) {
  const Rescue rescue = columnsToExclude(block);
  const std::vector<std::string> byColumn = gapsByColumn(block, gaps);
  std::string tries = "Try --missing drop-columns or --missing fill=median.";
  if (!rescue.columns.empty() && rescue.columns.size() <= 6)
    tries = fmt::format("Try --exclude {} ({}), or --missing drop-columns.", fmt::join(rescue.columns, ","),
                        counted(rescue.rows, "row", "rows"));
  throw NotComputed(
      fmt::format("too few rows are left: {} of {} rows have no missing descriptor cell (missing: {}). {}",
                  gaps.completeRows, gaps.modelRows, listed(byColumn, 4), tries));
}

[[noreturn]] void refuseAny(const Block& block, const Gaps& gaps) {
  for (const BlockColumn& column : block.columns)
    for (std::size_t i = 0; i < block.rows.size(); ++i)
      if (std::isnan(column.cells[i]))
        throw NotComputed(
            fmt::format("{} has no value in {} ({} in all), and --missing fail was asked for. Try "
                        "--missing drop-rows.",
                        block.rows[i].name, column.source,
                        counted(std::accumulate(gaps.ofRow.begin(), gaps.ofRow.end(), std::size_t{0}), "missing cell",
                                "missing cells")));
  throw NotComputed("a cell is missing.");
}

// Drops the rows that still have a gap; those only predicted cannot be predicted either.
void dropRows(Block& block, const Gaps& gaps, UsedData& used) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < block.rows.size(); ++i) {
    if (gaps.ofRow[i] > 0) {
      std::vector<std::string> where;
      for (const BlockColumn& column : block.columns)
        if (std::isnan(column.cells[i])) where.push_back(column.source);
      used.droppedRows.push_back({block.rows[i].name, "missing: " + listed(where, 3)});
      used.cellsEliminated += gaps.ofRow[i];
      continue;
    }
    if (kept != i) {
      block.rows[kept] = std::move(block.rows[i]);
      for (BlockColumn& column : block.columns) column.cells[kept] = column.cells[i];
    }
    ++kept;
  }
  block.rows.resize(kept);
  for (BlockColumn& column : block.columns) column.cells.resize(kept);
}

double fillValue(const Missing& missing, const Block& block, const BlockColumn& column) {
  if (missing.rule == Missing::Rule::FillValue) return missing.value;
  std::vector<double> present;
  for (std::size_t i = 0; i < block.rows.size(); ++i)
    if (inModel(block.rows[i]) && !std::isnan(column.cells[i])) present.push_back(column.cells[i]);
  if (missing.rule == Missing::Rule::FillMean)
    return std::accumulate(present.begin(), present.end(), 0.0) / static_cast<double>(present.size());
  std::sort(present.begin(), present.end());
  const std::size_t half = present.size() / 2;
  return present.size() % 2 == 1 ? present[half] : present[half - 1] + (present[half] - present[half - 1]) / 2;
}

void fillCells(Block& block, const Missing& missing, UsedData& used) {
  for (BlockColumn& column : block.columns) {
    const double value = fillValue(missing, block, column);
    for (double& cell : column.cells)
      if (std::isnan(cell)) {
        cell = value;
        ++used.cellsFilled;
      }
  }
}

void dropColumns(Block& block, const std::vector<bool>& gone, const std::string& reason, UsedData& used) {
  for (std::size_t j = 0; j < block.columns.size(); ++j) {
    if (!gone[j]) continue;
    used.droppedColumns.push_back({block.columns[j].source, reason});
    for (const double cell : block.columns[j].cells) used.cellsEliminated += std::isnan(cell) ? 1 : 0;
  }
  eraseColumns(block, gone);
}

// A column without a single value in the model's rows would take every row with it.
void dropEmptyColumns(Block& block, const Gaps& gaps, UsedData& used, std::vector<Remark>& remarks) {
  std::vector<bool> gone(block.columns.size());
  std::vector<std::string> names;
  for (std::size_t j = 0; j < block.columns.size(); ++j) {
    gone[j] = gaps.modelRows > 0 && gaps.ofColumn[j] == gaps.modelRows;
    if (gone[j]) names.push_back(block.columns[j].source);
  }
  if (names.empty()) return;
  dropColumns(block, gone, "no values", used);
  remarks.push_back(
      {Severity::Note, "empty-columns",
       fmt::format("{} without a single value: {}.", counted(names.size(), "column is", "columns are"), listed(names)),
       names});
}

void tellDropped(const std::vector<std::string>& byColumn, std::size_t rows, std::size_t of,
                 std::vector<Remark>& remarks) {
  remarks.push_back(
      {Severity::Note, "rows-dropped",
       fmt::format("{} of {} rows have a missing cell and were dropped ({}).", rows, of, listed(byColumn, 4)),
       byColumn});
}

}  // namespace

void eraseColumns(Block& block, const std::vector<bool>& gone) {
  std::size_t kept = 0;
  for (std::size_t j = 0; j < block.columns.size(); ++j)
    if (!gone[j]) {
      if (kept != j) block.columns[kept] = std::move(block.columns[j]);
      ++kept;
    }
  block.columns.resize(kept);
}

void settleMissing(Block& block, const Missing& missing, UsedData& used, std::vector<Remark>& remarks) {
  dropEmptyColumns(block, countGaps(block), used, remarks);
  Gaps gaps = countGaps(block);
  if (std::all_of(gaps.ofRow.begin(), gaps.ofRow.end(), [](std::size_t n) { return n == 0; })) return;

  switch (missing.rule) {
    case Missing::Rule::Fail:
      refuseAny(block, gaps);
    case Missing::Rule::FillMean:
    case Missing::Rule::FillMedian:
    case Missing::Rule::FillValue: {
      fillCells(block, missing, used);
      remarks.push_back(
          {Severity::Note,
           "cells-filled",
           fmt::format("{} filled ({}).", counted(used.cellsFilled, "missing cell was", "missing cells were"),
                       listed(gapsByColumn(block, gaps), 4)),
           {}});
      return;
    }
    case Missing::Rule::DropColumns: {
      std::vector<bool> gone(block.columns.size());
      for (std::size_t j = 0; j < gone.size(); ++j) gone[j] = gaps.ofColumn[j] > 0;
      const std::vector<std::string> byColumn = gapsByColumn(block, gaps);
      if (!byColumn.empty())
        remarks.push_back({Severity::Note, "columns-dropped",
                           fmt::format("{} a missing cell and were left out ({}).",
                                       counted(byColumn.size(), "column has", "columns have"), listed(byColumn, 4)),
                           byColumn});
      dropColumns(block, gone, "missing cells", used);
      gaps = countGaps(block);
      break;
    }
    case Missing::Rule::DropRows:
      if (2 * gaps.completeRows < gaps.modelRows) refuseTooFew(block, gaps);
      break;
  }
  if (gaps.completeRows < gaps.modelRows)
    tellDropped(gapsByColumn(block, gaps), gaps.modelRows - gaps.completeRows, gaps.modelRows, remarks);
  dropRows(block, gaps, used);
}

}  // namespace studystats
