#include <gtest/gtest.h>
#include <studystats/utilities.h>

#include <climits>
#include <cmath>
#include <limits>

#include "tests/refusal.h"

namespace {

using namespace StatsCalcUtils;
using studystats::test::invalid;
using studystats::test::refusal;
using Reals = std::vector<double>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

struct Description {
  double range = 77, maximum = 77, minimum = 77, mean = 77, deviation = 77, variance = 77, absolute = 77, skewness = 77,
         kurtosis = 77;
};

Description describe(const Reals& values, std::int32_t count) {
  Description d;
  UnivariateStatistics(values, count, d.range, d.maximum, d.minimum, d.mean, d.deviation, d.variance, d.absolute,
                       d.skewness, d.kurtosis);
  return d;
}

TEST(Univariate, EqualsExactArithmetic) {
  // Moments in rational arithmetic, roots to 40 digits (python's fractions and decimal).
  const struct {
    Reals values;
    double range, mean, deviation, variance, absolute, skewness, kurtosis;
  } kRows[] = {
      {{2, 4, 4, 4, 5, 5, 7, 9}, 7, 5, 2.1380899352993951, 4, 1.5, 0.53713245689039979, -0.87060546875},
      {{16, 4, 1, 8, 2}, 15, 6.2, 6.0991802727907625, 29.76, 4.64, 0.63615106071043437, -1.5113978494623656},
      {{3}, 0, 3, 0, 0, 0, 0, 0},
      {{-2, -2, -2}, 0, -2, 0, 0, 0, 0, 0},
  };
  for (const auto& row : kRows) {
    Reals longer = row.values;
    longer.insert(longer.end(), {1e300, kNaN});  // past the count: not used
    const Description d = describe(longer, std::int32_t(row.values.size()));
    EXPECT_EQ(d.maximum - d.minimum, row.range);
    EXPECT_EQ(d.range, row.range);
    EXPECT_DOUBLE_EQ(d.mean, row.mean);
    EXPECT_DOUBLE_EQ(d.deviation, row.deviation);
    EXPECT_DOUBLE_EQ(d.variance, row.variance);
    EXPECT_DOUBLE_EQ(d.absolute, row.absolute);
    EXPECT_NEAR(d.skewness, row.skewness, 1e-15);
    EXPECT_NEAR(d.kurtosis, row.kurtosis, 1e-15);
  }
}

TEST(Univariate, KeepsItsDigitsWhenTheSpreadIsSmallBesideTheMean) {
  // NIST Statistical Reference Datasets, NumAcc1 and NumAcc4: certified standard deviations 1 and 0.1.
  EXPECT_EQ(describe({10000001, 10000003, 10000002}, 3).deviation, 1.0);
  Reals numAcc4{10000000.2};
  for (int i = 0; i < 500; ++i) numAcc4.insert(numAcc4.end(), {10000000.1, 10000000.3});
  EXPECT_NEAR(describe(numAcc4, 1001).deviation, 0.1, 1e-8);  // the data themselves carry 1e-9 of rounding each
}

TEST(Univariate, ANotANumberReachesTheMomentsButNotTheShape) {
  const Description d = describe({1, kNaN, 3}, 3);
  EXPECT_EQ(d.minimum, 1);
  EXPECT_EQ(d.maximum, 3);
  for (const double moment : {d.mean, d.deviation, d.variance, d.absolute}) EXPECT_TRUE(std::isnan(moment));
  EXPECT_EQ(d.skewness, 0);
  EXPECT_EQ(d.kurtosis, 0);
}

TEST(Univariate, RefusesACountOutsideTheListAndWritesNothing) {
  for (const std::int32_t count : {0, -1, 4, INT_MAX, INT_MIN}) {
    Description d;
    EXPECT_EQ(refusal([&] {
                UnivariateStatistics({1, 2, 3}, count, d.range, d.maximum, d.minimum, d.mean, d.deviation, d.variance,
                                     d.absolute, d.skewness, d.kurtosis);
              }),
              invalid("UnivariateStatistics"));
    for (const double out :
         {d.range, d.maximum, d.minimum, d.mean, d.deviation, d.variance, d.absolute, d.skewness, d.kurtosis})
      EXPECT_EQ(out, 77);
  }
}

TEST(BestFit, IsTheLeastSquaresLineAndFlatWhenAColumnIsConstant) {
  const struct {
    Reals x, y;
    double slope, intercept;
  } kRows[] = {
      {{1, 2, 3}, {2, 4, 6}, 2, 0},
      {{8, 1, 4, 2}, {1, 3, 4, 1}, -19.0 / 115, 66.0 / 23},  // by hand, in fractions
      {{5, 5, 5}, {1, 2, 6}, 0, 3},
      {{1, 2, 6}, {4, 4, 4}, 0, 4},
      {{7}, {9}, 0, 9},
  };
  for (const auto& row : kRows) {
    double slope, intercept, xStart, yStart, xEnd, yEnd;
    CalculateBestFit(row.x, row.y, slope, intercept);
    EXPECT_NEAR(slope, row.slope, 1e-15);
    EXPECT_NEAR(intercept, row.intercept, 1e-15);
    CalculateBestFit(row.x, row.y, xStart, yStart, xEnd, yEnd);
    EXPECT_EQ(xStart, *std::min_element(row.x.begin(), row.x.end()));
    EXPECT_EQ(xEnd, *std::max_element(row.x.begin(), row.x.end()));
    EXPECT_EQ(yStart, slope * xStart + intercept);
    EXPECT_EQ(yEnd, slope * xEnd + intercept);
  }
}

TEST(BestFit, RefusesInconsistentColumnsAndWritesNothing) {
  for (const auto& [x, y] : {std::pair<Reals, Reals>{{1, 2, 3}, {1, 2, 3, 4}}, {{1}, {}}, {{}, {}}}) {
    double a = 77, b = 77, c = 77, d = 77;
    const std::string expected = "8000FFFF Data inconsistency in RawCalculateBestFit.";
    EXPECT_EQ(refusal([&] { CalculateBestFit(x, y, a, b); }), expected);
    EXPECT_EQ(refusal([&] { CalculateBestFit(x, y, a, b, c, d); }), expected);
    EXPECT_EQ(a + b + c + d, 4 * 77);
  }
}

TEST(Covariance, IsTheSumOfProductsOverAllOfX) {
  EXPECT_EQ(Covariance({1, 2, 3}, {1, 2, 3}), 2);
  EXPECT_EQ(Covariance({1, 2, 3}, {6, 4, 2, 1e300}), -4);
  EXPECT_EQ(Covariance({}, {5}), 0);
  EXPECT_EQ(refusal([] { Covariance({1, 2}, {1}); }), invalid("Covariance"));
}

TEST(ClassAgreement, IsTheShareOfEqualPositions) {
  EXPECT_EQ(CorrelationBetweenClasses({1, 2, 2, 3}, {1, 2, 3, 3}), 0.75);
  EXPECT_EQ(CorrelationBetweenClasses({1, 2}, {1, 2, 9}), 1);
  EXPECT_TRUE(std::isnan(CorrelationBetweenClasses({}, {1})));
  EXPECT_EQ(refusal([] { CorrelationBetweenClasses({1, 2}, {1}); }), invalid("CorrelationBetweenClasses"));
}

// Equal, a not-a-number being equal to a not-a-number.
void expectColumn(const Reals& found, const Reals& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i)
    EXPECT_TRUE(std::isnan(expected[i]) ? std::isnan(found[i]) : std::fabs(found[i] - expected[i]) <= 1e-15)
        << i << ": " << found[i] << " instead of " << expected[i];
}

