#include <gtest/gtest.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <map>

#include "tests/refusal.h"
#include "tests/utils/points.h"

namespace {

using namespace StatsClusterUtils;
using namespace studystats::test;
using Numbers = std::vector<std::int32_t>;
using Reals = std::vector<double>;

struct History {
  Numbers leafOrder;
  Reals dist;
  Numbers a, b, centre;

  Numbers labels(double threshold) const {
    Numbers found(leafOrder.size() + 1, 77);
    MergeClusters(leafOrder, dist, a, b, threshold, found);
    EXPECT_EQ(found.back(), 77);
    found.pop_back();
    return found;
  }
  std::int32_t cut(double threshold, Numbers& clusterOf) const {
    return CalculateClusters(leafOrder, dist, a, b, threshold, clusterOf);
  }
  std::int32_t centres(Numbers clusterOf, Numbers& found) const {
    return CalculateCentres(leafOrder, dist, a, b, centre, clusterOf, found);
  }
};

using Linkage = std::function<double(const Reals& distances)>;

double single(const Reals& d) { return *std::min_element(d.begin(), d.end()); }
double complete(const Reals& d) { return *std::max_element(d.begin(), d.end()); }
double average(const Reals& d) {
  double sum = 0;
  for (const double x : d) sum += x;
  return sum / double(d.size());
}

// Of the points of a group the one with the smallest sum of distances from the others.
std::int32_t medoid(const DataMatrix& dist, const Numbers& group) {
  std::map<double, std::int32_t> bySum;
  for (const std::int32_t i : group) {
    double sum = 0;
    for (const std::int32_t j : group) sum += dist[std::size_t(i)][std::size_t(j)];
    bySum.insert({sum, i});
  }
  return bySum.begin()->second;
}

// Groups joined two by two, the closest first, by looking at all pairs each time.
History agglomerate(const DataMatrix& points, const Linkage& linkage) {
  DataMatrix dist;
  StatsDistanceUtils::GenerateDistanceMatrix(points, dist, StatsDistanceUtils::STATS_DIST_EUCLIDEAN);
  std::vector<Numbers> groups;
  for (std::size_t i = 0; i < dist.size(); ++i) groups.push_back({std::int32_t(i)});
  const auto between = [&](const Numbers& g, const Numbers& h) {
    Reals d;
    for (const std::int32_t i : g)
      for (const std::int32_t j : h) d.push_back(dist[std::size_t(i)][std::size_t(j)]);
    return linkage(d);
  };

  History history;
  while (groups.size() > 1) {
    std::size_t g = 0, h = 1;
    for (std::size_t i = 0; i < groups.size(); ++i)
      for (std::size_t j = i + 1; j < groups.size(); ++j)
        if (between(groups[i], groups[j]) < between(groups[g], groups[h])) g = i, h = j;
    // Averages of equal distances may differ in their last place: raised, so that the history ascends.
    const double before = history.dist.empty() ? 0 : history.dist.back();
    history.dist.push_back(std::max(before, between(groups[g], groups[h])));
    if (groups.size() % 3 == 0) std::swap(groups[g], groups[h]);  // either may lie in front
    history.a.push_back(groups[g].back() + 1);
    history.b.push_back(groups[h][groups[h].size() / 2] + 1);
    groups[g].insert(groups[g].end(), groups[h].begin(), groups[h].end());
    history.centre.push_back(medoid(dist, groups[g]) + 1);
    groups.erase(groups.begin() + std::ptrdiff_t(h));
  }
  for (const std::int32_t i : groups[0]) history.leafOrder.push_back(i + 1);
  return history;
}

// The cut by another road: the connected components of the merges at or below the threshold. A component is named by
// the point whose name went from group to group, and has the centre of its last merge.
struct Components {
  Numbers name, centre;  // of each point
  std::int32_t count;

