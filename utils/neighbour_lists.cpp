// Lists of nearest neighbours.
//
// Distances are computed between blocks of points and forgotten again: of each point only those are kept that may still
// come to stand in its list, which are the k + 1 smallest seen so far and what ties with them.
#include <algorithm>
#include <cmath>
#include <limits>

#include "utils/distance_blocks.h"
#include "utils/matrices.h"

using namespace studystats::core;

namespace StatsClusterUtils {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kTie = 1.00000000001;
constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kFewest = 64;  // candidates that are kept before any is dropped

struct Candidate {
  double distance;
  std::int32_t point;
};

// The first number from j on that is not above the limit, or n. A not-a-number never is one.
int within(double limit, const double* distances, int j, int n) {
  while (j < n && !(distances[j] <= limit)) ++j;
  return j;
}

// The candidates for one point's list, in the order of their numbers.
class Nearest {
 public:
  Nearest(std::size_t k, bool fixedSize) : k_(k), fixedSize_(fixedSize) {}

  void clear() {
    candidates_.clear();
    limit_ = kInfinity;
    most_ = std::max(kFewest, 2 * (k_ + 1));
  }

  // The distances of the points first, first + 1, ..., which are numbered higher than those before.
  void offer(const double* distances, int n, std::int32_t first) {
    for (int j = within(limit_, distances, 0, n); j < n; j = within(limit_, distances, j + 1, n)) {
      candidates_.push_back({distances[j], first + j});
      if (candidates_.size() > most_) prune();
    }
  }

  // The list of point i, when all have been offered.
  void write(std::int32_t i, std::vector<std::int32_t>& list) {
    const double r = distanceAtK();
    std::erase_if(candidates_, [i](const Candidate& c) { return c.point == i; });
    if (fixedSize_)
      keep(r, k_ - countBelow(r));
    else
      keep(r * kTie, kAll);
    list.clear();
    for (const Candidate& c : candidates_) list.push_back(c.point);
  }

 private:
  // The element at position k, from 0, of the distances in ascending order. Infinity when there are not as many: then
  // no number is too far.
  double distanceAtK() {
    if (candidates_.size() <= k_) return kInfinity;
    order_.clear();
    for (const Candidate& c : candidates_) order_.push_back(c.distance);
    std::nth_element(order_.begin(), order_.begin() + std::ptrdiff_t(k_), order_.end());
    return order_[k_];
  }

  std::size_t countBelow(double r) const {
    return std::size_t(
        std::count_if(candidates_.begin(), candidates_.end(), [r](const Candidate& c) { return c.distance < r; }));
  }

  // Keeps the candidates nearer than `cut`, and of those at `cut` the lowest-numbered.
  void keep(double cut, std::size_t ties) {
    std::size_t kept = 0;
    for (const Candidate& c : candidates_)
      if (c.distance < cut || (c.distance == cut && ties > 0 && ties-- > 0)) candidates_[kept++] = c;
    candidates_.resize(kept);
  }

  // Drops the candidates that cannot come to stand in the list any more, however near the points are that follow. The
  // point itself may be one of the ties.
  void prune() {
    const double r = distanceAtK();
    limit_ = fixedSize_ ? r : std::max(r, r * kTie);  // r may be rounded below 0
    keep(limit_, fixedSize_ ? k_ + 1 : kAll);
    most_ = std::max(most_, 2 * candidates_.size());
  }

  std::size_t k_;
  bool fixedSize_;
  double limit_ = kInfinity;
  std::size_t most_ = 0;
  std::vector<Candidate> candidates_;
  std::vector<double> order_;
};

}  // namespace

void CreateNeighborLists(const DataMatrix& points, std::int32_t nPoints, StatsDistanceUtils::STATS_DIST_TYPE type,
                         std::int32_t nNeighbors, bool fixedSize, IndexMatrix& lists) {
  require(nPoints >= 0 && nNeighbors >= 0, "CreateNeighborLists");
  requireBlock(points, points.size(), std::size_t(nPoints), "CreateNeighborLists");

  IndexMatrix found(static_cast<std::size_t>(nPoints));
  const std::int32_t k = std::min(nNeighbors, std::max(nPoints - 1, 0));
  std::vector<Nearest> nearest(DistanceBlocks::kLeft, Nearest(std::size_t(k), fixedSize));
  std::vector<std::int32_t> list;
  DistanceBlocks blocks(points, nPoints, type);
  for (std::int64_t left = 0; left < nPoints; left += DistanceBlocks::kLeft) {
    for (Nearest& n : nearest) n.clear();
    for (std::int64_t right = 0; right < nPoints; right += DistanceBlocks::kRight) {
      blocks.compute(std::int32_t(left), std::int32_t(right));
      for (int i = 0; i < blocks.nLeft(); ++i)
        nearest[std::size_t(i)].offer(blocks.row(i), blocks.nRight(), std::int32_t(right));
    }
    for (int i = 0; i < blocks.nLeft(); ++i) {
      const std::int64_t point = left + i;
      nearest[std::size_t(i)].write(std::int32_t(point), list);
      found[std::size_t(point)].assign(list.begin(), list.end());
    }
  }
  lists.swap(found);
}

}  // namespace StatsClusterUtils
