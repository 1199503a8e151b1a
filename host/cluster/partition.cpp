#include "host/cluster/partition.h"

#include "host/preparation/preparation.h"

#include <algorithm>
#include <numeric>

namespace studystats {

void numberBySize(Partition& partition) {
  const std::vector<std::size_t> sizes = clusterSizes(partition);
  std::vector<std::size_t> first(partition.clusters, partition.of.size());
  for (std::size_t i = partition.of.size(); i-- > 0;) first[static_cast<std::size_t>(partition.of[i])] = i;
  std::vector<std::size_t> order(partition.clusters);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) {
    return sizes[x] != sizes[y] ? sizes[x] > sizes[y] : first[x] < first[y];
  });
  std::vector<std::int32_t> number(partition.clusters);
  for (std::size_t k = 0; k < order.size(); ++k) number[order[k]] = static_cast<std::int32_t>(k);
  for (std::int32_t& cluster : partition.of) cluster = number[static_cast<std::size_t>(cluster)];
}

std::vector<std::size_t> clusterSizes(const Partition& partition) {
  std::vector<std::size_t> sizes(partition.clusters, 0);
  for (const std::int32_t cluster : partition.of) ++sizes[static_cast<std::size_t>(cluster)];
  return sizes;
}

DataMatrix clusterMeans(const Partition& partition, const DataMatrix& points) {
  DataMatrix means(points.size(), std::vector<double>(partition.clusters));
  StatsClusterUtils::CalculateClusterPositions(points, means, partition.of, count32(partition.of.size()),
                                               count32(points.size()), count32(partition.clusters));
  return means;
}

std::vector<std::int32_t> rowsNearestToMeans(const Partition& partition, const DataMatrix& points,
                                             StatsDistanceUtils::STATS_DIST_TYPE type) {
  std::vector<std::int32_t> rows(partition.clusters);
  StatsClusterUtils::CalculateClusterCenters(points, clusterMeans(partition, points), partition.of, rows,
                                             count32(partition.of.size()), count32(points.size()),
                                             count32(partition.clusters), type);
  return rows;
}

}  // namespace studystats
