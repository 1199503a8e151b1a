#include "host/cluster/neighbours.h"

#include <algorithm>

namespace studystats {
namespace {

using Lists = std::vector<std::vector<Neighbour>>;

constexpr double kTie = 1.00000000001;  // as in the library's lists

bool nearer(const Neighbour& x, const Neighbour& y) {
  return x.distance != y.distance ? x.distance < y.distance : x.row < y.row;
}

// The library takes all rows in one call.
Lists ofTheModel(const PreparedClusters& prepared, int neighbours, bool fixed, Watch& watch) {
  IndexMatrix rows;
  StatsClusterUtils::CreateNeighborLists(prepared.points, count32(prepared.size()), prepared.type, neighbours, fixed,
                                         rows);
  Lists lists(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i % 1024 == 0)
      watch.report("analysis", "distances", 60, 90, static_cast<std::int64_t>(i),
                   static_cast<std::int64_t>(rows.size()));
    for (const std::int32_t row : rows[i])
      lists[i].push_back({static_cast<std::size_t>(row),
                          StatsDistanceUtils::CalculateDistance(
                              prepared.rows[i], prepared.rows[static_cast<std::size_t>(row)], prepared.type)});
    std::sort(lists[i].begin(), lists[i].end(), nearer);
  }
  return lists;
}

// The same for a row that is not among them.
std::vector<Neighbour> ofRow(const std::vector<double>& row, const PreparedClusters& prepared, int neighbours,
                             bool fixed) {
  std::vector<Neighbour> list;
  for (std::size_t i = 0; i < prepared.size(); ++i)
    list.push_back({i, StatsDistanceUtils::CalculateDistance(row, prepared.rows[i], prepared.type)});
  std::sort(list.begin(), list.end(), nearer);
  std::size_t kept = std::min(static_cast<std::size_t>(neighbours), list.size());
  const double last = list[kept - 1].distance * kTie;
  while (!fixed && kept < list.size() && list[kept].distance <= last) ++kept;
  list.resize(kept);
  return list;
}

}  // namespace

int neighboursThatAre(int asked, std::size_t rows) {
  return static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(asked), rows - 1));
}

Lists neighbourLists(const PreparedClusters& prepared, int neighbours, bool fixed, Watch& watch) {
  watch.report("analysis", "neighbour lists", 10, 60, 0, 1);
  Lists lists = ofTheModel(prepared, neighbours, fixed, watch);
  for (std::size_t i = 0; i < prepared.apart.size(); ++i) {
    if (i % 64 == 0)
      watch.report("analysis", "rows kept out", 90, 100, static_cast<std::int64_t>(i),
                   static_cast<std::int64_t>(prepared.apart.size()));
    lists.push_back(ofRow(prepared.apart[i], prepared, neighbours, fixed));
  }
  return lists;
}

}  // namespace studystats
