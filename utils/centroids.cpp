// The steps of clustering around centroids.
#include <algorithm>

#include "utils/distances.h"
#include "utils/matrices.h"

using namespace studystats::core;

namespace StatsClusterUtils {
namespace {

// The first nPoints points have nDims coordinates and a cluster of 0 ... nClusters - 1 each. Without points the matrix
// may have any shape.
void requireAssigned(const DataMatrix& points, const std::vector<std::int32_t>& assignment, std::int32_t nPoints,
                     std::int32_t nDims, std::int32_t nClusters, const char* operation) {
  require(nPoints >= 0 && nDims >= 0 && nClusters >= 0, operation);
  if (nPoints > 0) requireBlock(points, std::size_t(nDims), std::size_t(nPoints), operation);
  require(assignment.size() >= std::size_t(nPoints), operation);
  for (std::size_t i = 0; i < std::size_t(nPoints); ++i)
    require(isIndex(assignment[i], std::size_t(nClusters)), operation);
}

}  // namespace

std::int32_t NearestCluster(const DataMatrix& positions, std::int32_t nClusters, const std::vector<double>& point,
                            StatsDistanceUtils::STATS_DIST_TYPE type) {
  if (nClusters < 1) return -1;
  require(point.size() >= positions.size(), "NearestCluster");
  requireBlock(positions, positions.size(), std::size_t(nClusters), "NearestCluster");

  std::int32_t nearest = 0;
  double best = 0.0;
  for (std::int32_t k = 0; k < nClusters; ++k) {
    const double distance = StatsDistanceUtils::CalculateDistance(positions, k, point, type);
    if (k > 0 && !nearer(distance, best)) continue;
    best = distance;
    nearest = k;
  }
  return nearest;
}

void CalculateClusterPositions(const DataMatrix& points, DataMatrix& positions,
                               const std::vector<std::int32_t>& assignment, std::int32_t nPoints, std::int32_t nDims,
                               std::int32_t nClusters) {
  requireAssigned(points, assignment, nPoints, nDims, nClusters, "CalculateClusterPositions");
  requireBlock(positions, std::size_t(nDims), std::size_t(nClusters), "CalculateClusterPositions");

  const auto n = std::size_t(nPoints), clusters = std::size_t(nClusters);
  std::vector<std::size_t> count(clusters);
  for (std::size_t i = 0; i < n; ++i) ++count[std::size_t(assignment[i])];
  for (std::size_t c = 0; c < std::size_t(nDims); ++c) {
    std::vector<double>& means = positions[c];
    std::fill_n(means.begin(), clusters, 0.0);
    for (std::size_t i = 0; i < n; ++i) means[std::size_t(assignment[i])] += points[c][i];
    for (std::size_t k = 0; k < clusters; ++k)
      if (count[k] > 0) means[k] /= double(count[k]);
  }
}

void CalculateClusterCenters(const DataMatrix& points, const DataMatrix& positions,
                             const std::vector<std::int32_t>& assignment, std::vector<std::int32_t>& centres,
                             std::int32_t nPoints, std::int32_t nDims, std::int32_t nClusters,
                             StatsDistanceUtils::STATS_DIST_TYPE type) {
  constexpr const char* kOperation = "CalculateClusterCenters";
  requireAssigned(points, assignment, nPoints, nDims, nClusters, kOperation);
  require(positions.size() <= std::size_t(nDims), kOperation);
  requireBlock(positions, positions.size(), std::size_t(nClusters), kOperation);
  require(centres.size() >= std::size_t(nClusters), kOperation);

  const std::size_t dims = positions.size();  // a distance runs over the columns of the positions
  std::vector<double> best(std::size_t(nClusters), -1.0), point(dims);
  for (std::int32_t i = 0; i < nPoints; ++i) {
    for (std::size_t c = 0; c < dims; ++c) point[c] = points[c][std::size_t(i)];
    const std::int32_t cluster = assignment[std::size_t(i)];
    const double distance = StatsDistanceUtils::CalculateDistance(positions, cluster, point, type);
    double& nearest = best[std::size_t(cluster)];
    if (!(nearest < 0.0) && !nearer(distance, nearest)) continue;
    nearest = distance;
    centres[std::size_t(cluster)] = i;
  }
}

}  // namespace StatsClusterUtils
