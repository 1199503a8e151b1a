// Reduction of a symmetric matrix to tridiagonal form, with the orthogonal transformation accumulated.
//
// The published loops run through the lower triangle and form products A u partly as serial sums down a column. Here z
// holds both triangles, so that p = A u is a sum of columns, every p(r) taking its terms from column 0 to the last as
// published, while the vector lanes are different rows r. The update of one reflection and the product of the next
// share one pass over the matrix. The accumulation works on the transposed matrix for the same reason.

#include <algorithm>
#include <cstddef>
#include <utility>

#include "numeric/eigen.h"
#include "numeric/eigen_householder.h"
#include "numeric/matrix_view.h"
#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kColumns = 4;  // columns that share one pass over the rows
constexpr int kRows = 64;  // rows of the transposed transformation taken together: they stay in the second-level cache
constexpr int kTile = 16;  // side of the tiles in which a matrix is transposed

// The rank-two update A - u q' - q u' that a reflection leaves to be done.
struct Update {
  const double* u;
  const double* q;

  // Element (r, c) of the lower triangle, r >= c, in the published order: the column's u first, then its q. Its mirror
  // image (c, r) is computed from the very same call, so the two triangles stay equal.
  double operator()(double value, std::ptrdiff_t r, std::ptrdiff_t c) const {
    return value - u[c] * q[r] - q[c] * u[r];
  }
};

// The update of column i of the leading block of order i + 1.
void updateColumn(double* column, int i, Update update) {
  for (int r = 0; r <= i; ++r) column[r] = update(column[r], i, r);
}

// One column of the pass below.
void updateAndAdd(double* column, int c, int l, Update update, double next, double* p) {
  for (int r = 0; r < l; ++r) {
    column[r] = r < c ? update(column[r], c, r) : update(column[r], r, c);
    p[r] += column[r] * next;
  }
}

// Rows first...last-1 of four columns c...c+3 on one side of the diagonal: x is the factor that the update takes first
// from the column, y the one it takes second.
inline void updateAndAddFour(Matrix z, int c, int first, int last, const double* __restrict x,
                             const double* __restrict y, const double* __restrict next, double* __restrict p) {
  double* __restrict z0 = z.column(c);
  double* __restrict z1 = z.column(c + 1);
  double* __restrict z2 = z.column(c + 2);
  double* __restrict z3 = z.column(c + 3);
  const double x0 = x[c], x1 = x[c + 1], x2 = x[c + 2], x3 = x[c + 3];
  const double y0 = y[c], y1 = y[c + 1], y2 = y[c + 2], y3 = y[c + 3];
  const double n0 = next[c], n1 = next[c + 1], n2 = next[c + 2], n3 = next[c + 3];
  for (int r = first; r < last; ++r) {
    z0[r] = z0[r] - x0 * y[r] - y0 * x[r];
    z1[r] = z1[r] - x1 * y[r] - y1 * x[r];
    z2[r] = z2[r] - x2 * y[r] - y2 * x[r];
    z3[r] = z3[r] - x3 * y[r] - y3 * x[r];
    p[r] = (((p[r] + z0[r] * n0) + z1[r] * n1) + z2[r] * n2) + z3[r] * n3;
  }
}

// Updates columns first to last - 1 of the leading block of order l and adds their share of p = A next, in one pass.
STUDYSTATS_MULTIVERSION
void updateAndMultiply(Matrix z, int first, int last, int l, Update update, const double* next, double* p) {
  int c = first;
  for (; c + kColumns <= last; c += kColumns) {
    const int end = c + kColumns;
    // Above the diagonal an element is its mirror image's: the row's u comes first, then the row's q.
    updateAndAddFour(z, c, 0, c, update.q, update.u, next, p);
    for (int k = c; k < end; ++k) {
      double* const column = z.column(k);
      for (int r = c; r < end; ++r) {
        column[r] = r < k ? update(column[r], k, r) : update(column[r], r, k);
        p[r] += column[r] * next[k];
      }
    }
    updateAndAddFour(z, c, end, l, update.u, update.q, next, p);
  }
  for (; c < last; ++c) updateAndAdd(z.column(c), c, l, update, next[c], p);
}

// z receives the lower triangle of a and its mirror image.
void takeBothTriangles(ConstMatrix a, Matrix z, int n, Pace& pace) {
  for (int j = 0; j < n && pace.goOn(n); ++j)
    for (int i = j; i < n; ++i) z(i, j) = a(i, j);
  for (int i0 = 0; i0 < n && pace.goOn(kTile * std::int64_t{n}); i0 += kTile)
    for (int j0 = 0; j0 <= i0; j0 += kTile)
      for (int i = i0; i < std::min(i0 + kTile, n); ++i)
        for (int j = j0; j < std::min(j0 + kTile, i); ++j) z(j, i) = z(i, j);
}

