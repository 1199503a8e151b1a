#include "tests/definition/distances.h"

#include <algorithm>
#include <cmath>

namespace studystats::definition {
namespace {

// Not-a-numbers count as larger than every number.
bool less(double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); }

std::vector<std::int32_t> neighbours(const std::vector<double>& d, std::size_t i, std::size_t k, bool fixedSize) {
  std::vector<double> ordered = d;
  std::nth_element(ordered.begin(), ordered.begin() + std::ptrdiff_t(k), ordered.end(), less);
  const double r = ordered[k];

  std::vector<std::int32_t> list;
  if (!fixedSize) {
    for (std::size_t j = 0; j < d.size(); ++j)
      if (j != i && (d[j] <= r * 1.00000000001 || (std::isnan(r) && !std::isnan(d[j]))))
        list.push_back(std::int32_t(j));
    return list;
  }
  for (std::size_t j = 0; j < d.size(); ++j)
    if (j != i && less(d[j], r)) list.push_back(std::int32_t(j));
  for (std::size_t j = 0; j < d.size() && list.size() < k; ++j)
    if (j != i && d[j] == r) list.push_back(std::int32_t(j));
  std::sort(list.begin(), list.end());
  return list;
}

}  // namespace

double distance(const Columns& points, std::size_t i, std::size_t j, bool tanimoto) {
  double sum = 0, xy = 0, xx = 0, yy = 0;
  if (!tanimoto) {
    for (const auto& column : points) sum += (column[i] - column[j]) * (column[i] - column[j]);
    return std::sqrt(sum);
  }
  for (const auto& column : points) {
    const double x = column[i], y = column[j];
    xy += x * y;
    xx += x * x;
    yy += y * y;
  }
  const double d = xx + yy - xy;
  return std::abs(d) > 0 ? 1 - xy / d : 0;
}

void distanceMatrix(const Columns& points, Columns& dist, bool tanimoto) {
  const std::size_t n = points[0].size();
  dist.resize(n);
  for (auto& column : dist) column.resize(n, 0.0);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) dist[i][j] = dist[j][i] = distance(points, i, j, tanimoto);
    dist[i][i] = 0;
  }
}

void distanceMatrix(const Columns& points, const std::vector<std::vector<std::int32_t>>& index, Columns& dist,
                    bool tanimoto) {
  const std::size_t n = points[0].size();
  dist.resize(index.size());
  for (auto& column : dist) column.resize(n, 0.0);
  for (std::size_t r = 0; r < n; ++r)
    for (std::size_t k = 0; k < index.size(); ++k) dist[k][r] = distance(points, r, std::size_t(index[k][r]), tanimoto);
}

void neighbourLists(const Columns& points, std::int32_t nPoints, bool tanimoto, std::int32_t nNeighbours,
                    bool fixedSize, std::vector<std::vector<std::int32_t>>& lists) {
  const auto n = std::size_t(std::max(nPoints, 0));
  lists.resize(n);
  const auto k = std::size_t(nNeighbours < nPoints ? nNeighbours : nPoints - 1);
  std::vector<double> d(n);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) d[j] = distance(points, i, j, tanimoto);
    lists[i] = neighbours(d, i, k, fixedSize);
  }
}

}  // namespace studystats::definition
