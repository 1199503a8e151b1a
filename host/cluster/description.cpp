#include "host/cluster/description.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>
#include <unordered_set>

namespace studystats {
namespace {

double meanOf(std::span<const double> values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

double deviationOf(std::span<const double> values, double mean) {
  double squares = 0;
  for (const double value : values) squares += (value - mean) * (value - mean);
  return std::sqrt(squares / static_cast<double>(values.size() - 1));
}

// Places a row in cluster k, whose mean is row k of `means`.
void place(ClusterRow& row, const std::vector<double>& point, std::int32_t k, const DataMatrix& means,
           StatsDistanceUtils::STATS_DIST_TYPE type) {
  row.cluster = static_cast<std::size_t>(k);
  row.distance = StatsDistanceUtils::CalculateDistance(means, k, point, type);
}

// Sizes, spreads, farthest rows and silhouettes, from the rows placed.
void measure(std::vector<Cluster>& clusters, const std::vector<ClusterRow>& rows) {
  std::vector<double> squares(clusters.size(), 0.0), silhouettes(clusters.size(), 0.0), judged(clusters.size(), 0.0);
  for (const ClusterRow& row : rows) {
    if (row.role != Role::Model) continue;
    const std::size_t k = *row.cluster;
    ++clusters[k].rows;
    squares[k] += row.distance * row.distance;
    clusters[k].farthest = std::max(clusters[k].farthest, row.distance);
    if (!row.silhouette) continue;
    ++judged[k];
    silhouettes[k] += *row.silhouette;
    clusters[k].misplaced += *row.silhouette < 0 ? 1 : 0;
  }
  for (std::size_t k = 0; k < clusters.size(); ++k) {
    clusters[k].spread = std::sqrt(squares[k] / static_cast<double>(clusters[k].rows));
    if (judged[k] > 0) clusters[k].silhouette = silhouettes[k] / judged[k];
  }
}

// Means in table units, and how far they are from those of all rows.
void compare(std::vector<Cluster>& clusters, const DataMatrix& means, const PreparedClusters& prepared) {
  const UsedData& used = prepared.data.used;
  for (std::size_t j = 0; j < means.size(); ++j) {
    const double mean = meanOf(prepared.points[j]), deviation = deviationOf(prepared.points[j], mean);
    for (std::size_t k = 0; k < clusters.size(); ++k) {
      clusters[k].means.push_back(used.shift[j] + used.scale[j] * means[j][k]);
      clusters[k].deviations.push_back(deviation > 0 ? (means[j][k] - mean) / deviation : 0);
    }
  }
}

// Means of the responses, which were kept out of the analysis.
void averageResponses(Clusters& result) {
  for (std::size_t r = 0; r < result.responses.size(); ++r) {
    std::vector<double> sums(result.clusters.size(), 0.0), counts(result.clusters.size(), 0.0);
    for (const ClusterRow& row : result.rows) {
      if (row.role != Role::Model || std::isnan(row.responses[r])) continue;
      sums[*row.cluster] += row.responses[r];
      ++counts[*row.cluster];
    }
    for (std::size_t k = 0; k < sums.size(); ++k)
      result.clusters[k].responseMeans.push_back(counts[k] > 0 ? sums[k] / counts[k]
                                                               : std::numeric_limits<double>::quiet_NaN());
  }
}

// Rows of each class, which was kept out, too.
void countClasses(Clusters& result) {
  std::unordered_map<std::string, std::size_t> number;
  for (const std::string& name : result.classes) number.emplace(name, number.size());
  for (Cluster& cluster : result.clusters) cluster.classRows.assign(result.classes.size(), 0);
  for (const ClusterRow& row : result.rows)
    if (row.role == Role::Model && !row.label.empty()) ++result.clusters[*row.cluster].classRows[number.at(row.label)];
}

// 1 - (squared distances from the clusters' means) / (squared distances from the mean of all rows).
double shareBetween(const Clusters& result, const PreparedClusters& prepared) {
  double within = 0, total = 0;
  for (const ClusterRow& row : result.rows)
    if (row.role == Role::Model) within += row.distance * row.distance;
  for (const std::vector<double>& column : prepared.points) {
    const double mean = meanOf(column);
    for (const double value : column) total += (value - mean) * (value - mean);
  }
  return 1 - within / total;
}

void addRow(Clusters& result, const BlockRow& row, const std::string& label) {
  ClusterRow added;
  added.name = row.name;
  added.role = row.role;
  added.label = label;
  for (const std::string& response : result.responses) {
    const TableView::Column* column = row.table->find(response);
    const bool there = column && column->kind == ColumnKind::Numeric;
    added.responses.push_back(there ? column->numbers[row.tableRow] : std::numeric_limits<double>::quiet_NaN());
  }
  result.rows.push_back(std::move(added));
}

}  // namespace

void addRows(Clusters& result, const PreparedClusters& prepared, const TableView& table,
             const ClusterOptions& options) {
  result.classColumn = options.classColumn;
  for (const std::string& response : options.responses)
    if (table.find(response)->kind == ColumnKind::Numeric) result.responses.push_back(response);
  for (const std::vector<BlockRow>* rows : {&prepared.data.modelRows, &prepared.data.predictedRows}) {
    const std::vector<std::string> labels = labelsOf(*rows, options.classColumn);
    for (std::size_t i = 0; i < rows->size(); ++i) addRow(result, (*rows)[i], labels[i]);
  }
  std::unordered_set<std::string> known{""};
  for (const ClusterRow& row : result.rows)
    if (row.role == Role::Model && known.insert(row.label).second) result.classes.push_back(row.label);
}

void describeClusters(Clusters& result, const PreparedClusters& prepared, const Partition& partition,
                      const std::vector<std::int32_t>& centres) {
  const DataMatrix means = clusterMeans(partition, prepared.points);
  for (std::size_t i = 0; i < prepared.size(); ++i)
    place(result.rows[i], prepared.rows[i], partition.of[i], means, prepared.type);
  for (std::size_t i = 0; i < prepared.apart.size(); ++i)
    place(result.rows[prepared.size() + i], prepared.apart[i],
          StatsClusterUtils::NearestCluster(means, count32(partition.clusters), prepared.apart[i], prepared.type),
          means, prepared.type);

  result.clusters.resize(partition.clusters);
  for (std::size_t k = 0; k < partition.clusters; ++k)
    result.clusters[k].representative = result.rows[static_cast<std::size_t>(centres[k])].name;
  measure(result.clusters, result.rows);
  compare(result.clusters, means, prepared);
  averageResponses(result);
  countClasses(result);
  if (result.distance == Distance::Euclidean) result.betweenShare = shareBetween(result, prepared);
}

}  // namespace studystats
