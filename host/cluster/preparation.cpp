// From a table and what is asked of it to the rows that are clustered.
#include "host/cluster/agglomeration.h"
#include "host/cluster/cluster.h"
#include "host/folds.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace studystats {
namespace {

void refuse(const std::string& option, const std::string& text) { throw BadOptions(text, {.option = option}); }

// What was asked for and belongs to another method.
void checkMethod(const ClusterOptions& options) {
  const ClusterOptions defaults;
  const struct {
    const char* option;
    bool given;
    ClusterMethod method;
  } rows[] = {
      {"--linkage", options.linkage.has_value(), ClusterMethod::Hierarchical},
      {"--threshold", options.threshold.has_value(), ClusterMethod::Hierarchical},
      {"--restarts", options.restarts != defaults.restarts, ClusterMethod::KMeans},
      {"--neighbours", options.neighbours != defaults.neighbours, ClusterMethod::Neighbours},
      {"--fixed", options.fixed, ClusterMethod::Neighbours},
  };
  for (const auto& row : rows)
    if (row.given && options.method != row.method)
      refuse(row.option,
             fmt::format("{} belongs to --method {}, and this is --method {}.{}", row.option, nameOf(row.method),
                         nameOf(options.method),
                         std::string_view(row.option) == "--threshold" && options.method == ClusterMethod::KMeans
                             ? " Say --clusters K."
                             : ""));
  if (options.clusters != 0 && options.method == ClusterMethod::Neighbours)
    refuse("--clusters",
           "--method neighbours makes lists and no clusters; --clusters belongs to --method hierarchical or "
           "kmeans.");
}

void checkNumbers(const ClusterOptions& options) {
  if (options.clusters < 0 || options.clusters == 1)
    refuse("--clusters",
           fmt::format("--clusters {} is no number of clusters to divide the rows into; it counts from 2.",
                       options.clusters));
  if (options.clusters > 0 && options.threshold)
    refuse("--threshold", "--clusters and --threshold exclude each other: the history is cut in one way.");
  if (options.threshold && !(*options.threshold >= 0))
    refuse("--threshold", fmt::format("--threshold {} is no distance.", *options.threshold));
  if (options.neighbours < 1)
    refuse("--neighbours",
           fmt::format("--neighbours {} is no number of neighbours; it counts from 1.", options.neighbours));
  if (options.restarts < 1)
    refuse("--restarts",
           fmt::format("--restarts {} leaves nothing to choose from; at least one start is wanted.", options.restarts));
  if (options.seed < 0 || options.seed > kMostSeed)
    refuse("--seed", fmt::format("--seed {} is outside 0 ... {}.", options.seed, kMostSeed));
}

// Differences of centred values would make the shared part of two rows negative.
DataOptions dataOptions(const ClusterOptions& options) {
  DataOptions data = options.data;
  if (options.distance != Distance::Tanimoto) return data;
  if (data.scaling != Scaling::None && data.scaling != DataOptions().scaling)
    refuse("--scale",
           fmt::format("--scale {} has no meaning for Tanimoto distances, which compare the table's own numbers. "
                       "Leave it out, or --distance euclidean.",
                       nameOf(data.scaling)));
  data.scaling = Scaling::None;
  return data;
}

void requireRowsAndColumns(const Prepared& prepared, const TableView& table) {
  if (prepared.modelRows.size() < 2)
    throw NotComputed(fmt::format("too few rows: clusters need at least 2, and {} of {} is left in {}.",
                                  prepared.modelRows.size(), table.rows(), table.name()));
  requireDescriptors(prepared, table, "over the rows");
}

std::vector<std::vector<double>> rowsOf(const Grid& grid) {
  std::vector<std::vector<double>> rows(grid.rows, std::vector<double>(grid.columns));
  for (std::size_t j = 0; j < grid.columns; ++j)
    for (std::size_t i = 0; i < grid.rows; ++i) rows[i][j] = grid(i, j);
  return rows;
}

DataMatrix columnsOf(const Grid& grid) {
  DataMatrix columns;
  for (std::size_t j = 0; j < grid.columns; ++j) columns.emplace_back(grid.column(j).begin(), grid.column(j).end());
  return columns;
}

// Rows that have the numbers of an earlier one, ascending.
std::vector<std::size_t> repeatedRows(const std::vector<std::vector<double>>& rows) {
  std::vector<std::size_t> order(rows.size()), repeats;
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) { return rows[x] < rows[y]; });
  for (std::size_t k = 1; k < order.size(); ++k)
    if (rows[order[k]] == rows[order[k - 1]]) repeats.push_back(order[k]);
  std::sort(repeats.begin(), repeats.end());
  return repeats;
}

void checkClusters(const PreparedClusters& prepared, const ClusterOptions& options, const TableView& table) {
  const auto wanted = static_cast<std::size_t>(options.clusters);
  if (wanted > prepared.size())
    refuse("--clusters", fmt::format("--clusters {} is more than the {} of {} that are analysed.", wanted,
                                     counted(prepared.size(), "row", "rows"), table.name()));
  if (options.method == ClusterMethod::KMeans && wanted > prepared.different())
    refuse("--clusters",
           fmt::format("--clusters {} is more than k-means can divide: only {} of the {} rows are different.", wanted,
                       prepared.different(), prepared.size()));
}

}  // namespace

PreparedClusters prepareClusters(const TableView& table, const ClusterOptions& options, Watch& watch) {
  checkMethod(options);
  checkNumbers(options);
  const bool everyColumnCounts = options.distance == Distance::Tanimoto;
  const Roles roles{
      .responses = options.responses, .classColumn = options.classColumn, .keepRepeats = everyColumnCounts};

  PreparedClusters prepared;
  prepared.data = prepare(table, roles, dataOptions(options), watch);
  requireRowsAndColumns(prepared.data, table);
  prepared.points = columnsOf(prepared.data.model);
  prepared.rows = rowsOf(prepared.data.model);
  prepared.apart = rowsOf(prepared.data.predicted);
  prepared.repeats = repeatedRows(prepared.rows);
  prepared.type = options.distance == Distance::Tanimoto ? StatsDistanceUtils::STATS_DIST_TANIMOTO
                                                         : StatsDistanceUtils::STATS_DIST_EUCLIDEAN;
  prepared.linkage =
      options.linkage.value_or(options.distance == Distance::Tanimoto ? Linkage::Average : Linkage::Ward);
  checkClusters(prepared, options, table);
  if (options.method == ClusterMethod::Hierarchical) requireMemoryForDistances(prepared.size());
  return prepared;
}

const char* nameOf(ClusterMethod method) {
  switch (method) {
    case ClusterMethod::Hierarchical:
      return "hierarchical";
    case ClusterMethod::KMeans:
      return "kmeans";
    case ClusterMethod::Neighbours:
      break;
  }
  return "neighbours";
}

const char* nameOf(Distance distance) { return distance == Distance::Tanimoto ? "tanimoto" : "euclidean"; }

const char* nameOf(Linkage linkage) {
  switch (linkage) {
    case Linkage::Ward:
      return "ward";
    case Linkage::Average:
      return "average";
    case Linkage::Complete:
      return "complete";
    case Linkage::Single:
      break;
  }
  return "single";
}

}  // namespace studystats
