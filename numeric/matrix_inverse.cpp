// Gauss-Jordan elimination with full pivoting, written on columns.
//
// Every step takes the largest element of the rows and columns that have had no pivot yet, swaps its column onto the
// diagonal, and clears the pivot row by subtracting multiples of the pivot column from all other columns. Afterwards
// the column swaps are undone as row swaps, last first. While a column is being reduced its largest open element is
// noted, so the next pivot search looks at one number a column; a maximum does not depend on the order in which it is
// taken.
//
// Press et al., Numerical Recipes, 2nd ed. (1992), section 2.1.
#include "numeric/matrix_inverse.h"

#include <algorithm>
#include <cmath>

#include "numeric/least_squares.h"
#include "numeric/multiversion.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kLanes = 8;

// For every column j of first ... last - 1 but p: adds -factor times the pivot column where factor is its element in
// row p, which becomes 0 first, and notes its largest magnitude among the rows that are not done (-1 when none is a
// number).
STUDYSTATS_MULTIVERSION
void reduceColumns(std::int32_t n, std::int32_t first, std::int32_t last, Matrix a, std::int32_t p,
                   const double* __restrict done, double* largest) {
  const double* __restrict pivotColumn = a.column(p);
  for (std::int32_t j = first; j < last; ++j) {
    if (j == p) continue;
    double* __restrict column = a.column(j);
    const double factor = column[p];
    column[p] = 0.0;
    for (std::int32_t k = 0; k < n; ++k) column[k] -= factor * pivotColumn[k];

    double most[kLanes] = {-1, -1, -1, -1, -1, -1, -1, -1};
    std::int32_t k = 0;
    for (; k + kLanes <= n; k += kLanes)
      for (int q = 0; q < kLanes; ++q) {
        const double v = done[k + q] != 0.0 ? -1.0 : std::fabs(column[k + q]);
        most[q] = v > most[q] ? v : most[q];
      }
    for (; k < n; ++k)
      if (done[k] == 0.0 && std::fabs(column[k]) > most[0]) most[0] = std::fabs(column[k]);
    for (int q = 1; q < kLanes; ++q) most[0] = most[q] > most[0] ? most[q] : most[0];
    largest[j] = most[0];
  }
}

struct Pivot {
  std::int32_t row = -1, column = -1;
};

// Of equal magnitudes the last column, and in it the last row. None when no open element is a number.
Pivot findPivot(std::int32_t n, Matrix a, InverseScratch& s) {
  Pivot pivot;
  double most = 0.0;
  for (std::int32_t j = 0; j < n; ++j)
    if (s.done[j] == 0.0 && s.largest[j] >= most) {
      most = s.largest[j];
      pivot.column = j;
    }
  if (pivot.column < 0) return pivot;
  for (std::int32_t k = 0; k < n; ++k)
    if (s.done[k] == 0.0 && std::fabs(a(k, pivot.column)) == most) pivot.row = k;
  return pivot;
}

// The largest magnitude of each column before the first pivot.
void findLargest(std::int32_t n, Matrix a, InverseScratch& s, Pace& pace) {
  for (std::int32_t j = 0; j < n && pace.goOn(n); ++j) {
    double most = -1.0;
    for (std::int32_t k = 0; k < n; ++k) most = std::fabs(a(k, j)) > most ? std::fabs(a(k, j)) : most;
    s.largest[j] = most;
    s.done[j] = 0.0;
  }
}

}  // namespace

std::int32_t invert(std::int32_t n, Matrix a, InverseScratch& s, Pace& pace) {
  findLargest(n, a, s, pace);
  if (pace.stopped()) return kStopped;
  for (std::int32_t i = 0; i < n; ++i) {
    const Pivot pivot = findPivot(n, a, s);
    if (pivot.column < 0) return kSingular;
    const std::int32_t p = s.to[i] = pivot.row;
    s.from[i] = pivot.column;
    double* pivotColumn = a.column(p);
    if (pivot.column != p) std::swap_ranges(pivotColumn, pivotColumn + n, a.column(pivot.column));
    if (pivotColumn[p] == 0.0) return kSingular;

    s.done[p] = 1.0;
    const double inverse = 1.0 / pivotColumn[p];
    pivotColumn[p] = 1.0;
    for (std::int32_t k = 0; k < n; ++k) pivotColumn[k] *= inverse;
    const auto columns = [&](std::int32_t first, std::int32_t last) {
      reduceColumns(n, first, last, a, p, s.done.data(), s.largest.data());
    };
    if (!pace.inParts(n, 2 * std::int64_t{n}, 1, columns)) return kStopped;
  }
  for (std::int32_t j = 0; j < n && pace.goOn(2 * std::int64_t{n}); ++j)
    for (std::int32_t l = n - 1; l >= 0; --l)
      if (s.from[l] != s.to[l]) std::swap(a(s.from[l], j), a(s.to[l], j));
  return pace.stopped() ? kStopped : kDone;
}

void InvMat(const std::int32_t* n, const std::int32_t* ld, double* a, std::int32_t* status) {
  Obtained<InverseScratch> scratch(*n);
  Pace unasked;
  *status = scratch ? invert(*n, Matrix{a, *ld}, *scratch, unasked) : kNoScratch;
}

}  // namespace studystats::core