  Components(const History& h, double threshold) : count(std::int32_t(h.leafOrder.size())) {
    for (std::int32_t i = 0; i < count; ++i) {
      name.push_back(i + 1);
      centre.push_back(i);
    }
    for (std::size_t m = 0; m < h.dist.size(); ++m) {
      if (h.dist[m] > threshold) continue;
      const std::int32_t into = name[std::size_t(h.a[m]) - 1], from = name[std::size_t(h.b[m]) - 1];
      std::replace(name.begin(), name.end(), from, into);
      for (std::size_t i = 0; i < name.size(); ++i)
        if (name[i] == into) centre[i] = h.centre[m] - 1;
      --count;
    }
  }
};

TEST(HierarchyCut, GivesTheConnectedComponentsOfTheMergesBelowIt) {
  const DataMatrix kPoints[] = {
      normalPoints(30, 2), gridPoints(40, 2, 4), gridPoints(25, 1, 60), {{3, 3, 3, 3}}, {{1}}};
  for (const Linkage& linkage : {Linkage(single), Linkage(complete), Linkage(average)})
    for (const DataMatrix& points : kPoints) {
      const History history = agglomerate(points, linkage);
      Reals thresholds{-1, 0, kInf};
      for (const double d : history.dist) thresholds.insert(thresholds.end(), {d, std::nextafter(d, 0), d * 1.01});
      for (const double threshold : thresholds) {
        const Components expected(history, threshold);
        EXPECT_EQ(history.labels(threshold), expected.name);

        Numbers clusterOf{99}, centres{99, 99};
        ASSERT_EQ(history.cut(threshold, clusterOf), expected.count) << threshold;
        ASSERT_EQ(history.centres(clusterOf, centres), expected.count);
        ASSERT_EQ(std::ssize(centres), expected.count);
        std::int32_t last = 0;
        for (std::size_t q = 0; q < history.leafOrder.size(); ++q) {
          const auto point = std::size_t(history.leafOrder[q]) - 1;
          const bool begins = q == 0 || expected.name[point] != last;
          const std::int32_t before =
              q == 0 ? expected.count + 1 : clusterOf[std::size_t(history.leafOrder[q - 1]) - 1];
          EXPECT_EQ(clusterOf[point], begins ? before - 1 : before);
          EXPECT_EQ(centres[std::size_t(expected.count - clusterOf[point])], expected.centre[point]);
          last = expected.name[point];
        }
      }
    }
}

TEST(HierarchyCut, TakesAnEndMarkAndEndsWithTheHistory) {
  const History whole = agglomerate(gridPoints(20, 2, 4), average);
  for (std::size_t nMerges = 0; nMerges < 20; ++nMerges)
    for (const bool marked : {false, true}) {
      History some = whole;
      some.dist.resize(nMerges);
      some.b.resize(nMerges);  // the shortest list counts
      if (marked) {
        some.dist.push_back(0);
        some.a.resize(nMerges + 1);
        some.a[nMerges] = 0;
        some.b.push_back(INT_MAX);
      }
      Numbers clusterOf, centres;
      EXPECT_EQ(some.cut(kInf, clusterOf), std::int32_t(20 - nMerges));
      EXPECT_EQ(some.centres(clusterOf, centres), std::int32_t(20 - nMerges));
      EXPECT_EQ(clusterOf[std::size_t(whole.leafOrder.back()) - 1], 1);

      // A cluster that no merge of the history forms: its first point.
      EXPECT_EQ(some.centres(Numbers(20, 5), centres), 1);
      EXPECT_EQ(centres[0], (nMerges == 19 ? whole.centre[18] : whole.leafOrder[0]) - 1);
    }
  Numbers none{4}, centres{4};
  EXPECT_EQ(History().cut(1, none), 0);
  EXPECT_TRUE(none.empty());
  EXPECT_EQ(History().centres({}, centres), 0);
  EXPECT_EQ(centres, Numbers{4});
}

TEST(HierarchyCut, StopsAtADistanceThatIsNoNumberAndSkipsVoidMerges) {
  History history{{3, 1, 2, 4}, {1, kNaN, 2}, {3, 3, 2}, {1, 2, 4}, {1, 2, 3}};
  EXPECT_EQ(history.labels(kInf), (Numbers{3, 2, 3, 4}));
  history.dist = {1, 1, 2};
  history.b[1] = -7;
  EXPECT_EQ(history.labels(kInf), (Numbers{3, 2, 3, 2}));
  // Of n points no more than n merges are read.
  EXPECT_EQ((History{{1, 2}, {0, 0, 0}, {0, 0, 1}, {0, 0, 2}, {}}).labels(kInf), (Numbers{1, 2}));
  // Labels given by hand: equal ones apart are two clusters.
  Numbers centres;
  EXPECT_EQ(history.centres({7, 8, 7, 7}, centres), 3);
  EXPECT_EQ(centres, (Numbers{0, 1, 3}));
}

TEST(HierarchyCut, MayWriteIntoWhatItReads) {
  const History whole = agglomerate(gridPoints(12, 2, 3), complete);
  Numbers expected;
  const std::int32_t count = whole.cut(2, expected);
  for (Numbers History::*list : {&History::leafOrder, &History::a, &History::b}) {
    History same = whole;
    EXPECT_EQ(same.cut(2, expected), count);
    EXPECT_EQ(CalculateClusters(same.leafOrder, same.dist, same.a, same.b, 2, same.*list), count);
    EXPECT_EQ(same.*list, expected);
    same = whole;
    MergeClusters(same.leafOrder, same.dist, same.a, same.b, 2, same.leafOrder);
    EXPECT_EQ(same.leafOrder, whole.labels(2));
  }
}

TEST(HierarchyCut, RefusesWhatIsNoHistoryAndChangesNothing) {
  const History fine{{1, 2, 3}, {1, 2}, {1, 1}, {2, 3}, {1, 1}};
  std::vector<History> noHistories, noCentres;
  const auto with = [&fine](Numbers History::*list, const Numbers& bad) {
    History history = fine;
    history.*list = bad;
    return history;
  };
  for (const Numbers& order : {Numbers{1, 2, 2}, {0, 1, 2}, {1, 2, 4}, {INT_MIN, 1, INT_MAX}})
    noHistories.push_back(with(&History::leafOrder, order));
  for (const std::int32_t beyond : {4, INT_MAX}) {
    noHistories.push_back(with(&History::a, {1, beyond}));
    noHistories.push_back(with(&History::b, {beyond, 3}));
    noCentres.push_back(with(&History::centre, {1, beyond}));
  }
  noCentres.push_back(with(&History::centre, {1, 0}));
  noCentres.push_back(with(&History::leafOrder, {3, 2, 1}));  // the groups in the wrong order
  noCentres.push_back(with(&History::b, {1, 3}));             // a point joined to itself

  Numbers labels{7, 7, 7}, clusterOf{7}, centres{7};
  for (const History& h : noHistories) {
    EXPECT_EQ(refusal([&] { MergeClusters(h.leafOrder, h.dist, h.a, h.b, 9, labels); }), invalid("MergeClusters"));
    EXPECT_EQ(refusal([&] { h.cut(9, clusterOf); }), invalid("CalculateClusters"));
    EXPECT_EQ(refusal([&] { h.centres({4, 4, 4}, centres); }), invalid("CalculateCentres"));
  }
  for (const History& h : noCentres)
    EXPECT_EQ(refusal([&] { h.centres({4, 4, 4}, centres); }), invalid("CalculateCentres"));
  EXPECT_EQ(refusal([&] { MergeClusters(fine.leafOrder, fine.dist, fine.a, fine.b, 9, clusterOf); }),
            invalid("MergeClusters"));
  EXPECT_EQ(refusal([&] { fine.centres({1, 1}, centres); }), invalid("CalculateCentres"));
  EXPECT_TRUE(labels == Numbers(3, 7) && clusterOf == Numbers{7} && centres == Numbers{7});

  // What the cut does not reach is not looked at.
  EXPECT_EQ(with(&History::b, {2, INT_MAX}).labels(1.5), (Numbers{1, 1, 3}));
  EXPECT_EQ(with(&History::a, {INT_MAX, INT_MAX}).centres({1, 2, 3}, centres), 3);
  EXPECT_EQ(centres, (Numbers{0, 1, 2}));
}

}  // namespace
