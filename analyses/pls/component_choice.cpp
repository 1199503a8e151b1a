// The number of components by the ratio of successive errors, here of square roots.
//
// Wold (1978), Technometrics 20, 397-405.
#include <studystats/engine/partial_least_squares.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace studystats::engine {

double pressRatio(const ComponentErrors& errors, std::int32_t a, std::int32_t k) {
  const std::size_t at =
      static_cast<std::size_t>(k) * static_cast<std::size_t>(errors.components) + static_cast<std::size_t>(a);
  const double before = a == 0 ? errors.totalSquares[static_cast<std::size_t>(k)] : errors.residualSquares[at - 1];
  return before > 0.0 ? std::sqrt(errors.press[at] / before) : 0.0;
}

std::int32_t componentsByRatio(const ComponentErrors& errors, double limit) {
  const auto nResponses = static_cast<std::int32_t>(errors.totalSquares.size());
  const auto passes = [&](std::int32_t a) {
    for (std::int32_t k = 0; k < nResponses; ++k)
      if (pressRatio(errors, a, k) <= limit) return true;
    return false;
  };
  std::int32_t chosen = 0;
  while (chosen < errors.components && passes(chosen)) ++chosen;
  return std::max(chosen, 1);
}

}  // namespace studystats::engine
