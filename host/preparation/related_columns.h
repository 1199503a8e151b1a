// Pairs of columns that are strongly correlated.
#pragma once

#include "host/watch.h"

#include <cstddef>
#include <span>
#include <vector>

namespace studystats {

struct RelatedPair {
  std::size_t first;
  std::size_t second;
  double r;  // over the rows in which both are present
};

struct RelatedPairs {
  std::vector<RelatedPair> strongest;  // by |r|, equal ones in column order; not more than asked for
  std::size_t found = 0;               // all pairs beyond the limit
};

// All pairs of columns with |r| > limit. Not-a-number is missing. Pairs with fewer than 3 rows in common, or without
// spread in them, have no r. Progress is reported from `from` to `to` percent.
RelatedPairs relatedColumns(const std::vector<std::span<const double>>& columns, double limit, std::size_t most,
                            Watch& watch, double from, double to);

}  // namespace studystats
