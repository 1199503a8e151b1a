#include "host/limits.h"

#include "host/distributions.h"

#include <numeric>

namespace studystats {

std::optional<double> t2LimitOf(double k, double n, double level) {
  if (n <= k) return {};
  return k * (n * n - 1) / (n * (n - k)) * fQuantile(level, k, n - k);
}

std::optional<double> qLimitOf(const std::vector<double>& distances, double total, double level) {
  constexpr double kRoundingLevel = 1e-12;
  const auto n = static_cast<double>(distances.size());
  const double mean = std::accumulate(distances.begin(), distances.end(), 0.0) / n;
  double squares = 0;
  for (const double distance : distances) squares += (distance - mean) * (distance - mean);
  const double variance = squares / (n - 1);
  return mean > kRoundingLevel * total ? qLimitFrom(mean, variance, level) : std::nullopt;
}

std::optional<double> qLimitFrom(double mean, double variance, double level) {
  constexpr double kNoSpread = 1e-10;  // of the squared mean: all rows of a two-level design are equally far
  if (!(mean > 0) || !(variance > kNoSpread * mean * mean)) return {};
  return variance / (2 * mean) * chiSquareQuantile(level, 2 * mean * mean / variance);
}

}  // namespace studystats
