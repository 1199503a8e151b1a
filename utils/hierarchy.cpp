// Cutting an agglomeration history.
//
// In leaf order every group is a contiguous run, so that a merge relabels one run and a cut is read off the labels from
// the first leaf to the last. Nothing is written before all is known: outputs may be lists that are read.
#include <algorithm>
#include <cmath>

#include "utils/matrices.h"

using namespace studystats::core;

namespace StatsClusterUtils {
namespace {

using Numbers = std::vector<std::int32_t>;

// The position of each point in leafOrder, which must be a permutation of 1 ... n.
std::vector<std::size_t> positions(const Numbers& leafOrder, const char* operation) {
  const std::size_t n = leafOrder.size();
  std::vector<std::size_t> position(n, n);
  for (std::size_t q = 0; q < n; ++q) {
    require(leafOrder[q] >= 1 && std::size_t(leafOrder[q]) <= n, operation);
    std::size_t& at = position[std::size_t(leafOrder[q]) - 1];
    require(at == n, operation);
    at = q;
  }
  return position;
}

bool isVoid(std::int32_t a, std::int32_t b) { return a < 1 || b < 1; }

// A point of a merge, counted from 0.
std::size_t pointOf(std::int32_t number, std::size_t n, const char* operation) {
  require(std::size_t(number) <= n, operation);
  return std::size_t(number) - 1;
}

// The label of each point after all merges up to the threshold.
Numbers merged(const Numbers& leafOrder, const std::vector<double>& mergeDist, const Numbers& mergeA,
               const Numbers& mergeB, double threshold, const char* operation) {
  const std::size_t n = leafOrder.size();
  const std::vector<std::size_t> position = positions(leafOrder, operation);
  Numbers label(n);
  for (std::size_t i = 0; i < n; ++i) label[i] = std::int32_t(i + 1);
  const auto labelAt = [&](std::size_t q) -> std::int32_t& { return label[std::size_t(leafOrder[q]) - 1]; };

  const std::size_t nMerges = std::min({n, mergeDist.size(), mergeA.size(), mergeB.size()});
  for (std::size_t m = 0; m < nMerges; ++m) {
    if (mergeDist[m] > threshold || std::isnan(mergeDist[m])) break;
    if (isVoid(mergeA[m], mergeB[m])) continue;
    const std::int32_t joined = label[pointOf(mergeA[m], n, operation)];
    const std::size_t b = pointOf(mergeB[m], n, operation), at = position[b];
    const std::int32_t old = label[b];
    for (std::size_t q = at; q < n && labelAt(q) == old; ++q) labelAt(q) = joined;
    for (std::size_t q = at; q > 0 && labelAt(q - 1) == old; --q) labelAt(q - 1) = joined;
  }
  return label;
}

// Positions of leafOrder.
struct Run {
  std::size_t first, last;
};

// The clusters of a cut: runs of equal labels.
std::vector<Run> runs(const Numbers& leafOrder, const Numbers& label) {
  const auto labelAt = [&](std::size_t q) { return label[std::size_t(leafOrder[q]) - 1]; };
  std::vector<Run> found;
  for (std::size_t q = 0; q < leafOrder.size(); ++q)
    if (q > 0 && labelAt(q) == labelAt(q - 1))
      found.back().last = q;
    else
      found.push_back({q, q});
  return found;
}

// The groups of a history while it is replayed, by position.
class Groups {
 public:
  Groups(const Numbers& leafOrder, const char* operation)
      : position_(positions(leafOrder, operation)), group_(leafOrder) {}

  // Joins the groups of two points: the second must begin behind the first. Returns where the joined group lies.
  Run join(std::int32_t pointA, std::int32_t pointB, const char* operation) {
    const std::size_t n = group_.size();
    const std::int32_t a = group_[position_[pointOf(pointA, n, operation)]];
    const std::int32_t b = group_[position_[pointOf(pointB, n, operation)]];
    const auto start = std::find(group_.begin(), group_.end(), a);
    auto end = std::find(start + 1, group_.end(), b);
    require(end != group_.end(), operation);
    while (end != group_.end() && *end == b) *end++ = a;
    return {std::size_t(start - group_.begin()), std::size_t(end - group_.begin()) - 1};
  }

 private:
  std::vector<std::size_t> position_;
  Numbers group_;
};

}  // namespace

void MergeClusters(const Numbers& leafOrder, const std::vector<double>& mergeDist, const Numbers& mergeA,
                   const Numbers& mergeB, double threshold, Numbers& clusterOf) {
  require(clusterOf.size() >= leafOrder.size(), "MergeClusters");
  const Numbers label = merged(leafOrder, mergeDist, mergeA, mergeB, threshold, "MergeClusters");
  std::copy(label.begin(), label.end(), clusterOf.begin());
}

std::int32_t CalculateClusters(const Numbers& leafOrder, const std::vector<double>& mergeDist, const Numbers& mergeA,
                               const Numbers& mergeB, double threshold, Numbers& clusterOf) {
  Numbers label = merged(leafOrder, mergeDist, mergeA, mergeB, threshold, "CalculateClusters");
  const std::vector<Run> clusters = runs(leafOrder, label);
  for (std::size_t r = 0; r < clusters.size(); ++r)
    for (std::size_t q = clusters[r].first; q <= clusters[r].last; ++q)
      label[std::size_t(leafOrder[q]) - 1] = std::int32_t(clusters.size() - r);
  clusterOf.swap(label);
  return std::int32_t(clusters.size());
}

std::int32_t CalculateCentres(const Numbers& leafOrder, const std::vector<double>& /*mergeDist*/, const Numbers& mergeA,
                              const Numbers& mergeB, const Numbers& mergeCentre, Numbers& clusterOf, Numbers& centres) {
  constexpr const char* kOperation = "CalculateCentres";
  const std::size_t n = leafOrder.size();
  Groups groups(leafOrder, kOperation);
  require(clusterOf.size() >= n, kOperation);
  if (n == 0) return 0;

  // 1. The clusters; one of a single point is its own centre.
  const std::vector<Run> clusters = runs(leafOrder, clusterOf);
  std::vector<std::size_t> clusterFrom(n, n);  // the cluster of more than one point that begins at a position
  std::vector<bool> formed(clusters.size(), true);
  Numbers found(clusters.size());
  for (std::size_t r = 0; r < clusters.size(); ++r) {
    found[r] = leafOrder[clusters[r].first] - 1;
    if (clusters[r].first == clusters[r].last) continue;
    clusterFrom[clusters[r].first] = r;
    formed[r] = false;
  }

  // 2. The history replayed until every cluster has been formed.
  auto missing = std::count(formed.begin(), formed.end(), false);
  const std::size_t nMerges = std::min({mergeA.size(), mergeB.size(), mergeCentre.size()});
  for (std::size_t m = 0; m < nMerges && missing > 0; ++m) {
    if (isVoid(mergeA[m], mergeB[m])) continue;
    const Run group = groups.join(mergeA[m], mergeB[m], kOperation);
    const std::size_t r = clusterFrom[group.first];
    if (r == n || clusters[r].last != group.last) continue;
    require(mergeCentre[m] >= 1, kOperation);
    found[r] = std::int32_t(pointOf(mergeCentre[m], n, kOperation));
    missing -= formed[r] ? 0 : 1;
    formed[r] = true;
  }
  centres.swap(found);
  return std::int32_t(clusters.size());
}

}  // namespace StatsClusterUtils
