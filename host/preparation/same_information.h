// Columns that say the same, found by comparison in the table's own numbers.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace studystats {

// Largest and smallest present cell are the same number; true for a column without cells. Not-a-number is missing.
bool isConstant(std::span<const double> column);

// Column `setAside` equals shift + scale * column `kept` in every row, to 1.4e-14 of the terms: a few units in the last
// place of a number, or one of a number that was written with 15 digits. Scale and shift are the shortest decimals that
// say so (shift 0, scale 1 or -1, 1000, 1.8 ...), else the nearest to what the cells give.
struct SamePair {
  std::size_t kept;
  std::size_t setAside;
  double scale;
  double shift;
};

// Every column that repeats an earlier one up to scale, sign and shift, in column order; `kept` is the first of its
// group. Columns have one length and no missing cells; constants are passed over. O(p n + p log p) and no correlation
// matrix: each column has a figure that scale, sign and shift do not change, and columns are compared, cell by cell,
// only where their figures agree.
std::vector<SamePair> sameInformation(const std::vector<std::span<const double>>& columns);

}  // namespace studystats
