// A table's rows in clusters: preparation, the method asked for, and what the clusters are like.
#include "host/cluster/agglomeration.h"
#include "host/cluster/cluster.h"
#include "host/cluster/description.h"
#include "host/cluster/k_means.h"
#include "host/cluster/neighbours.h"
#include "host/cluster/silhouettes.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kMostTried = 12;  // numbers of clusters whose silhouettes are shown: 2 ... 12

// The numbers of clusters that are looked at: as many as rows that differ allow, and those asked for.
std::vector<std::size_t> numbersTried(const PreparedClusters& prepared, std::size_t asked) {
  std::vector<std::size_t> numbers;
  const std::size_t most = std::min({kMostTried, prepared.different(), prepared.size() - 1});
  for (std::size_t k = 2; k <= most; ++k) numbers.push_back(k);
  if (asked > 1 && std::find(numbers.begin(), numbers.end(), asked) == numbers.end()) numbers.push_back(asked);
  return numbers;
}

// Every partition that is looked at, and the one asked for, which is among them unless it is a single cluster.
struct Partitions {
  std::vector<std::size_t> numbers;
  std::vector<Partition> tried;
  Partition asked;  // without clusters when none was asked for
  std::vector<std::int32_t> centres;
};

// The silhouettes of all of them: rows get those of the partition asked for.
void judge(Clusters& result, const Partitions& partitions, const PreparedClusters& prepared, Watch& watch,
           Stretch stretch) {
  std::vector<const Partition*> judged;
  for (const Partition& partition : partitions.tried) judged.push_back(&partition);
  if (judged.empty()) return;
  const std::vector<std::int32_t> rows = judgedRows(prepared.size());
  result.judged = rows.size();
  const std::vector<Silhouettes> silhouettes =
      silhouettesOf(judged, prepared.points, prepared.type, rows, watch, stretch);
  for (std::size_t s = 0; s < partitions.tried.size(); ++s) {
    SilhouetteOfCut one{partitions.numbers[s], silhouettes[s].mean, {}};
    if (result.history) one.height = result.history->merges[prepared.size() - one.clusters].height;
    result.silhouettes.push_back(one);
  }
  const auto asked = std::find(partitions.numbers.begin(), partitions.numbers.end(), partitions.asked.clusters);
  if (asked == partitions.numbers.end()) return;
  const Silhouettes& own = silhouettes[static_cast<std::size_t>(asked - partitions.numbers.begin())];
  result.silhouette = own.mean;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    ClusterRow& row = result.rows[static_cast<std::size_t>(rows[i])];
    row.silhouette = own.values[i];
    row.next = static_cast<std::size_t>(own.next[i]);
  }
}

Agglomeration inTermsOfRows(const History& history, Linkage linkage) {
  Agglomeration agglomeration{linkage, {}, {}};
  for (std::size_t m = 0; m < history.merges(); ++m)
    agglomeration.merges.push_back({history.heights[m], static_cast<std::size_t>(history.a[m] - 1),
                                    static_cast<std::size_t>(history.b[m] - 1), history.sizes[m]});
  for (const std::int32_t row : history.leafOrder) agglomeration.leafOrder.push_back(static_cast<std::size_t>(row - 1));
  return agglomeration;
}

ClusterCut cutOf(const History& history, std::size_t clusters, const std::optional<double>& threshold) {
  ClusterCut cut{threshold, {}, {}};
  const std::size_t taken = history.leafOrder.size() - clusters;
  if (taken > 0) cut.below = history.heights[taken - 1];
  if (taken < history.merges()) cut.above = history.heights[taken];
  return cut;
}

Partitions hierarchical(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options,
                        Watch& watch) {
  const History history = agglomerate(prepared.points, prepared.type, prepared.linkage, watch, {5, 65});
  result.history = inTermsOfRows(history, prepared.linkage);
  Partitions partitions;
  if (options.threshold) partitions.asked = cutAt(history, *options.threshold);
  if (options.clusters > 0) partitions.asked = cutInto(history, static_cast<std::size_t>(options.clusters));
  partitions.numbers = numbersTried(prepared, partitions.asked.clusters);
  for (const std::size_t k : partitions.numbers) partitions.tried.push_back(cutInto(history, k));
  if (partitions.asked.clusters == 0) return partitions;
  result.cut = cutOf(history, partitions.asked.clusters, options.threshold);
  partitions.centres = centresOf(history, partitions.asked, prepared.points, prepared.type);
  return partitions;
}

Partitions aroundMeans(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options,
                       Watch& watch) {
  Partitions partitions;
  const auto asked = static_cast<std::size_t>(options.clusters);
  partitions.numbers = numbersTried(prepared, asked);
  double work = 0, done = 0;
  for (const std::size_t k : partitions.numbers) work += static_cast<double>(k);
  for (const std::size_t k : partitions.numbers) {
    const double from = 5 + 60 * done / work;
    done += static_cast<double>(k);
    KMeans found = kMeans(prepared, k, options, watch, {from, 5 + 60 * done / work});
    if (k == asked) {
      result.starts = found.starts;
      partitions.asked = found.best.partition;
      partitions.centres = rowsNearestToMeans(partitions.asked, prepared.points, prepared.type);
    }
    partitions.tried.push_back(std::move(found.best.partition));
  }
  return partitions;
}

void listNeighbours(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options, Watch& watch) {
  result.neighbours = neighboursThatAre(options.neighbours, prepared.size());
  result.fixed = options.fixed;
  auto lists = neighbourLists(prepared, result.neighbours, options.fixed, watch);
  for (std::size_t i = 0; i < lists.size(); ++i) result.rows[i].neighbours = std::move(lists[i]);
}

void divide(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options, Watch& watch) {
  const bool history = options.method == ClusterMethod::Hierarchical;
  const Partitions partitions =
      history ? hierarchical(result, prepared, options, watch) : aroundMeans(result, prepared, options, watch);
  judge(result, partitions, prepared, watch, {65, 95});
  if (partitions.asked.clusters > 0) describeClusters(result, prepared, partitions.asked, partitions.centres);
}

}  // namespace

Clusters cluster(const TableView& table, const ClusterOptions& options) try {
  Watch watch(options.progress, options.stop);
  watch.report("preparing", "preparing the table", 0, 5, 0, 1);
  const PreparedClusters prepared = prepareClusters(table, options, watch);

  Clusters result;
  result.used = prepared.data.used;
  result.remarks = prepared.data.remarks;
  result.method = options.method;
  result.distance = options.distance;
  result.seed = options.seed;
  addRows(result, prepared, table, options);
  if (options.method == ClusterMethod::Neighbours)
    listNeighbours(result, prepared, options, watch);
  else
    divide(result, prepared, options, watch);
  remarkOnClusters(result, prepared, options);
  watch.report("analysis", "done", 95, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  if (options.method == ClusterMethod::Hierarchical) refuseMemoryForDistances(table.rows());
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
