#include <studystats/utilities.h>

#include "frame/argument_check.h"

namespace StatsCalcUtils {
namespace {

double meanOfFirst(const std::vector<double>& values, std::size_t n) {
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) sum += values[i];
  return sum / double(n);
}

}  // namespace

double Covariance(std::vector<double> x, std::vector<double> y) {
  const std::size_t n = x.size();
  studystats::core::require(y.size() >= n, "Covariance");
  if (n == 0) return 0.0;

  const double xMean = meanOfFirst(x, n), yMean = meanOfFirst(y, n);
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) sum += (x[i] - xMean) * (y[i] - yMean);
  return sum;
}

}  // namespace StatsCalcUtils
