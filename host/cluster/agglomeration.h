// An agglomeration history, in the form in which the library cuts it.
#pragma once

#include "host/cluster/cluster.h"

#include <cstdint>
#include <vector>

namespace studystats {

// Rows count from 1, as StatsClusterUtils wants them. Each group is a contiguous run of leafOrder, that of merge a
// before that of merge b; a group never is smaller than the one that it is joined with as b.
struct History {
  std::vector<double> heights;     // ascending
  std::vector<std::int32_t> a, b;  // the first row, in table order, of either group
  std::vector<std::size_t> sizes;  // rows of the group formed
  std::vector<std::int32_t> leafOrder;

  std::size_t merges() const { return heights.size(); }
};

// Throws OutOfMemory, with the size and what to try, when the machine has less memory than the distances between n rows
// take.
void requireMemoryForDistances(std::size_t n);
[[noreturn]] void refuseMemoryForDistances(std::size_t n);  // when it could not be had after all

// Joins the nearest two groups until one is left; time and memory grow with the square of the rows.
History agglomerate(const DataMatrix& points, StatsDistanceUtils::STATS_DIST_TYPE type, Linkage linkage, Watch& watch,
                    Stretch stretch);

// The first n - clusters steps. Heights that tie make a cut into some numbers of clusters impossible by threshold.
Partition cutInto(const History& history, std::size_t clusters);

// The steps up to a height.
Partition cutAt(const History& history, double threshold);

// The row of each cluster of a cut that is nearest to the cluster's mean.
std::vector<std::int32_t> centresOf(const History& history, const Partition& partition, const DataMatrix& points,
                                    StatsDistanceUtils::STATS_DIST_TYPE type);

}  // namespace studystats
