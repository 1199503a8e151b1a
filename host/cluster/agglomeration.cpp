// From the steps of an agglomeration to a history in leaf order, and its cuts.
#include "host/cluster/agglomeration.h"

#include "host/cluster/distance_block.h"
#include "host/cluster/nearest_neighbour_chain.h"
#include "host/text.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

CondensedMatrix distancesBetween(const DataMatrix& points, StatsDistanceUtils::STATS_DIST_TYPE type, Watch& watch,
                                 Stretch stretch) {
  const std::size_t n = points.front().size();
  CondensedMatrix distances(n);
  std::vector<std::int32_t> rows(n);
  std::iota(rows.begin(), rows.end(), 0);
  DistanceBlock block(points, type);
  for (std::size_t i = 0; i < n; i += DistanceBlock::kRows) {
    watch.report("analysis", "distances", stretch.from, stretch.to, static_cast<std::int64_t>(i),
                 static_cast<std::int64_t>(n));
    const auto left = blockOfRows(rows, i);
    for (std::size_t j = i; j < n; j += DistanceBlock::kRows) {
      const auto right = blockOfRows(rows, j);
      watch.check();
      block.compute(left, right);
      for (std::size_t a = 0; a < left.size(); ++a)
        for (std::size_t b = i == j ? a + 1 : 0; b < right.size(); ++b) distances(i + a, j + b) = block.from(a)[b];
    }
  }
  return distances;
}

// The groups of a history while it is put in order: each is a list of rows in leaf order.
class Groups {
 public:
  explicit Groups(std::size_t n) : root_(n), groups_(n), behind_(n, -1) {
    std::iota(root_.begin(), root_.end(), std::size_t{0});
    for (std::size_t i = 0; i < n; ++i) groups_[i] = {1, i, i, i};
  }

  struct Group {
    std::size_t size, first, head, tail;  // first: in table order; head, tail: in leaf order
  };
  const Group& of(std::size_t row) { return groups_[rootOf(row)]; }

  // Puts the group of row b behind that of row a.
  void join(std::size_t a, std::size_t b) {
    const std::size_t i = rootOf(a), j = rootOf(b);
    behind_[groups_[i].tail] = static_cast<std::ptrdiff_t>(groups_[j].head);
    groups_[i] = {groups_[i].size + groups_[j].size, std::min(groups_[i].first, groups_[j].first), groups_[i].head,
                  groups_[j].tail};
    root_[j] = i;
  }

  std::vector<std::int32_t> leafOrder() {
    std::vector<std::int32_t> order;
    for (auto row = static_cast<std::ptrdiff_t>(of(0).head); row >= 0; row = behind_[static_cast<std::size_t>(row)])
      order.push_back(static_cast<std::int32_t>(row + 1));
    return order;
  }

 private:
  std::size_t rootOf(std::size_t row) {
    while (root_[row] != row) row = root_[row] = root_[root_[row]];
    return row;
  }

  std::vector<std::size_t> root_;
  std::vector<Group> groups_;
  std::vector<std::ptrdiff_t> behind_;
};

// Merges by height, those that tie in their order; the larger group first, of equals the one with the first row, so
// that a cut relabels no row more than log2 n times.
History inLeafOrder(std::vector<ChainMerge> merges, std::size_t n) {
  std::stable_sort(merges.begin(), merges.end(),
                   [](const ChainMerge& x, const ChainMerge& y) { return x.height < y.height; });
  History history;
  Groups groups(n);
  for (const ChainMerge& merge : merges) {
    auto a = static_cast<std::size_t>(merge.first), b = static_cast<std::size_t>(merge.second);
    const Groups::Group &x = groups.of(a), &y = groups.of(b);
    if (x.size != y.size ? x.size < y.size : x.first > y.first) std::swap(a, b);
    history.heights.push_back(merge.height);
    history.a.push_back(static_cast<std::int32_t>(groups.of(a).first + 1));
    history.b.push_back(static_cast<std::int32_t>(groups.of(b).first + 1));
    groups.join(a, b);
    history.sizes.push_back(groups.of(a).size);
  }
  history.leafOrder = groups.leafOrder();
  return history;
}