// Leaves the vector u of reflection i in column i above the diagonal, its h in d(i) (0: no reflection), and the
// tridiagonal matrix in the diagonal of z and in e.
//
// d and e take turns: below index i one holds the q of the update to be done, the other receives the next product.
void reduce(Matrix z, int n, double* d, double* e, Pace& pace) {
  std::fill_n(e, n, 0.0);
  Update update{e, e};  // nothing to be done: subtracting products of zeros changes no bit
  double* q = e;
  double* p = d;
  for (int i = n - 1; i >= 1; --i) {
    const int l = i;
    double* const u = z.column(i);
    updateColumn(u, i, update);

    const double onlyElement = u[l - 1];
    const Reflection r = l > 1 ? makeReflection(u, l) : Reflection{};
    const bool reflects = r.scale != 0.0;
    if (!reflects) std::fill_n(u, l, 0.0);

    std::fill_n(p, l, 0.0);
    const auto columns = [&](int first, int last) { updateAndMultiply(z, first, last, l, update, u, p); };
    if (!pace.inParts(l, 6 * std::int64_t{l}, kColumns, columns)) return;
    if (reflects)
      makeUpdateVector(p, u, r.h, l);
    else
      std::fill_n(p, l, 0.0);

    d[i] = r.h;
    e[i] = reflects ? r.offDiagonal : onlyElement;
    update = {u, p};
    std::swap(p, q);
  }
  e[0] = 0.0;
}

// Rows of the transposed transformation (rows <= kRows, l columns), reflected: each row x becomes x - (x u) v'.
STUDYSTATS_MULTIVERSION
void reflectRows(Matrix t, int rows, int l, const double* u, const double* v) {
  alignas(64) double products[kRows] = {};
  int k = 0;
  for (; k + 4 <= l; k += 4) {
    const double* const t0 = t.column(k);
    const double* const t1 = t.column(k + 1);
    const double* const t2 = t.column(k + 2);
    const double* const t3 = t.column(k + 3);
    for (int r = 0; r < rows; ++r)
      products[r] = (((products[r] + u[k] * t0[r]) + u[k + 1] * t1[r]) + u[k + 2] * t2[r]) + u[k + 3] * t3[r];
  }
  for (; k < l; ++k)
    for (int r = 0; r < rows; ++r) products[r] += u[k] * t(r, k);

  for (k = 0; k < l; ++k) {
    double* const column = t.column(k);
    for (int r = 0; r < rows; ++r) column[r] -= products[r] * v[k];
  }
}

// Accumulates the reflections, first to last, in the transposed leading block of z, which grows by one row and column
// a reflection. The diagonal of the tridiagonal matrix moves to the last row of z, where d collects it.
void accumulateTransposed(Matrix z, int n, double* d, Pace& pace) {
  const int last = n - 1;
  for (int j = 0; j < last; ++j) std::fill(z.column(j) + j + 1, z.column(j) + n, 0.0);
  for (int i = 1; i < n; ++i) {
    const int l = i;
    z(last, i - 1) = z(i - 1, i - 1);
    z(i - 1, i - 1) = 1.0;
    double* const u = z.column(i);
    const double h = d[i];
    if (h != 0.0) {
      for (int k = 0; k < l; ++k) d[k] = u[k] / h;
      for (int r = 0; r < l; r += kRows) {
        reflectRows(z.block(r, 0), std::min(kRows, l - r), l, u, d);
        if (!pace.goOn(4 * kRows * std::int64_t{l})) return;
      }
    }
    std::fill_n(u, l, 0.0);
  }
  for (int i = 0; i < n; ++i) {
    d[i] = z(last, i);
    z(last, i) = 0.0;
  }
  z(last, last) = 1.0;
}

void transpose(Matrix z, int n, Pace& pace) {
  for (int i0 = 0; i0 < n && pace.goOn(kTile * std::int64_t{n}); i0 += kTile)
    for (int j0 = 0; j0 <= i0; j0 += kTile)
      for (int i = i0; i < std::min(i0 + kTile, n); ++i)
        for (int j = j0; j < std::min(j0 + kTile, i); ++j) std::swap(z(i, j), z(j, i));
}

}  // namespace

void reduceWithVectors(ConstMatrix a, std::int32_t n, double* d, double* e, Matrix z, Pace& pace) {
  takeBothTriangles(a, z, n, pace);
  if (!pace.stopped()) reduce(z, n, d, e, pace);
  if (!pace.stopped()) accumulateTransposed(z, n, d, pace);
  if (!pace.stopped()) transpose(z, n, pace);
}

void Tred2(const std::int32_t* nm, const std::int32_t* n, const double* a, double* d, double* e, double* z) {
  Pace unasked;
  if (*n >= 1) reduceWithVectors({a, *nm}, *n, d, e, {z, *nm}, unasked);
}

}  // namespace studystats::core
