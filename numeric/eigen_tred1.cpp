// Reduction of a symmetric matrix to tridiagonal form, transformations not accumulated, in its lower triangle.

#include <algorithm>

#include "numeric/eigen.h"
#include "numeric/eigen_householder.h"
#include "numeric/matrix_view.h"

namespace studystats::core {
namespace {

constexpr int kColumns = 4;  // columns taken together, so that their serial sums run side by side

// One column of the lower triangle of a: its sum g takes the terms of rows first...last-1, and each of those rows of p
// takes its term from this column.
double addColumn(const double* column, double g, double uj, const double* u, double* p, int first, int last) {
  for (int k = first; k < last; ++k) {
    g += column[k] * u[k];
    p[k] += column[k] * uj;
  }
  return g;
}

// Columns j...j+3 below their triangle.
void addFourColumns(ConstMatrix a, int j, double* sums, const double* u, double* p, int l) {
  const double* const a0 = a.column(j);
  const double* const a1 = a.column(j + 1);
  const double* const a2 = a.column(j + 2);
  const double* const a3 = a.column(j + 3);
  double g0 = sums[0], g1 = sums[1], g2 = sums[2], g3 = sums[3];
  for (int k = j + kColumns; k < l; ++k) {
    g0 += a0[k] * u[k];
    g1 += a1[k] * u[k];
    g2 += a2[k] * u[k];
    g3 += a3[k] * u[k];
    p[k] = (((p[k] + a0[k] * u[j]) + a1[k] * u[j + 1]) + a2[k] * u[j + 2]) + a3[k] * u[j + 3];
  }
  sums[0] = g0, sums[1] = g1, sums[2] = g2, sums[3] = g3;
}

// p = A u from the lower triangle of a. Every p(j) takes its terms from column 0 to column l-1: those left of the
// diagonal as the columns pass by, the others from its own column.
void multiply(ConstMatrix a, const double* u, double* p, int l) {
  std::fill_n(p, l, 0.0);
  for (int j = 0; j < l; j += kColumns) {
    const int end = std::min(j + kColumns, l);
    double sums[kColumns];
    for (int c = j; c < end; ++c) sums[c - j] = addColumn(a.column(c), p[c] + a(c, c) * u[c], u[c], u, p, c + 1, end);
    if (end - j == kColumns) addFourColumns(a, j, sums, u, p, l);
    std::copy_n(sums, end - j, p + j);
  }
}

// A - u q' - q u' in the lower triangle.
void update(Matrix a, const double* u, const double* q, int l) {
  for (int j = 0; j < l; ++j) {
    double* const column = a.column(j);
    for (int k = j; k < l; ++k) column[k] = column[k] - u[j] * q[k] - q[j] * u[k];
  }
}

}  // namespace

void Tred1(const std::int32_t* nm, const std::int32_t* n, double* a, double* d, double* e, double* e2) {
  const Matrix m{a, *nm};
  const int last = *n - 1;

  // d holds the row to be reduced; the last row of a keeps the diagonal until its turn comes.
  for (int i = 0; i <= last; ++i) {
    d[i] = m(last, i);
    m(last, i) = m(i, i);
  }
  for (int i = last; i >= 0; --i) {
    const int l = i;
    const Reflection r = makeReflection(d, l);
    e[i] = r.offDiagonal;
    e2[i] = r.offDiagonalSq;
    if (r.scale != 0.0 && l > 1) {
      multiply({a, *nm}, d, e, l);
      makeUpdateVector(e, d, r.h, l);
      update(m, d, e, l);
    }
    // The vector goes to row i; what row i kept of the diagonal moves up to row i-1, whose own elements come next.
    for (int j = 0; j < l; ++j) {
      const double u = r.scale == 0.0 ? 0.0 : d[j] * r.scale;
      d[j] = m(l - 1, j);
      m(l - 1, j) = m(i, j);
      m(i, j) = u;
    }
  }
}

}  // namespace studystats::core
