// k-means by the method of means and nearest means in turn: Lloyd (1982), IEEE Transactions on Information Theory 28,
// 129-137. Starts: Arthur & Vassilvitskii (2007), Proceedings of the 18th ACM-SIAM Symposium on Discrete Algorithms,
// 1027-1035.
#include "host/cluster/k_means.h"

#include "host/folds.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace studystats {
namespace {

constexpr std::size_t kMostRounds =
    1000;                       // with Tanimoto distances a mean need not lower the sum, and rounds may circle
constexpr double kSame = 1e-9;  // relative difference of criteria that say the same

using Row = std::vector<double>;

// Two starts from different ends of the table sum their clusters in different orders.
bool asGood(double criterion, double best) { return criterion <= best * (1 + kSame); }

class Rounds {
 public:
  Rounds(const PreparedClusters& prepared, DataMatrix positions)
      : prepared_(prepared), positions_(std::move(positions)) {
    run_.partition.clusters = positions_.front().size();
    run_.partition.of.assign(prepared.size(), -1);
  }

  // False when no row moved.
  bool next() {
    const std::vector<std::int32_t> before = run_.partition.of;
    for (std::size_t i = 0; i < prepared_.size(); ++i)
      run_.partition.of[i] =
          StatsClusterUtils::NearestCluster(positions_, clusters(), prepared_.rows[i], prepared_.type);
    fillEmpty();
    if (run_.partition.of == before) return false;
    StatsClusterUtils::CalculateClusterPositions(prepared_.points, positions_, run_.partition.of,
                                                 count32(prepared_.size()), count32(prepared_.points.size()),
                                                 clusters());
    double sum = 0;
    for (std::size_t i = 0; i < prepared_.size(); ++i) sum += cost(i);
    run_.criteria.push_back(sum);
    return true;
  }

  KMeansRun& run() { return run_; }

 private:
  std::int32_t clusters() const { return static_cast<std::int32_t>(run_.partition.clusters); }

  // What a row adds to the criterion.
  double cost(std::size_t row) const {
    const std::int32_t own = run_.partition.of[row];
    if (prepared_.type == StatsDistanceUtils::STATS_DIST_TANIMOTO)
      return StatsDistanceUtils::CalculateDistance(positions_, own, prepared_.rows[row], prepared_.type);
    return StatsDistanceUtils::EuclideanDistanceSquared(positions_, own, prepared_.rows[row]);
  }

  // An empty cluster gets the row farthest from its position, of those that are not alone.
  void fillEmpty() {
    std::vector<std::size_t> sizes = clusterSizes(run_.partition);
    for (std::size_t k = 0; k < sizes.size(); ++k) {
      if (sizes[k] > 0) continue;
      std::size_t farthest = prepared_.size();
      for (std::size_t i = 0; i < prepared_.size(); ++i)
        if (sizes[static_cast<std::size_t>(run_.partition.of[i])] > 1 &&
            (farthest == prepared_.size() || cost(i) > cost(farthest)))
          farthest = i;
      if (farthest == prepared_.size()) return;
      --sizes[static_cast<std::size_t>(run_.partition.of[farthest])];
      run_.partition.of[farthest] = static_cast<std::int32_t>(k);
      sizes[k] = 1;
      for (std::size_t j = 0; j < positions_.size(); ++j) positions_[j][k] = prepared_.rows[farthest][j];
      run_.reseeded = true;
    }
  }

  const PreparedClusters& prepared_;
  DataMatrix positions_;
  KMeansRun run_;
};

// The row at which the running sum of weights passes a share of their sum. The generator may leave 0 ... 1 a little,
// and the sum be rounded: a row of weight 0 is never taken while another is there.
std::size_t rowAt(double share, const std::vector<double>& weights) {
  double sum = 0;
  for (const double weight : weights) sum += weight;
  std::size_t row = 0;
  double passed = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (!(weights[i] > 0)) continue;
    row = i;
    passed += weights[i];
    if (passed > share * sum) break;
  }
  return row;
}

// Numbers between 0 and 1.
std::vector<double> drawNumbers(std::size_t count, std::int32_t seed) {
  engine::Generator generator = generatorFrom(seed);
  std::vector<double> numbers(count);
  for (double& number : numbers) number = generator();
  return numbers;
}

// A seed of its own for each start.
std::vector<std::int32_t> drawSeeds(int restarts, std::int32_t seed) {
  std::vector<std::int32_t> seeds;
  for (const double number : drawNumbers(static_cast<std::size_t>(restarts), seed))
    seeds.push_back(static_cast<std::int32_t>(std::clamp(number, 0.0, 1.0) * kMostSeed));
  return seeds;
}

// Rows far apart, each drawn in proportion to the squared distance from the nearest drawn before.
std::vector<std::size_t> drawStart(const PreparedClusters& prepared, std::size_t clusters, std::int32_t seed) {
  const std::vector<double> numbers = drawNumbers(clusters, seed);
  std::vector<std::size_t> start{rowAt(numbers[0], std::vector<double>(prepared.size(), 1.0))};
  std::vector<double> weights(prepared.size(), std::numeric_limits<double>::infinity());
  while (start.size() < clusters) {
    const Row& last = prepared.rows[start.back()];
    for (std::size_t i = 0; i < prepared.size(); ++i) {
      const double distance =
          std::max(0.0, StatsDistanceUtils::CalculateDistance(last, prepared.rows[i], prepared.type));
      weights[i] = std::min(weights[i], distance * distance);
    }
    start.push_back(rowAt(numbers[start.size()], weights));
  }
  return start;
}

DataMatrix positionsOf(const PreparedClusters& prepared, const std::vector<std::size_t>& start) {
  DataMatrix positions(prepared.points.size());
  for (std::size_t j = 0; j < positions.size(); ++j)
    for (const std::size_t row : start) positions[j].push_back(prepared.points[j][row]);
  return positions;
}

}  // namespace

KMeansRun settle(const PreparedClusters& prepared, DataMatrix positions,
                 const std::function<void(std::size_t)>& eachRound) {
  Rounds rounds(prepared, std::move(positions));
  for (std::size_t round = 1; round <= kMostRounds; ++round) {
    eachRound(round);
    if (rounds.next()) continue;
    rounds.run().settled = true;
    break;
  }
  return std::move(rounds.run());
}

KMeans kMeans(const PreparedClusters& prepared, std::size_t clusters, const ClusterOptions& options, Watch& watch,
              Stretch stretch) {
  KMeans found;
  found.starts.restarts = options.restarts;
  std::vector<double> criteria;
  for (const std::int32_t seed : drawSeeds(options.restarts, options.seed)) {
    KMeansRun run =
        settle(prepared, positionsOf(prepared, drawStart(prepared, clusters, seed)), [&](std::size_t round) {
          watch.report("analysis",
                       fmt::format("{} clusters, start {} of {}, round {}", clusters, criteria.size() + 1,
                                   options.restarts, round),
                       stretch.from, stretch.to, static_cast<std::int64_t>(criteria.size()), options.restarts);
        });
    criteria.push_back(run.criteria.back());
    found.starts.reseeded += run.reseeded ? 1 : 0;
    if (found.best.criteria.empty() || run.criteria.back() < found.best.criteria.back()) found.best = std::move(run);
  }
  const double best = found.best.criteria.back();
  found.starts.best = static_cast<int>(
      std::count_if(criteria.begin(), criteria.end(), [&](double criterion) { return asGood(criterion, best); }));
  found.starts.settled = found.best.settled;
  found.starts.criteria = found.best.criteria;
  numberBySize(found.best.partition);
  return found;
}

}  // namespace studystats
