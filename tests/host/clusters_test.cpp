// Clusters through the host layer: against R, against their own definitions by brute force, and on nasty tables.
#include <studystats/analyses.h>
#include <studystats/host.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <set>

#include "host/cluster/agglomeration.h"
#include "host/cluster/k_means.h"
#include "host/cluster/silhouettes.h"

namespace studystats {
namespace {

constexpr Linkage kLinkages[] = {Linkage::Ward, Linkage::Average, Linkage::Complete, Linkage::Single};

Table example(const std::string& name) { return readTable(std::string(STUDYSTATS_SOURCE_DIR) + "/examples/" + name); }

const ProgressCallback kNobody;
const StopSignal kNever;

std::vector<std::size_t> sizesOf(const Clusters& result) {
  std::vector<std::size_t> sizes;
  for (const Cluster& cluster : result.clusters) sizes.push_back(cluster.rows);
  return sizes;
}

const Remark* remarkOf(const Clusters& result, const std::string& code) {
  const auto it = std::find_if(result.remarks.begin(), result.remarks.end(),
                               [&](const Remark& remark) { return remark.code == code; });
  return it == result.remarks.end() ? nullptr : &*it;
}

std::string sentence(const Table& table, const ClusterOptions& options) {
  try {
    cluster(table, options);
  } catch (const Error& error) {
    return std::to_string(error.exitStatus()) + ": " + error.what();
  }
  return "nothing was thrown";
}

Table tableOf(const std::vector<std::vector<double>>& columns) {
  Table table{.name = "t"};
  for (const auto& column : columns)
    table.columns.push_back({.name = "x" + std::to_string(table.columns.size()), .numbers = column});
  return table;
}

// Points on a lattice, some of them twice: most distances tie.
DataMatrix lattice() {
  DataMatrix points(2);
  for (int x = 0; x < 6; ++x)
    for (int y = 0; y < 4; ++y)
      for (int copy = 0; copy < 1 + (x == y); ++copy) {
        points[0].push_back(x);
        points[1].push_back(y);
      }
  return points;
}

DataMatrix randomPoints(std::size_t n, std::size_t p, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  DataMatrix points(p, std::vector<double>(n));
  for (auto& column : points)
    for (double& value : column) value = normal(random);
  return points;
}

double distanceBetween(const DataMatrix& points, std::size_t i, std::size_t j) {
  double squares = 0;
  for (const auto& column : points) squares += (column[i] - column[j]) * (column[i] - column[j]);
  return std::sqrt(squares);
}

using Rows = std::vector<std::size_t>;

// The distance between two groups, as each linkage defines it.
double betweenGroups(const DataMatrix& points, const Rows& a, const Rows& b, Linkage linkage) {
  double sum = 0, least = std::numeric_limits<double>::infinity(), most = 0;
  for (const std::size_t i : a)
    for (const std::size_t j : b) {
      const double distance = distanceBetween(points, i, j);
      sum += distance;
      least = std::min(least, distance);
      most = std::max(most, distance);
    }
  const auto n = static_cast<double>(a.size()), m = static_cast<double>(b.size());
  if (linkage == Linkage::Single) return least;
  if (linkage == Linkage::Complete) return most;
  if (linkage == Linkage::Average) return sum / (n * m);
  double squares = 0;
  for (const auto& column : points) {
    double difference = 0;
    for (const std::size_t i : a) difference += column[i] / n;
    for (const std::size_t j : b) difference -= column[j] / m;
    squares += difference * difference;
  }
  return std::sqrt(2 * n * m / (n + m) * squares);
}

History historyOf(const DataMatrix& points, Linkage linkage) {
  Watch watch(kNobody, kNever);
  return agglomerate(points, StatsDistanceUtils::STATS_DIST_EUCLIDEAN, linkage, watch, {});
}

// Expected: R 4.2.2, hclust(dist(scale(iris[, 1:4])), ...), its heights and cutree.
TEST(LinkagesOfIris, HaveTheHeightsAndClustersOfR) {
  const struct {
    Linkage linkage;
    double sum, last[4];
    std::vector<std::size_t> three, six;
  } cases[] = {
      {Linkage::Ward,
       164.758384639289,
       {6.58574936620642, 7.97802015203123, 12.5946502638786, 27.1589265236156},
       {71, 49, 30},
       {45, 29, 26, 25, 20, 5}},
      {Linkage::Average,
       82.5152466229243,
       {2.11637617315254, 2.74000285267434, 3.01532664199029, 3.64791248751346},
       {97, 50, 3},
       {76, 45, 21, 4, 3, 1}},
      {Linkage::Complete,
       112.502051345626,
       {3.79211039151058, 4.07224791766312, 5.73906577828268, 6.5075225060657},
       {77, 49, 24},
       {66, 42, 19, 11, 7, 5}},
      {Linkage::Single,
       53.3287231618719,
       {0.91954858529597, 0.943224898892106, 1.38922509363362, 1.55335915855837},
       {100, 49, 1},
       {96, 49, 2, 1, 1, 1}},
  };
  const Table iris = example("iris.csv");
  for (const auto& one : cases) {
    const Clusters three = cluster(iris, {.linkage = one.linkage, .clusters = 3});
    const std::vector<ClusterMerge>& merges = three.history->merges;
    ASSERT_EQ(merges.size(), 149u);
    double sum = 0;
    for (const ClusterMerge& merge : merges) sum += merge.height;
    EXPECT_NEAR(sum, one.sum, 1e-10);
    for (std::size_t m = 0; m < 4; ++m) EXPECT_NEAR(merges[145 + m].height, one.last[m], 1e-12) << m;
    EXPECT_EQ(sizesOf(three), one.three);
    EXPECT_EQ(sizesOf(cluster(iris, {.linkage = one.linkage, .clusters = 6})), one.six);
  }
}

// Expected: R 4.2.2 with package cluster, the 131 columns that are left scaled, hclust(..., "ward.D2"), cutree(..., 6),
// silhouette().
TEST(ClustersOfBloodbrain, AreDescribedAsByR) {
  const Clusters result = cluster(example("bloodbrain.csv"), {.clusters = 6, .data = {.exclude = {"logBBB"}}});
  ASSERT_EQ(result.used.descriptors.size(), 131u);
  const struct {
    std::size_t rows;
    const char* representative;
    double spread, farthest, silhouette;
    std::size_t misplaced;
  } expected[] = {
      {60, "compound 30", 8.2094567729584, 11.6805724652194, 0.1465117065017113, 7},
      {51, "compound 71", 8.18953515575532, 13.60899170777173, 0.1434673400515588, 4},
      {37, "compound 109", 10.00991102566731, 17.94947090024973, 0.0749538773466461, 14},
      {30, "compound 97", 8.06698506356506, 11.18529162753453, 0.1325392492712294, 2},
      {25, "compound 183", 11.3134655274229, 25.1779943760131, 0.0637401480755453, 5},
      {5, "compound 186", 6.93319230210668, 8.17497164975425, 0.4796531138261159, 0},
  };
  ASSERT_EQ(result.clusters.size(), 6u);
  for (std::size_t k = 0; k < 6; ++k) {
    const Cluster& found = result.clusters[k];
    EXPECT_EQ(found.rows, expected[k].rows);
    EXPECT_EQ(found.representative, expected[k].representative);
    EXPECT_NEAR(found.spread, expected[k].spread, 1e-10);
    EXPECT_NEAR(found.farthest, expected[k].farthest, 1e-10);
    EXPECT_NEAR(*found.silhouette, expected[k].silhouette, 1e-12);
    EXPECT_EQ(found.misplaced, expected[k].misplaced);
  }
  EXPECT_NEAR(*result.betweenShare, 0.389164096792671, 1e-12);
  EXPECT_NEAR(*result.silhouette, 0.129080658383241, 1e-12);
  EXPECT_NEAR(*result.cut->below, 45.4600031975536, 1e-10);
  EXPECT_NEAR(*result.cut->above, 46.0673650605623, 1e-10);
  const double silhouettes[] = {0.1906196379, 0.1883499740, 0.1149540537, 0.1297431017, 0.1290806584, 0.1382065521,
                                0.1348384190, 0.1416200395, 0.1504215933, 0.1493394859, 0.1550199629};
  ASSERT_EQ(result.silhouettes.size(), 11u);
  for (std::size_t s = 0; s < 11; ++s) EXPECT_NEAR(result.silhouettes[s].silhouette, silhouettes[s], 1e-10) << s;
  ASSERT_TRUE(remarkOf(result, "no-clear-groups"));
  EXPECT_EQ(remarkOf(result, "no-clear-groups")->severity, Severity::Warning);

  const std::string text = summary(result);
  for (const char* line :
       {"Hierarchical clustering (Ward, Euclidean) of 208 rows on 131 descriptors, autoscaled\n",
        "Cut into 6 clusters at height 46.1 (the merges at 45.5 and 46.1 differ by 1 %: a weak cut)\n",
        "      1    60  compound 30        8.2      11.7        0.15    7  rncg +0.9, vsa_acc -0.8\n",
        "\nsilhouette  0.19  0.19  0.11  0.13  0.13  0.14  0.13  0.14  0.15  0.15  0.16\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
}

// At every step the two groups joined are those that the definition says are nearest; ties may be joined in any order.
TEST(Histories, JoinTheNearestGroupsAndLieInLeafOrderThoughDistancesTie) {
  for (const DataMatrix& points : {lattice(), randomPoints(40, 3, 5), randomPoints(2, 1, 6)})
    for (const Linkage linkage : kLinkages) {
      const History history = historyOf(points, linkage);
      const std::size_t n = points[0].size();
      ASSERT_EQ(history.merges(), n - 1);
      std::vector<std::size_t> place(n, n);
      for (std::size_t q = 0; q < n; ++q) place[static_cast<std::size_t>(history.leafOrder[q] - 1)] = q;
      ASSERT_EQ(std::set<std::size_t>(place.begin(), place.end()).size(), n);

      std::map<std::size_t, Rows> groups;  // by a number of their own
      std::vector<std::size_t> groupOf(n);
      for (std::size_t i = 0; i < n; ++i) groups[groupOf[i] = i] = {i};
      for (std::size_t m = 0; m + 1 < n; ++m) {
        const std::size_t a = groupOf[static_cast<std::size_t>(history.a[m] - 1)];
        const std::size_t b = groupOf[static_cast<std::size_t>(history.b[m] - 1)];
        ASSERT_NE(a, b);
        EXPECT_NEAR(history.heights[m], betweenGroups(points, groups[a], groups[b], linkage), 1e-11);
        EXPECT_GE(history.heights[m], m > 0 ? history.heights[m - 1] : 0.0);
        for (auto x = groups.begin(); x != groups.end(); ++x)
          for (auto y = std::next(x); y != groups.end(); ++y)
            EXPECT_GE(betweenGroups(points, x->second, y->second, linkage), history.heights[m] - 1e-11);
        const auto first = [&](const Rows& rows, bool last) {
          std::vector<std::size_t> places;
          for (const std::size_t i : rows) places.push_back(place[i]);
          return last ? *std::max_element(places.begin(), places.end())
                      : *std::min_element(places.begin(), places.end());
        };
        EXPECT_EQ(first(groups[a], true) + 1, first(groups[b], false)) << "one run behind the other";
        EXPECT_EQ(first(groups[b], true) - first(groups[a], false) + 1, groups[a].size() + groups[b].size());
        EXPECT_EQ(history.sizes[m], groups[a].size() + groups[b].size());
        for (const std::size_t i : groups[b]) groupOf[i] = a;
        groups[a].insert(groups[a].end(), groups[b].begin(), groups[b].end());
        groups.erase(b);
      }
    }
}

TEST(Cuts, GiveEveryNumberOfClustersAndThoseBelowAThreshold) {
  const DataMatrix points = lattice();
  const std::size_t n = points[0].size();
  for (const Linkage linkage : kLinkages) {
    const History history = historyOf(points, linkage);
    std::vector<std::int32_t> finer(n);
    std::iota(finer.begin(), finer.end(), 0);
    for (std::size_t k = n; k >= 1; --k) {
      const Partition partition = cutInto(history, k);
      std::set<std::pair<std::int32_t, std::int32_t>> nested;
      for (std::size_t i = 0; i < n; ++i) nested.insert({finer[i], partition.of[i]});
      EXPECT_EQ(partition.clusters, k);
      EXPECT_EQ(std::set<std::int32_t>(partition.of.begin(), partition.of.end()).size(), k);
      EXPECT_EQ(nested.size(), std::min(n, k + 1)) << "clusters are joined, never divided";
      const std::vector<std::size_t> sizes = clusterSizes(partition);
      EXPECT_TRUE(std::is_sorted(sizes.rbegin(), sizes.rend()));
      finer = partition.of;

      const double height = k == n ? 0.0 : history.heights[n - k - 1];  // ties go with it
      const auto above = std::upper_bound(history.heights.begin(), history.heights.end(), height);
      EXPECT_EQ(cutAt(history, height).clusters, n - static_cast<std::size_t>(above - history.heights.begin()));

      const std::vector<std::int32_t> centres = centresOf(history, partition, points, {});
      EXPECT_EQ(centres, rowsNearestToMeans(partition, points, {}));
    }
  }
}

// The definition, row by row.
double silhouetteByDefinition(const DataMatrix& points, const Partition& partition, std::size_t i) {
  std::map<std::int32_t, std::pair<double, double>> sums;
  for (std::size_t j = 0; j < partition.of.size(); ++j) {
    if (j == i) continue;
    sums[partition.of[j]].first += distanceBetween(points, i, j);
    sums[partition.of[j]].second += 1;
  }
  if (!sums.contains(partition.of[i])) return 0;
  double b = std::numeric_limits<double>::infinity();
  for (const auto& [other, sum] : sums)
    if (other != partition.of[i]) b = std::min(b, sum.first / sum.second);
  const double a = sums[partition.of[i]].first / sums[partition.of[i]].second;
  return a == b ? 0 : (b - a) / std::max(a, b);
}

// More rows than a block of distances; a row alone; rows that are equal.
TEST(SilhouettesOfRows, FollowTheirDefinition) {
  DataMatrix points = randomPoints(700, 3, 9);
  for (auto& column : points) column[650] = column[3] = column[1];
  std::vector<Partition> partitions;
  for (const std::size_t k : {2u, 5u, 40u}) {
    Partition partition{k, std::vector<std::int32_t>(700)};
    for (std::size_t i = 0; i < 700; ++i) partition.of[i] = static_cast<std::int32_t>(i % (k - 1));
    partition.of[77] = static_cast<std::int32_t>(k - 1);  // alone
    partitions.push_back(partition);
  }
  Partition equal{2, std::vector<std::int32_t>(700, 0)};  // the rows of one cluster are one point
  for (const std::size_t i : {1u, 3u, 650u}) equal.of[i] = 1;
  partitions.push_back(equal);
  std::vector<const Partition*> judged;
  for (const Partition& partition : partitions) judged.push_back(&partition);

  std::vector<std::int32_t> all(700), some{0, 1, 77, 600, 650, 699};
  std::iota(all.begin(), all.end(), 0);
  Watch watch(kNobody, kNever);
  const auto ofAll = silhouettesOf(judged, points, {}, all, watch, {});
  const auto ofSome = silhouettesOf(judged, points, {}, some, watch, {});
  for (std::size_t s = 0; s < partitions.size(); ++s) {
    double sum = 0;
    for (std::size_t i = 0; i < 700; ++i) {
      const double expected = silhouetteByDefinition(points, partitions[s], i);
      EXPECT_NEAR(ofAll[s].values[i], expected, 1e-12) << s << ' ' << i;
      sum += expected;
    }
    EXPECT_NEAR(ofAll[s].mean, sum / 700, 1e-12);
    for (std::size_t q = 0; q < some.size(); ++q)
      EXPECT_EQ(ofSome[s].values[q], ofAll[s].values[static_cast<std::size_t>(some[q])]);
  }
  EXPECT_EQ(judgedRows(20000).size(), 20000u);
  EXPECT_LT(judgedRows(100000).size() * 100000, std::size_t{500000000});
}

PreparedClusters preparedOf(const DataMatrix& points) {
  PreparedClusters prepared;
  prepared.points = points;
  prepared.rows.resize(points[0].size());
  for (std::size_t i = 0; i < prepared.rows.size(); ++i)
    for (const auto& column : points) prepared.rows[i].push_back(column[i]);
  return prepared;
}

// From starts that leave clusters empty, too: positions that no row is nearest to.
TEST(KMeansRounds, NeverRaiseTheirCriterionAndLeaveNoClusterEmpty) {
  bool reseeded = false;
  for (std::uint64_t seed = 1; seed <= 30; ++seed) {
    const DataMatrix points = seed % 3 == 0 ? lattice() : randomPoints(120, 4, seed);
    const PreparedClusters prepared = preparedOf(points);
    DataMatrix positions = randomPoints(7, points.size(), seed + 100);
    for (auto& column : positions) column[3] *= 1000;
    const KMeansRun run = settle(prepared, positions, [](std::size_t) {});
    reseeded |= run.reseeded;
    ASSERT_TRUE(run.settled);
    for (std::size_t r = 1; r < run.criteria.size(); ++r)
      EXPECT_LE(run.criteria[r], run.criteria[r - 1] * (1 + 1e-14)) << seed << ' ' << r;
    const std::vector<std::size_t> sizes = clusterSizes(run.partition);
    EXPECT_EQ(std::count(sizes.begin(), sizes.end(), 0u), 0) << seed;

    const DataMatrix means = clusterMeans(run.partition, points);
    double criterion = 0;
    for (std::size_t i = 0; i < prepared.size(); ++i) {
      std::vector<double> squares(7, 0.0);
      for (std::size_t k = 0; k < 7; ++k)
        for (std::size_t j = 0; j < points.size(); ++j) squares[k] += std::pow(points[j][i] - means[j][k], 2);
      const double own = squares[static_cast<std::size_t>(run.partition.of[i])];
      EXPECT_LE(own, *std::min_element(squares.begin(), squares.end()) + 1e-12) << "nearest to its own mean";
      criterion += own;
    }
    EXPECT_NEAR(run.criteria.back(), criterion, 1e-9);
  }
  EXPECT_TRUE(reseeded);
  // Nothing is near 1000: the row at 10, farthest from 0, takes the empty cluster; 0 and 1 have their mean at 0.5.
  const KMeansRun run = settle(preparedOf({{0, 1, 10}}), {{0, 1000}}, [](std::size_t) {});
  EXPECT_EQ(run.criteria, std::vector<double>{0.5});
}

// Expected: R 4.2.2, kmeans(scale(iris[, 1:4]), k, nstart = 200, algorithm = "Lloyd"), silhouette().
TEST(KMeansOfIris, FindTheBestOfRAndAreRepeatable) {
  const Table iris = example("iris.csv");
  const struct {
    int clusters;
    double within;
    std::vector<std::size_t> sizes;
  } cases[] = {{2, 220.879293598589, {100, 50}}, {3, 138.888359717351, {53, 50, 47}}};
  for (const auto& one : cases) {
    const Clusters result = cluster(iris, {.method = ClusterMethod::KMeans, .clusters = one.clusters, .restarts = 40});
    EXPECT_NEAR(result.starts->criteria.back(), one.within, 1e-9);
    EXPECT_EQ(sizesOf(result), one.sizes);
  }
  const ClusterOptions options{.method = ClusterMethod::KMeans, .clusters = 3, .restarts = 40, .seed = 7};
  const Clusters first = cluster(iris, options);
  EXPECT_NEAR(*first.silhouette, 0.459948239205186, 1e-12);
  EXPECT_NEAR(*first.betweenShare, 0.766965839400417, 1e-12);
  Nmrrst();
  for (int draw = 0; draw < 5; ++draw) Nmrand(0);  // what others drew before does not matter
  EXPECT_EQ(toJson(cluster(iris, options)), toJson(first));
  // The silhouettes that are shown without a choice are those of the clusters that the choice gives.
  ClusterOptions uncut = options;
  uncut.clusters = 0;
  const Clusters tried = cluster(iris, uncut);
  EXPECT_TRUE(tried.clusters.empty());
  EXPECT_EQ(tried.silhouettes[1].silhouette, *first.silhouette);
}

TEST(Clusters, AreNeverChosenInSilence) {
  for (const ClusterMethod method : {ClusterMethod::Hierarchical, ClusterMethod::KMeans}) {
    const Clusters result = cluster(example("iris.csv"), {.method = method, .restarts = 10});
    EXPECT_TRUE(result.clusters.empty());
    EXPECT_EQ(result.silhouettes.size(), 11u);
    for (const ClusterRow& row : result.rows) EXPECT_FALSE(row.cluster);
    EXPECT_NE(summary(result).find("--clusters K"), std::string::npos);
    EXPECT_EQ(remarkOf(result, "no-clear-groups"), nullptr);
  }
}

// Inserts two strangers, one of them far away.
Table withStrangers(Table table) {
  for (TableColumn& column : table.columns) {
    if (column.kind == ColumnKind::Text) {
      column.texts.insert(column.texts.begin() + 40, "stranger");
      column.texts.push_back("stranger 2");
    } else {
      column.numbers.insert(column.numbers.begin() + 40, 1e4);
      column.numbers.push_back(column.numbers[3]);
    }
  }
  return table;
}

TEST(Clusters, AreUntouchedByRowsThatAreOnlyPlaced) {
  const Table iris = example("iris.csv"), longer = withStrangers(iris);
  const ClusterOptions cases[] = {{.clusters = 4},
                                  {.linkage = Linkage::Single, .threshold = 0.8},
                                  {.method = ClusterMethod::KMeans, .clusters = 4},
                                  {.method = ClusterMethod::Neighbours, .neighbours = 3}};
  for (const ClusterOptions& options : cases) {
    ClusterOptions more = options;
    more.data.test.rows = {40, 151};
    const Clusters plain = cluster(iris, options), placed = cluster(longer, more);
    ASSERT_EQ(placed.rows.size(), 152u);
    for (std::size_t i = 0; i < 150; ++i) {
      const ClusterRow &x = plain.rows[i], &y = placed.rows[i];
      EXPECT_EQ(x.name, y.name);
      EXPECT_EQ(x.cluster, y.cluster);
      EXPECT_EQ(x.distance, y.distance);
      EXPECT_EQ(x.silhouette, y.silhouette);
      ASSERT_EQ(x.neighbours.size(), y.neighbours.size());
      for (std::size_t q = 0; q < x.neighbours.size(); ++q) {
        EXPECT_EQ(x.neighbours[q].row, y.neighbours[q].row);
        EXPECT_EQ(x.neighbours[q].distance, y.neighbours[q].distance);
      }
    }
    EXPECT_EQ(plain.silhouette, placed.silhouette);
    EXPECT_EQ(plain.betweenShare, placed.betweenShare);
    EXPECT_TRUE(remarkOf(placed, "rows-placed"));

    const ClusterRow& twin = placed.rows[151];  // of the fourth row
    EXPECT_EQ(twin.role, Role::Predicted);
    if (options.method == ClusterMethod::Neighbours) {
      EXPECT_EQ(twin.neighbours[0].row, 3u);
      EXPECT_EQ(twin.neighbours[0].distance, 0);
    } else {
      std::vector<double> distances;  // from the means, in prepared units
      for (const Cluster& one : placed.clusters) {
        double squares = 0;
        for (std::size_t j = 0; j < 4; ++j)
          squares += std::pow((iris.columns[j + 1].numbers[3] - one.means[j]) / placed.used.scale[j], 2);
        distances.push_back(std::sqrt(squares));
      }
      EXPECT_NEAR(twin.distance, distances[*twin.cluster], 1e-12);
      EXPECT_LE(distances[*twin.cluster], *std::min_element(distances.begin(), distances.end()) + 1e-12);
    }
  }
}

TEST(NeighbourLists, HoldTheNearestRowsNearestFirst) {
  const Table table = tableOf({{0, 1, 3, 3, 10, 2}});
  const Clusters kept =
      cluster(table, {.method = ClusterMethod::Neighbours, .neighbours = 2, .data = {.scaling = Scaling::None}});
  const std::vector<std::vector<std::pair<std::size_t, double>>> expected = {
      {{1, 1}, {5, 2}}, {{0, 1}, {5, 1}}, {{3, 0}, {5, 1}},
      {{2, 0}, {5, 1}}, {{2, 7}, {3, 7}}, {{1, 1}, {2, 1}, {3, 1}}};
  for (std::size_t i = 0; i < 6; ++i) {
    std::vector<std::pair<std::size_t, double>> found;
    for (const Neighbour& neighbour : kept.rows[i].neighbours) found.push_back({neighbour.row, neighbour.distance});
    EXPECT_EQ(found, expected[i]) << i;
  }
  EXPECT_NE(summary(kept).find("ties for the last place lengthen 1 list, up to 3"), std::string::npos) << summary(kept);
  const Clusters fixed = cluster(table, {.method = ClusterMethod::Neighbours, .neighbours = 2, .fixed = true});
  for (const ClusterRow& row : fixed.rows) EXPECT_EQ(row.neighbours.size(), 2u);
  // Kept out, at 2: one row at 1, two at 3.
  for (const bool broken : {false, true}) {
    const Clusters apart = cluster(table, {.method = ClusterMethod::Neighbours,
                                           .neighbours = 2,
                                           .fixed = broken,
                                           .data = {.scaling = Scaling::None, .test = {.rows = {5}}}});
    Rows rows;
    for (const Neighbour& neighbour : apart.rows[5].neighbours) rows.push_back(neighbour.row);
    EXPECT_EQ(rows, broken ? (Rows{1, 2}) : (Rows{1, 2, 3}));
  }
  const Clusters few = cluster(table, {.method = ClusterMethod::Neighbours});
  EXPECT_EQ(few.neighbours, 5);
  EXPECT_TRUE(remarkOf(few, "neighbours-lowered"));
  EXPECT_TRUE(remarkOf(few, "duplicate-rows"));
}

// Shared over all features: rows 1 and 2 share 3 of 4, 3 and 4 share 2 of 3, and every row has the last feature.
TEST(TanimotoDistances, AreOfTheTablesOwnNumbersAndOfEveryColumn) {
  Table table = tableOf({{1, 1, 0, 0}, {1, 1, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 1}, {0, 0, 0, 1}, {1, 1, 1, 1}});
  const ClusterOptions options{.distance = Distance::Tanimoto, .clusters = 2};
  const Clusters result = cluster(table, options);
  EXPECT_EQ(result.used.descriptors.size(), 6u);  // the second repeats the first, the last is constant
  EXPECT_EQ(result.history->linkage, Linkage::Average);
  EXPECT_NEAR(result.history->merges[0].height, 1 - 3.0 / 4, 1e-15);
  EXPECT_NEAR(result.history->merges[1].height, 1 - 2.0 / 3, 1e-15);
  EXPECT_NEAR(result.history->merges[2].height, 1 - (1.0 / 4 + 1.0 / 5 + 1.0 / 5 + 1.0 / 6) / 4, 1e-15);
  EXPECT_EQ(sizesOf(result), (std::vector<std::size_t>{2, 2}));
  EXPECT_FALSE(result.betweenShare);
  EXPECT_EQ(remarkOf(result, "negative-values"), nullptr);

  table.columns[2].numbers[0] = -1;
  ClusterOptions ward = options;
  ward.linkage = Linkage::Ward;
  EXPECT_EQ(remarkOf(cluster(table, ward), "negative-values")->names, std::vector<std::string>{"x2"});
  EXPECT_TRUE(remarkOf(cluster(table, ward), "ward-of-tanimoto"));
  ClusterOptions scaled = options;
  scaled.data.scaling = Scaling::Pareto;
  EXPECT_TRUE(sentence(table, scaled).starts_with("2: --scale pareto has no meaning for Tanimoto distances"));
  const Clusters means =
      cluster(table, {.method = ClusterMethod::KMeans, .distance = Distance::Tanimoto, .clusters = 2});
  EXPECT_EQ(sizesOf(means), (std::vector<std::size_t>{2, 2}));
}

TEST(Clusters, SayWhatACutRestsOn) {
  const Table square = tableOf({{0, 0, 1, 1, 5}, {0, 1, 0, 1, 5}});  // four sides of one length
  const DataOptions asItIs{.scaling = Scaling::None};
  const Clusters tied = cluster(square, {.linkage = Linkage::Single, .clusters = 3, .data = asItIs});
  EXPECT_EQ(remarkOf(tied, "tied-cut")->severity, Severity::Warning);
  EXPECT_EQ(tied.clusters.size(), 3u);
  const Clusters one = cluster(square, {.threshold = 100, .data = asItIs});
  EXPECT_EQ(sizesOf(one), std::vector<std::size_t>{5});
  EXPECT_FALSE(one.silhouette);
  EXPECT_TRUE(remarkOf(one, "threshold-joins-all"));
  const Clusters none = cluster(square, {.threshold = 0.5, .data = asItIs});
  EXPECT_EQ(none.clusters.size(), 5u);
  EXPECT_EQ(none.silhouette, 0.0);  // rows that are alone
  EXPECT_TRUE(remarkOf(none, "threshold-joins-none"));
  const Clusters pair = cluster(tableOf({{0, 1}}), {.clusters = 2});
  EXPECT_EQ(remarkOf(pair, "no-clear-groups"), nullptr) << "nothing can be judged";
  const Clusters equals = cluster(tableOf({{0, 0, 0, 1}}));
  ASSERT_EQ(equals.silhouettes.size(), 1u);
  EXPECT_EQ(equals.silhouettes[0].silhouette, 0.75);  // three rows at 1, one alone at 0
  for (const Clusters* result : {&tied, &one, &none}) EXPECT_FALSE(summary(*result).empty());
}

TEST(Clusters, CarryClassesAndResponsesAlong) {
  Table iris = example("iris.csv");
  iris.columns[1].numbers[0] = std::numeric_limits<double>::quiet_NaN();  // a response may be missing
  const Clusters result = cluster(iris, {.linkage = Linkage::Ward,
                                         .clusters = 2,
                                         .responses = {"Sepal.Length"},
                                         .classColumn = "Species",
                                         .data = {.columns = {"Petal.*"}}});
  EXPECT_EQ(result.used.rows.size(), 150u);
  EXPECT_EQ(result.classes, (std::vector<std::string>{"setosa", "versicolor", "virginica"}));
  EXPECT_EQ(result.clusters[0].classRows, (std::vector<std::size_t>{0, 50, 50}));
  EXPECT_EQ(result.clusters[1].classRows, (std::vector<std::size_t>{50, 0, 0}));
  // Means published with the data: 5.936 and 6.588; 5.006 over 50 setosa, of which the first has 5.1.
  EXPECT_NEAR(result.clusters[0].responseMeans[0], (5.936 + 6.588) / 2, 1e-12);
  EXPECT_NEAR(result.clusters[1].responseMeans[0], (5.006 * 50 - 5.1) / 49, 1e-12);
}

TEST(Clusters, RefuseWhatTheyCannotDoWithASentence) {
  const Table iris = example("iris.csv");
  const Table two = tableOf({{1, 2, 2, 2}});
  TableView millions;
  const std::vector<double> cells = [] {
    std::vector<double> all(1000000);
    std::iota(all.begin(), all.end(), 0.5);
    return all;
  }();
  millions.add("x", cells);
  const auto startsWith = [](const std::string& text, const std::string& start) {
    EXPECT_TRUE(text.starts_with(start)) << text;
  };
  using Method = ClusterMethod;
  startsWith(sentence(iris, {.clusters = 151}), "2: --clusters 151 is more than the 150 rows");
  startsWith(sentence(iris, {.clusters = 1}), "2: --clusters 1");
  startsWith(sentence(iris, {.method = Method::KMeans, .clusters = 150}),
             "2: --clusters 150 is more than k-means can divide: only 149 of the 150 rows are different");
  startsWith(sentence(iris, {.clusters = 3, .threshold = 2}), "2: --clusters and --threshold exclude each other");
  startsWith(sentence(iris, {.threshold = -1}), "2: --threshold -1");
  startsWith(sentence(iris, {.method = Method::KMeans, .threshold = 2}),
             "2: --threshold belongs to --method hierarchical");
  startsWith(sentence(iris, {.method = Method::KMeans, .linkage = Linkage::Ward}), "2: --linkage belongs to");
  startsWith(sentence(iris, {.method = Method::Neighbours, .clusters = 3}), "2: --method neighbours makes lists");
  startsWith(sentence(iris, {.fixed = true}), "2: --fixed belongs to --method neighbours");
  startsWith(sentence(iris, {.neighbours = 5}), "2: --neighbours belongs to");
  startsWith(sentence(iris, {.method = Method::Neighbours, .neighbours = 0}), "2: --neighbours 0");
  startsWith(sentence(iris, {.method = Method::KMeans, .restarts = 0}), "2: --restarts 0");
  startsWith(sentence(iris, {.method = Method::KMeans, .seed = -1}), "2: --seed -1");
  startsWith(sentence(iris, {.data = {.exclude = {"*"}}}), "1: no descriptor is left");
  startsWith(sentence(tableOf({{1}}), {}), "1: too few rows");
  EXPECT_EQ(sizesOf(cluster(two, {.clusters = 2})), (std::vector<std::size_t>{3, 1}));
  try {
    cluster(millions, {});
    ADD_FAILURE() << "4 TB were had";
  } catch (const OutOfMemory& error) {
    EXPECT_EQ(std::string(error.what()).find("the distances between 1000000 rows take 4000 GB of memory"), 0u)
        << error.what();
  }
}

TEST(Clusters, ReportProgressThatNeverFallsAndStopAtAnyReport) {
  const Table iris = example("iris.csv");
  for (const ClusterMethod method : {ClusterMethod::Hierarchical, ClusterMethod::KMeans, ClusterMethod::Neighbours}) {
    std::vector<double> percents;
    cluster(iris,
            {.method = method, .progress = [&](const Progress& p) { return percents.push_back(p.percent), true; }});
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
    EXPECT_EQ(percents.front(), 0);
    EXPECT_EQ(percents.back(), 100);
    for (const std::size_t stopAt : {std::size_t{1}, std::size_t{2}, percents.size() / 2, percents.size()}) {
      std::size_t seen = 0;
      EXPECT_THROW(cluster(iris, {.method = method, .progress = [&](const Progress&) { return ++seen < stopAt; }}),
                   Stopped);
      EXPECT_EQ(seen, stopAt);
    }
  }
}

}  // namespace
}  // namespace studystats
