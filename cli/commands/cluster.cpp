// studystats cluster TABLE
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

int runCluster(const CommandLine& line) { return runAnalysis("cluster", readCluster(line), cluster); }

}  // namespace

Command clusterCommand() {
  return {kCluster,
          "cluster",
          {"TABLE"},
          "neighbour lists, k-means, hierarchical clustering and its cut",
          "Rows that are alike: a history of merges cut into clusters, clusters around means, or lists of nearest "
          "rows. Each "
          "cluster has a row that represents it and the descriptors that set it apart; silhouettes say how much there "
          "is to "
          "the clusters. How many there are is never chosen in silence: without --clusters or --threshold only the "
          "silhouettes of 2 ... 12 are shown.",
          "studystats cluster bloodbrain.csv --exclude logBBB --clusters 6 --tables clusters",
          "Six clusters of compounds; clusters/representatives.csv names one compound of each.",
          runCluster};
}

}  // namespace studystats::cli
