// Statistics of single columns, class numbers, distances and the building blocks of clustering, value transforms with
// their headings, the text of equation terms, and unique names.
//
// Sums run in index order into one accumulator, so that the same input gives the same bits everywhere. A caller's error
// (a count outside the list, lists of unequal length, a row or column outside the data) raises Dvo::DvoResult with
// E_INVALIDARG and "Invalid argument to <operation>" before any output is written. Exhausted memory raises
// std::bad_alloc, and outputs stay as they were.
#pragma once

#include <studystats/host_framework.h>

#include <cstdint>
#include <string>
#include <vector>

namespace StatsCalcUtils {

enum STATS_STANDARDIZATION_TYPE : std::int32_t {
  STATS_STANDARDIZE_NONE = 0,
  STATS_STANDARDIZE_RANGE = 1,       // to -1 ... 1: offset is the middle of the range, divisor half its width
  STATS_STANDARDIZE_AUTOSCALE = 2,   // offset is the mean, divisor the sample standard deviation
  STATS_STANDARDIZE_MEAN_CENTRE = 3  // offset is the mean, divisor 1
};

// Describes the first `count` values (1 ... the list's length) of a column. With d = value - mean and n = count:
//   variance               sum d^2 / n, of the population, in the column's unit squared
//   standardDeviation      sqrt(sum d^2 / (n - 1)), of the sample, in the column's unit; 0 for one value
//   meanAbsoluteDeviation  sum |d| / n
//   skewness, kurtosis     (sum d^3 / n) / s^3 and (sum d^4 / n) / s^4 - 3 with the sample standard deviation s; 0 when
//                          s is 0 or not a number
// The variance is therefore not the square of the standard deviation. A not-a-number makes every moment one.
STUDYSTATS_API void UnivariateStatistics(const std::vector<double>& values, std::int32_t count, double& range,
                                         double& maximum, double& minimum, double& mean, double& standardDeviation,
                                         double& variance, double& meanAbsoluteDeviation, double& skewness,
                                         double& kurtosis);

// The least-squares line y = slope * x + intercept. When all x or all y are equal: slope 0, intercept the mean of y.
// Columns of unequal length, or empty ones, raise E_UNEXPECTED, "Data inconsistency in RawCalculateBestFit.".
STUDYSTATS_API void CalculateBestFit(const std::vector<double>& x, const std::vector<double>& y, double& slope,
                                     double& intercept);
// The same line as its two ends over the range of x.
STUDYSTATS_API void CalculateBestFit(const std::vector<double>& x, const std::vector<double>& y, double& xStart,
                                     double& yStart, double& xEnd, double& yEnd);

// The sum of products of deviations from the means, divided neither by n nor by n - 1, over all of x and as many values
// of y; y may be longer. 0 when x is empty.
STUDYSTATS_API double Covariance(std::vector<double> x, std::vector<double> y);

// The share of positions at which two class assignments agree, over all of `first`; `second` may be longer.
// Not a number when `first` is empty.
STUDYSTATS_API double CorrelationBetweenClasses(std::vector<std::int32_t> first, std::vector<std::int32_t> second);

// Numbers labels: a class number (from 1) for each label is appended to `categories`. Labels that stand in
// categoryNames get the number of their first position there; others are numbered on in the order of their first
// appearance, and appended to categoryNames. Labels are compared byte by byte. Labels may be handed over one by one:
// what stands in `categories` is not copied at each call.
STUDYSTATS_API void ConvertToUniqueCategories(std::vector<std::string>& labels, std::vector<std::int32_t>& categories,
                                              std::vector<std::string>& categoryNames);

// Drops the classes with one member or none. classes: the class of each item, a number of 1 ... the number of names, or
// nothing is changed.
//   keep                        out: one mark an item, true when its class stays
//   newClasses, newClassNames   out: the items kept, with their classes numbered anew in the old order; these may be
//                               the lists that are read
//   itemsKept, classesKept      out: how many
STUDYSTATS_API void RemoveSingleElementClasses(
    std::vector<std::int32_t>& classes, std::vector<std::string>& classNames,
    kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>>& keep,
    std::vector<std::int32_t>& newClasses, std::vector<std::string>& newClassNames, std::int32_t& itemsKept,
    std::int32_t& classesKept);

// Standardises column `column` (from 0) of a column-major matrix of nRows rows in place: (value - offset) / divisor.
// divisor, offset: out; what was used, so that the caller can undo it. A column without spread has divisor 1.
// Missing values (not-a-numbers) take no part in the statistics and stay missing; infinities take part.
// Nothing is changed, with divisor 1 and offset 0, for type NONE, when nRows is 0 or negative, and when every value is
// missing. Any other type that is not listed rewrites the values unchanged. nColumns is not used: the column only has
// to lie within `data`.
STUDYSTATS_API void StandardizeData(std::vector<double>& data, std::int32_t nRows, std::int32_t nColumns,
                                    std::int32_t column, STATS_STANDARDIZATION_TYPE type, double& divisor,
                                    double& offset);

}  // namespace StatsCalcUtils

