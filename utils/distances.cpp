// Distances of single pairs.
#include "utils/distances.h"

#include "utils/matrices.h"

using namespace studystats::core;

namespace StatsDistanceUtils {
namespace {

// Row i is there, and so are nColumns columns. A matrix without columns has every row: nothing of it is read.
void requireRow(const DataMatrix& m, std::int32_t i, std::size_t nColumns, const char* operation) {
  require(i >= 0 && (m.empty() || isIndex(i, m.front().size())), operation);
  requireBlock(m, nColumns, std::size_t(i) + 1, operation);
}

auto row(const DataMatrix& m, std::int32_t i) {
  return [&m, i](std::size_t c) { return m[c][std::size_t(i)]; };
}

auto entries(const std::vector<double>& v) {
  return [&v](std::size_t c) { return v[c]; };
}

}  // namespace

double CalculateDistance(const DataMatrix& m, std::int32_t i, std::int32_t j, STATS_DIST_TYPE type) {
  for (const std::int32_t r : {i, j}) requireRow(m, r, m.size(), "CalculateDistance");
  return distanceBetween(m.size(), row(m, i), row(m, j), type);
}

double CalculateDistance(const DataMatrix& m, std::int32_t i, const std::vector<double>& v, STATS_DIST_TYPE type) {
  requireRow(m, i, m.size(), "CalculateDistance");
  require(v.size() >= m.size(), "CalculateDistance");
  return distanceBetween(m.size(), row(m, i), entries(v), type);
}

double CalculateDistance(const std::vector<double>& a, const std::vector<double>& b, STATS_DIST_TYPE type) {
  require(b.size() >= a.size(), "CalculateDistance");
  return distanceBetween(a.size(), entries(a), entries(b), type);
}

double EuclideanDistanceSquared(const DataMatrix& m, std::int32_t i, const std::vector<double>& v) {
  requireRow(m, i, v.size(), "EuclideanDistanceSquared");
  double sum = 0.0;
  for (std::size_t c = 0; c < v.size(); ++c) {
    const double difference = m[c][std::size_t(i)] - v[c];
    sum += difference * difference;
  }
  return sum;
}

}  // namespace StatsDistanceUtils
