// Keeping squares and sums of very large and very small numbers within the range of a double.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <string_view>

namespace studystats {

// Prepared numbers and responses can be analysed when the largest of a column is 0 or between 1 / kMostSize and
// kMostSize. The analyses multiply up to four of them, two covariances in the eigensolver and two squared distances in
// the limits, and sum over the rows: from there to the ends of a double's range is room enough for both.
inline constexpr double kMostSize = 1e60;

// Throws NotComputed, with the column's name and its cells, unless the numbers made of them can be analysed. `most`
// stands in the place of kMostSize; `remedy` ends the sentence.
void requireSize(std::span<const double> numbers, double most, const std::string& column, std::span<const double> cells,
                 std::string_view remedy);

// The power of two that brings the largest magnitude of a column close to 1; 1 for a column of zeros. Products with it
// are exact, so that figures of the column times this factor have the same digits. Not-a-number is passed over.
inline double unitFactor(std::span<const double> column) {
  double largest = 0;
  for (const double value : column) largest = std::max(largest, std::isnan(value) ? 0.0 : std::abs(value));
  if (largest == 0 || std::isinf(largest)) return 1;
  return std::ldexp(1.0, -std::clamp(std::ilogb(largest), -1022, 1023));
}

}  // namespace studystats
