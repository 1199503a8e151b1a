// Columns that repeat another up to scale, sign and shift.
#include "host/preparation/same_information.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <map>
#include <numeric>
#include <random>

namespace studystats {
namespace {

using Column = std::vector<double>;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<SamePair> find(const std::vector<Column>& columns) {
  return sameInformation(std::vector<std::span<const double>>(columns.begin(), columns.end()));
}

// Numbers with four decimals, as tables have them.
Column decimals(std::mt19937& random, std::size_t n, int from = -99999, int to = 99999) {
  std::uniform_int_distribution<int> digits(from, to);
  Column column(n);
  for (double& value : column) value = digits(random) / 10000.0;
  return column;
}

Column transformed(const Column& x, double scale, double shift) {
  Column y(x.size());
  std::transform(x.begin(), x.end(), y.begin(), [&](double value) { return shift + scale * value; });
  return y;
}

double asWritten(double value, const char* format) {
  char text[40];
  std::snprintf(text, sizeof text, format, value);
  return std::strtod(text, nullptr);
}

TEST(Constant, IsDecidedByComparison) {
  EXPECT_TRUE(isConstant(Column(20, 0.1)));  // whose mean, by adding up, is not 0.1
  EXPECT_TRUE(isConstant(Column{}));
  EXPECT_TRUE(isConstant(Column{kNan, kNan}));
  EXPECT_TRUE(isConstant(Column{kNan, 3, kNan, 3}));
  EXPECT_TRUE(isConstant(Column{0.0, -0.0}));
  EXPECT_FALSE(isConstant(Column{0.1, std::nextafter(0.1, 1)}));
  EXPECT_FALSE(isConstant(Column{kNan, 3, 4}));
}

TEST(SameInformation, GivesScaleAndShiftAsTheyWereMeant) {
  const struct {
    double scale, shift;
  } rows[] = {{1, 0},     {-1, 0},     {-1, 1},  {1, 273.15}, {1.8, 32},     {1000, 0},
              {0.001, 0}, {-2.5, 1e6}, {1e9, 0}, {1e-9, 3},   {-6.02e23, 0}, {1.0 / 3, 0}};
  std::mt19937 random(1);
  for (const auto& row : rows)
    for (const std::size_t n : {3U, 50U, 1000U}) {
      const Column x = decimals(random, n);
      const auto pairs = find({x, transformed(x, row.scale, row.shift)});
      ASSERT_EQ(pairs.size(), 1U) << row.scale << " " << row.shift << " " << n;
      EXPECT_EQ(pairs[0].kept, 0U);
      EXPECT_EQ(pairs[0].setAside, 1U);
      if (row.scale == 1e-9) continue;  // beside a shift of 3 the cells hold only six digits of such a scale
      EXPECT_EQ(pairs[0].scale, row.scale);
      EXPECT_EQ(pairs[0].shift, row.shift);
    }
}

TEST(SameInformation, HoldsForDecimalsAsAFileHasThem) {
  std::mt19937 random(2);
  const Column share = decimals(random, 200, 0, 10000);
  Column rest(share.size()), standardised(share.size());
  for (std::size_t i = 0; i < share.size(); ++i) {
    rest[i] = (10000 - std::round(share[i] * 10000)) / 10000.0;
    standardised[i] = asWritten((share[i] - 0.4871) / 0.2893, "%.15g");
  }
  const auto pairs = find({share, rest, standardised});
  ASSERT_EQ(pairs.size(), 2U);
  EXPECT_EQ(pairs[0].scale, -1);
  EXPECT_EQ(pairs[0].shift, 1);
  EXPECT_NEAR(pairs[1].scale, 1 / 0.2893, 1e-13 / 0.2893);
}

TEST(SameInformation, IsNotSaidOfNearMisses) {
  std::mt19937 random(3);
  const Column x = decimals(random, 40, 10000, 99999);
  for (const double scale : {1.0, -3.7})
    for (const double shift : {0.0, 12.5})
      for (std::size_t cell = 0; cell < x.size(); ++cell) {  // the smallest and the largest among them
        Column y = transformed(x, scale, shift);
        y[cell] *= 1 + 1e-9;
        EXPECT_TRUE(find({x, y}).empty()) << scale << " " << shift << " " << cell;
      }
  Column swapped = x, rounded = transformed(x, 2.5, 0.3);
  std::swap(swapped[3], swapped[4]);
  for (double& value : rounded) value = asWritten(value, "%.4f");
  EXPECT_TRUE(find({x, swapped, rounded}).empty());
}

// Columns x and y are related exactly when (y_i - y_0)(x_j - x_0) = (y_j - y_0)(x_i - x_0) for all rows: exact in small
// whole numbers. All columns of five cells 0, 1 or 2, in random order.
TEST(SameInformation, AgreesWithExactArithmeticOnEverySmallColumn) {
  std::vector<Column> columns;
  for (int code = 0; code < 243; ++code) {
    Column column;
    for (int i = 0, rest = code; i < 5; ++i, rest /= 3) column.push_back(rest % 3);
    columns.push_back(column);
  }
  std::mt19937 random(4);
  std::shuffle(columns.begin(), columns.end(), random);
  const auto related = [](const Column& x, const Column& y) {
    for (std::size_t i = 1; i < x.size(); ++i)
      for (std::size_t j = 1; j < x.size(); ++j)
        if ((y[i] - y[0]) * (x[j] - x[0]) != (y[j] - y[0]) * (x[i] - x[0])) return false;
    return true;
  };
  std::map<std::size_t, std::size_t> expected, found;
  for (std::size_t j = 0; j < columns.size(); ++j)
    for (std::size_t k = 0; k < j && !isConstant(columns[j]); ++k)
      if (!isConstant(columns[k]) && related(columns[k], columns[j])) {
        expected[j] = k;
        break;
      }
  for (const SamePair& pair : find(columns)) {
    found[pair.setAside] = pair.kept;
    EXPECT_EQ(transformed(columns[pair.kept], pair.scale, pair.shift), columns[pair.setAside]);
  }
  EXPECT_EQ(found, expected);
}

TEST(SameInformation, SortsThousandsOfColumnsIntoTheirGroups) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> uniform(-100, 100);
  std::vector<Column> columns;
  std::vector<std::size_t> group;
  for (std::size_t g = 0; g < 1000; ++g) {
    const Column base = decimals(random, 50);
    for (int copy = 0; copy < 5; ++copy, group.push_back(g))
      columns.push_back(copy == 0 ? base : transformed(base, uniform(random), uniform(random)));
  }
  std::vector<std::size_t> order(columns.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::shuffle(order.begin(), order.end(), random);
  std::vector<Column> shuffled;
  for (const std::size_t j : order) shuffled.push_back(columns[j]);

  std::map<std::size_t, std::size_t> first;
  for (std::size_t j = 0; j < order.size(); ++j) first.try_emplace(group[order[j]], j);
  const auto pairs = find(shuffled);
  EXPECT_EQ(pairs.size(), 4000U);
  for (const SamePair& pair : pairs) EXPECT_EQ(pair.kept, first.at(group[order[pair.setAside]]));
}

TEST(SameInformation, CopesWithOffsetsAndExtremes) {
  std::mt19937 random(6);
  const Column x = decimals(random, 30, 0, 9999);
  Column far = transformed(x, 1, 1e8), farther = transformed(far, -2, 7), huge = transformed(x, 1.6e308, 0);
  const auto pairs = find({far, farther, Column(30, 0.1), huge, transformed(huge, -1, 0)});
  ASSERT_EQ(pairs.size(), 2U);
  EXPECT_EQ(pairs[0].scale, -2);
  EXPECT_EQ(pairs[0].shift, 7);
  EXPECT_EQ(pairs[1].scale, -1);

  Column gap = x, infinite = x;
  gap[4] = kNan;
  infinite[4] = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(find({gap, gap, infinite, infinite}).empty());
  EXPECT_TRUE(find({}).empty());
  EXPECT_TRUE(find({Column{}, Column{}}).empty());
}

}  // namespace
}  // namespace studystats
