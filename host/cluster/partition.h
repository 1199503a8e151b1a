// Rows divided into clusters.
#pragma once

#include <studystats/utilities.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace studystats {

struct Partition {
  std::size_t clusters = 0;
  std::vector<std::int32_t> of;  // the cluster of each row, from 0
};

// Numbers clusters by size, the largest first; of equals the one with the first row.
void numberBySize(Partition& partition);

std::vector<std::size_t> clusterSizes(const Partition& partition);

DataMatrix clusterMeans(const Partition& partition, const DataMatrix& points);  // one row a cluster

// The row of each cluster that is nearest to the cluster's mean, of equals the first.
std::vector<std::int32_t> rowsNearestToMeans(const Partition& partition, const DataMatrix& points,
                                             StatsDistanceUtils::STATS_DIST_TYPE type);

}  // namespace studystats
