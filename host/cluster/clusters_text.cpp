// Clusters as a page of plain text, and what would be analysed.
#include "host/cluster/cluster.h"
#include "host/cluster/neighbours_text.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

constexpr std::size_t kShownRows = 12;
constexpr std::size_t kShownClasses = 12;
constexpr std::size_t kSetApart = 2;       // descriptors that are named for a cluster ...
constexpr std::size_t kRoomForNames = 38;  // ... as far as they share its line
constexpr double kWeakGap = 0.1;           // of two heights, relative: a cut between them could as well be another

std::string shown(Distance distance) { return distance == Distance::Tanimoto ? "Tanimoto" : "Euclidean"; }

std::string shown(Linkage linkage) {
  switch (linkage) {
    case Linkage::Ward:
      return "Ward";
    case Linkage::Average:
      return "average linkage";
    case Linkage::Complete:
      return "complete linkage";
    case Linkage::Single:
      break;
  }
  return "single linkage";
}

std::string methodText(const Clusters& result) {
  switch (result.method) {
    case ClusterMethod::Hierarchical:
      return fmt::format("Hierarchical clustering ({}, {})", shown(result.history->linkage), shown(result.distance));
    case ClusterMethod::KMeans:
      return fmt::format("k-means clustering ({})", shown(result.distance));
    case ClusterMethod::Neighbours:
      break;
  }
  return fmt::format("Nearest neighbours ({})", shown(result.distance));
}

std::string title(const Clusters& result) {
  const std::string scaling = describedScaling(result.used.scaling);
  return wrapped("",
                 fmt::format("{} of {} on {}, {}", methodText(result), counted(result.used.rows.size(), "row", "rows"),
                             counted(result.used.descriptors.size(), "descriptor", "descriptors"),
                             scaling.substr(0, scaling.find(" ("))));
}

std::string height(double value) { return significant(value, 3); }

// "the merges at 45.9 and 46.7 differ by 2 %: a weak cut"
std::string gapText(double below, double above) {
  std::string merges = fmt::format("the merges at {} and {}", height(below), height(above));
  if (below == above) return merges + " tie";
  if (below == 0) return merges;
  const double gap = above / below - 1;
  return fmt::format("{} differ by {}{}", merges, gap < 0.01 ? "less than 1 %" : percent(gap, 0),
                     gap < kWeakGap ? ": a weak cut" : "");
}

std::string cutText(const Clusters& result) {
  const std::string into = counted(result.clusters.size(), "cluster", "clusters");
  const ClusterCut& cut = *result.cut;
  const std::string gap = cut.below && cut.above ? " (" + gapText(*cut.below, *cut.above) + ")" : "";
  if (cut.threshold) return fmt::format("Cut at height {} into {}{}", brief(*cut.threshold, 6), into, gap);
  return fmt::format("Cut into {} at height {}{}", into, height(*cut.above), gap);
}

std::string startsText(const Clusters& result) {
  const KMeansStarts& starts = *result.starts;
  return fmt::format("{} from the best of {} (reached by {} of them), {}; seed {}",
                     counted(result.clusters.size(), "cluster", "clusters"),
                     counted(static_cast<std::size_t>(starts.restarts), "start", "starts"), starts.best,
                     counted(starts.criteria.size(), "round", "rounds"), result.seed);
}

std::string divisionText(const Clusters& result) {
  if (result.cut) return wrapped("", cutText(result));
  if (result.starts) return wrapped("", startsText(result));
  return result.method == ClusterMethod::KMeans ? "No clusters were asked for: --clusters K makes them\n"
                                                : "Not cut: --clusters K or --threshold D cuts it\n";
}