// A matrix as a list of columns: element (row r, column c) is m[c][r], both counted from 0. It has as many rows as its
// first column, none without columns; every column that is read must have them.
using DataMatrix = std::vector<std::vector<double>>;
using IndexMatrix = std::vector<std::vector<std::int32_t>>;  // of row numbers

namespace StatsMatrixUtils {

// Rows, and columns, of a matrix.
STUDYSTATS_API std::int32_t RowCount(const DataMatrix& m);
STUDYSTATS_API std::int32_t RowCount(const IndexMatrix& m);
STUDYSTATS_API std::int32_t ColumnCount(const DataMatrix& m);
STUDYSTATS_API std::int32_t ColumnCount(const IndexMatrix& m);

// The sum of all squared elements, column after column; 0 without columns.
STUDYSTATS_API double GetModulusSquared(const DataMatrix& m);

// Gives m exactly that many columns and rows. What lies inside both the old and the new shape stays, what is added is
// `fill`. A null matrix and negative sizes are refused.
STUDYSTATS_API void ResizeDataMatrix(DataMatrix* m, std::int32_t columns, std::int32_t rows, double fill);
STUDYSTATS_API void ResizeIndexMatrix(IndexMatrix* m, std::int32_t columns, std::int32_t rows, std::int32_t fill);

}  // namespace StatsMatrixUtils

namespace StatsDistanceUtils {

// Between two points x and y:
//   Euclidean   sqrt(sum (x - y)^2), in the data's unit
//   Tanimoto    1 - sum xy / D with D = sum x^2 + sum y^2 - sum xy: 0 for equal points, 1 for points that have nothing
//               in common; 0 when D is 0 (two points of zeros) or not a number. Meant for values that are not negative:
//               of x and -x it is 4/3. Rounding may leave a distance of two nearly equal points a little below 0.
// Any value other than TANIMOTO is Euclidean.
enum STATS_DIST_TYPE : std::int32_t { STATS_DIST_EUCLIDEAN = 0, STATS_DIST_TANIMOTO = 1 };

// Between rows i and j of a matrix over all its columns; between row i and v, which may be longer than the matrix has
// columns; between a and b over the length of a, b may be longer. The sums run over the columns in order; over none
// they are 0.
STUDYSTATS_API double CalculateDistance(const DataMatrix& m, std::int32_t i, std::int32_t j, STATS_DIST_TYPE type);
STUDYSTATS_API double CalculateDistance(const DataMatrix& m, std::int32_t i, const std::vector<double>& v,
                                        STATS_DIST_TYPE type);
STUDYSTATS_API double CalculateDistance(const std::vector<double>& a, const std::vector<double>& b,
                                        STATS_DIST_TYPE type);

// The sum of squared differences of row i and v over the length of v, which the matrix may exceed in columns; 0 when v
// is empty.
STUDYSTATS_API double EuclideanDistanceSquared(const DataMatrix& m, std::int32_t i, const std::vector<double>& v);

// The distances of the n rows of `data`, which must have a column, from each other.
//   dist   out: n x n, whatever it was before; exactly symmetric, with a diagonal of zeros
STUDYSTATS_API void GenerateDistanceMatrix(const DataMatrix& data, DataMatrix& dist, STATS_DIST_TYPE type);

// The distances of every row from the rows that `index` names for it: dist[k][r] is that of row r from row index[k][r].
//   index   K columns of at least n row numbers, for example the neighbours by rank
//   dist    out: n x K (K columns), whatever it was before
STUDYSTATS_API void GenerateDistanceMatrix(const DataMatrix& data, const IndexMatrix& index, DataMatrix& dist,
                                           STATS_DIST_TYPE type);

}  // namespace StatsDistanceUtils

