// The two distances, from the sums that they are made of.
#pragma once

#include <studystats/utilities.h>

#include <cmath>
#include <cstddef>

namespace studystats::core {

inline bool isTanimoto(StatsDistanceUtils::STATS_DIST_TYPE type) {
  return type == StatsDistanceUtils::STATS_DIST_TANIMOTO;
}

// The quotient is formed whatever D is, so that a loop of these has no branch.
inline double tanimotoDistance(double xy, double xx, double yy) {
  const double d = xx + yy - xy;
  const double distance = 1.0 - xy / d;
  return std::fabs(d) > 0.0 ? distance : 0.0;
}

// Between x(c) and y(c), c = 0 ... n - 1.
template <class X, class Y>
double distanceBetween(std::size_t n, X x, Y y, StatsDistanceUtils::STATS_DIST_TYPE type) {
  if (isTanimoto(type)) {
    double xy = 0.0, xx = 0.0, yy = 0.0;
    for (std::size_t c = 0; c < n; ++c) {
      xy += x(c) * y(c);
      xx += x(c) * x(c);
      yy += y(c) * y(c);
    }
    return tanimotoDistance(xy, xx, yy);
  }
  double sum = 0.0;
  for (std::size_t c = 0; c < n; ++c) sum += (x(c) - y(c)) * (x(c) - y(c));
  return std::sqrt(sum);
}

// A not-a-number is farther than every number.
inline bool nearer(double distance, double than) {
  return distance < than || (std::isnan(than) && !std::isnan(distance));
}

}  // namespace studystats::core