// The descriptors in which a cluster differs most from all rows: "clogp +1.1, vsa_hyd +1.0".
std::string setApartBy(const Cluster& cluster, const std::vector<std::string>& descriptors) {
  std::vector<std::size_t> order(cluster.deviations.size());
  for (std::size_t j = 0; j < order.size(); ++j) order[j] = j;
  const std::size_t most = std::min(kSetApart, order.size());
  std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(most), order.end(),
                    [&](std::size_t x, std::size_t y) {
                      const double dx = std::abs(cluster.deviations[x]), dy = std::abs(cluster.deviations[y]);
                      return dx != dy ? dx > dy : x < y;
                    });
  order.resize(most);
  std::string text;
  for (const std::size_t j : order) {
    const std::string deviation = fixed(cluster.deviations[j], 1);
    const std::string part = fmt::format("{} {}{}", descriptors[j], deviation.starts_with('-') ? "" : "+", deviation);
    if (!text.empty() && textWidth(text) + textWidth(part) + 2 > kRoomForNames) break;
    text += (text.empty() ? "" : ", ") + part;
  }
  return text;
}

// The distance of the row farthest from its cluster's mean, three figures of which are shown.
double farthestOf(const Clusters& result) {
  double farthest = 0;
  for (const Cluster& cluster : result.clusters) farthest = std::max(farthest, cluster.farthest);
  return farthest;
}

std::string clusterTable(const Clusters& result, const TextOptions& options) {
  TextTable table;
  table.column("cluster");
  table.column("rows");
  table.column("representative", Align::Left);
  table.column("spread", Align::Point);
  table.column("farthest", Align::Point);
  table.column("silhouette");
  table.column("< 0");
  table.column("differs most in (sd units)", Align::Left);
  const double size = farthestOf(result);
  const std::size_t all = result.clusters.size(), most = options.all ? all : std::min(all, kShownRows);
  for (std::size_t k = 0; k < most; ++k) {
    const Cluster& cluster = result.clusters[k];
    table.row({std::to_string(k + 1), std::to_string(cluster.rows), shownRow(result.used, cluster.representative),
               sized(cluster.spread, size, 3), sized(cluster.farthest, size, 3),
               cluster.silhouette ? fixed(*cluster.silhouette, 2) : "-",
               cluster.silhouette ? std::to_string(cluster.misplaced) : "-",
               all > 1 ? setApartBy(cluster, result.used.descriptors) : "-"});
  }
  if (most < all) table.line(fmt::format("... {} more: --all lists them, --tables DIR writes them", all - most));
  return table.text();
}

std::string balanceText(const Clusters& result) {
  std::vector<std::string> parts;
  if (result.clusters.size() < 2) return {};
  if (result.betweenShare) parts.push_back(percent(*result.betweenShare) + " of the variance lies between clusters");
  if (result.silhouette) parts.push_back("mean silhouette " + fixed(*result.silhouette, 2));
  if (result.silhouette) {
    std::size_t misplaced = 0;
    for (const Cluster& cluster : result.clusters) misplaced += cluster.misplaced;
    parts.push_back(misplaced == 0 ? "no row sits nearer to another cluster than to its own"
                                   : counted(misplaced, "row sits nearer to another cluster than to its own",
                                             "rows sit nearer to another cluster than to their own"));
  }
  return "\n" + wrapped("", fmt::format("{}.", fmt::join(parts, "; ")));
}

std::string silhouetteTable(const Clusters& result) {
  if (result.silhouettes.empty()) return {};
  TextTable table;
  table.column("clusters", Align::Left);
  std::vector<std::string> heights{"joined at"}, silhouettes{"silhouette"};
  for (const SilhouetteOfCut& one : result.silhouettes) {
    table.column(std::to_string(one.clusters));
    heights.push_back(one.height ? height(*one.height) : "-");
    silhouettes.push_back(fixed(one.silhouette, 2));
  }
  if (result.history && result.clusters.empty()) table.row(heights);
  table.row(silhouettes);
  return "\n" + table.text();
}

