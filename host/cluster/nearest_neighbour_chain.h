// The steps of an agglomeration, by chains of nearest neighbours.
#pragma once

#include "host/cluster/cluster.h"
#include "host/cluster/condensed_matrix.h"

#include <cstdint>
#include <vector>

namespace studystats {

struct ChainMerge {
  std::int32_t first, second;  // a row of either group, from 0
  double height;
};

// All n - 1 merges, every merge after those that formed its two groups; heights never less than theirs. The matrix is
// used up. Equal distances: the row before in the chain, else the lowest row.
std::vector<ChainMerge> chainMerges(CondensedMatrix& distances, Linkage linkage, Watch& watch, Stretch stretch);

}  // namespace studystats
