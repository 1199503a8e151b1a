// Neighbour lists in words.
#pragma once

#include <studystats/host/clusters.h>

#include <string>

namespace studystats {

std::string neighboursText(const Clusters& result, const TextOptions& options);

}  // namespace studystats
