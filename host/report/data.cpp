#include "host/report/data.h"

#include "host/text.h"

#include <fmt/format.h>

namespace studystats {

std::vector<std::size_t> shownRows(std::size_t n) {
  const std::size_t shown = std::min(n, kMostReportRows);
  std::vector<std::size_t> numbers;
  for (std::size_t k = 0; k < shown; ++k) numbers.push_back(k * n / shown);
  return numbers;
}

std::string samplingText(std::size_t n) {
  if (n <= kMostReportRows) return {};
  return fmt::format("{} of {} rows, spread evenly over the table", kMostReportRows, n);
}

}  // namespace studystats
