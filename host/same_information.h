// Columns that say the same, found by comparison in the table's own numbers.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace studystats {

// Largest and smallest present cell are the same number; true for a column without cells. Not-a-number is missing.
bool isConstant(std::span<const double> column);

// Column `setAside` equals shift + scale * column `kept` in every row, to a few units in the last place.
struct SamePair {
  std::size_t kept;
  std::size_t setAside;
  double scale;
  double shift;
};

// Every column that repeats an earlier one up to scale, sign and shift, in column order; `kept` is the first of its
// group. Columns have one length and no missing cells; constants are passed over. O(p n + p log p) and no correlation
// matrix: each column is brought to a form that scale, sign and shift do not change, and columns are compared only
// where those agree.
std::vector<SamePair> sameInformation(const std::vector<std::span<const double>>& columns);

}  // namespace studystats
