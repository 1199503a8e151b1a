// Clusters of a table's rows: an agglomeration history and its cut, k-means, or lists of nearest neighbours.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/output.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

enum class ClusterMethod {
  Hierarchical,  // joins the two nearest groups until one is left; the history can be cut
  KMeans,        // moves means until every row is with the nearest
  Neighbours,    // each row's nearest rows; no clusters
};

enum class Distance {
  Euclidean,  // in prepared units
  Tanimoto,   // 1 - shared / (own + other's - shared), for fingerprints and counts; of the table's own numbers
};

// The distance between two groups of rows.
enum class Linkage {
  Ward,      // sqrt(2 n m / (n + m)) times the distance of their means (the form called ward.D2): single rows are at
             // their own distance
  Average,   // mean over the pairs
  Complete,  // of the farthest pair
  Single,    // of the nearest pair
};

struct ClusterOptions {
  ClusterMethod method = ClusterMethod::Hierarchical;
  Distance distance = Distance::Euclidean;  // Tanimoto: data.scaling must be None, or the default, which then is None
  std::optional<Linkage> linkage{};         // of Hierarchical; absent: Ward, with Tanimoto distances Average
  int clusters = 0;                         // of Hierarchical and KMeans: 2 or more; 0: no cut, only silhouettes
  std::optional<double> threshold{};        // of Hierarchical: groups farther apart than this stay apart
  int neighbours = 10;                      // of Neighbours: how many a row
  bool fixed = false;                       // of Neighbours: exactly as many, where ties would lengthen a list
  int restarts = 10;                        // of KMeans: the best of as many starts
  std::int32_t seed = 1;                    // of KMeans: 0 ... 161803398; the same seed draws the same starts
  std::vector<std::string> responses{};     // kept out of the analysis; their means in each cluster are shown
  std::string classColumn{};                // kept out of the analysis; counted in each cluster
  DataOptions data{};
  ProgressCallback progress{};
  StopSignal stop{};
};

struct Cluster {
  std::size_t rows = 0;
  std::string representative;          // the row nearest to the mean
  double spread = 0;                   // root of the mean squared distance of its rows from their mean
  double farthest = 0;                 // the largest of these distances
  std::optional<double> silhouette;    // mean over its rows
  std::size_t misplaced = 0;           // rows with a silhouette below 0
  std::vector<double> means;           // one a descriptor, table units
  std::vector<double> deviations;      // one a descriptor: from the mean of all rows, in their standard deviations
  std::vector<double> responseMeans;   // one a response; not a number without a value
  std::vector<std::size_t> classRows;  // one a class
};

// A step of an agglomeration. Rows are positions in Clusters::rows.
struct ClusterMerge {
  double height = 0;       // distance between the two groups; never less than in the step before
  std::size_t first = 0;   // a row of the one group, the larger
  std::size_t second = 0;  // and of the other
  std::size_t rows = 0;    // of the group formed
};

struct Agglomeration {
  Linkage linkage = Linkage::Ward;
  std::vector<ClusterMerge> merges;    // one less than rows
  std::vector<std::size_t> leafOrder;  // every row once; each group is a contiguous run, `first` before `second`
};

// Where a history was cut: between two steps.
struct ClusterCut {
  std::optional<double> threshold;  // when that was asked for
  std::optional<double> below;      // height of the last step taken; absent when none was
  std::optional<double> above;      // of the first step not taken; absent when all were
};

struct KMeansStarts {
  int restarts = 0;
  int best = 0;                  // starts that ended with the least criterion
  std::size_t reseeded = 0;      // starts in which an empty cluster was given a row anew
  bool settled = true;           // the best ended because no row moved any more
  std::vector<double> criteria;  // of the best, after each round: sum of squared distances from the means, in prepared
                                 // units; with Tanimoto distances their sum
};

struct SilhouetteOfCut {
  std::size_t clusters = 0;
  double silhouette = 0;         // mean over the rows
  std::optional<double> height;  // of Hierarchical: of the step that would join two of these clusters
};

struct Neighbour {
  std::size_t row = 0;  // position in Clusters::rows
  double distance = 0;
};

struct ClusterRow {
  std::string name;
  Role role = Role::Model;
  std::string label;                   // its class, when a class column was named
  std::vector<double> responses;       // not a number where missing
  std::optional<std::size_t> cluster;  // position in Clusters::clusters; absent without a cut
  double distance = 0;                 // from the mean of that cluster
  std::optional<double> silhouette;    // (b - a) / max(a, b): a, b mean distances from its own and the next cluster
  std::optional<std::size_t> next;     // the cluster, other than its own, nearest in that sense
  std::vector<Neighbour> neighbours;   // nearest first; rows of the model
};

struct Clusters {
  UsedData used;
  ClusterMethod method = ClusterMethod::Hierarchical;
  Distance distance = Distance::Euclidean;
  std::vector<std::string> responses;  // the numeric ones
  std::string classColumn;
  std::vector<std::string> classes;          // in the order of first appearance
  std::optional<Agglomeration> history;      // of Hierarchical
  std::optional<ClusterCut> cut;             // of Hierarchical, when one was asked for
  std::optional<KMeansStarts> starts;        // of KMeans, when a number of clusters was asked for
  std::int32_t seed = 1;                     // of KMeans
  int neighbours = 0;                        // of Neighbours
  bool fixed = false;                        // of Neighbours
  std::vector<Cluster> clusters;             // largest first; none without a cut
  std::optional<double> betweenShare;        // of the variance: between cluster means; Euclidean distances alone
  std::optional<double> silhouette;          // mean over the rows, of the cut asked for
  std::size_t judged = 0;                    // rows that have silhouettes: all of them, or every so-many-th
  std::vector<SilhouetteOfCut> silhouettes;  // of 2 ... 12 clusters and of those asked for
  std::vector<ClusterRow> rows;              // the model's in table order, then those kept out
  std::vector<Remark> remarks;
};

// Rows kept out are placed in the cluster whose mean is nearest, or are given their neighbours; nothing else changes.
// Constant columns and columns that repeat another are set aside, but not with Tanimoto distances, in which each
// counts. Hierarchical takes memory for n (n - 1) / 2 numbers; OutOfMemory names the size when that cannot be had.
STUDYSTATS_API Clusters cluster(const TableView& table, const ClusterOptions& options = {});

// What would be analysed: rows, columns, what is dropped and why. Nothing is analysed.
STUDYSTATS_API std::string explain(const TableView& table, const ClusterOptions& options);

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const Clusters& result, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null. Clusters count from 1, as in the
// summary.
STUDYSTATS_API std::string toJson(const Clusters& result);

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const Clusters& result);

// One line a row: name, role, and what the analysis says of it.
STUDYSTATS_API std::string rowsAsCsv(const Clusters& result);

}  // namespace studystats
