// What the functions on matrices ask of their caller.
#pragma once

#include <studystats/utilities.h>

#include <cstddef>
#include <cstdint>

#include "frame/argument_check.h"

namespace studystats::core {

// The first nColumns columns of m are there and have the first nRows rows.
template <class Column>
void requireBlock(const std::vector<Column>& m, std::size_t nColumns, std::size_t nRows, const char* operation) {
  require(m.size() >= nColumns, operation);
  for (std::size_t c = 0; c < nColumns; ++c) require(m[c].size() >= nRows, operation);
}

// All columns of m have the rows of its first one: their number.
template <class Column>
std::size_t requireRows(const std::vector<Column>& m, const char* operation) {
  const std::size_t nRows = m.empty() ? 0 : m.front().size();
  requireBlock(m, m.size(), nRows, operation);
  return nRows;
}

}  // namespace studystats::core