// Clustering of points, the rows of a matrix. Points and clusters are counted from 0, but for the numbers of an
// agglomeration history. A distance that is not a number counts as larger than every number. Without columns all
// distances are 0; without points the matrix of points is not read and may have any shape.
//
// An agglomeration history of n points says how single points were joined to groups, step by step:
//   leafOrder      the points 1 ... n, each once, in an order in which every group is a contiguous run
//   mergeDist      for each merge its distance, ascending
//   mergeA, mergeB for each merge a point of either group, counted from 1. A number below 1 makes a merge void: an end
//                  mark of zeros may follow the n - 1 merges of a history
//   mergeCentre    for each merge the point, counted from 1, that represents the group formed
// It ends with the shortest of the lists that are read. A leafOrder that is no permutation, and a point above n in a
// merge that takes part, are refused.
namespace StatsClusterUtils {

// The nearest neighbours of each of the first nPoints points among them. k = nNeighbors, at most nPoints - 1; r is the
// distance at position k (from 0) among a point's distances from all points, itself included: of its k-th nearest
// other.
//   fixedSize   true: the points nearer than r, and of those at r the lowest-numbered, k altogether; false: all within
//               r * 1.00000000001, so that a tie at the end of a list is never broken and a list may be longer than k
//   lists       out: for each point its neighbours, in ascending order
// A point at a distance that is not a number is no neighbour: lists may be shorter than k. Besides the lists, the
// memory of a few distances a point is used for some points at a time. Negative nPoints and nNeighbors are refused.
STUDYSTATS_API void CreateNeighborLists(const DataMatrix& points, std::int32_t nPoints,
                                        StatsDistanceUtils::STATS_DIST_TYPE type, std::int32_t nNeighbors,
                                        bool fixedSize, IndexMatrix& lists);

// The cluster whose position is nearest to the point: of equals the lowest number. -1 when nClusters is below 1.
//   positions   one row a cluster, at least nClusters
//   point       a value for each column of positions; it may be longer
STUDYSTATS_API std::int32_t NearestCluster(const DataMatrix& positions, std::int32_t nClusters,
                                           const std::vector<double>& point, StatsDistanceUtils::STATS_DIST_TYPE type);

// The mean of each cluster's points; zeros for a cluster without points.
//   positions    out: its first nDims columns and nClusters rows, which must be there
//   assignment   for each of the first nPoints points its cluster, 0 ... nClusters - 1
STUDYSTATS_API void CalculateClusterPositions(const DataMatrix& points, DataMatrix& positions,
                                              const std::vector<std::int32_t>& assignment, std::int32_t nPoints,
                                              std::int32_t nDims, std::int32_t nClusters);

// For each cluster its point nearest to its position, of equals the first (of distances that rounding left below 0,
// which Tanimoto distances can be, the next point always replaces the one before).
//   positions    nClusters rows of at most nDims columns
//   assignment   as above
//   centres      out: its first nClusters entries, which must be there; unchanged for a cluster without points
STUDYSTATS_API void CalculateClusterCenters(const DataMatrix& points, const DataMatrix& positions,
                                            const std::vector<std::int32_t>& assignment,
                                            std::vector<std::int32_t>& centres, std::int32_t nPoints,
                                            std::int32_t nDims, std::int32_t nClusters,
                                            StatsDistanceUtils::STATS_DIST_TYPE type);

// Joins the groups of a history up to the first merge above the threshold. Every point begins with its own number, from
// 1, as label; in a merge the run of mergeB's group takes the label of mergeA's point.
//   clusterOf   out: the labels, in its first n entries, which must be there
STUDYSTATS_API void MergeClusters(const std::vector<std::int32_t>& leafOrder, const std::vector<double>& mergeDist,
                                  const std::vector<std::int32_t>& mergeA, const std::vector<std::int32_t>& mergeB,
                                  double threshold, std::vector<std::int32_t>& clusterOf);

// Cuts a history at a threshold: the number of clusters, the runs of equal labels along leafOrder.
//   clusterOf   out: for each point its cluster, from 1; the last run along leafOrder is cluster 1
STUDYSTATS_API std::int32_t CalculateClusters(const std::vector<std::int32_t>& leafOrder,
                                              const std::vector<double>& mergeDist,
                                              const std::vector<std::int32_t>& mergeA,
                                              const std::vector<std::int32_t>& mergeB, double threshold,
                                              std::vector<std::int32_t>& clusterOf);

// The representative point of each cluster of a cut: that of the merge which formed the cluster, or the only point.
// Returns the number of clusters.
//   mergeDist   not read
//   clusterOf   in: for each point its cluster; equal neighbours along leafOrder are one cluster
//   centres     out: the points, for the clusters in their order along leafOrder (cluster K, K - 1, ... 1 of the cut);
//               the first point of a cluster that no merge forms. Unchanged when there are no points
// In every merge that takes part, the group of mergeB must lie behind that of mergeA in leafOrder, or the history is
// refused; so is a merge that forms a cluster with a mergeCentre below 1.
STUDYSTATS_API std::int32_t CalculateCentres(const std::vector<std::int32_t>& leafOrder,
                                             const std::vector<double>& mergeDist,
                                             const std::vector<std::int32_t>& mergeA,
                                             const std::vector<std::int32_t>& mergeB,
                                             const std::vector<std::int32_t>& mergeCentre,
                                             std::vector<std::int32_t>& clusterOf, std::vector<std::int32_t>& centres);

}  // namespace StatsClusterUtils

