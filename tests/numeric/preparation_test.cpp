#include "numeric/preparation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace studystats {
namespace {

using engine::Filling;
using engine::Scaling;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

struct Units {
  double fill, shift, scale;
};

// Of the listed rows of one column, a descriptor or a response.
Units unitsOf(const std::vector<double>& column, const std::vector<std::int32_t>& rows,
              const engine::Preparation& preparation, bool isDescriptor = true) {
  const auto n = static_cast<std::int32_t>(column.size());
  core::Obtained<core::PreparationScratch> scratch(true, n, 1);
  core::Pace unasked;
  const core::ColumnUnits units =
      core::columnUnits(preparation, {column.data(), n}, rows, isDescriptor ? 1 : 0, 1, *scratch, unasked);
  return {units.fill[0], units.shift[0], units.scale[0]};
}

// Worked by hand: 1, 4, 4, 7 have mean and median 4 and a standard deviation of root 6.
TEST(Preparation, FindsItsUnitsInTheRowsListedAlone) {
  const std::vector<double> column = {1000, 1, kMissing, 7, 4, -5, kMissing, 10, 13, 3, 3};
  const std::vector<std::int32_t> gap = {1, 2, 3, 4}, two = {7, 8, 2}, more = {8, 2, 1, 7, 4}, equal = {9, 10},
                                  missing = {2, 6}, one = {5}, none = {};
  struct Case {
    std::vector<std::int32_t> rows;
    Filling filling;
    Scaling scaling;
    Units units;
  };
  const double root6 = std::sqrt(6.0);
  const Case cases[] = {
      {gap, Filling::Mean, Scaling::None, {4, 4, 1}},
      {gap, Filling::Mean, Scaling::Autoscale, {4, 4, root6}},
      {gap, Filling::Median, Scaling::Pareto, {4, 4, std::sqrt(root6)}},
      {gap, Filling::Value, Scaling::Range, {20, 8, 9.5}},  // 1, 20, 7, 4
      {two, Filling::Median, Scaling::Range, {11.5, 11.5, 1.5}},
      {more, Filling::Median, Scaling::Range, {7, 7, 6}},  // 13, 7, 1, 10, 4
      {equal, Filling::None, Scaling::Autoscale, {kMissing, 3, 1}},
      {one, Filling::Mean, Scaling::Autoscale, {-5, -5, 1}},
      {missing, Filling::Median, Scaling::Autoscale, {0, 0, 1}},
      {missing, Filling::Mean, Scaling::Range, {0, 0, 1}},
      {none, Filling::Mean, Scaling::Pareto, {0, 0, 1}},
      {gap, Filling::None, Scaling::Autoscale, {kMissing, kMissing, 1}},
  };
  for (const Case& c : cases) {
    const engine::Preparation preparation{.descriptors = {true, c.scaling}, .filling = c.filling, .fillValue = 20};
    const Units found = unitsOf(column, c.rows, preparation);
    const auto at = &c - cases;
    EXPECT_TRUE(found.fill == c.units.fill || (std::isnan(found.fill) && std::isnan(c.units.fill))) << at;
    EXPECT_TRUE(found.shift == c.units.shift || (std::isnan(found.shift) && std::isnan(c.units.shift))) << at;
    EXPECT_DOUBLE_EQ(found.scale, c.units.scale) << at;
  }
}

// A response has its own rule, and what it misses is never made up; a column that is not centred keeps its origin.
TEST(Preparation, TreatsResponsesByThemselves) {
  const std::vector<double> column = {2, 4, kMissing};
  const engine::Preparation preparation{
      .descriptors = {false, Scaling::Range}, .responses = {true, Scaling::None}, .filling = Filling::Mean};
  const Units descriptor = unitsOf(column, {0, 1, 2}, preparation),
              response = unitsOf(column, {0, 1}, preparation, false);
  EXPECT_EQ(descriptor.fill, 3);
  EXPECT_EQ(descriptor.shift, 0);
  EXPECT_EQ(descriptor.scale, 1);
  EXPECT_TRUE(std::isnan(response.fill));
  EXPECT_EQ(response.shift, 3);
  EXPECT_EQ(response.scale, 1);
  EXPECT_FALSE(core::prepares({}));
  for (const engine::Preparation& one :
       {engine::Preparation{.responses = {true, Scaling::None}},
        engine::Preparation{.descriptors = {false, Scaling::Range}}, engine::Preparation{.filling = Filling::Value}})
    EXPECT_TRUE(core::prepares(one));
}

}  // namespace
}  // namespace studystats
