// The parts of a clustering that its steps, summary and files share.
#pragma once

#include <studystats/host/clusters.h>
#include <studystats/utilities.h>

#include "host/cluster/partition.h"
#include "host/preparation/preparation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace studystats {

struct PreparedClusters {
  Prepared data;
  DataMatrix points;                       // model rows x descriptors, as the library takes them
  std::vector<std::vector<double>> rows;   // the same, a list of rows
  std::vector<std::vector<double>> apart;  // rows kept out
  StatsDistanceUtils::STATS_DIST_TYPE type = StatsDistanceUtils::STATS_DIST_EUCLIDEAN;
  Linkage linkage = Linkage::Ward;
  std::vector<std::size_t> repeats;  // rows that equal an earlier one in every descriptor

  std::size_t size() const { return rows.size(); }
  std::size_t different() const { return rows.size() - repeats.size(); }
};

PreparedClusters prepareClusters(const TableView& table, const ClusterOptions& options, Watch& watch);

// Which part of the whole a step is, in percent.
struct Stretch {
  double from = 0, to = 100;
};

const char* nameOf(ClusterMethod method);  // as the command spells it
const char* nameOf(Distance distance);
const char* nameOf(Linkage linkage);

void remarkOnClusters(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options);

}  // namespace studystats
