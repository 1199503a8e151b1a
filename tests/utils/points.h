// Points to cluster, as lists of columns.
#pragma once

#include <studystats/utilities.h>

#include <limits>
#include <random>

namespace studystats::test {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::uint64_t kSeed = 20240615;

inline DataMatrix normalPoints(std::size_t n, std::size_t p) {
  std::mt19937_64 random(kSeed);
  std::normal_distribution<double> normal;
  DataMatrix points(p, std::vector<double>(n));
  for (auto& column : points)
    for (double& x : column) x = normal(random);
  return points;
}

// Small whole numbers: sums are exact, ties and duplicates are many.
inline DataMatrix gridPoints(std::size_t n, std::size_t p, int most) {
  std::mt19937_64 random(kSeed);
  DataMatrix points(p, std::vector<double>(n));
  for (auto& column : points)
    for (double& x : column) x = double(random() % std::uint64_t(most + 1));
  return points;
}

}  // namespace studystats::test
