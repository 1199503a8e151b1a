// k-means: starts drawn at random, and the rounds from a start to its end.
#pragma once

#include "host/cluster/cluster.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace studystats {

struct KMeansRun {
  Partition partition;
  std::vector<double>
      criteria;           // after each round: squared distances from the means, with Tanimoto distances their sum
  bool reseeded = false;  // an empty cluster was given the row farthest from its mean
  bool settled = false;   // no row moved in the last round
};

// Rounds from the positions given, one row a cluster: each row to the nearest, then each position to the mean of its
// rows, until no row moves. eachRound: called before each round, which counts from 1.
KMeansRun settle(const PreparedClusters& prepared, DataMatrix positions,
                 const std::function<void(std::size_t)>& eachRound);

struct KMeans {
  KMeansRun best;
  KMeansStarts starts;
};

// The best of some starts; every number of clusters begins at the seed again.
KMeans kMeans(const PreparedClusters& prepared, std::size_t clusters, const ClusterOptions& options, Watch& watch,
              Stretch stretch);

}  // namespace studystats
