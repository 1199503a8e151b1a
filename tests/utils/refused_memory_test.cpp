// What the utilities give back is there whole or not at all. Names are too long to stand inside a string object, so
// that each costs an allocation.
#include "tests/refused_memory.h"

#include <gtest/gtest.h>
#include <studystats/utilities.h>

namespace {

using namespace studystats::test;
using Numbers = std::vector<std::int32_t>;
using Names = std::vector<std::string>;
using NameSet = kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>;
using Mask = kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>>;

const std::string kA(40, 'a'), kB(40, 'b'), kC(40, 'c');

TEST(RefusedMemory, NeverLetsAGeneratorHandOutANameTwiceOrLoseOne) {
  UniqueNameGenerator before, other;
  for (const auto& name : {kA, kA, kB}) before.UniqueName(name);
  for (const auto& name : {kC, kC, kC}) other.UniqueName(name);
  const auto next = [](UniqueNameGenerator names) {
    std::string all;
    for (const auto& name : {kA, kB, kC, kC}) all += names.UniqueName(name) + ", ";
    return all;
  };
  expectAllOrNothing(
      "assignment", before, [&](UniqueNameGenerator& names) { names = other; }, next);
  expectAllOrNothing(
      "free name", before, [](UniqueNameGenerator& names) { names.UniqueName(kC); }, next);
  expectAllOrNothing(
      "taken name", before, [](UniqueNameGenerator& names) { names.UniqueName(kB); }, next);
  const NameSet set{kA, kB}, otherSet{kB, kC};
  expectAllOrNothing(
      "set", set, [&](NameSet& names) { names = otherSet; },
      [](const NameSet& names) { return testing::PrintToString(Names(names.begin(), names.end())); });
}

struct Classes {
  Numbers classes;
  Names names;
  Mask keep;
  std::int32_t items = -1, kept = -1;
};

std::string shown(const Classes& c) {
  return testing::PrintToString(c.classes) + testing::PrintToString(c.names) +
         testing::PrintToString(std::vector<bool>(c.keep.begin(), c.keep.end())) + testing::PrintToString(c.items);
}

TEST(RefusedMemory, LeavesClassesAsTheyWere) {
  const Classes before{{1}, {kA}, Mask(2, true)};
  Names labels{kB, kA, kC, kB}, names{kA, kB, kC};
  Numbers classes{3, 1, 3, 2, 2, 1, 3};
  expectAllOrNothing(
      "categories", before, [&](Classes& c) { StatsCalcUtils::ConvertToUniqueCategories(labels, c.classes, c.names); },
      shown);
  expectAllOrNothing(
      "single elements", before,
      [&](Classes& c) {
        StatsCalcUtils::RemoveSingleElementClasses(classes, names, c.keep, c.classes, c.names, c.items, c.kept);
      },
      shown);
}

TEST(RefusedMemory, LeavesMatricesAsTheyWere) {
  const DataMatrix points{{1, 2, 5, 3}, {4, 4, 1, 0}}, before{{7, 8}, {9, 10}};
  const IndexMatrix index{{1, 0, 0, 2}, {2, 2, 3, 0}}, listsBefore{{7, 8}, {9, 10}};
  const auto type = StatsDistanceUtils::STATS_DIST_TANIMOTO;
  const auto check = [&](const char* what, auto change) {
    expectAllOrNothing(what, before, change, testing::PrintToString<DataMatrix>);
  };
  check("resized", [](DataMatrix& m) { StatsMatrixUtils::ResizeDataMatrix(&m, 4, 5, 1); });
  check("longer columns", [](DataMatrix& m) { StatsMatrixUtils::ResizeDataMatrix(&m, 1, 5, 1); });
  check("distances", [&](DataMatrix& m) { StatsDistanceUtils::GenerateDistanceMatrix(points, m, type); });
  check("neighbours", [&](DataMatrix& m) { StatsDistanceUtils::GenerateDistanceMatrix(points, index, m, type); });
  for (const bool fixedSize : {false, true})
    expectAllOrNothing(
        "lists", listsBefore,
        [&](IndexMatrix& lists) { StatsClusterUtils::CreateNeighborLists(points, 4, type, 2, fixedSize, lists); },
        testing::PrintToString<IndexMatrix>);
}

TEST(Categories, OfOneLabelAtATimeCostConstantTime) {
  Numbers categories;
  Names labels(1), names;
  const std::size_t before = bytesObtained;
  for (int i = 0; i < 20000; ++i) {
    labels[0] = i % 2 == 0 ? "a" : "b";
    StatsCalcUtils::ConvertToUniqueCategories(labels, categories, names);
  }
  // 80,000 bytes of numbers at the end; lists that are copied at each call add up to 800 millions.
  EXPECT_LT(bytesObtained - before, 5'000'000U);
}

}  // namespace
