// Each row's nearest rows.
#pragma once

#include "host/cluster/cluster.h"

#include <vector>

namespace studystats {

// Of the model's rows, then of those kept out; only rows of the model are neighbours. A list has as many entries as
// asked for, nearest first, and those that tie with its last unless `fixed`.
std::vector<std::vector<Neighbour>> neighbourLists(const PreparedClusters& prepared, int neighbours, bool fixed,
                                                   Watch& watch);

// As many as asked for, or one less than the model's rows.
int neighboursThatAre(int asked, std::size_t rows);

}  // namespace studystats
