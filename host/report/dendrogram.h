// The tree of an agglomeration as line segments.
#pragma once

#include <studystats/host/clusters.h>

#include "host/report/data.h"

#include <cstddef>
#include <string>
#include <vector>

namespace studystats {

constexpr std::size_t kMostLeaves = 120;  // of more rows, the last merges between as many groups

struct Dendrogram {
  Table segments;  // "dendrogram": x, y, x2, y2, the cluster below ("" above the cut) and the rows below
  Table leaves;    // "leaves": key (of a row alone), label, x and rows
};

// Merges up to those of the last kMostLeaves groups are not drawn: their groups are leaves at height 0.
Dendrogram dendrogramOf(const Clusters& result);

}  // namespace studystats
