// What the tables do alike with a list of columns, whatever is in the cells.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "frame/argument_check.h"

namespace studystats::core {

template <class Cell>
using Columns = std::vector<std::vector<Cell>>;

// `count` columns of `nRows` cells; sizes below 0 are refused before anything is allocated.
template <class Cell>
Columns<Cell> makeColumns(std::int32_t nRows, std::int32_t count, const char* operation) {
  require(nRows >= 0 && count >= 0, operation);
  return Columns<Cell>(std::size_t(count), std::vector<Cell>(std::size_t(nRows)));
}

// The column of that number, or the caller's error.
template <class Cells>
auto& columnAt(Cells& columns, std::int32_t column, const char* operation) {
  require(isIndex(column, columns.size()), operation);
  return columns[std::size_t(column)];
}

// The result's length; a product that does not fit becomes one that no list can have.
inline std::size_t cellCount(std::size_t nRows, std::size_t nColumns) {
  const std::size_t most = std::numeric_limits<std::size_t>::max();
  return nRows > 0 && nColumns > most / nRows ? most : nRows * nColumns;
}

// The first nRows cells of each column, one column after the other. Every column must have them. The result is made
// beside the list that it replaces, so that a refused allocation changes nothing.
template <class Cell>
void flatten(const Columns<Cell>& columns, std::size_t nRows, std::vector<Cell>* out, const char* operation) {
  require(out != nullptr, operation);
  for (const auto& column : columns) require(column.size() >= nRows, operation);
  std::vector<Cell> cells;
  cells.reserve(cellCount(nRows, columns.size()));
  for (const auto& column : columns) cells.insert(cells.end(), column.begin(), column.begin() + std::ptrdiff_t(nRows));
  out->swap(cells);
}

// The same for the listed columns, in the order of the list.
template <class Cell>
void flatten(const Columns<Cell>& columns, const std::vector<std::int32_t>& list, std::size_t nRows,
             std::vector<Cell>* out, const char* operation) {
  require(out != nullptr, operation);
  for (const std::int32_t c : list) require(columnAt(columns, c, operation).size() >= nRows, operation);
  std::vector<Cell> cells;
  cells.reserve(cellCount(nRows, list.size()));
  for (const std::int32_t c : list) {
    const auto& column = columns[std::size_t(c)];
    cells.insert(cells.end(), column.begin(), column.begin() + std::ptrdiff_t(nRows));
  }
  out->swap(cells);
}

}  // namespace studystats::core
