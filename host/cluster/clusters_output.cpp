// Clusters as JSON and as CSV files. Clusters count from 1 there, as in the summary.
#include "host/cluster/cluster.h"
#include "host/json.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

Json numberOf(const std::optional<std::size_t>& cluster) { return cluster ? Json(*cluster + 1) : Json(nullptr); }

std::string cellOf(const std::optional<std::size_t>& cluster) { return cluster ? std::to_string(*cluster + 1) : ""; }
std::string cellOf(const std::optional<double>& value) { return value ? exact(*value) : ""; }

Json jsonHistory(const Clusters& result) {
  if (!result.history) return nullptr;
  const auto name = [&](std::size_t row) { return result.rows[row].name; };
  Json merges = Json::array(), order = Json::array();
  for (const ClusterMerge& merge : result.history->merges)
    merges.push_back({{"height", jsonNumber(merge.height)},
                      {"first", name(merge.first)},
                      {"second", name(merge.second)},
                      {"rows", merge.rows}});
  for (const std::size_t row : result.history->leafOrder) order.push_back(name(row));
  return {
      {"linkage", nameOf(result.history->linkage)}, {"merges", std::move(merges)}, {"leaf_order", std::move(order)}};
}

Json jsonCut(const Clusters& result) {
  if (!result.cut) return nullptr;
  return {{"threshold", jsonNumber(result.cut->threshold)},
          {"last_merge_done", jsonNumber(result.cut->below)},
          {"first_merge_not_done", jsonNumber(result.cut->above)}};
}

Json jsonStarts(const Clusters& result) {
  if (!result.starts) return nullptr;
  return {{"restarts", result.starts->restarts},
          {"reached_the_best", result.starts->best},
          {"with_an_empty_cluster", result.starts->reseeded},
          {"settled", result.starts->settled},
          {"criterion_by_round", jsonNumbers(result.starts->criteria)},
          {"seed", result.seed}};
}

Json jsonCluster(const Clusters& result, std::size_t k) {
  const Cluster& cluster = result.clusters[k];
  Json json{{"cluster", k + 1},
            {"rows", cluster.rows},
            {"representative", cluster.representative},
            {"spread", jsonNumber(cluster.spread)},
            {"farthest", jsonNumber(cluster.farthest)},
            {"silhouette", jsonNumber(cluster.silhouette)},
            {"silhouettes_below_zero", cluster.misplaced},
            {"means", jsonNumbers(cluster.means)},
            {"deviations", jsonNumbers(cluster.deviations)}};
  if (!result.responses.empty()) json["response_means"] = jsonNumbers(cluster.responseMeans);
  if (!result.classColumn.empty()) json["class_rows"] = cluster.classRows;
  return json;
}

Json jsonRow(const Clusters& result, const ClusterRow& row) {
  Json json{{"name", row.name}, {"role", nameOf(row.role)}};
  if (!result.classColumn.empty()) json["class"] = row.label;
  if (!result.responses.empty()) json["responses"] = jsonNumbers(row.responses);
  if (result.method == ClusterMethod::Neighbours) {
    json["neighbours"] = Json::array();
    for (const Neighbour& neighbour : row.neighbours)
      json["neighbours"].push_back(
          {{"name", result.rows[neighbour.row].name}, {"distance", jsonNumber(neighbour.distance)}});
    return json;
  }
  json["cluster"] = numberOf(row.cluster);
  json["distance"] = row.cluster ? jsonNumber(row.distance) : Json(nullptr);
  json["silhouette"] = jsonNumber(row.silhouette);
  json["next_cluster"] = numberOf(row.next);
  return json;
}

std::string clustersCsv(const Clusters& result) {
  CsvText csv;
  std::vector<std::string> heading{"cluster",  "rows",       "representative",        "spread",
                                   "farthest", "silhouette", "silhouettes_below_zero"};
  for (const std::string& response : result.responses) heading.push_back("mean_" + response);
  for (const std::string& name : result.classes) heading.push_back("rows_" + name);
  csv.row(heading);
  for (std::size_t k = 0; k < result.clusters.size(); ++k) {
    const Cluster& cluster = result.clusters[k];
    std::vector<std::string> cells{
        std::to_string(k + 1),   std::to_string(cluster.rows), cluster.representative,           exact(cluster.spread),
        exact(cluster.farthest), cellOf(cluster.silhouette),   std::to_string(cluster.misplaced)};
    for (const double mean : cluster.responseMeans) cells.push_back(exact(mean));
    for (const std::size_t rows : cluster.classRows) cells.push_back(std::to_string(rows));
    csv.row(cells);
  }
  return csv.text();
}

// A selection that spreads over the clusters: one row of each.
std::string representativesCsv(const Clusters& result) {
  CsvText csv;
  csv.row({"name", "cluster", "rows"});
  for (std::size_t k = 0; k < result.clusters.size(); ++k)
    csv.row({result.clusters[k].representative, std::to_string(k + 1), std::to_string(result.clusters[k].rows)});
  return csv.text();
}

std::string differencesCsv(const Clusters& result) {
  CsvText csv;
  csv.row({"cluster", "descriptor", "mean", "deviation"});
  for (std::size_t k = 0; k < result.clusters.size(); ++k)
    for (std::size_t j = 0; j < result.used.descriptors.size(); ++j)
      csv.row({std::to_string(k + 1), result.used.descriptors[j], exact(result.clusters[k].means[j]),
               exact(result.clusters[k].deviations[j])});
  return csv.text();
}

std::string silhouettesCsv(const Clusters& result) {
  CsvText csv;
  csv.row({"clusters", "silhouette", "joined_at"});
  for (const SilhouetteOfCut& one : result.silhouettes)
    csv.row({std::to_string(one.clusters), exact(one.silhouette), cellOf(one.height)});
  return csv.text();
}

