#include <studystats/utilities.h>

#include "frame/argument_check.h"

double StatsCalcUtils::CorrelationBetweenClasses(std::vector<std::int32_t> first, std::vector<std::int32_t> second) {
  studystats::core::require(second.size() >= first.size(), "CorrelationBetweenClasses");
  std::size_t agreeing = 0;
  for (std::size_t i = 0; i < first.size(); ++i) agreeing += first[i] == second[i];
  return double(agreeing) / double(first.size());
}