namespace StatsUtils {

// What is computed of x = value + shift. Any value that is not listed behaves as NONE.
enum STATS_TRANSFORM_TYPE : std::int32_t {
  STATS_TRANSFORM_NONE = 0,        // x
  STATS_TRANSFORM_RECIPROCAL = 1,  // 1 / x
  STATS_TRANSFORM_LOG = 2,         // natural logarithm
  STATS_TRANSFORM_SQRT = 3,
  STATS_TRANSFORM_SQUARE = 4,
  STATS_TRANSFORM_CUBE = 5,
  STATS_TRANSFORM_EXP = 6
};

// result: out. false, and 0, when x lies outside the transform's domain: x = 0 for the reciprocal, x not above 0 for
// the logarithm, x below 0 for the square root (a not-a-number is outside the last two). An overflow succeeds with
// infinity.
STUDYSTATS_API bool TransformValue(double value, STATS_TRANSFORM_TYPE type, double shift, double& result);

// result: out; what the transform computes, as a heading: "log ( X )", with a shift "log ( ( X ) + 1 )". The shift has
// six significant digits.
STUDYSTATS_API void TransformHeading(const std::string& heading, STATS_TRANSFORM_TYPE type, double shift,
                                     std::string& result);

// One term of an equation: sign, magnitude and, unless the name is empty, " * " and the name.
// scientific: 16 digits after the point and an exponent, which a reader gets the same number back from; else fixed with
// 9 digits. signedTerm: a coefficient that is not negative begins with " + ", else with one space; a negative one
// always begins with " - ". An equation is its terms joined, the first with signedTerm false.
STUDYSTATS_API std::string FormatTerm(double coefficient, std::string name, bool scientific, bool signedTerm);

// A number between a and b, given in either order, from the generator that random validation folds use, too. The
// sequence goes on from call to call; only a generator that has not been started is started, with seed 1.
STUDYSTATS_API double GenerateRandomDouble(double a, double b);

}  // namespace StatsUtils

// Hands out names that are unique within one generator. Names are compared byte by byte.
class STUDYSTATS_API UniqueNameGenerator {
 public:
  UniqueNameGenerator();
  // None of these names will be handed out.
  UniqueNameGenerator(const kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>& names);
  UniqueNameGenerator(const UniqueNameGenerator& other);
  UniqueNameGenerator& operator=(const UniqueNameGenerator& other);
  ~UniqueNameGenerator();

  // `base` itself when it is free, else the first free of "base (2)", "base (3)", ...; it is taken from now on.
  std::string UniqueName(const std::string& base);

 private:
  kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>> usedNames_;
  // Names are never released: below this counter all of a base's candidates are taken. It only shortens the search.
  kel::map<std::string, std::int64_t> firstCandidate_;
};