std::string historyCsv(const Clusters& result) {
  CsvText csv;
  csv.row({"merge", "height", "first", "second", "rows"});
  for (std::size_t m = 0; m < result.history->merges.size(); ++m) {
    const ClusterMerge& merge = result.history->merges[m];
    csv.row({std::to_string(m + 1), exact(merge.height), result.rows[merge.first].name, result.rows[merge.second].name,
             std::to_string(merge.rows)});
  }
  return csv.text();
}

std::string leafOrderCsv(const Clusters& result) {
  CsvText csv;
  csv.row({"name", "cluster"});
  for (const std::size_t row : result.history->leafOrder)
    csv.row({result.rows[row].name, cellOf(result.rows[row].cluster)});
  return csv.text();
}

std::string neighboursCsv(const Clusters& result) {
  CsvText csv;
  csv.row({"name", "rank", "neighbour", "distance"});
  for (const ClusterRow& row : result.rows)
    for (std::size_t rank = 0; rank < row.neighbours.size(); ++rank)
      csv.row({row.name, std::to_string(rank + 1), result.rows[row.neighbours[rank].row].name,
               exact(row.neighbours[rank].distance)});
  return csv.text();
}

std::vector<std::string> rowHeading(const Clusters& result) {
  std::vector<std::string> heading{"name", "role"};
  if (!result.classColumn.empty()) heading.push_back(result.classColumn);
  heading.insert(heading.end(), result.responses.begin(), result.responses.end());
  const std::vector<std::string> figures =
      result.method == ClusterMethod::Neighbours
          ? std::vector<std::string>{"neighbours", "nearest", "nearest_distance", "last_distance"}
          : std::vector<std::string>{"cluster", "distance", "silhouette", "next_cluster"};
  heading.insert(heading.end(), figures.begin(), figures.end());
  return heading;
}

}  // namespace

std::string toJson(const Clusters& result) {
  Json json{{"schema", "studystats.cluster/1"}, {"version", version()}, {"used", jsonUsed(result.used)}};
  json["method"] = nameOf(result.method);
  json["distance"] = nameOf(result.distance);
  if (!result.classColumn.empty()) {
    json["class_column"] = result.classColumn;
    json["classes"] = result.classes;
  }
  if (!result.responses.empty()) json["responses"] = result.responses;
  if (result.method == ClusterMethod::Neighbours) {
    json["neighbours"] = result.neighbours;
    json["fixed"] = result.fixed;
  } else {
    if (result.method == ClusterMethod::Hierarchical) {
      json["history"] = jsonHistory(result);
      json["cut"] = jsonCut(result);
      if (!result.cut) json["cut_reason"] = "neither a number of clusters nor a threshold was asked for";
    } else {
      json["starts"] = jsonStarts(result);
      if (!result.starts) json["starts_reason"] = "no number of clusters was asked for";
    }
    json["clusters"] = Json::array();
    for (std::size_t k = 0; k < result.clusters.size(); ++k) json["clusters"].push_back(jsonCluster(result, k));
    json["between_share"] = jsonNumber(result.betweenShare);
    if (!result.betweenShare)
      json["between_share_reason"] = result.clusters.empty() ? "no clusters" : "not of Tanimoto distances";
    json["silhouette"] = jsonNumber(result.silhouette);
    if (!result.silhouette) json["silhouette_reason"] = "fewer than two clusters";
    json["silhouette_rows"] = result.judged;
    json["silhouettes"] = Json::array();
    for (const SilhouetteOfCut& one : result.silhouettes)
      json["silhouettes"].push_back({{"clusters", one.clusters},
                                     {"silhouette", jsonNumber(one.silhouette)},
                                     {"joined_at", jsonNumber(one.height)}});
  }
  json["rows"] = Json::array();
  for (const ClusterRow& row : result.rows) json["rows"].push_back(jsonRow(result, row));
  json["remarks"] = jsonRemarks(result.remarks);
  return jsonText(json);
}

std::vector<CsvFile> toTables(const Clusters& result) {
  std::vector<CsvFile> files{{"rows.csv", rowsAsCsv(result)}};
  if (result.method == ClusterMethod::Neighbours) {
    files.push_back({"neighbours.csv", neighboursCsv(result)});
    return files;
  }
  files.push_back({"silhouettes.csv", silhouettesCsv(result)});
  if (result.history) {
    files.push_back({"history.csv", historyCsv(result)});
    files.push_back({"leaf_order.csv", leafOrderCsv(result)});
  }
  if (result.clusters.empty()) return files;
  files.push_back({"clusters.csv", clustersCsv(result)});
  files.push_back({"representatives.csv", representativesCsv(result)});
  files.push_back({"differences.csv", differencesCsv(result)});
  return files;
}

std::string rowsAsCsv(const Clusters& result) {
  CsvText csv;
  csv.row(rowHeading(result));
  for (const ClusterRow& row : result.rows) {
    std::vector<std::string> cells{row.name, nameOf(row.role)};
    if (!result.classColumn.empty()) cells.push_back(row.label);
    for (const double value : row.responses) cells.push_back(exact(value));
    if (result.method == ClusterMethod::Neighbours) {
      const Neighbour& nearest = row.neighbours.front();
      cells.insert(cells.end(), {std::to_string(row.neighbours.size()), result.rows[nearest.row].name,
                                 exact(nearest.distance), exact(row.neighbours.back().distance)});
    } else {
      cells.insert(cells.end(), {cellOf(row.cluster), row.cluster ? exact(row.distance) : std::string(),
                                 cellOf(row.silhouette), cellOf(row.next)});
    }
    csv.row(cells);
  }
  return csv.text();
}

}  // namespace studystats
