// Clusters as a page: how far there are any, the tree that was cut, and where the clusters lie.
#include <studystats/host/principal_components.h>

#include "host/report/clusters_page.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats {
namespace {

constexpr double kReasonable = 0.5;  // Kaufman & Rousseeuw (1990): a reasonable structure above
constexpr std::size_t kApart = 3;    // descriptors that set a cluster apart

std::string methodText(const Clusters& result) {
  const std::string distance = result.distance == Distance::Tanimoto ? "Tanimoto" : "Euclidean";
  if (result.method == ClusterMethod::KMeans) return fmt::format("k-means, {} distances", distance);
  if (result.method == ClusterMethod::Neighbours) return fmt::format("nearest neighbours, {} distances", distance);
  const char* linkages[] = {"Ward's linkage", "average linkage", "complete linkage", "single linkage"};
  return fmt::format("{}, {} distances", linkages[static_cast<std::size_t>(result.history->linkage)], distance);
}

std::string strengthText(double silhouette) {
  if (silhouette < kNoGroups) return "there are no clear groups";
  return silhouette < kReasonable ? "the groups are weak" : "the groups are clear";
}

std::string answerOf(const Clusters& result) {
  if (result.method == ClusterMethod::Neighbours)
    return fmt::format("The {} nearest rows of each of {}.", result.neighbours,
                       counted(result.used.rows.size(), "row", "rows"));
  const auto best = std::max_element(result.silhouettes.begin(), result.silhouettes.end(),
                                     [](const auto& a, const auto& b) { return a.silhouette < b.silhouette; });
  if (!result.clusters.empty()) {
    std::string text = fmt::format("{} in {}", counted(result.used.rows.size(), "row", "rows"),
                                   counted(result.clusters.size(), "cluster", "clusters"));
    if (result.silhouette)
      text += fmt::format(", mean silhouette {}: {}", fixed(*result.silhouette, 2), strengthText(*result.silhouette));
    if (result.silhouette && best != result.silhouettes.end() && best->silhouette > *result.silhouette)
      text += fmt::format("; {} clusters would have {}", best->clusters, fixed(best->silhouette, 2));
    return text + ".";
  }
  if (best == result.silhouettes.end()) return "No cut was asked for.";
  return fmt::format("No cut was asked for. Of 2 to {} clusters, {} have the highest silhouette, {}: {}.",
                     result.silhouettes.back().clusters, best->clusters, fixed(best->silhouette, 2),
                     strengthText(best->silhouette));
}

ReportFrame frameOf(const Clusters& result) {
  ReportFrame frame{{"", "value"}, {}};
  if (result.silhouette) frame.rows.push_back({"mean silhouette", fixed(*result.silhouette, 3)});
  if (result.betweenShare) frame.rows.push_back({"variance between clusters", percent(*result.betweenShare)});
  if (result.cut && result.cut->below && result.cut->above)
    frame.rows.push_back({"cut between heights", fmt::format("{} and {}", significant(*result.cut->below, 3),
                                                             significant(*result.cut->above, 3))});
  if (result.starts)
    frame.rows.push_back(
        {"starts that found the best", fmt::format("{} of {}", result.starts->best, result.starts->restarts)});
  return frame;
}

std::string clusterText(const std::optional<std::size_t>& cluster) {
  return cluster ? std::to_string(*cluster + 1) : std::string();
}

// Scores on the first two principal components of the same rows; empty when they cannot be had.
std::vector<std::vector<double>> plane(const Clusters& result, const ReportContext& context) try {
  if (context.table == nullptr || context.preparation == nullptr) return {};
  PrincipalComponentsOptions options{.components = 2, .responses = result.responses, .classColumn = result.classColumn};
  options.data = *context.preparation;
  const PrincipalComponents pca = principalComponents(*context.table, options);
  std::vector<std::vector<double>> scores;
  if (pca.kept < 2 || pca.rows.size() != result.rows.size()) return {};
  for (std::size_t i = 0; i < pca.rows.size(); ++i) {
    if (pca.rows[i].name != result.rows[i].name) return {};
    scores.push_back(pca.rows[i].scores);
  }
  return scores;
} catch (const Error&) {
  return {};  // too few rows or columns for a plane
}

std::string neighboursText(const Clusters& result, const ClusterRow& row) {
  std::vector<std::string> names;
  for (const Neighbour& one : row.neighbours)
    names.push_back(fmt::format("{} ({})", result.rows[one.row].name, significant(one.distance, 3)));
  return listed(names, 20);
}

Table rowsOf(const Clusters& result, const std::vector<std::vector<double>>& scores) {
  const std::vector<std::size_t> numbers = shownRows(result.rows.size());
  const auto row = [&](std::size_t i) -> const ClusterRow& { return result.rows[i]; };
  ReportData data = rowData(result.rows);
  if (!result.classColumn.empty()) data.texts("label", numbers, [&](std::size_t i) { return row(i).label; });
  if (result.method == ClusterMethod::Neighbours) {
    data.texts("neighbours", numbers, [&](std::size_t i) { return neighboursText(result, row(i)); })
        .numbers("nearest", numbers,
                 [&](std::size_t i) {
                   return row(i).neighbours.empty() ? std::nullopt : std::optional(row(i).neighbours.front().distance);
                 })
        .numbers("farthest", numbers, [&](std::size_t i) {
          return row(i).neighbours.empty() ? std::nullopt : std::optional(row(i).neighbours.back().distance);
        });
  } else {
    data.texts("cluster", numbers, [&](std::size_t i) { return clusterText(row(i).cluster); })
        .numbers("distance", numbers,
                 [&](std::size_t i) { return row(i).cluster ? std::optional(row(i).distance) : std::nullopt; })
        .numbers("silhouette", numbers, [&](std::size_t i) { return row(i).silhouette; })
        .texts("next", numbers, [&](std::size_t i) { return clusterText(row(i).next); });
  }
  if (!scores.empty())
    data.numbers("PC1", numbers, [&](std::size_t i) { return scores[i][0]; })
        .numbers("PC2", numbers, [&](std::size_t i) { return scores[i][1]; });
  return data.take();
}

// Descriptors whose mean in the cluster lies farthest from that of all rows: "+1.9 mw, −1.1 tpsa".
std::string setApartBy(const Clusters& result, const Cluster& cluster) {
  std::vector<std::size_t> order(cluster.deviations.size());
  for (std::size_t j = 0; j < order.size(); ++j) order[j] = j;
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return std::abs(cluster.deviations[a]) > std::abs(cluster.deviations[b]);
  });
  std::vector<std::string> parts;
  for (std::size_t k = 0; k < std::min(order.size(), kApart); ++k) {
    const double deviation = cluster.deviations[order[k]];
    parts.push_back(fmt::format("{}{} {}", deviation < 0 ? "−" : "+", fixed(std::abs(deviation), 1),
                                result.used.descriptors[order[k]]));
  }
  return fmt::format("{}", fmt::join(parts, ", "));
}

