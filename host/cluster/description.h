// What clusters are like: their means, their spread, and what sets each apart.
#pragma once

#include "host/cluster/cluster.h"

#include <cstdint>
#include <vector>

namespace studystats {

// The rows of a result, with what is carried along: classes and responses.
void addRows(Clusters& result, const PreparedClusters& prepared, const TableView& table, const ClusterOptions& options);

// Fills the clusters of a partition, and places its rows and those kept out. Rows have their silhouettes.
// centres: the row that represents each cluster.
void describeClusters(Clusters& result, const PreparedClusters& prepared, const Partition& partition,
                      const std::vector<std::int32_t>& centres);

}  // namespace studystats
