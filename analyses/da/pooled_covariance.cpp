// Products are summed one sample after the other, all pairs of variables side by side. Each pair is computed once: a
// product does not depend on the order of its factors. Dividing the products is what takes the time: pairs lie without
// a gap, and where a multiplication gives the same bits (numeric/quotient.h) it stands in.
#include "analyses/da/pooled_covariance.h"

#include <algorithm>
#include <cmath>

#include "numeric/multiversion.h"
#include "numeric/quotient.h"

namespace studystats::core {
namespace {

constexpr int kSamples = 8;   // samples whose deviations are taken together
constexpr int kLanes = 8;     // products computed side by side
constexpr int kTogether = 8;  // variables summed side by side

std::ptrdiff_t nPairs(std::ptrdiff_t m) { return (m + 1) * m / 2; }

// products = d(0) d(0), d(0) d(1), ..., d(0) d(m - 1), d(1) d(1), ..., d(m - 1) d(m - 1). Whole vectors are written:
// what one variable's products leave behind their end is overwritten by the next one's, and the last one's lies behind
// nPairs(m). d has kLanes more entries.
STUDYSTATS_MULTIVERSION
void multiplyPairs(const double* __restrict d, std::ptrdiff_t m, double* __restrict products) {
  for (std::ptrdiff_t k = 0; k < m; ++k) {
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
struct ProductScratch {
  ProductScratch(double* start, std::ptrdiff_t m)
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

// Sums all pairs; the smallest magnitude of a deviation that is not 0. centre(i, a): what sample i's value of the a-th
// variable is taken from.
template <class Centre>
MagnitudeKey sumPairs(const Products& p, Centre centre, const ProductScratch& s, AddQuotients add) {
  MagnitudeKey smallest = kNoMagnitude;
  std::fill_n(s.sums, nPairs(p.m), 0.0);
  for (std::ptrdiff_t row = 0; row < p.n; row += kSamples) {
    const std::ptrdiff_t rows = std::min<std::ptrdiff_t>(kSamples, p.n - row);
    for (std::int32_t a = 0; a < p.m; ++a) {
      const double* column = p.x.column(p.variables == nullptr ? a : p.variables[a]) + row;
      for (std::ptrdiff_t i = 0; i < rows; ++i) {
        const double d = column[i] - centre(row + i, a);
        s.deviations[i * s.ld + a] = d;
        smallest = std::min(smallest, magnitudeKey(d));
      }
    }
    for (std::ptrdiff_t i = 0; i < rows; ++i) {
      multiplyPairs(s.deviations + i * s.ld, p.m, s.products);
      add(s.products, nPairs(p.m), p.divisor, s.sums);
    }
  }
  return smallest;
}

bool allFinite(const double* sums, std::ptrdiff_t n) {
  return std::all_of(sums, sums + n, [](double sum) { return std::isfinite(sum); });
}

// c (m x m) = sums of the products of deviations, each divided by the divisor before it is added.
template <class Centre>
void sumProducts(const Products& p, Centre centre, Matrix c, double* scratch) {
  const ProductScratch s(scratch, p.m);
  const bool multiplied = canMultiply(p.divisor) && sumPairs(p, centre, s, addMultiplying) >= kSmallestFactor &&
                          allFinite(s.sums, nPairs(p.m));
  if (!multiplied) sumPairs(p, centre, s, addDividing);
  const double* sum = s.sums;
  for (std::int32_t k = 0; k < p.m; ++k)
    for (std::int32_t j = k; j < p.m; ++j) c(j, k) = c(k, j) = *sum++;
}

// A class without samples keeps a mean of 0.
void classMeans(const DaSamples& s, Matrix means) {
  std::fill_n(means.data, area(means.ld, s.g), 0.0);
  for (std::int32_t j = 0; j < s.p; j += kTogether) {
    const int together = std::min(kTogether, s.p - j);
    for (std::int32_t i = 0; i < s.n; ++i) {
      double* sums = means.column(s.classOf[i] - 1) + j;
      for (int q = 0; q < together; ++q) sums[q] += s.x(i, j + q);
    }
  }
  for (std::int32_t c = 0; c < s.g; ++c)
    for (std::int32_t j = 0; j < s.p && s.classSize[c] > 0; ++j) means(j, c) /= s.classSize[c];
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

void poolCovariance(const DaSamples& s, Matrix means, Matrix within, double* scratch) {
  classMeans(s, means);
  std::fill_n(within.data, area(within.ld, within.ld), 0.0);
  const auto centre = [&s, means](std::ptrdiff_t i, std::int32_t a) { return means(a, s.classOf[i] - 1); };
  sumProducts({s.x, s.n, nullptr, s.p, static_cast<double>(s.n - s.g)}, centre, within, scratch);
}

void totalScatter(ConstMatrix x, std::int32_t n, const std::int32_t* variables, std::int32_t m, double* means, Matrix c,
                  double* scratch) {
  for (std::int32_t a = 0; a < m; ++a) {
    const double* column = x.column(variables[a]);
    double sum = 0.0;
    for (std::int32_t i = 0; i < n; ++i) sum += column[i];
    means[a] = sum / n;
  }
  const auto centre = [means](std::ptrdiff_t, std::int32_t a) { return means[a]; };
  sumProducts({x, n, variables, m, 1.0}, centre, c, scratch);
}

}  // namespace studystats::core
