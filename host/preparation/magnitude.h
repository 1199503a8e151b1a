// Keeping squares and sums of very large and very small numbers within the range of a double.
#pragma once

#include <algorithm>
#include <cmath>
#include <span>

namespace studystats {

// The power of two that brings the largest magnitude of a column close to 1; 1 for a column of zeros. Products with it
// are exact, so that figures of the column times this factor have the same digits. Not-a-number is passed over.
inline double unitFactor(std::span<const double> column) {
  double largest = 0;
  for (const double value : column) largest = std::max(largest, std::isnan(value) ? 0.0 : std::abs(value));
  if (largest == 0 || std::isinf(largest)) return 1;
  return std::ldexp(1.0, -std::clamp(std::ilogb(largest), -1022, 1023));
}

}  // namespace studystats
