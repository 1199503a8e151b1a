// Distances of all pairs, and nearest neighbours among all, beside the plain loops over pairs.

#include <studystats/utilities.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>

#include "bench/comparison.h"
#include "tests/definition/distances.h"

namespace studystats::bench {
namespace {

using StatsDistanceUtils::STATS_DIST_EUCLIDEAN;
using StatsDistanceUtils::STATS_DIST_TANIMOTO;
using StatsDistanceUtils::STATS_DIST_TYPE;

// Fingerprints for Tanimoto distances: a fifth of the bits is set.
DataMatrix points(std::size_t n, std::size_t p, STATS_DIST_TYPE type) {
  std::mt19937_64 random(20240615);
  std::normal_distribution<double> normal;
  DataMatrix columns(p, Numbers(n));
  for (Numbers& column : columns)
    for (double& x : column) x = type == STATS_DIST_TANIMOTO ? double(random() % 5 == 0) : normal(random);
  return columns;
}

Comparison distanceMatrix(std::size_t n, std::size_t p, STATS_DIST_TYPE type) {
  const auto data = std::make_shared<DataMatrix>(points(n, p, type));
  const auto ours = std::make_shared<DataMatrix>(), plain = std::make_shared<DataMatrix>();
  return {.ours = {[=] { StatsDistanceUtils::GenerateDistanceMatrix(*data, *ours, type); }},
          .definition = {[=] { definition::distanceMatrix(*data, *plain, type == STATS_DIST_TANIMOTO); }},
          .sameBits = [=] { return std::equal(ours->begin(), ours->end(), plain->begin(), plain->end(), sameBits); }};
}

Comparison neighbourLists(std::int32_t n, std::size_t p, std::int32_t k, STATS_DIST_TYPE type) {
  const auto data = std::make_shared<DataMatrix>(points(std::size_t(n), p, type));
  const auto ours = std::make_shared<IndexMatrix>(), plain = std::make_shared<IndexMatrix>();
  return {.ours = {[=] { StatsClusterUtils::CreateNeighborLists(*data, n, type, k, true, *ours); }},
          .definition = {[=] { definition::neighbourLists(*data, n, type == STATS_DIST_TANIMOTO, k, true, *plain); }},
          .sameBits = [=] { return *ours == *plain; }};
}

const Registration kEuclidean("distances, Euclidean, 3000 x 50",
                              [] { return distanceMatrix(3000, 50, STATS_DIST_EUCLIDEAN); });
const Registration kTanimoto("distances, Tanimoto, 2000 x 1024",
                             [] { return distanceMatrix(2000, 1024, STATS_DIST_TANIMOTO); });
const Registration kLists("10 neighbours, 20000 x 20",
                          [] { return neighbourLists(20000, 20, 10, STATS_DIST_EUCLIDEAN); });

}  // namespace
}  // namespace studystats::bench
