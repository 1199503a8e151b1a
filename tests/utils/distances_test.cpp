#include <gtest/gtest.h>
#include <studystats/utilities.h>

#include <bit>
#include <climits>
#include <cmath>

#include "tests/definition/distances.h"
#include "tests/refusal.h"
#include "tests/utils/points.h"

namespace {

using namespace StatsDistanceUtils;
using namespace StatsMatrixUtils;
using namespace studystats::test;
using Reals = std::vector<double>;

constexpr STATS_DIST_TYPE kTypes[] = {STATS_DIST_EUCLIDEAN, STATS_DIST_TANIMOTO};

bool sameBits(const DataMatrix& a, const DataMatrix& b) {
  const auto same = [](double x, double y) {
    return (std::isnan(x) && std::isnan(y)) || std::bit_cast<std::uint64_t>(x) == std::bit_cast<std::uint64_t>(y);
  };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const Reals& x, const Reals& y) {
    return std::equal(x.begin(), x.end(), y.begin(), y.end(), same);
  });
}

TEST(Matrices, AreResizedAroundWhatTheyHold) {
  DataMatrix m{{1, 2}, {3, 4}};
  ResizeDataMatrix(&m, 3, 1, 7);
  EXPECT_EQ(m, (DataMatrix{{1}, {3}, {7}}));
  ResizeDataMatrix(&m, 2, 3, -1);
  EXPECT_EQ(m, (DataMatrix{{1, -1, -1}, {3, -1, -1}}));
  EXPECT_EQ(RowCount(m) * 10 + ColumnCount(m), 32);
  ResizeDataMatrix(&m, 2, 0, 0);
  EXPECT_EQ(RowCount(m) * 10 + ColumnCount(m), 2);
  ResizeDataMatrix(&m, 0, 5, 0);
  EXPECT_TRUE(m.empty() && RowCount(m) == 0);

  IndexMatrix index{{1, 2, 3}, {4}};
  ResizeIndexMatrix(&index, 3, 2, 9);
  EXPECT_EQ(index, (IndexMatrix{{1, 2}, {4, 9}, {9, 9}}));
  EXPECT_EQ(RowCount(index) * 10 + ColumnCount(index), 23);
  EXPECT_EQ(RowCount(IndexMatrix{}) + ColumnCount(IndexMatrix{}), 0);

  EXPECT_EQ(GetModulusSquared({{1, 2}, {-3, 4}}), 30);
  EXPECT_EQ(GetModulusSquared({{1, 2}, {-3, 4, 100}}), 30);  // rows are those of the first column
  EXPECT_EQ(GetModulusSquared({}), 0);
}

TEST(Distances, HaveTheirKnownValues) {
  const Reals x{1, 2, 0}, zero{0, 0, 0}, opposite{-1, -2, 0}, y{1, 0, 4};
  const struct {
    Reals a, b;
    std::int32_t type;
    double expected;
  } kRows[] = {
      {{0, 0}, {3, 4}, 0, 5},
      {{0, 0}, {3, 4}, 2, 5},
      {{0, 0}, {3, 4}, -1, 5},
      {{0}, {3, 4}, 0, 3},  // over the length of the first
      {x, x, 0, 0},
      {{}, {}, 0, 0},
      {x, x, 1, 0},
      {zero, zero, 1, 0},
      {x, zero, 1, 1},
      {x, opposite, 1, 4.0 / 3},
      {x, y, 1, 1 - 1.0 / 21},               // 5 + 17 - 1
      {{1, 1, 0, 1}, {0, 1, 1, 1}, 1, 0.5},  // of bits: 1 - common / either
      {{kNaN}, {1}, 1, 0},
      {{}, {}, 1, 0},
  };
  for (const auto& row : kRows) {
    const auto type = STATS_DIST_TYPE(row.type);
    EXPECT_EQ(CalculateDistance(row.a, row.b, type), row.expected) << testing::PrintToString(row.a) << row.type;
    DataMatrix rows;
    for (std::size_t c = 0; c < row.a.size(); ++c) rows.push_back({kNaN, row.b[c], row.a[c]});
    EXPECT_EQ(CalculateDistance(rows, 2, 1, type), row.expected);
    EXPECT_EQ(CalculateDistance(rows, 2, row.b, type), row.expected);
  }
  EXPECT_TRUE(std::isnan(CalculateDistance({kNaN}, {1}, STATS_DIST_EUCLIDEAN)));
  EXPECT_EQ(EuclideanDistanceSquared({{9, 1}, {9, 2}, {9, kNaN}}, 1, {4, 6}), 25);
  EXPECT_EQ(EuclideanDistanceSquared({{9, 1}}, 1, {}), 0);
  EXPECT_EQ(EuclideanDistanceSquared({}, 7, {}), 0);
}

