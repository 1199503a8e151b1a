// Products are summed one sample after the other, all pairs of variables side by side. Each pair is computed once: a
// product does not depend on the order of its factors. Dividing the products is what takes the time: pairs lie without
// a gap, and where a multiplication gives the same bits (numeric/quotient.h) it stands in.
#include "analyses/da/pooled_covariance.h"

#include <algorithm>
#include <cmath>

#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kSamples = 8;   // samples whose deviations are taken together
constexpr int kLanes = 8;     // products computed side by side
constexpr int kTogether = 8;  // variables summed side by side
constexpr int kStrip = 128;   // variables of one column of the covariance that are summed side by side

std::ptrdiff_t nPairs(std::ptrdiff_t m) { return (m + 1) * m / 2; }

// Where the pairs of variable k begin.
std::ptrdiff_t pairsBefore(std::ptrdiff_t k, std::ptrdiff_t m) { return k * m - k * (k - 1) / 2; }

// products = d(k) d(k), d(k) d(k + 1), ..., d(k) d(m - 1) for k = first ... last - 1. Whole vectors are written: what
// one variable's products leave behind their end is overwritten by the next one's, and the last one's lies behind
// nPairs(m). d has kLanes more entries.
STUDYSTATS_MULTIVERSION
void multiplyPairs(const double* __restrict d, std::ptrdiff_t first, std::ptrdiff_t last, std::ptrdiff_t m,
                   double* __restrict products) {
  for (std::ptrdiff_t k = first; k < last; ++k) {
    for (std::ptrdiff_t j = k; j < m; j += kLanes)
      for (int q = 0; q < kLanes; ++q) products[j - k + q] = d[k] * d[j + q];
    products += m - k;
  }
}

template <class Quotient>
[[gnu::always_inline]] inline void addQuotients(const double* __restrict products, std::ptrdiff_t n, Quotient quotient,
                                                double* __restrict sums) {
  for (std::ptrdiff_t q = 0; q < n; ++q) sums[q] += quotient(products[q]);
}

using AddQuotients = void (*)(const double* products, std::ptrdiff_t n, double divisor, double* sums);

STUDYSTATS_MULTIVERSION
void addDividing(const double* products, std::ptrdiff_t n, double divisor, double* sums) {
  addQuotients(products, n, Divide{divisor}, sums);
}

STUDYSTATS_MULTIVERSION
void addMultiplying(const double* products, std::ptrdiff_t n, double divisor, double* sums) {
  addQuotients(products, n, Multiply(divisor), sums);
}

// Where the sums of products work: deviations of a few samples, one row each; the products of one; their sums.
struct ProductArrays {
  ProductArrays(double* start, std::ptrdiff_t m)
      : deviations(start), ld(m + kLanes), products(start + kSamples * ld), sums(products + nPairs(m) + kLanes) {}
  double* deviations;
  std::ptrdiff_t ld;
  double *products, *sums;
};

struct Products {
  ConstMatrix x;
  std::int32_t n;
  const std::int32_t* variables;  // m of x; null: the first m
  std::int32_t m;
  double divisor;
};

// Deviations of some samples from `row` on; the smallest magnitude of one that is not 0.
template <class Centre>
MagnitudeKey takeDeviations(const Products& p, Centre centre, std::ptrdiff_t row, std::ptrdiff_t rows,
                            const ProductArrays& s) {
  MagnitudeKey smallest = kNoMagnitude;
  for (std::int32_t a = 0; a < p.m; ++a) {
    const double* column = p.x.column(p.variables == nullptr ? a : p.variables[a]) + row;
    for (std::ptrdiff_t i = 0; i < rows; ++i) {
      const double d = column[i] - centre(row + i, a);
      s.deviations[i * s.ld + a] = d;
      smallest = std::min(smallest, magnitudeKey(d));
    }
  }
  return smallest;
}

