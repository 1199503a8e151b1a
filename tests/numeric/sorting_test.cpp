#include "numeric/sorting.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>
#include <vector>

#include "numeric/validation.h"
#include "tests/definition/sorting.h"

namespace studystats::core {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
using Keys = std::vector<double>;
using Rows = std::vector<std::int32_t>;

Rows upTo(std::size_t n) {
  Rows rows(n);
  for (std::size_t i = 0; i < n; ++i) rows[i] = static_cast<std::int32_t>(i) + 1;
  return rows;
}

std::vector<std::uint64_t> bits(const Keys& keys) {
  std::vector<std::uint64_t> all;
  for (double key : keys) all.push_back(std::bit_cast<std::uint64_t>(key));
  return all;
}

// Sorts by both routines, with and without a buffer.
void expectTheInsertionSort(const Keys& keys, std::int32_t direction) {
  const auto n = static_cast<std::int32_t>(keys.size());
  Keys plain = keys;
  Rows plainRows = upTo(keys.size());
  definition::sortColumn(plain, plainRows, direction);
  for (const bool buffered : {true, false}) {
    Keys sorted = keys;
    Rows rows = upTo(keys.size());
    std::vector<SortEntry> buffer(keys.size() + 1);
    sortColumn(sorted.data(), rows.data(), n, direction > 0, buffered ? buffer.data() : nullptr);
    ASSERT_EQ(bits(sorted), bits(plain)) << testing::PrintToString(keys) << direction << buffered;
    ASSERT_EQ(rows, plainRows) << testing::PrintToString(keys) << direction << buffered;
  }
}

// Every arrangement of five keys out of five values: ties, both zeros, not-a-numbers. Behind twenty others in order, so
// that the whole is long enough for the fast sort.
TEST(Sorting, GivesTheInsertionSortInEverySmallCase) {
  const double values[] = {-1, 0.0, -0.0, 2, kNan};
  for (int code = 0; code < 3125; ++code)
    for (const std::int32_t direction : {-5, 0, 1}) {
      Keys keys;
      for (int k = 0, rest = code; k < 5; ++k, rest /= 5) keys.push_back(values[rest % 5]);
      expectTheInsertionSort(keys, direction);
      keys.resize(25, 0.5);
      expectTheInsertionSort(keys, direction);
    }
}

TEST(Sorting, GivesTheInsertionSortOfLongColumnsWithTiesAndGaps) {
  std::mt19937_64 random(20240611);
  for (const std::size_t n : {0U, 1U, 2U, 16U, 17U, 100U, 999U})
    for (const int gaps : {0, 1, 9}) {
      Keys keys(n);
      for (double& key : keys)
        key = random() % 100 < static_cast<unsigned>(gaps) ? kNan : static_cast<int>(random() % 37);
      for (const std::int32_t direction : {0, 1}) expectTheInsertionSort(keys, direction);
    }
}

TEST(Sorting, TouchesTheKeyColumnAlone) {
  Keys data = {9, 8, 7, 6, 3, 1, 2, 1, 5, 5, 5, 4};
  Rows rows = upTo(4);
  const std::int32_t n = 4, column = 2, descending = 1;
  SrtCol(data.data(), rows.data(), &n, nullptr, &column, &descending);
  EXPECT_EQ(data, (Keys{9, 8, 7, 6, 3, 2, 1, 1, 5, 5, 5, 4}));
  EXPECT_EQ(rows, (Rows{1, 3, 2, 4}));
}

// The validation order by mode; stated examples.
TEST(ValidationOrder, SortsByTheKeyOrTheLabelsOrNotAtAll) {
  struct Row {
    std::int32_t mode;
    Keys data;
    Rows rowIds, order;
  };
  const Row rows[] = {{1, {7, 7, 7, 7, 1, 1, 2, 3}, {2, 4, 3, 1}, {2, 4, 3, 1}},
                      {2, {7, 7, 7, 7, 1, 1, 2, 3}, {2, 4, 3, 1}, {2, 4, 3, 1}},
                      {3, {1, 1, 2, 2, 3, 1, 2, 1}, {2, 4, 1, 3}, {2, 4, 1, 3}},
                      {0, {7, 7, 7, 7, 3, 1, 2, 1}, {1, 2, 3, 4}, {0, 0, 0, 0}},
                      {4, {7, 7, 7, 7, 3, 1, 2, 1}, {1, 2, 3, 4}, {0, 0, 0, 0}}};
  for (const Row& row : rows) {
    Keys data = {7, 7, 7, 7, 3, 1, 2, 1};
    Rows rowIds = upTo(4), order(4);
    const Rows labels = {2, 1, 2, 1};
    const std::int32_t n = 4, labelColumn = 1, keyColumn = 2;
    std::int32_t status = -7;
    cvMethod = 1;
    cvGroups = 2;
    cvFolds = -7;
    VldSet(data.data(), labels.data(), rowIds.data(), &n, &labelColumn, &row.mode, order.data(), &keyColumn, &status);
    EXPECT_EQ(status, 0) << row.mode;
    EXPECT_EQ(cvFolds, 2) << row.mode;
    EXPECT_EQ(data, row.data) << row.mode;
    EXPECT_EQ(rowIds, row.rowIds) << row.mode;
    EXPECT_EQ(order, row.order) << row.mode;
  }
}

TEST(ValidationOrder, CountsPositionsAndSurvivesRowsThatAreNone) {
  Keys keys = {30, 10, 20};
  Rows rowIds = {3, 1, 2}, order(3), scratch(3);
  orderRows(keys.data(), rowIds.data(), 3, order.data(), scratch.data(), nullptr);
  EXPECT_EQ(rowIds, (Rows{1, 2, 3}));
  EXPECT_EQ(order, (Rows{2, 3, 1}));  // positions before, whatever the rows were called

  keys = {30, 10, 20};
  rowIds = {-5, 2147483647, 2};
  orderRows(keys.data(), rowIds.data(), 3, order.data(), scratch.data(), nullptr);
  EXPECT_EQ(order, (Rows{0, 3, 0}));
}

}  // namespace
}  // namespace studystats::core
