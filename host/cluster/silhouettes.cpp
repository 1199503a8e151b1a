#include "host/cluster/silhouettes.h"

#include "host/cluster/distance_block.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

constexpr double kMostPairs = 4e8;

// The distances of some rows from each cluster of a partition, summed.
class ClusterSums {
 public:
  explicit ClusterSums(const Partition& partition) : partition_(partition), sizes_(clusterSizes(partition)) {}

  void clear(std::size_t rows) { sums_.assign(rows * partition_.clusters, 0.0); }

  // Distances of the i-th row from those of `others`.
  void add(std::size_t i, std::span<const double> distances, std::span<const std::int32_t> others) {
    double* sums = sums_.data() + i * partition_.clusters;
    for (std::size_t j = 0; j < others.size(); ++j)
      sums[partition_.of[static_cast<std::size_t>(others[j])]] += distances[j];
  }

  void judge(std::size_t i, std::int32_t row, Silhouettes& silhouettes) const {
    const double* sums = sums_.data() + i * partition_.clusters;
    const auto own = static_cast<std::size_t>(partition_.of[static_cast<std::size_t>(row)]);
    std::size_t next = own == 0 ? 1 : 0;
    for (std::size_t k = 0; k < partition_.clusters; ++k)
      if (k != own && meanTo(sums, k) < meanTo(sums, next)) next = k;
    double value = 0;
    if (sizes_[own] > 1) {
      const double a = sums[own] / static_cast<double>(sizes_[own] - 1), b = meanTo(sums, next);
      const double larger = std::max(a, b);
      value = larger > 0 ? (b - a) / larger : 0;
    }
    silhouettes.values.push_back(value);
    silhouettes.next.push_back(static_cast<std::int32_t>(next));
  }

 private:
  double meanTo(const double* sums, std::size_t k) const { return sums[k] / static_cast<double>(sizes_[k]); }

  const Partition& partition_;
  std::vector<std::size_t> sizes_;
  std::vector<double> sums_;  // row by row
};

}  // namespace

std::vector<std::int32_t> judgedRows(std::size_t n) {
  const double pairs = static_cast<double>(n) * static_cast<double>(n);
  const auto step = static_cast<std::size_t>(std::max(1.0, std::ceil(pairs / kMostPairs)));
  std::vector<std::int32_t> rows;
  for (std::size_t i = 0; i < n; i += step) rows.push_back(static_cast<std::int32_t>(i));
  return rows;
}

std::vector<Silhouettes> silhouettesOf(const std::vector<const Partition*>& partitions, const DataMatrix& points,
                                       StatsDistanceUtils::STATS_DIST_TYPE type,
                                       const std::vector<std::int32_t>& judged, Watch& watch, Stretch stretch) {
  std::vector<Silhouettes> silhouettes(partitions.size());
  std::vector<ClusterSums> sums;
  for (const Partition* partition : partitions) sums.emplace_back(*partition);
  std::vector<std::int32_t> all(points.front().size());
  std::iota(all.begin(), all.end(), 0);
  // With every row judged both lists are one, and blocks on the diagonal are computed once.
  const std::span<const std::int32_t> rows = judged.size() == all.size() ? all : judged;

  DistanceBlock block(points, type);
  for (std::size_t i = 0; i < rows.size(); i += DistanceBlock::kRows) {
    watch.report("analysis", "silhouettes", stretch.from, stretch.to, static_cast<std::int64_t>(i),
                 static_cast<std::int64_t>(rows.size()));
    const auto left = blockOfRows(rows, i);
    for (ClusterSums& one : sums) one.clear(left.size());
    for (std::size_t j = 0; j < all.size(); j += DistanceBlock::kRows) {
      const auto right = blockOfRows(all, j);
      watch.check();
      block.compute(left, right);
      for (ClusterSums& one : sums)
        for (std::size_t a = 0; a < left.size(); ++a) one.add(a, block.from(a), right);
    }
    for (std::size_t s = 0; s < sums.size(); ++s)
      for (std::size_t a = 0; a < left.size(); ++a) sums[s].judge(a, left[a], silhouettes[s]);
  }
  for (Silhouettes& one : silhouettes)
    one.mean = std::accumulate(one.values.begin(), one.values.end(), 0.0) / static_cast<double>(one.values.size());
  return silhouettes;
}

}  // namespace studystats