TEST(DistanceMatrices, OfThreePointsAreTheirTriangle) {
  const DataMatrix points{{0, 3, 0}, {0, 4, 4}};
  DataMatrix dist(7, Reals(5, -1));
  GenerateDistanceMatrix(points, dist, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(dist, (DataMatrix{{0, 5, 4}, {5, 0, 3}, {4, 3, 0}}));
  GenerateDistanceMatrix(points, IndexMatrix{{1, 2, 0, 99}, {0, 0, 1}}, dist, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(dist, (DataMatrix{{5, 3, 4}, {0, 5, 3}}));
  GenerateDistanceMatrix(points, IndexMatrix{}, dist, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(dist, DataMatrix{});

  DataMatrix inPlace = points;
  GenerateDistanceMatrix(inPlace, inPlace, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(inPlace[0], (Reals{0, 5, 4}));
  inPlace = points;
  GenerateDistanceMatrix(inPlace, IndexMatrix{{1, 2, 0}}, inPlace, STATS_DIST_EUCLIDEAN);
  EXPECT_EQ(inPlace, (DataMatrix{{5, 3, 4}}));
  GenerateDistanceMatrix(DataMatrix{{}}, dist, STATS_DIST_TANIMOTO);
  EXPECT_EQ(dist, DataMatrix{});
}

TEST(DistanceMatrices, EqualTheDefinitionBitForBitInEveryShape) {
  for (const std::size_t n : {1, 2, 7, 31, 32, 33, 255, 256, 257, 300})
    for (const std::size_t p : {1, 7, 8, 9, 17})
      for (const bool nasty : {false, true}) {
        DataMatrix points = normalPoints(n, p);
        if (nasty) {
          points[p / 2][n / 2] = kNaN;
          points[p - 1][0] = kInf;
          points[0][n - 1] = 1e200;
          for (auto& column : points) column[n / 3] = 0;
        }
        for (const auto type : kTypes) {
          DataMatrix dist(3, Reals(n, kNaN)), expected;
          GenerateDistanceMatrix(points, dist, type);
          studystats::definition::distanceMatrix(points, expected, type == STATS_DIST_TANIMOTO);
          EXPECT_TRUE(sameBits(dist, expected)) << n << " x " << p << ", type " << type << ", nasty " << nasty;

          IndexMatrix index(2);
          for (std::size_t r = 0; r < n; ++r) {
            index[0].push_back(std::int32_t(r * 7 % n));
            index[1].push_back(std::int32_t(r));
          }
          GenerateDistanceMatrix(points, index, dist, type);
          studystats::definition::distanceMatrix(points, index, expected, type == STATS_DIST_TANIMOTO);
          EXPECT_TRUE(sameBits(dist, expected)) << n << " x " << p << ", type " << type << ", index";
        }
      }
}

TEST(Distances, RefuseACallersErrorAndChangeNothing) {
  const DataMatrix ragged{{1, 2, 3}, {4, 5}}, fine{{1, 2}, {3, 4}}, none;
  const auto type = STATS_DIST_EUCLIDEAN;
  DataMatrix dist{{5}};
  IndexMatrix* const noIndex = nullptr;
  DataMatrix* const noMatrix = nullptr;
  for (const std::int32_t bad : {-1, 2, INT_MAX, INT_MIN}) {
    EXPECT_EQ(refusal([&] { CalculateDistance(ragged, bad, 0, type); }), invalid("CalculateDistance"));
    EXPECT_EQ(refusal([&] { CalculateDistance(ragged, 0, bad, type); }), invalid("CalculateDistance"));
    EXPECT_EQ(refusal([&] { CalculateDistance(ragged, bad, Reals{1, 2}, type); }), invalid("CalculateDistance"));
    EXPECT_EQ(refusal([&] {
                EuclideanDistanceSquared(ragged, bad, Reals{1, 2});
              }),
              invalid("EuclideanDistanceSquared"));
    EXPECT_EQ(refusal([&] {
                GenerateDistanceMatrix(fine, IndexMatrix{{0, 1}, {0, bad}}, dist, type);
              }),
              invalid("GenerateDistanceMatrix"));
  }
  EXPECT_EQ(refusal([&] { CalculateDistance(none, 0, -1, type); }), invalid("CalculateDistance"));
  EXPECT_EQ(refusal([&] { CalculateDistance(fine, 0, Reals{1}, type); }), invalid("CalculateDistance"));
  EXPECT_EQ(refusal([&] { CalculateDistance(Reals{1, 2}, Reals{1}, type); }), invalid("CalculateDistance"));
  EXPECT_EQ(refusal([&] { EuclideanDistanceSquared(fine, 0, Reals(3)); }), invalid("EuclideanDistanceSquared"));
  EXPECT_EQ(refusal([&] { EuclideanDistanceSquared(none, 0, Reals{1}); }), invalid("EuclideanDistanceSquared"));
  for (const DataMatrix& bad : {none, ragged}) {
    EXPECT_EQ(refusal([&] { GenerateDistanceMatrix(bad, dist, type); }), invalid("GenerateDistanceMatrix"));
    EXPECT_EQ(refusal([&] { GenerateDistanceMatrix(bad, IndexMatrix{}, dist, type); }),
              invalid("GenerateDistanceMatrix"));
  }
  EXPECT_EQ(refusal([&] {
              GenerateDistanceMatrix(fine, IndexMatrix{{0, 1}, {0}}, dist, type);
            }),
            invalid("GenerateDistanceMatrix"));
  EXPECT_EQ(refusal([&] { GetModulusSquared(ragged); }), invalid("GetModulusSquared"));
  for (const std::int32_t bad : {-1, INT_MIN}) {
    EXPECT_EQ(refusal([&] { ResizeDataMatrix(&dist, bad, 1, 0); }), invalid("ResizeDataMatrix"));
    EXPECT_EQ(refusal([&] { ResizeDataMatrix(&dist, 0, bad, 0); }), invalid("ResizeDataMatrix"));
  }
  EXPECT_EQ(refusal([&] { ResizeDataMatrix(noMatrix, 1, 1, 0); }), invalid("ResizeDataMatrix"));
  EXPECT_EQ(refusal([&] { ResizeIndexMatrix(noIndex, 1, 1, 0); }), invalid("ResizeIndexMatrix"));
  EXPECT_EQ(dist, DataMatrix{{5}});
}

}  // namespace
