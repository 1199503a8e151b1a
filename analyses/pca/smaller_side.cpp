// With X the centred data, n x p and n < p: if X X' u = (n - 1) lambda u, then X'X (X'u) = (n - 1) lambda (X'u). The
// eigenproblem is n x n; X'u, made one long, is the eigenvector of the covariance. What a component leaks into those
// before it grows as their standard deviations compare: it stays below 1e-9 for every component that counts.
//
// Jolliffe, Principal Component Analysis, 2nd ed. (2002), section 3.5.
#include "analyses/pca/smaller_side.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "analyses/pca/pca.h"
#include "numeric/cross_products.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kTile = 8;  // columns taken together: a cache line of the transposed data

void centreTransposed(ConstMatrix data, std::int32_t n, std::int32_t p, const double* means, Matrix centred,
                      Pace& pace) {
  for (std::int32_t j = 0; j < p && pace.goOn(std::int64_t{kTile} * n); j += kTile)
    for (std::int32_t i = 0; i < n; ++i)
      for (std::int32_t q = j; q < std::min(j + kTile, p); ++q) centred(q, i) = data(i, q) - means[q];
}

// Makes a loading vector one long, its largest element positive.
void normalise(double* loading, std::int32_t p) {
  double squares = 0.0, largest = 0.0;
  for (std::int32_t j = 0; j < p; ++j) {
    squares += loading[j] * loading[j];
    if (std::fabs(loading[j]) > std::fabs(largest)) largest = loading[j];
  }
  const double length = largest < 0.0 ? -std::sqrt(squares) : std::sqrt(squares);
  for (std::int32_t j = 0; j < p; ++j) loading[j] /= length;
}

}  // namespace

std::int32_t smallerSideAxes(ConstMatrix data, std::int32_t n, std::int32_t p, std::int32_t k, const double* means,
                             double* eigenvalues, Matrix loadings, SmallerSideScratch& s, Pace& pace) {
  const Matrix centred{s.centred.data(), p}, products{s.products.data(), n};
  centreTransposed(data, n, p, means, centred, pace);
  if (!productsAbout(s.zeros.data(), {centred.data, p}, p, n, products, pace)) return kStopped;
  for (std::int32_t i = 0; i < n; ++i)
    for (std::int32_t j = 0; j < n; ++j) products(j, i) /= n - 1;
  const std::int32_t status = principalAxes({products.data, n}, n, eigenvalues, products, s.work.data(), pace);
  if (status != kDone) return status;

  const double rounding = eigenvalues[0] * (p * std::numeric_limits<double>::epsilon());
  for (std::int32_t a = 0; a < n; ++a)
    if (eigenvalues[a] <= rounding) eigenvalues[a] = 0.0;
  projectSamples({centred.data, p}, p, n, {products.data, n}, k, loadings, pace);
  for (std::int32_t a = 0; a < k && pace.goOn(4 * std::int64_t{p}); ++a) {
    if (eigenvalues[a] == 0.0)
      std::fill_n(loadings.column(a), p, 0.0);
    else
      normalise(loadings.column(a), p);
  }
  return kDone;
}

}  // namespace studystats::core
