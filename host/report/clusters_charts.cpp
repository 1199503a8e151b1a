// The figures of a clustering.
#include "host/report/charts.h"
#include "host/report/clusters_page.h"
#include "host/report/data.h"
#include "host/report/dendrogram.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kNamedLeaves = 70;
constexpr std::size_t kLeafRoom = 110;  // pixels below the tree for the names of its leaves

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
      .texts("name", places, [&](std::size_t k) { return row(k).name; })
      .texts("cluster", places, [&](std::size_t k) { return std::to_string(*row(k).cluster + 1); })
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
      {{"name", "row", false}, {"cluster", "cluster", false}, {"silhouette", "silhouette"}, {"next", "next", false}});
  if (result.method == ClusterMethod::Neighbours)
    tooltip = tips({{"name", "row", false}, {"nearest", "nearest at"}, {"neighbours", "neighbours", false}});
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
        {"tooltip", tips({{"name", "row", false}, {"cluster", "cluster", false}, {"silhouette", "silhouette"}})}}}};
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

}  // namespace

std::vector<ReportFigure> clusterFigures(const Clusters& result, bool placed, std::vector<Table>& data) {
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
      data.push_back(rows);
    }
    figures.push_back(sizes(result));
  }
  if (result.history) {
    Dendrogram drawn = dendrogramOf(result);
    figures.push_back(tree(result, drawn.leaves));
    data.push_back(std::move(drawn.segments));
    data.push_back(std::move(drawn.leaves));
  }
  return figures;
}

}  // namespace studystats
