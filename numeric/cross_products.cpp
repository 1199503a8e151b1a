// Column means and the matrix of centred sums of squares and cross-products.
//
// Two passes over the data: means first, then products of deviations. The one-pass form sum(xy) - n*mean(x)*mean(y)
// loses every digit when the spread is small beside the mean: Chan, Golub & LeVeque (1983), The American Statistician
// 37, 242-247.
#include "numeric/cross_products.h"

#include <algorithm>

#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kSamples = 8;      // samples taken together
constexpr int kVariables = 256;  // variables taken together: two strips of deviations stay in the first-level cache
constexpr int kTogether = 8;     // columns summed side by side: enough to hide the latency of an addition

// Deviations from the column means, sample by sample. Rows past the last sample are zero: adding 0 * 0 to a sum that
// began at +0 changes no bit of it, and no product pairs such a zero with an infinity.
struct Deviations {
  alignas(64) double d[kSamples][kVariables];

  void take(ConstMatrix x, int nSamples, int nVariables, const double* means) {
    for (int j = 0; j < nVariables; ++j) {
      const double* column = x.column(j);
      for (int i = 0; i < nSamples; ++i) d[i][j] = column[i] - means[j];
      for (int i = nSamples; i < kSamples; ++i) d[i][j] = 0.0;
    }
  }
};

// c(j, k) += left(i, k) * right(i, j), sample after sample, for j >= `below` * k: on the diagonal (below = 1) what lies
// above it is left out, but for the few entries that keep the inner loop starting at a whole vector.
STUDYSTATS_MULTIVERSION
void addProducts(const Deviations& left, int nLeft, const Deviations& right, int nRight, int below, Matrix c) {
  for (int k = 0; k < nLeft; ++k) {
    double* __restrict ck = c.column(k);
    for (int j = below * (k / 8 * 8); j < nRight; ++j) {
      double sum = ck[j];
      for (int i = 0; i < kSamples; ++i) sum += left.d[i][k] * right.d[i][j];
      ck[j] = sum;
    }
  }
}

// The lower triangle of c, a block of variables at a time. Every sum still runs from the first sample to the last, so
// the blocking changes the speed and not one bit of the result.
void addCrossProducts(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, Matrix c, Pace& pace) {
  Deviations left, right;
  for (int k = 0; k < p; k += kVariables)
    for (int j = k; j < p; j += kVariables)
      for (std::int64_t i = 0; i < n; i += kSamples) {
        const int samples = static_cast<int>(std::min<std::int64_t>(kSamples, n - i));
        const int nLeft = std::min(kVariables, p - k), nRight = std::min(kVariables, p - j);
        left.take(x.block(i, k), samples, nLeft, means + k);
        if (j == k) {
          addProducts(left, nLeft, left, nLeft, 1, c.block(k, k));
        } else {
          right.take(x.block(i, j), samples, nRight, means + j);
          addProducts(left, nLeft, right, nRight, 0, c.block(j, k));
        }
        if (!pace.goOn(std::int64_t{2 * kSamples} * nLeft * nRight)) return;
      }
}

// sums(j) = sum over i of term(i, j). Each column has its own accumulator and takes its rows in order.
template <class Term>
void sumColumns(std::int32_t n, std::int32_t p, double* sums, Term term) {
  int j = 0;
  for (; j + kTogether <= p; j += kTogether) {
    double sum[kTogether] = {};
    for (int i = 0; i < n; ++i)
      for (int q = 0; q < kTogether; ++q) sum[q] += term(i, j + q);
    std::copy_n(sum, kTogether, sums + j);
  }
  for (; j < p; ++j) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += term(i, j);
    sums[j] = sum;
  }
}

}  // namespace

void columnMeans(ConstMatrix x, std::int32_t n, std::int32_t p, double* means) {
  sumColumns(n, p, means, [x](int i, int j) { return x(i, j); });
  for (int j = 0; j < p; ++j) means[j] /= n;
}

void columnSquares(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, double* squares) {
  sumColumns(n, p, squares, [x, means](int i, int j) {
    const double deviation = x(i, j) - means[j];
    return deviation * deviation;
  });
}

bool columnMeans(ConstMatrix x, std::int32_t n, std::int32_t p, double* means, Pace& pace) {
  return pace.inParts(p, 2 * std::int64_t{n}, kTogether, [=](std::int32_t first, std::int32_t last) {
    columnMeans(x.block(0, first), n, last - first, means + first);
  });
}

bool columnSquares(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, double* squares, Pace& pace) {
  return pace.inParts(p, 2 * std::int64_t{n}, kTogether, [=](std::int32_t first, std::int32_t last) {
    columnSquares(x.block(0, first), n, last - first, means + first, squares + first);
  });
}

void CrsPrd(const double* x, const std::int32_t* ldx, const std::int32_t* ldc, const std::int32_t* nRows,
            const std::int32_t* nCols, double* c, double* means) {
  Pace unasked;
  crossProducts({x, *ldx}, std::max(*nRows, 0), *nCols, {c, *ldc}, means, unasked);
}

bool crossProducts(ConstMatrix x, std::int32_t n, std::int32_t p, Matrix c, double* means, Pace& pace) {
  return columnMeans(x, n, p, means, pace) && productsAbout(means, x, n, p, c, pace);
}

bool productsAbout(const double* centres, ConstMatrix x, std::int32_t n, std::int32_t p, Matrix c, Pace& pace) {
  for (int j = 0; j < p && pace.goOn(p); ++j) std::fill_n(c.column(j), p, 0.0);
  if (!pace.stopped()) addCrossProducts(x, n, p, centres, c, pace);
  for (int j = 0; j < p && pace.goOn(j); ++j)
    for (int k = 0; k < j; ++k) c(k, j) = c(j, k);
  return !pace.stopped();
}

}  // namespace studystats::core
