// What is worth saying about clusters: whether there are any, what a cut rests on, rows that repeat.
#include "host/cluster/cluster.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr double kNoStructure =
    0.25;  // Kaufman & Rousseeuw (1990), Finding Groups in Data: below, no substantial structure

void add(Clusters& result, Severity severity, const std::string& code, const std::string& text,
         std::vector<std::string> names = {}) {
  result.remarks.push_back({severity, code, text, std::move(names)});
}

std::vector<std::string> shownRows(const Clusters& result, const std::vector<std::size_t>& rows) {
  std::vector<std::string> names;
  for (const std::size_t row : rows) names.push_back(shownRow(result.used, result.rows[row].name));
  return names;
}

void remarkOnStructure(Clusters& result) {
  bool judged = false;
  for (const SilhouetteOfCut& one : result.silhouettes) {
    if (one.silhouette >= kNoStructure) return;
    judged |= one.clusters < result.used.rows.size();  // with every row alone all silhouettes are 0
  }
  if (!judged) return;
  add(result, Severity::Warning, "no-clear-groups",
      fmt::format("no clear groups in these descriptors (silhouettes below {} at every cut). {}", kNoStructure,
                  result.clusters.empty() ? "Clusters would be a way to spread a selection, not evidence of families."
                                          : "The clusters are a way to spread a selection, not evidence of families."));
}

void remarkOnCut(Clusters& result) {
  if (!result.cut) return;
  const ClusterCut& cut = *result.cut;
  if (!cut.threshold && cut.below && cut.above && *cut.below == *cut.above)
    add(result, Severity::Warning, "tied-cut",
        fmt::format(
            "the merges on either side of the cut are at the same height {}: which of them was done is chance. Try "
            "another --clusters, or --threshold.",
            significant(*cut.above, 3)));
  if (cut.threshold && !cut.above)
    add(result, Severity::Note, "threshold-joins-all",
        fmt::format("--threshold {} is not below the last merge, at {}: all rows are in one cluster.",
                    brief(*cut.threshold, 6), significant(*cut.below, 4)));
  if (cut.threshold && !cut.below)
    add(result, Severity::Note, "threshold-joins-none",
        fmt::format("--threshold {} is below the first merge, at {}: every row is a cluster.", brief(*cut.threshold, 6),
                    significant(*cut.above, 4)));
}

void remarkOnStarts(Clusters& result) {
  if (!result.starts) return;
  const KMeansStarts& starts = *result.starts;
  if (!starts.settled)
    add(result, Severity::Warning, "not-settled",
        fmt::format(
            "rows were still moving after {} rounds: k-means need not settle with these distances. Try --method "
            "hierarchical.",
            starts.criteria.size()));
  if (starts.restarts > 1 && starts.best == 1)
    add(result, Severity::Note, "best-start-alone",
        fmt::format("only one of {} starts ended with these clusters; --restarts with more may find better ones.",
                    starts.restarts));
  if (starts.reseeded > 0)
    add(result, Severity::Note, "empty-cluster",
        fmt::format("a cluster became empty in {} and was given the row farthest from its mean.",
                    counted(starts.reseeded, "start", "starts")));
}

void remarkOnSingleRows(Clusters& result) {
  std::vector<std::string> names;
  for (const Cluster& cluster : result.clusters)
    if (cluster.rows == 1) names.push_back(shownRow(result.used, cluster.representative));
  if (names.empty() || names.size() == result.clusters.size()) return;
  add(result, Severity::Note, "single-rows",
      fmt::format("{} of {} clusters {} one row: {}.", names.size(), result.clusters.size(),
                  names.size() == 1 ? "holds" : "hold", listed(names)),
      names);
}

void remarkOnDistances(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options) {
  if (options.distance != Distance::Tanimoto) return;
  std::vector<std::string> negative;
  for (std::size_t j = 0; j < prepared.points.size(); ++j)
    if (*std::min_element(prepared.points[j].begin(), prepared.points[j].end()) < 0)
      negative.push_back(result.used.descriptors[j]);
  if (!negative.empty())
    add(result, Severity::Warning, "negative-values",
        fmt::format("{} negative values: {}. Tanimoto distances are meant for fingerprints and counts; with negative "
                    "values they can exceed 1. Try --distance euclidean, or --exclude.",
                    counted(negative.size(), "column has", "columns have"), listed(negative)),
        negative);
  if (options.method == ClusterMethod::Hierarchical && prepared.linkage == Linkage::Ward)
    add(result, Severity::Warning, "ward-of-tanimoto",
        "Ward's linkage is about variances, which Tanimoto distances are not: its heights have no such meaning. Try "
        "--linkage average.");
}

void remarkOnRepeats(Clusters& result, const PreparedClusters& prepared) {
  if (prepared.repeats.empty()) return;
  const std::vector<std::string> names = shownRows(result, prepared.repeats);
  add(result, Severity::Note, "duplicate-rows",
      fmt::format("{} an earlier one in every descriptor: {}.", counted(names.size(), "row equals", "rows equal"),
                  listed(names)),
      names);
}

void remarkOnRepresentatives(Clusters& result) {
  if (result.clusters.empty()) return;
  add(result, Severity::Note, "representatives",
      "representatives are the rows nearest to their cluster mean; --tables DIR lists all rows.");
}

void remarkOnRowsKeptOut(Clusters& result) {
  if (result.used.predictedRows.empty()) return;
  const std::string rows = counted(result.used.predictedRows.size(), "row kept out was", "rows kept out were");
  if (result.method == ClusterMethod::Neighbours)
    add(result, Severity::Note, "rows-placed", rows + " given neighbours among the others.");
  else if (!result.clusters.empty())
    add(result, Severity::Note, "rows-placed",
        rows + " placed in the cluster whose mean is nearest, and changed nothing.");
  else
    add(result, Severity::Note, "rows-not-placed",
        rows + " placed nowhere: there are no clusters without --clusters K.");
}

void remarkOnJudged(Clusters& result) {
  if (result.judged == 0 || result.judged == result.used.rows.size()) return;
  add(result, Severity::Note, "silhouettes-of-some",
      fmt::format("silhouettes are those of {} of {} rows, evenly spread over the table, against all of them.",
                  result.judged, result.used.rows.size()));
}

void remarkOnNeighbours(Clusters& result, const ClusterOptions& options) {
  if (result.method != ClusterMethod::Neighbours || result.neighbours == options.neighbours) return;
  add(result, Severity::Note, "neighbours-lowered",
      fmt::format("--neighbours {} was lowered to {}: there are {}.", options.neighbours, result.neighbours,
                  counted(result.used.rows.size(), "row", "rows")));
}

}  // namespace

void remarkOnClusters(Clusters& result, const PreparedClusters& prepared, const ClusterOptions& options) {
  remarkOnStructure(result);
  remarkOnCut(result);
  remarkOnDistances(result, prepared, options);
  remarkOnStarts(result);
  remarkOnNeighbours(result, options);
  remarkOnRepeats(result, prepared);
  remarkOnSingleRows(result);
  remarkOnJudged(result);
  remarkOnRowsKeptOut(result);
  remarkOnRepresentatives(result);
}

}  // namespace studystats
