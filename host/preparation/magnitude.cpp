#include "host/preparation/magnitude.h"

#include "host/text.h"

#include <fmt/format.h>
#include <studystats/host/errors.h>

namespace studystats {

void requireSize(std::span<const double> numbers, double most, const std::string& column, std::span<const double> cells,
                 std::string_view remedy) {
  double largest = 0;
  for (const double number : numbers) largest = std::max(largest, std::abs(number));
  if (largest == 0 || (largest >= 1 / most && largest <= most)) return;
  const auto [low, high] = std::minmax_element(cells.begin(), cells.end());
  throw NotComputed(fmt::format("the values of {}, {} to {}, are too {} to calculate with. {}", column, brief(*low, 4),
                                brief(*high, 4), largest > most ? "large" : "small", remedy));
}

}  // namespace studystats
