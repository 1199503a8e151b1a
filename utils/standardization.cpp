// Standardisation of one column of a column-major matrix in place. Its divisor and offset are the scale and shift with
// which an analysis reports its results in the column's own units.
#include <studystats/utilities.h>

#include <cmath>
#include <span>

#include "frame/argument_check.h"

namespace StatsCalcUtils {
namespace {

struct Present {
  std::int32_t count = 0;  // values that are not missing
  double minimum = 0.0, maximum = 0.0, sum = 0.0;

  explicit Present(std::span<const double> values) {
    for (const double v : values) {
      if (std::isnan(v)) continue;
      if (count == 0) minimum = maximum = v;
      if (v < minimum) minimum = v;
      if (v > maximum) maximum = v;
      sum += v;
      ++count;
    }
  }
};

double sampleDeviation(std::span<const double> values, double mean, std::int32_t count) {
  if (count <= 1) return 0.0;
  double sum = 0.0;
  for (const double v : values)
    if (!std::isnan(v)) sum += (v - mean) * (v - mean);
  return std::sqrt(sum / (count - 1));
}

}  // namespace

void StandardizeData(std::vector<double>& data, std::int32_t nRows, std::int32_t /*nColumns*/, std::int32_t column,
                     STATS_STANDARDIZATION_TYPE type, double& divisor, double& offset) {
  const bool nothingToDo = type == STATS_STANDARDIZE_NONE || nRows <= 0;
  if (!nothingToDo) {
    const std::int64_t end = (std::int64_t(column) + 1) * nRows;
    studystats::core::require(column >= 0 && std::uint64_t(end) <= data.size(), "StandardizeData");
  }
  divisor = 1.0;
  offset = 0.0;
  if (nothingToDo) return;

  // 1. Statistics of what is there.
  const std::span<double> values(data.data() + std::int64_t(column) * nRows, std::size_t(nRows));
  const Present present(values);
  if (present.count < 1) return;
  const double mean = present.sum / present.count;

  // 2. Offset and divisor.
  if (type == STATS_STANDARDIZE_AUTOSCALE) {
    offset = mean;
    divisor = sampleDeviation(values, mean, present.count);
  } else if (type == STATS_STANDARDIZE_RANGE) {
    offset = (present.maximum + present.minimum) * 0.5;
    divisor = (present.maximum - present.minimum) * 0.5;
  } else if (type == STATS_STANDARDIZE_MEAN_CENTRE) {
    offset = mean;
  }
  if (divisor <= 0.0) divisor = 1.0;

  // 3. The column in its new units.
  for (double& v : values) v = (v - offset) / divisor;
}

}  // namespace StatsCalcUtils
