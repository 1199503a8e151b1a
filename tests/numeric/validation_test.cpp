#include "numeric/validation.h"

#include <gtest/gtest.h>
#include <studystats/analyses.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "numeric/matrix_view.h"
#include "tests/definition/validation.h"

namespace studystats::core {
namespace {

using Rows = std::vector<std::int32_t>;

// A table whose cells tell where they came from, and what the two subsets of a fold make of it.
struct Fold {
  std::int32_t n, m = 2;
  Rows order, usable, heldOut;
  Rows chosen;
  bool packed = true;  // the chosen rows, whole and with their tags, then zeros

  explicit Fold(Rows order_, Rows usable_)
      : n(static_cast<std::int32_t>(order_.size())), order(order_), usable(usable_), heldOut(order_.size(), 7) {}

  const Rows& take(std::int32_t code, std::int32_t group) {
    const auto rows = static_cast<std::size_t>(n), columns = static_cast<std::size_t>(m);
    std::vector<double> source(rows * columns), subset(rows * columns, -1);
    Rows tags(rows), subsetTags(2 * rows, -1);
    for (std::int32_t i = 0; i < n; ++i) {
      tags[static_cast<std::size_t>(i)] = 100 + i;
      for (std::int32_t j = 0; j < m; ++j) Matrix{source.data(), n}(i, j) = 1000 * (j + 1) + i + 1;
    }
    std::int32_t count = -1, columnsOut = -1;
    VldGrp(source.data(), tags.data(), subset.data(), subsetTags.data(), order.data(), heldOut.data(), usable.data(),
           &n, &m, &count, &columnsOut, &group, &code);
    chosen.clear();
    packed = count >= 0 && columnsOut == (code == 6 ? m : -1);
    for (std::int32_t i = 0; i < n && packed; ++i) {
      const auto row = static_cast<std::int32_t>(Matrix{subset.data(), n}(i, 0)) - 1000;
      const bool used = i < count;
      if (used) chosen.push_back(row);
      packed = Matrix{subset.data(), n}(i, 0) == (used ? 1000 + row : 0) &&
               Matrix{subset.data(), n}(i, 1) == (used ? 2000 + row : 0) &&
               subsetTags[static_cast<std::size_t>(i)] == (used ? 99 + row : 0) &&
               subsetTags[static_cast<std::size_t>(i + n)] == 0;
    }
    return chosen;
  }
};

Rows others(std::int32_t n, Rows rows) {
  Rows rest;
  for (std::int32_t row = 1; row <= n; ++row)
    if (std::find(rows.begin(), rows.end(), row) == rows.end()) rest.push_back(row);
  return rest;
}

TEST(Validation, PlansByTheTable) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const std::int32_t most = std::numeric_limits<std::int32_t>::max();
  struct Row {
    std::int32_t n;
    ValidationSettings settings;
    ValidationPlan plan;
  };
  const Row rows[] = {
      {10, {1, 3, 0}, {3, 3, 1}},
      {10, {1, 0, 0}, {10, 1, 1}},
      {10, {1, -4, 0}, {10, 1, 1}},
      {10, {1, 25, 0}, {10, 1, 1}},
      {10, {2, 3, 1}, {3, 4, 10.0 / 12}},
      {10, {0, 3, 0.5F}, {2, 4, 10.0 / 8}},
      {10, {2, 0, 0.25F}, {2, 1, 5}},
      {10, {2, 10, 0.01F}, {1, 1, 10}},
      {10, {2, 3, nan}, {2, 4, 10.0 / 8}},
      {10, {2, 3, -9}, {2, 4, 10.0 / 8}},
      {0, {1, 3, 1}, {0, 0, 1}},
      {-3, {2, 3, 1}, {0, 0, 1}},
      // G and S of 2^31 - 1 and 4: their product needs 64 bits.
      {10, {2, 3, 1e30F}, {most, 4, 10.0 / (4.0 * most)}},
      {most, {2, 1, 1}, {2, most, 0.5}},
  };
  for (const Row& row : rows) {
    const ValidationPlan plan = planValidation(row.settings, row.n);
    const auto text = testing::Message() << row.n << " rows, method " << row.settings.method << ", "
                                         << row.settings.groups << " groups, fraction " << row.settings.fraction;
    EXPECT_EQ(plan.folds, row.plan.folds) << text;
    EXPECT_EQ(plan.leaveOut, row.plan.leaveOut) << text;
    EXPECT_EQ(plan.pressWeight, row.plan.pressWeight) << text;
  }
}

// Every n and k of a small world, and fractions whose 32-bit products fall on either side of an integer.
TEST(Validation, PlansAsDefinedAndStoresThePlan) {
  for (std::int32_t n = 1; n <= 40; ++n)
    for (std::int32_t k = -1; k <= 42; ++k)
      for (const float fraction : {0.0F, 0.1F, 0.7F, 1.0F, 2.3F})
        for (const std::int32_t method : {0, 1}) {
          const definition::Plan expected = definition::plan(method, k, fraction, n);
          cvMethod = method, cvGroups = k, cvFraction = fraction;
          VldPln(&n);
          ASSERT_TRUE(cvFolds == expected.folds && cvLeaveOut == expected.leaveOut &&
                      cvPressWeight == expected.pressWeight)
              << n << " rows, " << k << " groups, " << fraction << ", method " << method;
        }
}

TEST(Validation, DealsSystematicGroupsAlongTheOrder) {
  const Rows order = {4, 9, 1, 7, 2, 10, 3, 8, 5, 6};
  for (const Rows& usable : {Rows(10, 1), Rows{1, 1, 0, 1, 1, 1, 2, 1, 1, 0}})  // read by position
    for (std::int32_t group = 1; group <= 4; ++group) {
      cvMethod = 1, cvGroups = 3;
      Fold fold(order, usable);
      VldPln(&fold.n);
      const Rows training = definition::systematicTrainingRows(order, usable, 3, group);
      EXPECT_EQ(fold.take(5, group), training) << group;
      EXPECT_TRUE(fold.packed);
      EXPECT_EQ(fold.take(6, group), others(10, training)) << group;
      EXPECT_TRUE(fold.packed);
    }
  Fold fold(order, Rows(10, 1));
  fold.take(5, 1);
  EXPECT_EQ(fold.take(6, 1), (Rows{3, 4, 6, 7})) << "positions 1, 4, 7, 10";
}

TEST(Validation, DrawsRandomRowsInTheGeneratorsOrder) {
  // Read by row. Two usable rows of ten are fewer than the six wanted: the draw ends early.
  const Rows marks[] = {Rows(10, 1), {1, 0, 1, 1, 5, 1, 1, 0, 1, 1}, {0, 0, 1, 0, 0, 0, 0, 1, 0, 0}, Rows(10, 0)};
  // The last seed's first draws give the indices -1 and 10, just outside the ten rows.
  for (const std::int32_t seed : {0, -1, -2147483588})
    for (const Rows& usable : marks) {
      cvMethod = 2, cvGroups = 3, cvFraction = 1;
      Fold fold({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, usable);
      VldPln(&fold.n);
      definition::Generator generator;
      Nmrrst();
      if (seed != 0) Nmrand(seed), generator.draw(seed);  // otherwise the first fold's draws seed the generator
      for (int g = 1; g <= 30; ++g) {
        const Rows training = definition::randomTrainingRows(usable, 4, generator);
        ASSERT_EQ(fold.take(5, g), training) << "seed " << seed << " fold " << g;
        EXPECT_TRUE(fold.packed);
        ASSERT_EQ(fold.take(6, g), others(10, training));
      }
    }
}

TEST(Validation, TouchesNothingOutsideTheRows) {
  std::int32_t n = 0, m = 3, count = 9, columns = 9, group = 1, code = 5;
  const auto call = [&] {
    VldGrp(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &n, &m, &count, &columns, &group, &code);
    return count;
  };
  code = 7, n = 10;
  EXPECT_EQ(call(), 9) << "another code";
  for (n = -1; n <= 0; ++n)
    for (cvMethod = 1; cvMethod <= 2; ++cvMethod)
      for (code = 5; code <= 6; ++code) {
        count = 9;
        VldPln(&n);
        EXPECT_EQ(call(), 0) << n << " rows, method " << cvMethod << ", code " << code;
      }
  cvMethod = 1, cvGroups = 2;
  Fold fold({3, 0, -5, 4}, Rows(4, 1));  // entries that name no row of four
  VldPln(&fold.n);
  EXPECT_EQ(fold.take(5, 1), (Rows{4}));
}

}  // namespace
}  // namespace studystats::core