// Sums all pairs; the smallest magnitude of a deviation that is not 0. centre(i, a): what sample i's value of the a-th
// variable is taken from.
template <class Centre>
MagnitudeKey sumPairs(const Products& p, Centre centre, const ProductArrays& s, AddQuotients add, Pace& pace) {
  MagnitudeKey smallest = kNoMagnitude;
  std::fill_n(s.sums, nPairs(p.m), 0.0);
  for (std::ptrdiff_t row = 0; row < p.n; row += kSamples) {
    const std::ptrdiff_t rows = std::min<std::ptrdiff_t>(kSamples, p.n - row);
    smallest = std::min(smallest, takeDeviations(p, centre, row, rows, s));
    if (!pace.goOn(4 * rows * p.m)) return smallest;
    for (std::ptrdiff_t i = 0; i < rows; ++i) {
      const auto pairs = [&](std::ptrdiff_t first, std::ptrdiff_t last) {
        const std::ptrdiff_t begin = pairsBefore(first, p.m), end = pairsBefore(last, p.m);
        multiplyPairs(s.deviations + i * s.ld, first, last, p.m, s.products + begin);
        add(s.products + begin, end - begin, p.divisor, s.sums + begin);
      };
      if (!pace.inParts(p.m, 4 * std::int64_t{p.m}, 1, pairs)) return smallest;
    }
  }
  return smallest;
}

bool allFinite(const double* sums, std::ptrdiff_t n) {
  return std::all_of(sums, sums + n, [](double sum) { return std::isfinite(sum); });
}

// c (m x m) = sums of the products of deviations, each divided by the divisor before it is added.
template <class Centre>
void sumProducts(const Products& p, Centre centre, Matrix c, double* scratch, Pace& pace) {
  const ProductArrays s(scratch, p.m);
  const bool multiplied = canMultiply(p.divisor) && sumPairs(p, centre, s, addMultiplying, pace) >= kSmallestFactor &&
                          allFinite(s.sums, nPairs(p.m));
  if (!multiplied && !pace.stopped()) sumPairs(p, centre, s, addDividing, pace);
  const double* sum = s.sums;
  for (std::int32_t k = 0; k < p.m && pace.goOn(8 * std::int64_t{p.m}); ++k)  // cache lines are written
    for (std::int32_t j = k; j < p.m; ++j) c(j, k) = c(k, j) = *sum++;
}

// A class without samples keeps a mean of 0.
void classMeans(const DaSamples& s, Matrix means, Pace& pace) {
  std::fill_n(means.data, area(means.ld, s.g), 0.0);
  for (std::int32_t j = 0; j < s.p && pace.goOn(std::int64_t{kTogether} * s.n); j += kTogether) {
    const int together = std::min(kTogether, s.p - j);
    for (std::int32_t i = 0; i < s.n; ++i) {
      double* sums = means.column(s.classOf[i] - 1) + j;
      for (int q = 0; q < together; ++q) sums[q] += s.x(i, j + q);
    }
  }
  for (std::int32_t c = 0; c < s.g; ++c)
    for (std::int32_t j = 0; j < s.p && s.classSize[c] > 0; ++j) means(j, c) /= s.classSize[c];
}

double degreesOfFreedom(const DaSamples& s) { return static_cast<double>(s.n - s.g); }