// The first merges of a history, with an end mark behind them.
Partition cut(const History& history, std::size_t merges, double threshold) {
  const auto taken = static_cast<std::ptrdiff_t>(merges);
  std::vector<double> heights(history.heights.begin(), history.heights.begin() + taken);
  std::vector<std::int32_t> a(history.a.begin(), history.a.begin() + taken);
  std::vector<std::int32_t> b(history.b.begin(), history.b.begin() + taken);
  heights.push_back(0);
  a.push_back(0);
  b.push_back(0);
  Partition partition;
  partition.clusters = static_cast<std::size_t>(
      StatsClusterUtils::CalculateClusters(history.leafOrder, heights, a, b, threshold, partition.of));
  for (std::int32_t& cluster : partition.of) --cluster;
  numberBySize(partition);
  return partition;
}

std::string gigabytes(double bytes) { return significant(bytes / 1e9, 3) + " GB"; }

double memoryForDistances(std::size_t n) {
  return static_cast<double>(n) * (static_cast<double>(n) - 1) / 2 * sizeof(double);
}

[[noreturn]] void refuseMemory(std::size_t n, const std::string& why) {
  throw OutOfMemory(
      fmt::format("the distances between {} rows take {} of memory, {}. Try --method kmeans, which does "
                  "without them, or fewer rows.",
                  n, gigabytes(memoryForDistances(n)), why));
}

}  // namespace

void requireMemoryForDistances(std::size_t n) {
  const long pages = sysconf(_SC_PHYS_PAGES), page = sysconf(_SC_PAGE_SIZE);
  const double there = static_cast<double>(pages) * static_cast<double>(page);
  if (pages > 0 && page > 0 && memoryForDistances(n) > there)
    refuseMemory(n, fmt::format("and this machine has {}", gigabytes(there)));
}

void refuseMemoryForDistances(std::size_t n) { refuseMemory(n, "which could not be had"); }

History agglomerate(const DataMatrix& points, StatsDistanceUtils::STATS_DIST_TYPE type, Linkage linkage, Watch& watch,
                    Stretch stretch) {
  const double middle = (stretch.from + stretch.to) / 2;
  CondensedMatrix distances = distancesBetween(points, type, watch, {stretch.from, middle});
  return inLeafOrder(chainMerges(distances, linkage, watch, {middle, stretch.to}), points.front().size());
}

Partition cutInto(const History& history, std::size_t clusters) {
  return cut(history, history.leafOrder.size() - clusters, std::numeric_limits<double>::infinity());
}

Partition cutAt(const History& history, double threshold) { return cut(history, history.merges(), threshold); }

std::vector<std::int32_t> centresOf(const History& history, const Partition& partition, const DataMatrix& points,
                                    StatsDistanceUtils::STATS_DIST_TYPE type) {
  // 1. The row nearest to the mean of each cluster.
  const std::vector<std::int32_t> nearest = rowsNearestToMeans(partition, points, type);

  // 2. It represents the merge that formed the cluster; other merges are of no interest, and have their first row.
  const std::vector<std::size_t> sizes = clusterSizes(partition);
  std::vector<std::int32_t> mergeCentre = history.a;
  for (std::size_t m = 0; m < history.merges(); ++m) {
    const auto cluster = static_cast<std::size_t>(partition.of[static_cast<std::size_t>(history.a[m] - 1)]);
    if (history.sizes[m] == sizes[cluster]) mergeCentre[m] = nearest[cluster] + 1;
  }

  // 3. The history gives it back, in leaf order.
  std::vector<std::int32_t> clusterOf = partition.of, inOrder, centres(partition.clusters);
  StatsClusterUtils::CalculateCentres(history.leafOrder, history.heights, history.a, history.b, mergeCentre, clusterOf,
                                      inOrder);
  for (const std::int32_t row : inOrder)
    centres[static_cast<std::size_t>(partition.of[static_cast<std::size_t>(row)])] = row;
  return centres;
}

}  // namespace studystats
