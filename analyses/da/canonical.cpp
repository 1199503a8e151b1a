// Canonical functions of g classes: the directions in which the class means spread most, measured in units of the
// spread within classes.
//
//   1. Within-class scatter S = U diag(e) U'; the whitening vectors are U' = U / sqrt(e).
//   2. Between-class scatter in whitened coordinates, M = U'^T B U'.
//   3. Eigenvectors of M.
//
// Rao (1948), Journal of the Royal Statistical Society B 10, 159-203; Seber, Multivariate Observations (1984), 5.8.
#include "analyses/da/canonical.h"

#include <algorithm>
#include <cmath>

#include "numeric/eigen.h"
#include "numeric/multiversion.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// sums(j) += factors(b) * right(b, j) for b = first ... last - 1 and j from `from` on; right (m x m) lies row after
// row.
STUDYSTATS_MULTIVERSION
void addRows(const double* __restrict factors, const double* __restrict right, std::int32_t m, std::int32_t first,
             std::int32_t last, std::int32_t from, double* __restrict sums) {
  for (std::int32_t b = first; b < last; ++b) {
    const double factor = factors[b];
    const double* row = right + std::ptrdiff_t{b} * m;
    for (std::int32_t j = from; j < m; ++j) sums[j] += factor * row[j];
  }
}

std::int32_t decompose(const Array<double>& a, std::int32_t m, double* values, CanonicalScratch& s, Pace& pace) {
  const std::int32_t status = eigenSystem(a.data(), m, values, s.vectors.data(), s.work1.data(), pace);
  if (pace.stopped()) return kStopped;
  return status == kDone ? kDone : kSingular;
}

// The eigenvectors u of the within-class scatter, scaled to unit scatter where they have any, row after row.
void whiten(ConstMatrix u, std::int32_t m, const double* values, double* rows, Pace& pace) {
  for (std::int32_t k = 0; k < m && pace.goOn(8 * std::int64_t{m}); ++k) {  // cache lines are written
    const double scale = values[k] > 0.0 ? 1.0 / std::sqrt(values[k]) : 1.0;
    for (std::int32_t a = 0; a < m; ++a) rows[std::ptrdiff_t{a} * m + k] = u(a, k) * scale;
  }
}

// whitened(i, j) = sum over a, b of u(a, i) * between(a, b) * u(b, j), one sum over all pairs, a the slower; computed
// for i <= j, many j side by side. sums and factors hold m numbers.
void whitenedBetween(std::int32_t m, CanonicalScratch& s, Pace& pace) {
  const double* rows = s.rows.data();
  const Matrix between{s.between.data(), m}, whitened{s.whitened.data(), m};
  double *sums = s.work1.data(), *factors = s.work2.data();
  for (std::int32_t i = 0; i < m; ++i) {
    std::fill_n(sums, m, 0.0);
    for (std::int32_t a = 0; a < m; ++a) {
      for (std::int32_t b = 0; b < m; ++b) factors[b] = rows[std::ptrdiff_t{a} * m + i] * between(a, b);
      const auto add = [&](std::int32_t first, std::int32_t last) { addRows(factors, rows, m, first, last, i, sums); };
      if (!pace.inParts(m, 2 * std::int64_t{m - i} + 8, 1, add)) return;
    }
    for (std::int32_t j = i; j < m; ++j) whitened(i, j) = whitened(j, i) = sums[j];
  }
}

}  // namespace

void scatterMatrices(const DaSamples& samples, const PooledCovariance& within, const SubsetModel& model,
                     CanonicalScratch& s, Pace& pace) {
  const std::int32_t m = model.m;
  const std::int32_t* variables = model.variables.data();
  const Matrix withinSS{s.withinSS.data(), m}, between{s.between.data(), m};
  totalScatter(samples.x, samples.n, variables, m, s.means.data(), between, s.products.data(), pace);
  for (std::int32_t b = 0; b < m && pace.goOn(4 * std::int64_t{m}); ++b)
    for (std::int32_t a = 0; a < m; ++a) {
      withinSS(a, b) = within(variables[a], variables[b]) * (samples.n - samples.g);
      between(a, b) -= withinSS(a, b);
    }
}

void onlyCanonicalFunction(const CanonicalFunctions& out) {
  *out.count = 1;
  out.values[0] = 1.0;
  out.vectors(0, 0) = 1.0;
}

std::int32_t canonicalFunctions(std::int32_t m, std::int32_t g, const CanonicalFunctions& out, CanonicalScratch& s,
                                Pace& pace) {
  const ConstMatrix vectors{s.vectors.data(), m};

  // 1. Whitening vectors.
  std::int32_t status = decompose(s.withinSS, m, s.withinValues.data(), s, pace);
  if (status != kDone) return status;
  whiten(vectors, m, s.withinValues.data(), s.rows.data(), pace);

  // 2. Between-class scatter in whitened coordinates, and 3. its eigenvectors.
  whitenedBetween(m, s, pace);
  if (!pace.stopped()) status = decompose(s.whitened, m, s.values.data(), s, pace);
  if (pace.stopped() || status != kDone) return pace.stopped() ? kStopped : status;

  *out.count = std::min(m, g - 1);
  for (std::int32_t k = 0; k < *out.count; ++k) {
    const double* vector = vectors.column(k);
    double squares = 0.0;
    for (std::int32_t a = 0; a < m; ++a) squares += vector[a] * vector[a];
    const double length = squares > 0.0 ? std::sqrt(squares) : 1.0;
    out.values[k] = s.values[k];
    for (std::int32_t a = 0; a < m; ++a) out.vectors(a, k) = vector[a] / length;
  }
  return kDone;
}

}  // namespace studystats::core
