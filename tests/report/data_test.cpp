// What pages compute themselves: histograms, correlations, the tree of a clustering, the digest of a table.
#include "host/reading/sha256.h"
#include "host/report/biplot.h"
#include "host/report/components.h"
#include "host/report/dendrogram.h"
#include "host/report/describe_data.h"
#include "tests/report/pages.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats::test {
namespace {

// FIPS 180-4's examples, and lengths around the end of a block as Python's hashlib has them.
TEST(Digest, IsSha256) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
      {std::string(55, 'x'), "d5e285683cd4efc02d021a5c62014694958901005d6f71e89e0989fac77e4072"},
      {std::string(56, 'x'), "04c26261370ee7541549d16dee320c723e3fd14671e66a099afe0a377c16888e"},
      {std::string(64, 'x'), "7ce100971f64e7001e8fe5a51973ecdfe1ced42befe7ee8d5fd6219506b5393c"},
      {std::string(119, 'x'), "000b48d4edf0fa7bee3c6236ecd2785baa5db4eeb8bb54341b029e0d9fa5fb0c"},
  };
  for (const auto& [text, digest] : cases) EXPECT_EQ(sha256(text), digest) << text.size();
}

TEST(Digest, IsTakenOfTheBytesReadAndOnlyWhenAskedFor) {
  const std::string text =
      "\xEF\xBB\xBF"
      "a,b\r\n1,2\r\n";  // byte-order mark and line ends included
  EXPECT_EQ(parseTable(text, "t", {.digest = true}).digest, sha256(text));
  EXPECT_EQ(parseTable(text, "t", {}).digest, "");
}

double cell(const Table& data, const std::string& first, const std::string& second) {
  for (std::size_t i = 0; i < data.rows(); ++i)
    if (data.find("first")->texts[i] == first && data.find("second")->texts[i] == second)
      return data.find("r")->numbers[i];
  return 2;
}

// R 4.2: cor(airquality, use = "pairwise.complete.obs").
TEST(Correlations, AreThoseOfTheRowsInWhichBothArePresent) {
  const Table air = example("airquality.csv");
  const Table data = correlationData(air, {"Ozone", "Wind", "Temp"});
  EXPECT_EQ(data.rows(), 9u);
  EXPECT_NEAR(cell(data, "Wind", "Temp"), -0.4579879, 5e-8);
  EXPECT_NEAR(cell(data, "Temp", "Ozone"), 0.6983603, 5e-8);
  EXPECT_EQ(cell(data, "Ozone", "Temp"), cell(data, "Temp", "Ozone"));
  EXPECT_EQ(cell(data, "Wind", "Wind"), 1);
}

TEST(Histograms, CountEveryPresentCellOnce) {
  Table table{.name = "t"};
  const double none = std::numeric_limits<double>::quiet_NaN();
  table.columns = {{.name = "whole", .numbers = {1, 3, 3, 5, none, 1, 3, 3}},
                   {.name = "real", .numbers = {0, 0.5, 1, 2.5, 4, none, 4, 3.5}},
                   {.name = "same", .numbers = {0.1, 0.1, 0.1, 0.1, 0.1, 0.1, 0.1, none}},
                   {.name = "empty", .numbers = std::vector<double>(8, none)}};
  const Table data = histogramData(table, {"whole", "real", "same", "empty"});
  const auto counts = [&](const std::string& column) {
    std::vector<double> list;
    for (std::size_t i = 0; i < data.rows(); ++i)
      if (data.find("column")->texts[i] == column) list.push_back(data.find("count")->numbers[i]);
    return list;
  };
  EXPECT_EQ(counts("whole"), (std::vector<double>{2, 0, 4, 0, 1}));  // 1, 2, 3, 4, 5
  EXPECT_EQ(counts("real"), (std::vector<double>{2, 1, 1, 3}));  // 7 values: 4 bins from 0 to 4, the last one closed
  EXPECT_EQ(counts("same"), (std::vector<double>{7}));
  EXPECT_TRUE(counts("empty").empty());
}