TEST(Standardization, RewritesOneColumnByItsKind) {
  const double r = std::sqrt(0.5);
  const struct {
    Reals values;
    int type;
    double offset, divisor;
    Reals result;
  } kRows[] = {
      {{0, 10}, 1, 5, 5, {-1, 1}},
      {{1, kNaN, 3}, 2, 2, std::sqrt(2.0), {-r, kNaN, r}},
      {{1, -kNaN, 3}, 1, 2, 1, {-1, kNaN, 1}},
      {{1, kNaN, 4}, 3, 2.5, 1, {-1.5, kNaN, 1.5}},
      {{4, 4}, 2, 4, 1, {0, 0}},
      {{4, 4}, 1, 4, 1, {0, 0}},
      {{kNaN, 5}, 2, 5, 1, {kNaN, 0}},
      {{kNaN, kNaN}, 2, 0, 1, {kNaN, kNaN}},
      {{3, 8}, 0, 0, 1, {3, 8}},
      {{3, 8}, 17, 0, 1, {3, 8}},
      {{3, 8}, -1, 0, 1, {3, 8}},
      {{1, kInf, kNaN}, 3, kInf, 1, {-kInf, kNaN, kNaN}},  // infinities take part: inf - inf
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << "type " << row.type << testing::PrintToString(row.values));
    const auto n = std::int32_t(row.values.size());
    Reals data(row.values.size(), 99);  // a column before, one behind
    data.insert(data.end(), row.values.begin(), row.values.end());
    data.push_back(98);
    double divisor = 77, offset = 77;
    StandardizeData(data, n, -5, 1, STATS_STANDARDIZATION_TYPE(row.type), divisor, offset);
    EXPECT_DOUBLE_EQ(divisor, row.divisor);
    EXPECT_DOUBLE_EQ(offset, row.offset);
    if (std::isinf(row.offset)) {
      EXPECT_EQ(data[3], -kInf);
      EXPECT_TRUE(std::isnan(data[4]) && std::isnan(data[5]));
    } else {
      expectColumn({data.begin() + n, data.end() - 1}, row.result);
    }
    EXPECT_EQ(data.front() + data[std::size_t(n) - 1] + data.back(), 99 + 99 + 98);
  }
}

