// Descriptive statistics of one column: range, mean, and moments about the mean in a second pass.
#include <studystats/utilities.h>

#include <cmath>

#include "frame/argument_check.h"

namespace StatsCalcUtils {
namespace {

struct Moments {
  double absolute = 0.0, second = 0.0, third = 0.0, fourth = 0.0;  // sums of powers of the deviations
};

Moments momentsAbout(double mean, const std::vector<double>& values, std::size_t n) {
  Moments sums;
  for (std::size_t i = 0; i < n; ++i) {
    const double d = values[i] - mean;
    sums.absolute += std::fabs(d);
    sums.second += d * d;
    sums.third += d * d * d;
    sums.fourth += d * d * d * d;
  }
  return sums;
}

}  // namespace

void UnivariateStatistics(const std::vector<double>& values, std::int32_t count, double& range, double& maximum,
                          double& minimum, double& mean, double& standardDeviation, double& variance,
                          double& meanAbsoluteDeviation, double& skewness, double& kurtosis) {
  studystats::core::require(count > 0 && std::size_t(count) <= values.size(), "UnivariateStatistics");
  const auto n = std::size_t(count);

  // 1. Extremes and sum.
  double least = values[0], most = values[0], sum = values[0];
  for (std::size_t i = 1; i < n; ++i) {
    if (least > values[i]) least = values[i];
    if (values[i] > most) most = values[i];
    sum += values[i];
  }
  minimum = least;
  maximum = most;
  range = most - least;
  mean = sum / count;

  // 2. Deviations: variance of the population, standard deviation of the sample.
  const Moments sums = momentsAbout(mean, values, n);
  const double s = count > 1 ? std::sqrt(sums.second / (count - 1)) : 0.0;
  meanAbsoluteDeviation = sums.absolute / count;
  variance = sums.second / count;
  standardDeviation = s;

  // 3. Shape, in units of the sample standard deviation.
  skewness = s > 0.0 ? (sums.third / count) / (s * s * s) : 0.0;
  kurtosis = s > 0.0 ? (sums.fourth / count) / (s * s * s * s) - 3.0 : 0.0;
}

}  // namespace StatsCalcUtils
