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

// sums(j) += factors(b) * right(b, j) for b = 0, 1, ... and j from `first` on; right (m x m) lies row after row.
STUDYSTATS_MULTIVERSION
void addRows(const double* __restrict factors, const double* __restrict right, std::int32_t m, std::int32_t first,
             double* __restrict sums) {
  for (std::int32_t b = 0; b < m; ++b) {
    const double factor = factors[b];
    const double* row = right + std::ptrdiff_t{b} * m;
    for (std::int32_t j = first; j < m; ++j) sums[j] += factor * row[j];
  }
}

std::int32_t decompose(Matrix a, std::int32_t m, double* values, Matrix vectors, CanonicalScratch& s) {
  const std::int32_t wantVectors = 1;
  std::int32_t status = 0;
  EigSym(&a.ld, &m, a.data, values, &wantVectors, vectors.data, s.work1.data(), s.work2.data(), &status);
  return status == 0 ? kDone : kSingular;
}

// The eigenvectors u of the within-class scatter, scaled to unit scatter where they have any, row after row.
void whiten(Matrix u, std::int32_t m, const double* values, double* rows) {
  for (std::int32_t k = 0; k < m; ++k) {
    const double scale = values[k] > 0.0 ? 1.0 / std::sqrt(values[k]) : 1.0;
    for (std::int32_t a = 0; a < m; ++a) rows[std::ptrdiff_t{a} * m + k] = u(a, k) * scale;
  }
}

// whitened(i, j) = sum over a, b of u(a, i) * between(a, b) * u(b, j), one sum over all pairs, a the slower; computed
// for i <= j, many j side by side. sums and factors hold m numbers.
void whitenedBetween(const std::int32_t* variables, std::int32_t m, ConstMatrix between, CanonicalScratch& s,
                     Matrix whitened) {
  const double* rows = s.rows.data();
  double *sums = s.work1.data(), *factors = s.work2.data();
  for (std::int32_t i = 0; i < m; ++i) {
    std::fill_n(sums, m, 0.0);
    for (std::int32_t a = 0; a < m; ++a) {
      for (std::int32_t b = 0; b < m; ++b)
        factors[b] = rows[std::ptrdiff_t{a} * m + i] * between(variables[a], variables[b]);
      addRows(factors, rows, m, i, sums);
    }
    for (std::int32_t j = i; j < m; ++j) whitened(i, j) = whitened(j, i) = sums[j];
  }
}

}  // namespace

void scatterMatrices(const DaSamples& samples, ConstMatrix within, SubsetModel& model, double* variableMeans,
                     double* products, Matrix withinSS, Matrix between) {
  const Matrix total{model.block.data(), model.m};
  const std::int32_t* variables = model.variables.data();
  totalScatter(samples.x, samples.n, variables, model.m, variableMeans, total, products);
  for (std::int32_t k = 0; k < samples.p; ++k) {
    std::fill_n(between.column(k), samples.p, 0.0);
    for (std::int32_t j = 0; j < samples.p; ++j) withinSS(j, k) = within(j, k) * (samples.n - samples.g);
  }
  for (std::int32_t b = 0; b < model.m; ++b)
    for (std::int32_t a = 0; a < model.m; ++a) between(variables[a], variables[b]) = total(a, b);
  for (std::int32_t k = 0; k < samples.p; ++k)
    for (std::int32_t j = 0; j < samples.p; ++j) between(j, k) -= withinSS(j, k);
}

void onlyCanonicalFunction(const CanonicalFunctions& out) {
  *out.count = 1;
  out.values[0] = 1.0;
  out.vectors(0, 0) = 1.0;
}

std::int32_t canonicalFunctions(SubsetModel& model, std::int32_t g, const ScatterMatrices& scatter,
                                const CanonicalFunctions& out, Matrix work1, Matrix work2, CanonicalScratch& s) {
  const std::int32_t m = model.m;
  const std::int32_t* variables = model.variables.data();

  // 1. Whitening vectors.
  for (std::int32_t b = 0; b < m; ++b)
    for (std::int32_t a = 0; a < m; ++a) work1(a, b) = scatter.within(variables[a], variables[b]);
  if (decompose(work1, m, s.withinValues.data(), work2, s) != kDone) return kSingular;
  whiten(work2, m, s.withinValues.data(), s.rows.data());

  // 2. Between-class scatter in whitened coordinates, and 3. its eigenvectors.
  whitenedBetween(variables, m, scatter.between, s, work1);
  if (decompose(work1, m, s.values.data(), work2, s) != kDone) return kSingular;

  *out.count = std::min(m, g - 1);
  for (std::int32_t k = 0; k < *out.count; ++k) {
    const double* vector = work2.column(k);
    double squares = 0.0;
    for (std::int32_t a = 0; a < m; ++a) squares += vector[a] * vector[a];
    const double length = squares > 0.0 ? std::sqrt(squares) : 1.0;
    out.values[k] = s.values[k];
    for (std::int32_t a = 0; a < m; ++a) out.vectors(a, k) = vector[a] / length;
  }
  return kDone;
}

}  // namespace studystats::core
