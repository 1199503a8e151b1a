// Every column by itself: fill value of what is there, then mean and divisor of the filled column, two passes.
#include "numeric/preparation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats::core {
namespace {

using engine::Filling;
using engine::Scaling;

double meanOf(std::span<const double> values) {
  double sum = 0.0;
  for (const double value : values) sum += value;
  return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

// Puts the values in another order.
double medianOf(std::span<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  if (values.size() % 2 == 1) return *middle;
  const double below = *std::max_element(values.begin(), middle);
  return below + (*middle - below) / 2;
}

double fillOf(const engine::Preparation& preparation, const double* column, std::span<const std::int32_t> rows,
              double* buffer) {
  if (preparation.filling == Filling::None) return std::numeric_limits<double>::quiet_NaN();
  if (preparation.filling == Filling::Value) return preparation.fillValue;
  std::size_t nPresent = 0;
  for (const std::int32_t row : rows)
    if (!std::isnan(column[row])) buffer[nPresent++] = column[row];
  const std::span<double> present(buffer, nPresent);
  return preparation.filling == Filling::Mean ? meanOf(present) : medianOf(present);
}

double deviationOf(std::span<const double> values, double mean) {
  double sum = 0.0;
  for (const double value : values) sum += (value - mean) * (value - mean);
  return std::sqrt(sum / (static_cast<double>(values.size()) - 1.0));
}

double divisorOf(Scaling scaling, std::span<const double> values, double mean) {
  double divisor = 1.0;
  if (scaling == Scaling::Range && !values.empty()) {
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    divisor = (*most - *least) * 0.5;
  } else if (scaling == Scaling::Autoscale || scaling == Scaling::Pareto) {
    divisor = deviationOf(values, mean);
    if (scaling == Scaling::Pareto) divisor = std::sqrt(divisor);
  }
  return divisor > 0.0 ? divisor : 1.0;
}

}  // namespace

bool prepares(const engine::Preparation& preparation) {
  const auto any = [](const engine::ColumnPreparation& columns) {
    return columns.centre || columns.scaling != Scaling::None;
  };
  return any(preparation.descriptors) || any(preparation.responses) || preparation.filling != Filling::None;
}

ColumnUnits columnUnits(const engine::Preparation& preparation, ConstMatrix table, std::span<const std::int32_t> rows,
                        std::int32_t nDescriptors, std::int32_t nColumns, PreparationScratch& s, Pace& pace) {
  if (!prepares(preparation)) return {};
  const ColumnUnits units{s.fill.data(), s.shift.data(), s.scale.data()};
  const std::span<double> values(s.values.data(), rows.size());
  for (std::int32_t j = 0; j < nColumns && pace.goOn(8 * static_cast<std::int64_t>(rows.size())); ++j) {
    const bool isDescriptor = j < nDescriptors;
    const double* column = table.column(j);
    s.fill[j] = isDescriptor ? fillOf(preparation, column, rows, values.data()) : fillOf({}, column, rows, nullptr);
    for (std::size_t i = 0; i < rows.size(); ++i) values[i] = units.filled(column[rows[i]], j);

    const engine::ColumnPreparation& rule = isDescriptor ? preparation.descriptors : preparation.responses;
    const double mean = meanOf(values);
    s.shift[j] = rule.centre ? mean : 0.0;
    s.scale[j] = divisorOf(rule.scaling, values, mean);
  }
  return units;
}

}  // namespace studystats::core
