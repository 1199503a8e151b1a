#include <gtest/gtest.h>
#include <studystats/utilities.h>

#include <climits>
#include <cmath>

#include "tests/refusal.h"
#include "tests/utils/points.h"

namespace {

using namespace StatsClusterUtils;
using namespace StatsDistanceUtils;
using namespace studystats::test;
using Numbers = std::vector<std::int32_t>;
using Reals = std::vector<double>;

std::vector<double> row(const DataMatrix& m, std::size_t r) {
  Reals values;
  for (const auto& column : m) values.push_back(column[r]);
  return values;
}

TEST(NearestCluster, IsTheFirstOfTheNearest) {
  const DataMatrix positions{{0, 2, kNaN, 2, -1}};
  EXPECT_EQ(NearestCluster(positions, 5, {1}, STATS_DIST_EUCLIDEAN), 0);
  EXPECT_EQ(NearestCluster(positions, 5, {1.5}, STATS_DIST_EUCLIDEAN), 1);
  EXPECT_EQ(NearestCluster(positions, 5, {-1, kNaN}, STATS_DIST_EUCLIDEAN), 4);
  EXPECT_EQ(NearestCluster(positions, 4, {-1}, STATS_DIST_EUCLIDEAN), 0);
  EXPECT_EQ(NearestCluster(positions, 0, {1}, STATS_DIST_EUCLIDEAN), -1);
  EXPECT_EQ(NearestCluster({}, INT_MIN, {}, STATS_DIST_EUCLIDEAN), -1);
  EXPECT_EQ(NearestCluster({{kNaN, kNaN, 1}}, 3, {5}, STATS_DIST_EUCLIDEAN), 2);
  EXPECT_EQ(NearestCluster({{kNaN, kNaN}}, 2, {5}, STATS_DIST_EUCLIDEAN), 0);
  // Of (10, 0) and (1, 1) from (4, 1): Euclidean 6.1 and 3, Tanimoto 1 - 40/77 and 1 - 5/14.
  EXPECT_EQ(NearestCluster({{10, 1}, {0, 1}}, 2, {4, 1}, STATS_DIST_EUCLIDEAN), 1);
  EXPECT_EQ(NearestCluster({{10, 1}, {0, 1}}, 2, {4, 1}, STATS_DIST_TANIMOTO), 0);
}

TEST(ClusterPositions, AreMeansAndZeroWithoutPoints) {
  const DataMatrix points{{1, 2, 6, 9}, {0, -4, 3, 9}, {9, 9, 9, 9}};
  DataMatrix positions(3, Reals(4, 7));
  CalculateClusterPositions(points, positions, {2, 0, 2, 99}, 3, 2, 3);
  EXPECT_EQ(positions, (DataMatrix{{2, 0, 3.5, 7}, {-4, 0, 1.5, 7}, {7, 7, 7, 7}}));

  Numbers centres{-5, -5, -5, -5};
  CalculateClusterCenters({{1, 6, 3, 4}}, {{3.5, 0, 6}}, {0, 2, 0, 0}, centres, 4, 1, 3, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(centres, (Numbers{2, -5, 1, -5}));  // 3 and 4 are equally near: the first
  CalculateClusterCenters({{kNaN, 6, 5}}, {{0}}, {0, 0, 0}, centres, 3, 1, 1, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(centres[0], 2);
  CalculateClusterCenters({{kNaN, kNaN}}, {{0}}, {0, 0}, centres, 2, 1, 1, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(centres[0], 0);
  CalculateClusterCenters({{1, 1}, {9, 0}}, {{1}}, {0, 0}, centres, 2, 2, 1, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(centres[0], 0);  // over the columns of the positions
  // From (4, 1): (10, 0) is nearer by Tanimoto, (1, 1) by Euclidean distance.
  for (const auto type : {STATS_DIST_EUCLIDEAN, STATS_DIST_TANIMOTO}) {
    CalculateClusterCenters({{10, 1}, {0, 1}}, {{4}, {1}}, {0, 0}, centres, 2, 2, 1, type);
    EXPECT_EQ(centres[0], type == STATS_DIST_TANIMOTO ? 0 : 1);
  }
  // Rounding leaves both points at -2^-52 from the position.
  const DataMatrix nearly{{0.1, 0.10000000000000005}, {0.2000000000000001, 0.2000000000000001}};
  const DataMatrix position{{0.1}, {0.20000000000000007}};
  for (const std::size_t i : {0U, 1U})
    EXPECT_EQ(CalculateDistance(position, 0, row(nearly, i), STATS_DIST_TANIMOTO), -0x1p-52);
  CalculateClusterCenters(nearly, position, {0, 0}, centres, 2, 2, 1, STATS_DIST_TANIMOTO);
  EXPECT_EQ(centres[0], 1);
}

// The two steps in turns are k-means: neither may increase the sum of squared distances from the positions, and it
// ends.
TEST(ClusterPositions, AndNearestClustersInTurnsNeverIncreaseTheSumOfSquares) {
  for (const DataMatrix& points : {normalPoints(200, 3), gridPoints(150, 2, 9)}) {
    const auto n = std::int32_t(points[0].size()), p = std::int32_t(points.size()), k = 7;
    DataMatrix positions = points;
    StatsMatrixUtils::ResizeDataMatrix(&positions, p, k, 0);
    Numbers assignment(std::size_t(n), -1), before;
    double sumBefore = kInf;
    int steps = 0;
    for (; assignment != before && steps < 100; ++steps) {
      before = assignment;
      const auto sum = [&] {
        double squares = 0;
        for (std::size_t i = 0; i < std::size_t(n); ++i)
          squares += EuclideanDistanceSquared(positions, assignment[i], row(points, i));
        return squares;
      };
      for (std::size_t i = 0; i < std::size_t(n); ++i)
        assignment[i] = NearestCluster(positions, k, row(points, i), STATS_DIST_EUCLIDEAN);
      EXPECT_LE(sum(), sumBefore * (1 + 1e-12));
      sumBefore = sum();
      CalculateClusterPositions(points, positions, assignment, n, p, k);
      EXPECT_LE(sum(), sumBefore * (1 + 1e-12));
      sumBefore = sum();
    }
    EXPECT_GT(steps, 3);
    EXPECT_LT(steps, 100);
  }
}

TEST(Centroids, RefuseACallersErrorAndChangeNothing) {
  struct Arguments {
    DataMatrix points, positions;
    Numbers assignment;
    std::int32_t nPoints, nDims, nClusters;
  };
  const DataMatrix points{{1, 2}, {3, 4}};
  std::vector<Arguments> rows{{points, points, {0}, 2, 2, 2},
                              {{{1, 2}, {3}}, points, {0, 1}, 2, 2, 2},
                              {points, {{1, 2}, {3}}, {0, 1}, 2, 2, 2}};
  for (const std::int32_t bad : {-1, 3, INT_MAX, INT_MIN}) {
    rows.push_back({points, points, {0, bad}, 2, 2, 2});
    rows.push_back({points, points, {0, 1}, bad, 2, 2});
    rows.push_back({points, points, {0, 1}, 2, bad, 2});
    rows.push_back({points, points, {0, 1}, 2, 2, bad});
  }
  const auto centresOf = [](const Arguments& a, Numbers& centres) {
    CalculateClusterCenters(a.points, a.positions, a.assignment, centres, a.nPoints, a.nDims, a.nClusters,
                            STATS_DIST_EUCLIDEAN);
  };
  for (Arguments& a : rows) {
    const DataMatrix before = a.positions;
    Numbers centres{9, 9};
    EXPECT_EQ(refusal([&] { centresOf(a, centres); }), invalid("CalculateClusterCenters"));
    EXPECT_EQ(centres, (Numbers{9, 9}));
    EXPECT_EQ(refusal([&] {
                CalculateClusterPositions(a.points, a.positions, a.assignment, a.nPoints, a.nDims, a.nClusters);
              }),
              invalid("CalculateClusterPositions"));
    EXPECT_EQ(a.positions, before);
  }
  Numbers one(1);
  EXPECT_EQ(refusal([&] { centresOf({points, points, {0, 1}, 2, 2, 2}, one); }), invalid("CalculateClusterCenters"));
  EXPECT_EQ(refusal([&] { NearestCluster(points, 3, {1, 2}, STATS_DIST_EUCLIDEAN); }), invalid("NearestCluster"));
  EXPECT_EQ(refusal([&] { NearestCluster(points, 2, {1}, STATS_DIST_EUCLIDEAN); }), invalid("NearestCluster"));
}

TEST(Centroids, WithoutColumnsLieAtOnePlaceAndWithoutPointsReadNone) {
  for (const auto type : {STATS_DIST_EUCLIDEAN, STATS_DIST_TANIMOTO}) {
    EXPECT_EQ(NearestCluster({}, 3, {1}, type), 0);
    Numbers centres{9, 9, 9};
    CalculateClusterCenters({}, {}, {1, 0, 1}, centres, 3, 0, 3, type);
    EXPECT_EQ(centres, (Numbers{1, 0, 9}));
    CalculateClusterCenters({{5}}, {}, {0}, centres, 1, 1, 3, type);  // over the columns of the positions: none
    EXPECT_EQ(centres, (Numbers{0, 0, 9}));
    for (const DataMatrix& anyShape : {DataMatrix{}, DataMatrix{{1}}, DataMatrix{{}, {1}, {2, 3}}}) {
      DataMatrix positions(2, Reals(2, 7));
      CalculateClusterPositions(anyShape, positions, {}, 0, 2, 2);
      EXPECT_EQ(positions, DataMatrix(2, Reals(2, 0)));
      for (const std::int32_t nDims : {2, INT_MAX})
        CalculateClusterCenters(anyShape, {}, {}, centres, 0, nDims, 3, type);
      EXPECT_EQ(centres, (Numbers{0, 0, 9}));
    }
  }
}

}  // namespace