TEST(NumbersInNames, AreFoundOnlyWhereTheyOrderAllNames) {
  std::vector<std::string> spectrum, codes;
  for (int i = 0; i < 25; ++i) {
    spectrum.push_back(std::to_string(900 + 2 * i) + "  nm");
    codes.push_back("x" + std::to_string(i % 5));
  }
  EXPECT_EQ(numbersInNames(spectrum).back(), 948);
  EXPECT_EQ(unitOfNames(spectrum), "nm");
  EXPECT_TRUE(numbersInNames(codes).empty());
  EXPECT_TRUE(numbersInNames({"900 nm", "902 nm"}).empty()) << "too few for a curve";
  spectrum[7] = "914  cm";
  EXPECT_TRUE(numbersInNames(spectrum).empty());
}

// The least squares solution of places kept apart, by hand: groups that would overlap stand around their mean.
TEST(NamesOfArrows, AreKeptApartAndMovedAsLittleAsCanBe) {
  const std::pair<std::vector<double>, std::vector<double>> cases[] = {
      {{}, {}},
      {{7}, {7}},
      {{5, 0, 10}, {5, 0, 10}},
      {{0, 0}, {-0.5, 0.5}},
      {{3, 3, 3}, {2, 3, 4}},
      {{0, 0.5, 9, 9.5}, {-0.25, 0.75, 8.75, 9.75}},
      {{2, 0, 1.25}, {2.125, 0, 1.125}},
      {{0, 0, 1.5}, {-0.5, 0.5, 1.5}},
      {{0, 0, 0.75}, {-0.75, 0.25, 1.25}},
  };
  for (const auto& [places, apart] : cases) EXPECT_EQ(spreadOut(places, 1), apart) << ::testing::PrintToString(places);
}

// Four points on a line at 0, 1, 10 and 12: 0 and 1 join at 1, 10 and 12 at 2; single linkage joins these at 9.
TEST(Dendrogram, DrawsThreeSegmentsAMerge) {
  Table table{.name = "t"};
  table.columns = {{.name = "x", .numbers = {0, 10, 1, 12}}};
  const Clusters result =
      cluster(table, {.linkage = Linkage::Single, .clusters = 2, .data = {.scaling = Scaling::None}});
  const Dendrogram tree = dendrogramOf(result);
  ASSERT_EQ(tree.leaves.rows(), 4u);
  ASSERT_EQ(tree.segments.rows(), 9u);
  const auto& y2 = tree.segments.find("y2")->numbers;
  EXPECT_EQ(y2[2], 1);
  EXPECT_EQ(y2[5], 2);
  EXPECT_EQ(y2[8], 9);
  const auto &x = tree.segments.find("x")->numbers, &x2 = tree.segments.find("x2")->numbers;
  EXPECT_EQ(std::abs(x2[2] - x[2]), 1) << "neighbouring leaves";
  EXPECT_EQ(std::abs(x2[8] - x[8]), 2) << "from the middle of one pair to that of the other";
  EXPECT_EQ(tree.segments.find("cluster")->texts[8], "") << "above the cut";
  EXPECT_NE(tree.segments.find("cluster")->texts[2], tree.segments.find("cluster")->texts[5]);
}

TEST(Dendrogram, OfManyRowsDrawsTheLastMergesBetweenGroups) {
  const Clusters result = cluster(example("wine.csv"), {.clusters = 3});
  const Dendrogram tree = dendrogramOf(result);
  ASSERT_EQ(tree.leaves.rows(), kMostLeaves);
  EXPECT_EQ(tree.segments.rows(), 3 * (kMostLeaves - 1));
  const std::vector<double>& rows = tree.leaves.find("rows")->numbers;
  EXPECT_EQ(std::accumulate(rows.begin(), rows.end(), 0.0), 178);
  const std::vector<double>& top = tree.segments.find("y2")->numbers;
  EXPECT_TRUE(std::is_sorted(top.begin(), top.end()));
  EXPECT_EQ(tree.segments.find("rows")->numbers.back(), 178);
}

}  // namespace
}  // namespace studystats::test
