// Clusters as a page: how far there are any, the tree that was cut, and where the clusters lie.
#include <studystats/host/principal_components.h>

#include "host/report/charts.h"
#include "host/report/data.h"
#include "host/report/dendrogram.h"
#include "host/report/page_parts.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats {
namespace {

constexpr double kNoGroups = 0.25;   // Kaufman & Rousseeuw (1990), Finding Groups in Data: no structure below
constexpr double kReasonable = 0.5;  // and a reasonable one above this
constexpr std::size_t kNamedLeaves = 70;
constexpr std::size_t kLeafRoom = 110;
constexpr std::size_t kApart = 3;  // descriptors that set a cluster apart

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

// Rows by cluster, within it by their silhouettes.
Table silhouetteRows(const Clusters& result) {
  std::vector<std::size_t> rows;
  for (const std::size_t i : shownRows(result.rows.size()))
    if (result.rows[i].silhouette && result.rows[i].cluster) rows.push_back(i);
  std::stable_sort(rows.begin(), rows.end(), [&](std::size_t a, std::size_t b) {
    const ClusterRow &x = result.rows[a], &y = result.rows[b];
    return *x.cluster != *y.cluster ? *x.cluster < *y.cluster : *x.silhouette > *y.silhouette;
  });
  std::vector<std::size_t> places(rows.size());
  for (std::size_t k = 0; k < rows.size(); ++k) places[k] = k;
  const auto row = [&](std::size_t k) -> const ClusterRow& { return result.rows[rows[k]]; };
  return ReportData("silhouetteRows")
      .texts("key", places, [&](std::size_t k) { return fmt::format("r{}", rows[k]); })
      .texts("row", places, [&](std::size_t k) { return row(k).name; })
      .texts("cluster", places, [&](std::size_t k) { return clusterText(row(k).cluster); })
      .numbers("from", places, [](std::size_t k) { return k; })
      .numbers("to", places, [](std::size_t k) { return k + 1; })
      .numbers("silhouette", places, [&](std::size_t k) { return row(k).silhouette; })
      .take();
}

Json clusterChannel(const Clusters& result, const char* field, bool shapes, bool legend) {
  Json names = Json::array(), range = Json::array();
  for (std::size_t c = 0; c < result.clusters.size(); ++c) {
    names.push_back(std::to_string(c + 1));
    range.push_back(shapes ? groupShape(c) : groupColour(c).light);
  }
  Json channel{
      {"field", field}, {"type", "nominal"}, {"title", "cluster"}, {"scale", {{"domain", names}, {"range", range}}}};
  if (!legend) channel["legend"] = nullptr;
  return channel;
}

ReportFigure tree(const Clusters& result, const Table& leafTable) {
  const std::size_t leaves = leafTable.rows();
  std::size_t longest = 0;
  for (const std::string& label : column(leafTable, "label").texts) longest = std::max(longest, label.size());
  const std::size_t room = std::min<std::size_t>(12 + 6 * longest, kLeafRoom);  // below the axis, for the names
  const Json x{{"field", "x"},
               {"type", "quantitative"},
               {"axis", nullptr},
               {"scale", {{"zero", false}, {"nice", false}, {"padding", 8}}}};
  Json segments{{"mark", {{"type", "rule"}, {"strokeWidth", 1.2}}},
                {"encoding",
                 {{"x", x},
                  {"x2", {{"field", "x2"}}},
                  {"y", fromZero("y", "height")},
                  {"y2", {{"field", "y2"}}},
                  {"color", {{"condition", {{"test", "datum.cluster == ''"}, {"value", kLine.light}}}}},
                  {"tooltip", tips({{"y2", "height"}, {"rows", "rows"}, {"cluster", "cluster", false}})}}}};
  if (result.clusters.empty())
    segments["encoding"]["color"] = {{"value", kLine.light}};
  else
    segments["encoding"]["color"].update(clusterChannel(result, "cluster", false, true));
  Json layers = Json::array({std::move(segments)});
  const bool named = leaves <= kNamedLeaves;
  if (named)
    layers.push_back({{"data", {{"name", "leaves"}}},
                      {"mark",
                       {{"type", "text"},
                        {"angle", 270},
                        {"align", "right"},
                        {"baseline", "middle"},
                        {"fontSize", 10},
                        {"dx", -4},
                        {"limit", kLeafRoom}}},
                      {"encoding",
                       {{"x", x},
                        {"y", {{"datum", 0}, {"type", "quantitative"}}},
                        {"text", {{"field", "label"}, {"type", "nominal"}}}}}});
  else
    layers.push_back({{"data", {{"name", "leaves"}}},
                      {"mark", {{"type", "point"}, {"size", 14}, {"color", kMuted.light}}},
                      {"encoding",
                       {{"x", x},
                        {"y", {{"datum", 0}, {"type", "quantitative"}}},
                        {"tooltip", tips({{"label", "leaf", false}, {"rows", "rows"}})}}}});
  if (result.cut) {
    const double at = result.cut->threshold                    ? *result.cut->threshold
                      : result.cut->below && result.cut->above ? (*result.cut->below + *result.cut->above) / 2
                                                               : 0;
    layers.push_back(limitLine("y", at));
  }
  const std::size_t rows = result.history->leafOrder.size();
  return {"dendrogram",
          "Dendrogram",
          fmt::format("The tree of merges of {} rows, drawn from {} leaves{}.", rows, leaves,
                      result.cut ? ", with the line at which it was cut" : ""),
          fmt::format(
              "Two groups are joined at the height of their distance.{}{}",
              leaves < rows ? fmt::format(" Only the last merges are drawn, between {} groups of rows.", leaves) : "",
              result.cut ? " The dashed line is the cut." : ""),
          [&] {
            Json chart = layered("dendrogram", 320, std::move(layers));
            if (named) chart["padding"] = {{"left", 4}, {"top", 4}, {"right", 4}, {"bottom", room}};
            return finished(chart);
          }(),
          true};
}

ReportFigure scatter(const Clusters& result) {
  Json tooltip = tips(
      {{"row", "row", false}, {"cluster", "cluster", false}, {"silhouette", "silhouette"}, {"next", "next", false}});
  if (result.method == ClusterMethod::Neighbours)
    tooltip = tips({{"row", "row", false}, {"nearest", "nearest at"}, {"neighbours", "neighbours", false}});
  Json marks{{"mark", {{"type", "point"}}},
             {"encoding",
              {{"x", quantitative("PC1", "first principal component")},
               {"y", quantitative("PC2", "second principal component")},
               {"tooltip", tooltip}}}};
  if (result.clusters.empty()) {
    marks["encoding"]["color"] = {{"value", kStrong.light}};
  } else {
    marks["encoding"]["color"] = clusterChannel(result, "cluster", false, true);
    marks["encoding"]["shape"] = clusterChannel(result, "cluster", true, true);
  }
  return {"plane",
          result.clusters.empty() ? "Rows on the first two principal components"
                                  : "Clusters on the first two principal components",
          fmt::format("Scatter plot of {} rows on the first two principal components.", result.rows.size()),
          "The plane in which the rows differ most. Clusters that lie over each other here may be apart in other "
          "directions.",
          finished(layered("rows", 360, Json::array({std::move(marks)})))};
}

ReportFigure silhouettesByNumber(const Clusters& result) {
  const Json x = numbered("clusters", "clusters"), y = fromZero("silhouette", "mean silhouette");
  const Json tooltip = tips({{"clusters", "clusters"}, {"silhouette", "silhouette"}, {"height", "height"}});
  Json layers = Json::array(
      {{{"mark", {{"type", "line"}}}, {"encoding", {{"x", x}, {"y", y}}}},
       {{"mark", {{"type", "point"}, {"size", 70}}},
        {"encoding",
         {{"x", x},
          {"y", y},
          {"shape", {{"condition", {{"test", "datum.asked == 'taken'"}, {"value", "diamond"}}}, {"value", "circle"}}},
          {"size", {{"condition", {{"test", "datum.asked == 'taken'"}, {"value", 200}}}, {"value", 60}}},
          {"tooltip", tooltip}}}},
       limitLine("y", kNoGroups)});
  return {
      "silhouettes-by-number", "Silhouettes of 2 clusters and more",
      fmt::format("Line: the mean silhouette of cuts into {} to {} clusters.", result.silhouettes.front().clusters,
                  result.silhouettes.back().clusters),
      std::string("1 is a perfect separation. Below the dashed 0.25 the clusters are no groups, but a way to divide "
                  "the rows.") +
          (result.clusters.empty() ? "" : " The diamond is the number taken."),
      finished(layered("silhouettes", 280, std::move(layers)))};
}

ReportFigure silhouettePlot(const Clusters& result, std::size_t rows) {
  Json bars{
      {"mark", {{"type", "bar"}, {"binSpacing", 0}}},
      {"encoding",
       {{"y",
         {{"field", "from"},
          {"type", "quantitative"},
          {"bin", "binned"},
          {"axis", nullptr},
          {"scale", {{"reverse", true}, {"nice", false}}}}},
        {"y2", {{"field", "to"}}},
        {"x", fromZero("silhouette", "silhouette")},
        {"color", clusterChannel(result, "cluster", false, true)},
        {"tooltip", tips({{"row", "row", false}, {"cluster", "cluster", false}, {"silhouette", "silhouette"}})}}}};
  bars["encoding"]["x"]["stack"] = nullptr;
  return {
      "silhouettes", "Silhouettes", fmt::format("Bars: the silhouettes of {} rows, by cluster.", rows),
      "A bar to the left belongs to a row that is nearer to another cluster than to its own. The dashed line is the "
      "mean.",
      finished(layered("silhouetteRows", 360, Json::array({std::move(bars), limitLine("x", *result.silhouette)})))};
}

ReportFigure sizes(const Clusters& result) {
  Json bars{{"mark", {{"type", "bar"}}},
            {"encoding",
             {{"y", named("cluster", "cluster")},
              {"x", fromZero("rows", "rows")},
              {"color", clusterChannel(result, "cluster", false, false)},
              {"tooltip",
               tips({{"cluster", "cluster", false}, {"rows", "rows"}, {"representative", "representative", false}})}}}};
  Json counts = bars;
  counts["mark"] = {{"type", "text"}, {"align", "left"}, {"dx", 4}};
  counts["encoding"]["text"] = {{"field", "rows"}, {"type", "quantitative"}};
  counts["encoding"]["color"] = {{"value", kInk.light}};
  return {"sizes", "Sizes", fmt::format("Bars: the number of rows in each of {} clusters.", result.clusters.size()),
          "Clusters count from the largest.",
          finished(lines("clusters", 26, result.clusters.size(), Json::array({std::move(bars), std::move(counts)})))};
}

ReportFigure neighbourDistances() {
  Json bars{{"mark", {{"type", "bar"}, {"binSpacing", 0}, {"stroke", kPaper.light}, {"strokeWidth", 0.6}}},
            {"encoding",
             {{"x", {{"field", "shown"}, {"bin", {{"maxbins", 30}}}, {"title", "distance"}}},
              {"y", {{"aggregate", "count"}, {"title", "rows"}}}}}};
  Json chart = layered("rows", 280, Json::array({std::move(bars)}));
  chart["params"] = Json::array({{{"name", "which"},
                                  {"value", "nearest"},
                                  {"bind",
                                   {{"input", "radio"},
                                    {"options", {"nearest", "farthest"}},
                                    {"labels", {"nearest", "last listed"}},
                                    {"name", "neighbour "}}}}});
  chart["transform"] = Json::array({{{"calculate", "datum[which]"}, {"as", "shown"}}});
  return {"neighbour-distances", "Distances to neighbours",
          "Histogram of the distance of each row to its nearest, or to its last listed neighbour.",
          "Rows far to the right have no row like them.", finished(chart)};
}

std::vector<ReportFigure> figuresOf(const Clusters& result, bool placed, ReportPage& page) {
  std::vector<ReportFigure> figures;
  if (placed) figures.push_back(scatter(result));
  if (result.method == ClusterMethod::Neighbours) {
    figures.push_back(neighbourDistances());
    return figures;
  }
  if (!result.silhouettes.empty()) figures.push_back(silhouettesByNumber(result));
  if (!result.clusters.empty()) {
    const Table rows = silhouetteRows(result);
    if (rows.rows() > 0 && result.silhouette) {
      figures.push_back(silhouettePlot(result, rows.rows()));
      page.data.push_back(rows);
    }
    figures.push_back(sizes(result));
  }
  if (result.history) {
    Dendrogram drawn = dendrogramOf(result);
    figures.push_back(tree(result, drawn.leaves));
    page.data.push_back(std::move(drawn.segments));
    page.data.push_back(std::move(drawn.leaves));
  }
  return figures;
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
                          {"misplaced", "misplaced", CellKind::Whole}}};
    for (std::size_t k = 0; k < result.responses.size(); ++k)
      clusters.columns.push_back({fmt::format("response{}", k), "mean " + result.responses[k], CellKind::Number, 3});
    for (std::size_t c = 0; c < result.classes.size(); ++c)
      clusters.columns.push_back({fmt::format("class{}", c), result.classes[c], CellKind::Whole});
    clusters.columns.push_back({"apart", "set apart by (in sd)"});
    clusters.columns.push_back({"representative", "representative"});
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
  ReportTable rows{"rows", "Rows", samplingText(result.rows.size()), "rows", {{"row", rowHeading(result.used)}}};
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
  page.figures = figuresOf(result, !scores.empty(), page);
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
