// Statistics of single columns, class numbers, value transforms with their headings, the text of equation terms, and
// unique names.
//
// Sums run in index order into one accumulator, so that the same input gives the same bits everywhere. A caller's error
// (a count outside the list, lists of unequal length, a column outside the data) raises Dvo::DvoResult with
// E_INVALIDARG and "Invalid argument to <operation>" before any output is written. Exhausted memory raises
// std::bad_alloc.
#pragma once

#include <studystats/host_framework.h>

#include <cstdint>
#include <string>
#include <vector>

namespace StatsCalcUtils {

enum STATS_STANDARDIZATION_TYPE : std::int32_t {
  STATS_STANDARDIZE_NONE = 0,
  STATS_STANDARDIZE_RANGE = 1,       // to -1 ... 1: offset is the middle of the range, divisor half its width
  STATS_STANDARDIZE_AUTOSCALE = 2,   // offset is the mean, divisor the sample standard deviation
  STATS_STANDARDIZE_MEAN_CENTRE = 3  // offset is the mean, divisor 1
};

// Describes the first `count` values (1 ... the list's length) of a column. With d = value - mean and n = count:
//   variance               sum d^2 / n, of the population, in the column's unit squared
//   standardDeviation      sqrt(sum d^2 / (n - 1)), of the sample, in the column's unit; 0 for one value
//   meanAbsoluteDeviation  sum |d| / n
//   skewness, kurtosis     (sum d^3 / n) / s^3 and (sum d^4 / n) / s^4 - 3 with the sample standard deviation s; 0 when
//                          s is 0 or not a number
// The variance is therefore not the square of the standard deviation. A not-a-number makes every moment one.
STUDYSTATS_API void UnivariateStatistics(const std::vector<double>& values, std::int32_t count, double& range,
                                         double& maximum, double& minimum, double& mean, double& standardDeviation,
                                         double& variance, double& meanAbsoluteDeviation, double& skewness,
                                         double& kurtosis);

// The least-squares line y = slope * x + intercept. When all x or all y are equal: slope 0, intercept the mean of y.
// Columns of unequal length, or empty ones, raise E_UNEXPECTED, "Data inconsistency in RawCalculateBestFit.".
STUDYSTATS_API void CalculateBestFit(const std::vector<double>& x, const std::vector<double>& y, double& slope,
                                     double& intercept);
// The same line as its two ends over the range of x.
STUDYSTATS_API void CalculateBestFit(const std::vector<double>& x, const std::vector<double>& y, double& xStart,
                                     double& yStart, double& xEnd, double& yEnd);

// The sum of products of deviations from the means, divided neither by n nor by n - 1, over all of x and as many values
// of y; y may be longer. 0 when x is empty.
STUDYSTATS_API double Covariance(std::vector<double> x, std::vector<double> y);

// The share of positions at which two class assignments agree, over all of `first`; `second` may be longer.
// Not a number when `first` is empty.
STUDYSTATS_API double CorrelationBetweenClasses(std::vector<std::int32_t> first, std::vector<std::int32_t> second);

// Numbers labels: a class number (from 1) for each label is appended to `categories`. Labels that stand in
// categoryNames get the number of their first position there; others are numbered on in the order of their first
// appearance, and appended to categoryNames. Labels are compared byte by byte.
STUDYSTATS_API void ConvertToUniqueCategories(std::vector<std::string>& labels, std::vector<std::int32_t>& categories,
                                              std::vector<std::string>& categoryNames);

// Drops the classes with one member or none. classes: the class of each item, a number of 1 ... the number of names, or
// nothing is changed.
//   keep                        out: one mark an item, true when its class stays
//   newClasses, newClassNames   out: the items kept, with their classes numbered anew in the old order; these may be
//                               the lists that are read
//   itemsKept, classesKept      out: how many
STUDYSTATS_API void RemoveSingleElementClasses(
    std::vector<std::int32_t>& classes, std::vector<std::string>& classNames,
    kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>>& keep,
    std::vector<std::int32_t>& newClasses, std::vector<std::string>& newClassNames, std::int32_t& itemsKept,
    std::int32_t& classesKept);

// Standardises column `column` (from 0) of a column-major matrix of nRows rows in place: (value - offset) / divisor.
// divisor, offset: out; what was used, so that the caller can undo it. A column without spread has divisor 1.
// Missing values (not-a-numbers) take no part in the statistics and stay missing; infinities take part.
// Nothing is changed, with divisor 1 and offset 0, for type NONE, when nRows is 0 or negative, and when every value is
// missing. Any other type that is not listed rewrites the values unchanged. nColumns is not used: the column only has
// to lie within `data`.
STUDYSTATS_API void StandardizeData(std::vector<double>& data, std::int32_t nRows, std::int32_t nColumns,
                                    std::int32_t column, STATS_STANDARDIZATION_TYPE type, double& divisor,
                                    double& offset);

}  // namespace StatsCalcUtils

namespace StatsUtils {

// What is computed of x = value + shift. Any value that is not listed behaves as NONE.
enum STATS_TRANSFORM_TYPE : std::int32_t {
  STATS_TRANSFORM_NONE = 0,        // x
  STATS_TRANSFORM_RECIPROCAL = 1,  // 1 / x
  STATS_TRANSFORM_LOG = 2,         // natural logarithm
  STATS_TRANSFORM_SQRT = 3,
  STATS_TRANSFORM_SQUARE = 4,
  STATS_TRANSFORM_CUBE = 5,
  STATS_TRANSFORM_EXP = 6
};

// result: out. false, and 0, when x lies outside the transform's domain: x = 0 for the reciprocal, x not above 0 for
// the logarithm, x below 0 for the square root (a not-a-number is outside the last two). An overflow succeeds with
// infinity.
STUDYSTATS_API bool TransformValue(double value, STATS_TRANSFORM_TYPE type, double shift, double& result);

// result: out; what the transform computes, as a heading: "log ( X )", with a shift "log ( ( X ) + 1 )". The shift has
// six significant digits.
STUDYSTATS_API void TransformHeading(const std::string& heading, STATS_TRANSFORM_TYPE type, double shift,
                                     std::string& result);

// One term of an equation: sign, magnitude and, unless the name is empty, " * " and the name.
// scientific: 16 digits after the point and an exponent, which a reader gets the same number back from; else fixed with
// 9 digits. signedTerm: a coefficient that is not negative begins with " + ", else with one space; a negative one
// always begins with " - ". An equation is its terms joined, the first with signedTerm false.
STUDYSTATS_API std::string FormatTerm(double coefficient, std::string name, bool scientific, bool signedTerm);

// A number between a and b, given in either order, from the generator that random validation folds use, too. The
// sequence goes on from call to call; only a generator that has not been started is started, with seed 1.
STUDYSTATS_API double GenerateRandomDouble(double a, double b);

}  // namespace StatsUtils

// Hands out names that are unique within one generator. Names are compared byte by byte.
class STUDYSTATS_API UniqueNameGenerator {
 public:
  UniqueNameGenerator();
  // None of these names will be handed out.
  explicit UniqueNameGenerator(
      const kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>& names);
  UniqueNameGenerator(const UniqueNameGenerator& other);
  UniqueNameGenerator& operator=(const UniqueNameGenerator& other);
  ~UniqueNameGenerator();

  // `base` itself when it is free, else the first free of "base (2)", "base (3)", ...; it is taken from now on.
  std::string UniqueName(const std::string& base);

 private:
  kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>> usedNames_;
  // Names are never released: below this counter all of a base's candidates are taken. It only shortens the search.
  kel::map<std::string, std::int64_t> firstCandidate_;
};
