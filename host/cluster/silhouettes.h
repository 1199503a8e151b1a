// How much nearer rows are to their own cluster than to the next.
#pragma once

#include "host/cluster/cluster.h"

#include <cstdint>
#include <span>
#include <vector>

namespace studystats {

// Of one partition, one entry a judged row. With a the mean distance from the other rows of its cluster and b the
// smallest mean distance from the rows of another: (b - a) / max(a, b); 0 for a row that is alone, and where both are
// 0.
struct Silhouettes {
  std::vector<double> values;
  std::vector<std::int32_t> next;  // the other cluster
  double mean = 0;
};

// The rows whose silhouettes are computed: all, or so many, evenly spread over the table, as distances from all rows
// can be had for in a few minutes.
std::vector<std::int32_t> judgedRows(std::size_t n);

// Rousseeuw (1987), Journal of Computational and Applied Mathematics 20, 53-65. Partitions have two clusters or more.
std::vector<Silhouettes> silhouettesOf(const std::vector<const Partition*>& partitions, const DataMatrix& points,
                                       StatsDistanceUtils::STATS_DIST_TYPE type,
                                       const std::vector<std::int32_t>& judged, Watch& watch, Stretch stretch);

}  // namespace studystats