Table clustersOf(const Clusters& result) {
  using One = const Cluster&;
  const std::vector<Cluster>& all = result.clusters;
  ReportData data("clusters");
  data.texts("cluster", all, [&](One one) { return std::to_string(&one - all.data() + 1); })
      .numbers("rows", all, [](One one) { return one.rows; })
      .texts("representative", all, [](One one) { return one.representative; })
      .numbers("silhouette", all, [](One one) { return one.silhouette; })
      .numbers("misplaced", all, [](One one) { return one.misplaced; })
      .numbers("spread", all, [](One one) { return one.spread; })
      .texts("apart", all, [&](One one) { return setApartBy(result, one); });
  for (std::size_t k = 0; k < result.responses.size(); ++k)
    data.numbers(fmt::format("response{}", k), all, [k](One one) { return one.responseMeans[k]; });
  for (std::size_t c = 0; c < result.classes.size(); ++c)
    data.numbers(fmt::format("class{}", c), all, [c](One one) { return one.classRows[c]; });
  return data.take();
}

Table silhouettesOf(const Clusters& result) {
  using Cut = const SilhouetteOfCut&;
  return ReportData("silhouettes")
      .numbers("clusters", result.silhouettes, [](Cut cut) { return cut.clusters; })
      .numbers("silhouette", result.silhouettes, [](Cut cut) { return cut.silhouette; })
      .numbers("height", result.silhouettes, [](Cut cut) { return cut.height; })
      .texts("asked", result.silhouettes,
             [&](Cut cut) { return cut.clusters == result.clusters.size() ? "taken" : ""; })
      .take();
}

