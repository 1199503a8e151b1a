#include <gtest/gtest.h>
#include <studystats/utilities.h>

#include "tests/refusal.h"

namespace {

using namespace StatsCalcUtils;
using Numbers = std::vector<std::int32_t>;
using Names = std::vector<std::string>;
using Mask = kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>>;

TEST(Categories, AreNumberedByFirstAppearanceAfterTheNamesGiven) {
  // Stated: b, a, b, c alone, and after {a}. Of a name given twice the first position counts; case matters.
  const struct {
    Names labels;
    Numbers before;
    Names given;
    Numbers categories;
    Names names;
  } kRows[] = {
      {{"b", "a", "b", "c"}, {}, {}, {1, 2, 1, 3}, {"b", "a", "c"}},
      {{"b", "a", "b", "c"}, {}, {"a"}, {2, 1, 2, 3}, {"a", "b", "c"}},
      {{"x", "y", "X", ""}, {9, 9}, {"x", "x"}, {9, 9, 1, 3, 4, 5}, {"x", "x", "y", "X", ""}},
      {{}, {4}, {"z"}, {4}, {"z"}},
  };
  for (const auto& row : kRows) {
    Names labels = row.labels, names = row.given;
    Numbers categories = row.before;
    ConvertToUniqueCategories(labels, categories, names);
    EXPECT_EQ(categories, row.categories);
    EXPECT_EQ(names, row.names);
    EXPECT_EQ(labels, row.labels);
  }
}

TEST(SingleElementClasses, AreDroppedWithTheEmptyOnesAndTheOthersNumberedAnew) {
  const struct {
    Numbers classes;
    Names names;
    std::vector<bool> keep;
    Numbers newClasses;
    Names newNames;
  } kRows[] = {
      {{1, 2, 2, 3, 3, 3}, {"x", "y", "z"}, {false, true, true, true, true, true}, {1, 1, 2, 2, 2}, {"y", "z"}},
      {{2, 2}, {"x", "y"}, {true, true}, {1, 1}, {"y"}},
      {{3, 1, 2}, {"x", "y", "z"}, {false, false, false}, {}, {}},
      {{}, {"x"}, {}, {}, {}},
      {{3, 1, 3, 1, 2}, {"x", "y", "z"}, {true, true, true, true, false}, {2, 1, 2, 1}, {"x", "z"}},
  };
  for (const auto& row : kRows) {
    Numbers classes = row.classes, newClasses = {7, 7, 7};
    Names names = row.names, newNames = {"old"};
    Mask keep(2048, true);  // longer than needed: entries past the items go
    std::int32_t items = -1, nClasses = -1;
    RemoveSingleElementClasses(classes, names, keep, newClasses, newNames, items, nClasses);
    EXPECT_EQ(std::vector<bool>(keep.begin(), keep.end()), row.keep);
    EXPECT_EQ(newClasses, row.newClasses);
    EXPECT_EQ(newNames, row.newNames);
    EXPECT_EQ(items, std::ssize(row.newClasses));
    EXPECT_EQ(nClasses, std::ssize(row.newNames));
    EXPECT_EQ(classes, row.classes);

    RemoveSingleElementClasses(classes, names, keep, classes, names, items, nClasses);  // into the lists it reads
    EXPECT_EQ(classes, row.newClasses);
    EXPECT_EQ(names, row.newNames);
  }
}

TEST(SingleElementClasses, RefuseNumbersThatNameNoClassAndChangeNothing) {
  for (const std::int32_t wrong : {0, 3, -1, INT32_MIN}) {
    Numbers classes = {1, 1, wrong}, newClasses = {5};
    Names names = {"x", "y"}, newNames = {"old"};
    Mask keep;
    std::int32_t items = -1, nClasses = -1;
    EXPECT_EQ(studystats::test::refusal(
                  [&] { RemoveSingleElementClasses(classes, names, keep, newClasses, newNames, items, nClasses); }),
              studystats::test::invalid("RemoveSingleElementClasses"));
    EXPECT_TRUE(keep.empty() && newClasses == Numbers{5} && newNames == Names{"old"} && items == -1);
  }
}

}  // namespace