// sums(j) = sum over samples of d(j) * d(v) / (n - g), d being deviations from class means, or of d(j)^2 when v is
// below 0; the smallest magnitude of a deviation that is not 0. A strip of variables at a time.
MagnitudeKey sumColumn(const DaSamples& s, ConstMatrix means, std::int32_t v, AddQuotients add, double* sums,
                       Pace& pace) {
  MagnitudeKey smallest = kNoMagnitude;
  alignas(64) double products[kSamples][kStrip];
  std::fill_n(sums, s.p, 0.0);
  for (std::int32_t j = 0; j < s.p; j += kStrip) {
    const std::int32_t columns = std::min(kStrip, s.p - j);
    for (std::int32_t row = 0; row < s.n; row += kSamples) {
      const std::int32_t rows = std::min(kSamples, s.n - row);
      for (std::int32_t i = 0; i < rows; ++i) {
        const double* centre = means.column(s.classOf[row + i] - 1);
        const double factor = v < 0 ? 0.0 : s.x(row + i, v) - centre[v];
        for (std::int32_t q = 0; q < columns; ++q) {
          const double d = s.x(row + i, j + q) - centre[j + q];
          products[i][q] = d * (v < 0 ? d : factor);
          smallest = std::min(smallest, magnitudeKey(d));
        }
      }
      for (std::int32_t i = 0; i < rows; ++i) add(products[i], columns, degreesOfFreedom(s), sums + j);
      if (!pace.goOn(std::int64_t{6} * rows * columns)) return smallest;
    }
  }
  return smallest;
}

}  // namespace

std::ptrdiff_t productScratch(std::int32_t p) {
  const std::ptrdiff_t m = std::max(p, 0);
  return area(kSamples, m + kLanes) + 2 * (nPairs(m) + kLanes);
}

bool canBePooled(const DaSamples& s) {
  if (s.g < 1 || s.n <= s.g) return false;
  return std::all_of(s.classOf, s.classOf + s.n, [&s](std::int32_t c) { return isClass(c, s.g); });
}

void poolCovariance(const DaSamples& s, Matrix means, Matrix within, double* scratch, Pace& pace) {
  classMeans(s, means, pace);
  for (std::int32_t k = 0; k < within.ld && pace.goOn(within.ld); ++k) std::fill_n(within.column(k), within.ld, 0.0);
  const auto centre = [&s, means](std::ptrdiff_t i, std::int32_t a) { return means(a, s.classOf[i] - 1); };
  if (!pace.stopped()) sumProducts({s.x, s.n, nullptr, s.p, degreesOfFreedom(s)}, centre, within, scratch, pace);
}

PooledCovariance::PooledCovariance(const DaSamples& samples, Matrix means, CovarianceScratch& scratch, Pace& pace)
    : samples_(samples), means_{means.data, means.ld}, scratch_(&scratch) {
  classMeans(samples, means, pace);
  std::fill_n(scratch.slotOf.data(), samples.p, 0);
  double* variances = scratch.variances.data();
  const double df = degreesOfFreedom(samples);
  smallest_ = sumColumn(samples, means_, -1, canMultiply(df) ? addMultiplying : addDividing, variances, pace);
  if (!canMultiply(df)) smallest_ = 0;
  if (smallest_ < kSmallestFactor || !allFinite(variances, samples.p))
    sumColumn(samples, means_, -1, addDividing, variances, pace);
}

void PooledCovariance::require(std::int32_t j, Pace& pace) {
  if (scratch_ == nullptr || scratch_->slotOf[j] != 0) return;
  scratch_->slotOf[j] = ++nColumns_;
  double* sums = column(nColumns_);
  if (smallest_ >= kSmallestFactor) {
    sumColumn(samples_, means_, j, addMultiplying, sums, pace);
    if (allFinite(sums, samples_.p)) return;
  }
  sumColumn(samples_, means_, j, addDividing, sums, pace);
}

void totalScatter(ConstMatrix x, std::int32_t n, const std::int32_t* variables, std::int32_t m, double* means, Matrix c,
                  double* scratch, Pace& pace) {
  for (std::int32_t a = 0; a < m && pace.goOn(n); ++a) {
    const double* column = x.column(variables[a]);
    double sum = 0.0;
    for (std::int32_t i = 0; i < n; ++i) sum += column[i];
    means[a] = sum / n;
  }
  const auto centre = [means](std::ptrdiff_t, std::int32_t a) { return means[a]; };
  if (!pace.stopped()) sumProducts({x, n, variables, m, 1.0}, centre, c, scratch, pace);
}

}  // namespace studystats::core