std::vector<ReportTable> tablesOf(const Clusters& result) {
  std::vector<ReportTable> tables;
  if (!result.clusters.empty()) {
    ReportTable clusters{"clusters",
                         "Clusters",
                         "",
                         "clusters",
                         {{"cluster", "cluster"},
                          {"rows", "rows", CellKind::Whole},
                          {"silhouette", "silhouette", CellKind::Fixed, 2},
                          {"misplaced", "misplaced", CellKind::Whole},
                          {"representative", "representative"},
                          {"apart", "set apart by (in sd)"}}};
    for (std::size_t k = 0; k < result.responses.size(); ++k)
      clusters.columns.push_back({fmt::format("response{}", k), "mean " + result.responses[k], CellKind::Number, 3});
    for (std::size_t c = 0; c < result.classes.size(); ++c)
      clusters.columns.push_back({fmt::format("class{}", c), result.classes[c], CellKind::Whole});
    clusters.columns.push_back({"spread", "spread", CellKind::Number, 3});
    tables.push_back(std::move(clusters));
  }
  if (!result.silhouettes.empty())
    tables.push_back({"silhouette-table",
                      "Silhouettes",
                      "",
                      "silhouettes",
                      {{"clusters", "clusters", CellKind::Whole},
                       {"silhouette", "silhouette", CellKind::Fixed, 3},
                       {"height", "height", CellKind::Number, 4},
                       {"asked", "cut"}}});
  ReportTable rows{"rows", "Rows", samplingText(result.rows.size()), "rows", {{"name", rowHeading(result.used)}}};
  if (!result.used.predictedRows.empty()) rows.columns.push_back({"role", "role"});
  if (!result.classColumn.empty()) rows.columns.push_back({"label", result.classColumn});
  if (result.method == ClusterMethod::Neighbours) {
    rows.columns.push_back({"nearest", "nearest at", CellKind::Number, 3});
    rows.columns.push_back({"neighbours", "neighbours (distance)"});
  } else if (!result.clusters.empty()) {
    rows.columns.push_back({"cluster", "cluster"});
    rows.columns.push_back({"distance", "from its mean", CellKind::Number, 3});
    rows.columns.push_back({"silhouette", "silhouette", CellKind::Bar, 2});
    rows.columns.push_back({"next", "next cluster"});
  }
  tables.push_back(std::move(rows));
  return tables;
}

std::vector<ReportEntry> readingOf(const Clusters& result) {
  std::vector<ReportEntry> reading;
  if (result.method == ClusterMethod::Neighbours) {
    reading.push_back(
        {"neighbours", result.fixed
                           ? "The nearest rows of each row, exactly as many as asked for."
                           : "The nearest rows of each row; where several tie for the last place, all of them."});
  } else {
    reading.push_back(
        {"silhouette",
         "(b − a) / max(a, b) of a row: a its mean distance from the rows of its own cluster, b from those of the "
         "nearest other. Rousseeuw (1987), Journal of Computational and Applied Mathematics 20, 53–65. Below 0 a row "
         "is "
         "nearer to the other."});
    reading.push_back({"misplaced", "Rows of a cluster with a silhouette below 0."});
    reading.push_back({"representative", "The row nearest to the mean of its cluster."});
    reading.push_back({"set apart by",
                       "The descriptors whose mean in the cluster lies farthest from that of all rows, in their "
                       "standard deviations."});
  }
  if (result.history)
    reading.push_back(
        {"height",
         "The distance of two groups when they were joined. A long stretch without merges is a good place to cut."});
  return reading;
}

}  // namespace

ReportPage reportPage(const Clusters& result, const ReportContext& context) {
  const std::vector<std::vector<double>> scores = plane(result, context);
  ReportPage page;
  page.analysis = "cluster";
  page.title = (result.method == ClusterMethod::Neighbours ? "Neighbours of rows of " : "Clusters of ") +
               nameOfTable(result.used);
  page.subtitle = fmt::format("{}; {}", madeFrom(result.used), methodText(result));
  page.answer = answerOf(result);
  page.frame = frameOf(result);
  page.data = {rowsOf(result, scores), clustersOf(result), silhouettesOf(result)};
  page.figures = clusterFigures(result, !scores.empty(), page.data);
  page.tables = tablesOf(result);
  page.remarks = anchored(result.remarks, {{"no-clear-groups", "silhouettes-by-number"}, {"weak-cut", "dendrogram"}});
  remarkOnSampling(result.rows.size(), page);
  page.card = dataCard(result.used,
                       {{"Method", methodText(result) + (result.starts ? fmt::format("; seed {}", result.seed) : "")}},
                       context);
  page.reading = readingOf(result);
  return page;
}

}  // namespace studystats
