#include "host/preparation/standardisation.h"

#include "host/preparation/magnitude.h"
#include "host/preparation/preparation.h"

#include <studystats/utilities.h>

#include <cmath>
#include <vector>

namespace studystats {
namespace {

constexpr double kMostCell = 1e220;  // of other cells, coefficients in the table's units could leave the range
constexpr const char* kMultiply = "Multiply the column by a power of ten, or --exclude it.";
constexpr const char* kAutoscale = "Try --scale autoscale, or --exclude the column.";

StatsCalcUtils::STATS_STANDARDIZATION_TYPE libraryType(Scaling scaling) {
  switch (scaling) {
    case Scaling::Autoscale:
    case Scaling::Pareto:
      return StatsCalcUtils::STATS_STANDARDIZE_AUTOSCALE;
    case Scaling::Range:
      return StatsCalcUtils::STATS_STANDARDIZE_RANGE;
    case Scaling::Centre:
      return StatsCalcUtils::STATS_STANDARDIZE_MEAN_CENTRE;
    case Scaling::None:
      break;
  }
  return StatsCalcUtils::STATS_STANDARDIZE_NONE;
}

}  // namespace

// The library is given the column brought close to 1 by a power of two: the same digits, and no square leaves the
// range.
void standardise(std::span<double> column, const std::string& name, Scaling scaling, const Roles& roles,
                 UsedData& used) {
  const std::vector<double> cells(column.begin(), column.end());
  const double factor = unitFactor(cells);
  std::vector<double> close(cells);
  for (double& value : close) value *= factor;
  double divisor = 1, offset = 0;
  StatsCalcUtils::StandardizeData(close, count32(close.size()), 1, 0, libraryType(scaling), divisor, offset);
  offset /= factor;
  divisor = scaling == Scaling::Centre || scaling == Scaling::None ? 1 : divisor / factor;
  if (scaling == Scaling::Pareto) divisor = std::sqrt(divisor);
  for (double& value : column) value = (value - offset) / divisor;
  const bool keepsSize = scaling == Scaling::Pareto || scaling == Scaling::Centre || scaling == Scaling::None;
  requireSize(cells, kMostCell, name, cells, kMultiply);
  requireSize(column, roles.mostSize, name, cells, keepsSize && !roles.keepRepeats ? kAutoscale : kMultiply);
  used.shift.push_back(offset);
  used.scale.push_back(divisor);
}

}  // namespace studystats