TEST(Standardization, OfEqualValuesWhoseMeanRoundsDividesByTheRoundingLeft) {
  // Ten times 0.1 adds up to 1 - 2^-53: the mean misses 0.1 by one ulp d, and every value becomes
  // d / sqrt(10 d^2 / 9) = sqrt(0.9). Whether a column is constant is therefore found by comparison, not from its
  // spread.
  Reals data(10, 0.1);
  double divisor, offset;
  StandardizeData(data, 10, 1, 0, STATS_STANDARDIZE_AUTOSCALE, divisor, offset);
  EXPECT_EQ(offset, std::nextafter(0.1, 0.0));
  expectColumn(data, Reals(10, std::sqrt(0.9)));
}

TEST(Standardization, LeavesEverythingAloneWithoutRowsAndRefusesAColumnOutsideTheData) {
  Reals data{1, 2, 3, 4, 5};
  const Reals before = data;
  const auto type = STATS_STANDARDIZE_MEAN_CENTRE;
  for (const std::int32_t nRows : {0, -1, INT_MIN}) {
    double divisor = 77, offset = 77;
    StandardizeData(data, nRows, 1, INT_MAX, type, divisor, offset);
    EXPECT_EQ(divisor, 1);
    EXPECT_EQ(offset, 0);
  }
  for (const auto& [nRows, column] :
       {std::pair{2, 2}, {2, -1}, {6, 0}, {INT_MAX, INT_MAX}, {INT_MAX, INT_MIN}, {1, 5}, {2, INT_MAX}}) {
    double divisor = 77, offset = 77;
    EXPECT_EQ(refusal([&] { StandardizeData(data, nRows, 99, column, type, divisor, offset); }),
              invalid("StandardizeData"))
        << nRows << ", " << column;
    EXPECT_EQ(divisor + offset, 2 * 77);
  }
  EXPECT_EQ(data, before);
}

}  // namespace