// What was kept out of the analysis, by cluster.
std::string carriedTable(const Clusters& result, const TextOptions& options) {
  if (result.clusters.empty() || (result.classes.empty() && result.responses.empty())) return {};
  TextTable table;
  table.column("cluster");
  for (const std::string& response : result.responses) table.column("mean " + response, Align::Point);
  const std::size_t classes = std::min(result.classes.size(), kShownClasses);
  for (std::size_t c = 0; c < classes; ++c) table.column(result.classes[c]);
  const std::size_t all = result.clusters.size(), most = options.all ? all : std::min(all, kShownRows);
  for (std::size_t k = 0; k < most; ++k) {
    std::vector<std::string> cells{std::to_string(k + 1)};
    for (const double mean : result.clusters[k].responseMeans) cells.push_back(significant(mean, options.digits));
    for (std::size_t c = 0; c < classes; ++c) cells.push_back(std::to_string(result.clusters[k].classRows[c]));
    table.row(std::move(cells));
  }
  if (most < all) table.line(fmt::format("... {} more", all - most));
  std::string text = "\n" + table.text();
  if (classes < result.classes.size())
    text += fmt::format("... {} more classes of {}\n", result.classes.size() - classes, result.classColumn);
  return text;
}

// Rows kept out, beside how far the farthest row of their cluster is.
std::string placedTable(const Clusters& result, const TextOptions& options) {
  if (result.clusters.empty() || result.used.predictedRows.empty()) return {};
  TextTable table;
  table.column("row kept out", Align::Left);
  table.column("cluster");
  table.column("distance", Align::Point);
  table.column("farthest in it", Align::Point);
  const double size = farthestOf(result);
  const std::size_t from = result.used.rows.size(), all = result.rows.size() - from;
  const std::size_t most = options.all ? all : std::min(all, kShownRows);
  for (std::size_t i = from; i < from + most; ++i) {
    const ClusterRow& row = result.rows[i];
    table.row({shownRow(result.used, row.name), std::to_string(*row.cluster + 1), sized(row.distance, size, 3),
               sized(result.clusters[*row.cluster].farthest, size, 3)});
  }
  if (most < all) table.line(fmt::format("... {} more", all - most));
  return "\n" + table.text();
}

std::string explainedMethod(const PreparedClusters& prepared, const ClusterOptions& options) {
  const std::string distance = shown(options.distance) + " distances";
  switch (options.method) {
    case ClusterMethod::Hierarchical: {
      const std::string cut = options.clusters > 0 ? fmt::format("cut into {} clusters", options.clusters)
                              : options.threshold  ? fmt::format("cut at height {}", brief(*options.threshold, 6))
                                                   : std::string("not cut");
      return fmt::format("hierarchical, {}, {}; {}", shown(prepared.linkage), distance, cut);
    }
    case ClusterMethod::KMeans:
      return fmt::format("k-means, {}; {}, {}, seed {}", distance,
                         options.clusters > 0 ? fmt::format("{} clusters", options.clusters) : "no number of clusters",
                         counted(static_cast<std::size_t>(options.restarts), "start", "starts"), options.seed);
    case ClusterMethod::Neighbours:
      break;
  }
  return fmt::format("{} nearest neighbours a row, {}; ties at the end of a list are {}", options.neighbours, distance,
                     options.fixed ? "broken by table order" : "kept");
}

}  // namespace

std::string summary(const Clusters& result, const TextOptions& options) {
  if (result.method == ClusterMethod::Neighbours)
    return title(result) + leftOutText(result.used) + neighboursText(result, options);
  std::string text = title(result) + divisionText(result) + leftOutText(result.used);
  if (!result.clusters.empty()) text += "\n" + clusterTable(result, options) + balanceText(result);
  return text + carriedTable(result, options) + silhouetteTable(result) + placedTable(result, options);
}

std::string explain(const TableView& table, const ClusterOptions& options) {
  Watch watch(options.progress, options.stop);
  const PreparedClusters prepared = prepareClusters(table, options, watch);
  std::string text = explainedData(prepared.data.used);
  text += wrapped("method        ", explainedMethod(prepared, options));
  text += explainedRemarks(prepared.data.remarks);
  return text + "nothing was analysed (--explain)\n";
}

}  // namespace studystats
