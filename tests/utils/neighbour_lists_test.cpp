#include <gtest/gtest.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <climits>

#include "tests/definition/distances.h"
#include "tests/refusal.h"
#include "tests/utils/points.h"

namespace {

using namespace StatsDistanceUtils;
using namespace studystats::test;
using Numbers = std::vector<std::int32_t>;

IndexMatrix lists(const DataMatrix& points, std::int32_t k, bool fixedSize,
                  STATS_DIST_TYPE type = STATS_DIST_EUCLIDEAN) {
  IndexMatrix found(2, Numbers{99, 99});  // whatever was there before
  StatsClusterUtils::CreateNeighborLists(points, StatsMatrixUtils::RowCount(points), type, k, fixedSize, found);
  return found;
}

TEST(NeighbourLists, BreakTiesByNumberOrNotAtAll) {
  const DataMatrix line{{0, 1, 2, 3}}, pairs{{5, 1, 5, 1, 5}};
  EXPECT_EQ(lists(line, 1, true), (IndexMatrix{{1}, {0}, {1}, {2}}));
  EXPECT_EQ(lists(line, 1, false), (IndexMatrix{{1}, {0, 2}, {1, 3}, {2}}));
  for (const std::int32_t k : {3, 4, 5, INT_MAX})
    EXPECT_EQ(lists(line, k, true), (IndexMatrix{{1, 2, 3}, {0, 2, 3}, {0, 1, 3}, {0, 1, 2}}));
  EXPECT_EQ(lists(line, 0, false), IndexMatrix(4));
  EXPECT_EQ(lists(pairs, 0, false), (IndexMatrix{{2, 4}, {3}, {0, 4}, {1}, {0, 2}}));
  EXPECT_EQ(lists(pairs, 0, true), IndexMatrix(5));
  EXPECT_EQ(lists(pairs, 1, true), (IndexMatrix{{2}, {3}, {0}, {1}, {0}}));
  EXPECT_EQ(lists(pairs, 3, true), (IndexMatrix{{1, 2, 4}, {0, 2, 3}, {0, 1, 4}, {0, 1, 2}, {0, 1, 2}}));
  EXPECT_EQ(lists({{7}}, 3, true), IndexMatrix(1));
  EXPECT_EQ(lists({{7}}, 0, false), IndexMatrix(1));
  EXPECT_EQ(lists({}, 3, false), IndexMatrix());
  // A tie is one to eleven places: 1e-12 farther is, 1e-10 farther is not.
  EXPECT_EQ(lists({{0, 1, -1 - 1e-12, 1 + 1e-10}}, 1, false)[0], (Numbers{1, 2}));
}

// Points of all kinds: with ties and duplicates, with holes, coming nearer and going farther in the order of their
// numbers, so nearly equal that rounding leaves Tanimoto distances below 0.
std::vector<DataMatrix> pointsOfAllKinds(std::size_t n) {
  DataMatrix holes = gridPoints(n, 2, 9), extreme = normalPoints(n, 3), receding(1), approaching(1), nearlyEqual(5);
  for (std::size_t i = 0; i < n; i += 4) holes[i / 4 % 2][i] = kNaN;
  extreme[0][n / 2] = kInf;
  extreme[1][n - 1] = -kInf;
  extreme[2][n / 3] = 1e200;
  for (std::size_t i = 0; i < n; ++i) {
    receding[0].push_back(double(i * i));
    approaching[0].push_back(1.0 / double(i + 1));
    for (std::size_t c = 0; c < 5; ++c)
      nearlyEqual[c].push_back(0.1 * double(c + 1) * (1 + 2.2e-16 * double(i * (c + 5) % 7)));
  }
  return {normalPoints(n, 5), gridPoints(n, 2, 3), gridPoints(n, 9, 1),          holes, extreme, receding,
          approaching,        nearlyEqual,         {std::vector<double>(n, 4.0)}};
}

// Beside the definition, which looks at all distances of a point at once.
TEST(NeighbourLists, EqualBruteForceOnTiesDuplicatesAndNotANumbers) {
  for (const std::int32_t n : {2, 5, 33, 300}) {
    const Numbers ks = n < 100 ? Numbers{0, 1, 3, n - 1, n} : Numbers{0, 3, 40};
    const std::vector<DataMatrix> kinds = pointsOfAllKinds(std::size_t(n));
    for (std::size_t kind = 0; kind < kinds.size(); ++kind)
      for (const auto type : {STATS_DIST_EUCLIDEAN, STATS_DIST_TANIMOTO})
        for (const std::int32_t k : ks)
          for (const bool fixedSize : {false, true}) {
            IndexMatrix expected;
            studystats::definition::neighbourLists(kinds[kind], n, type == STATS_DIST_TANIMOTO, k, fixedSize, expected);
            EXPECT_EQ(lists(kinds[kind], k, fixedSize, type), expected)
                << n << " points of kind " << kind << ", type " << type << ", k " << k << ", fixed " << fixedSize;
          }
  }

  DataMatrix dist;
  GenerateDistanceMatrix(pointsOfAllKinds(33)[7], dist, STATS_DIST_TANIMOTO);
  EXPECT_LT(*std::min_element(dist[0].begin(), dist[0].end()), 0.0);
}

TEST(NeighbourLists, OfPointsThatAreNotNumbersAreEmptyAndTheOthersShorter) {
  const DataMatrix points{{0, kNaN, 1, 3}};
  EXPECT_EQ(lists(points, 3, true), (IndexMatrix{{2, 3}, {}, {0, 3}, {0, 2}}));
  EXPECT_EQ(lists(points, 3, false), (IndexMatrix{{2, 3}, {}, {0, 3}, {0, 2}}));
  EXPECT_EQ(lists(points, 1, true), (IndexMatrix{{2}, {}, {0}, {2}}));
  EXPECT_EQ(lists({{kInf, 1, 2}}, 1, true), (IndexMatrix{{1}, {2}, {1}}));  // infinitely far, but a number
}

TEST(NeighbourLists, OfPointsWithoutColumnsAreOfPointsAtOnePlace) {
  for (const auto type : {STATS_DIST_EUCLIDEAN, STATS_DIST_TANIMOTO})
    for (const bool fixedSize : {false, true}) {
      IndexMatrix found;
      StatsClusterUtils::CreateNeighborLists({}, 3, type, 1, fixedSize, found);
      EXPECT_EQ(found, fixedSize ? (IndexMatrix{{1}, {0}, {0}}) : (IndexMatrix{{1, 2}, {0, 2}, {0, 1}}));
      StatsClusterUtils::CreateNeighborLists({{1}, {}}, 0, type, 1, fixedSize, found);
      EXPECT_EQ(found, IndexMatrix{});
    }
}

TEST(NeighbourLists, LookOnlyAtThePointsAskedFor) {
  IndexMatrix found;
  StatsClusterUtils::CreateNeighborLists({{0, 5, 1}, {0, 5, 1, 9}}, 2, STATS_DIST_EUCLIDEAN, 2, true, found);
  EXPECT_EQ(found, (IndexMatrix{{1}, {0}}));

  const struct {
    DataMatrix points;
    std::int32_t n, k;
  } kRows[] = {{{{1, 2}}, 3, 1},  {{{1, 2}, {1}}, 2, 1}, {{{1, 2}}, -1, 1},      {{{1, 2}}, INT_MIN, 1},
               {{{1, 2}}, 2, -1}, {{{}}, 1, 1},          {{{1, 2}}, INT_MAX, 1}, {{{1, 2}}, 2, INT_MIN}};
  for (const auto& row : kRows) {
    EXPECT_EQ(refusal([&] {
                StatsClusterUtils::CreateNeighborLists(row.points, row.n, STATS_DIST_EUCLIDEAN, row.k, true, found);
              }),
              invalid("CreateNeighborLists"));
    EXPECT_EQ(found.size(), 2U);
  }
}

}  // namespace
