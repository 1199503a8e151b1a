#include "host/report/dendrogram.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace studystats {
namespace {

// The group that each row is in, found again after merges: the smaller number of two joined groups stands for both.
class Groups {
 public:
  explicit Groups(std::size_t rows) : parent_(rows) { std::iota(parent_.begin(), parent_.end(), std::size_t{0}); }
  std::size_t of(std::size_t row) {
    while (parent_[row] != row) row = parent_[row] = parent_[parent_[row]];
    return row;
  }
  std::size_t join(std::size_t a, std::size_t b) {
    const auto [first, last] = std::minmax({of(a), of(b)});
    return parent_[last] = first;
  }

 private:
  std::vector<std::size_t> parent_;
};

struct Segment {
  double x, y, x2, y2;
  std::string cluster;
  std::size_t rows;
};

struct Node {
  double x = 0, height = 0;
  std::size_t rows = 1;
};

struct Leaf {
  std::size_t row;
  std::size_t rows;
  double x;
};

bool belowCut(const Clusters& result, double height) {
  return result.cut && result.cut->below && height <= *result.cut->below;
}

std::string clusterText(const Clusters& result, std::size_t row) {
  const std::optional<std::size_t>& cluster = result.rows[row].cluster;
  return cluster ? std::to_string(*cluster + 1) : std::string();
}

}  // namespace

Dendrogram dendrogramOf(const Clusters& result) {
  const Agglomeration& history = *result.history;
  const std::size_t rows = history.leafOrder.size();
  const std::size_t hidden = rows > kMostLeaves ? rows - kMostLeaves : 0;
  Groups groups(rows);
  std::vector<Node> nodes(rows);
  for (std::size_t k = 0; k < hidden; ++k) {
    const ClusterMerge& merge = history.merges[k];
    nodes[groups.join(merge.first, merge.second)].rows = merge.rows;
  }

  // Leaves stand in the order of the history, in which every group is a run.
  std::vector<Leaf> leaves;
  std::vector<bool> placed(rows, false);
  for (const std::size_t row : history.leafOrder) {
    const std::size_t group = groups.of(row);
    if (placed[group]) continue;
    placed[group] = true;
    nodes[group].x = static_cast<double>(leaves.size());
    leaves.push_back({row, nodes[group].rows, nodes[group].x});
  }

  std::vector<Segment> segments;
  for (std::size_t k = hidden; k < history.merges.size(); ++k) {
    const ClusterMerge& merge = history.merges[k];
    const Node left = nodes[groups.of(merge.first)], right = nodes[groups.of(merge.second)];
    const std::string cluster = belowCut(result, merge.height) ? clusterText(result, merge.first) : std::string();
    for (const Node& side : {left, right})
      segments.push_back({side.x, side.height, side.x, merge.height, cluster, side.rows});
    segments.push_back({left.x, merge.height, right.x, merge.height, cluster, merge.rows});
    nodes[groups.join(merge.first, merge.second)] = {(left.x + right.x) / 2, merge.height, merge.rows};
  }

  Dendrogram tree;
  tree.segments = ReportData("dendrogram")
                      .numbers("x", segments, [](const Segment& s) { return s.x; })
                      .numbers("y", segments, [](const Segment& s) { return s.y; })
                      .numbers("x2", segments, [](const Segment& s) { return s.x2; })
                      .numbers("y2", segments, [](const Segment& s) { return s.y2; })
                      .texts("cluster", segments, [](const Segment& s) { return s.cluster; })
                      .numbers("rows", segments, [](const Segment& s) { return s.rows; })
                      .take();
  tree.leaves =
      ReportData("leaves")
          .texts("key", leaves, [](const Leaf& leaf) { return leaf.rows == 1 ? fmt::format("r{}", leaf.row) : ""; })
          .texts("label", leaves,
                 [&](const Leaf& leaf) {
                   return leaf.rows == 1 ? result.rows[leaf.row].name : counted(leaf.rows, "row", "rows");
                 })
          .numbers("x", leaves, [](const Leaf& leaf) { return leaf.x; })
          .numbers("rows", leaves, [](const Leaf& leaf) { return leaf.rows; })
          .take();
  return tree;
}

}  // namespace studystats
