// QL with implicit shifts for a symmetric tridiagonal matrix.
//
// Each eigenvalue in turn is isolated at the top of what is left: a subdiagonal element that is negligible beside the
// matrix ends the piece that is iterated on. It is looked for once an eigenvalue, not once a sweep.

#include <algorithm>
#include <cmath>
#include <limits>

#include "numeric/eigen.h"
#include "numeric/eigen_rotations.h"
#include "numeric/matrix_view.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kMostSweeps = 30;  // for one eigenvalue

double hypotenuse(double a, double b) {
  if (std::isunordered(a, b)) return std::numeric_limits<double>::quiet_NaN();
  double p = std::max(std::fabs(a), std::fabs(b));
  if (p == 0.0) return p;
  const double quotient = std::min(std::fabs(a), std::fabs(b)) / p;
  double r = quotient * quotient;
  if (std::isnan(r)) return r;  // two infinities: the iteration would never end
  for (;;) {
    const double t = 4.0 + r;
    if (t == 4.0) return p;
    const double s = r / t;
    const double u = 1.0 + 2.0 * s;
    p *= u;
    const double ratio = s / u;
    r *= ratio * ratio;
  }
}

// The tridiagonal matrix while it is iterated on: diagonal d, subdiagonal e, shifts taken off so far.
struct Tridiagonal {
  int n;
  double* d;
  double* e;
  double shifts = 0.0;
  double largest = 0.0;  // |d| + |e|, over the eigenvalues so far

  // The published loops keep e(i), the element between d(i) and d(i+1), one place higher.
  Tridiagonal(int order, double* diagonal, double* subdiagonal) : n(order), d(diagonal), e(subdiagonal) {
    std::copy(e + 1, e + n, e);
    e[n - 1] = 0.0;
  }

  bool negligible(double element) const { return largest + std::fabs(element) == largest; }

  // The end m of the piece that starts at l. It never passes the last row, even when that element, which should be
  // zero, has become a not-a-number.
  int pieceEnd(int l) const {
    int m = l;
    while (m < n - 1 && !negligible(e[m])) ++m;
    return m;
  }

  // Shifts by the eigenvalue of the leading 2 x 2 block that is nearer to d(l). Returns the new d(l+1).
  double shift(int l) {
    const double g = d[l];
    const double p = (d[l + 1] - g) / (2.0 * e[l]);
    const double r = hypotenuse(p, 1.0);
    const double denominator = p + (p >= 0.0 ? r : -r);  // -0.0 counts as positive
    d[l] = e[l] / denominator;
    d[l + 1] = e[l] * denominator;
    const double h = g - d[l];
    for (int i = l + 2; i < n; ++i) d[i] -= h;
    shifts += h;
    return d[l + 1];
  }

  // One sweep over the piece l...m, from the bottom up; rotated(i, c, s) hears of each rotation.
  template <class Rotated>
  void sweep(int l, int m, Rotated&& rotated) {
    const double dl1 = shift(l), el1 = e[l + 1];
    double p = d[m];
    double c = 1.0, c2 = c, c3 = c, s = 0.0, s2 = 0.0;
    for (int i = m - 1; i >= l; --i) {
      c3 = c2;
      c2 = c;
      s2 = s;
      const double g = c * e[i];
      const double h = c * p;
      const double r = hypotenuse(p, e[i]);
      e[i + 1] = s * r;
      s = e[i] / r;
      c = p / r;
      p = c * d[i] - s * g;
      d[i + 1] = h + s * (c * g + s * d[i]);
      rotated(i, c, s);
    }
    p = -s * s2 * c3 * el1 * e[l] / dl1;
    e[l] = s * p;
    d[l] = c * p;
  }

  // Iterates until e(l) is negligible and returns true with eigenvalue l in d(l); false after too many sweeps.
  template <class Rotated>
  bool isolate(int l, Rotated&& rotated) {
    largest = std::max(largest, std::fabs(d[l]) + std::fabs(e[l]));
    const int m = pieceEnd(l);
    if (m > l) {
      int sweeps = 0;
      do {
        if (sweeps++ == kMostSweeps) return false;
        sweep(l, m, rotated);
      } while (largest + std::fabs(e[l]) > largest);  // false for not-a-numbers
    }
    d[l] += shifts;
    return true;
  }
};

// Selection sort, ascending; the first of equal values wins.
void sortWithVectors(double* d, Matrix z, int n, Pace& pace) {
  for (int i = 0; i < n - 1 && pace.goOn(n); ++i) {
    const int k = static_cast<int>(std::min_element(d + i, d + n) - d);
    if (k == i) continue;
    std::swap(d[i], d[k]);
    std::swap_ranges(z.column(i), z.column(i) + n, z.column(k));
  }
}

}  // namespace

double Pythag(const double* a, const double* b) { return hypotenuse(*a, *b); }

void Tql1(const std::int32_t* n, double* d, double* e, std::int32_t* ierr) {
  *ierr = kDone;
  if (*n <= 1) return;
  Tridiagonal matrix(*n, d, e);
  for (int l = 0; l < *n; ++l) {
    if (!matrix.isolate(l, [](int, double, double) {})) {
      *ierr = l + 1;
      return;
    }
    // Into its place among the eigenvalues so far.
    const double value = d[l];
    int i = l;
    for (; i > 0 && !(value >= d[i - 1]); --i) d[i] = d[i - 1];
    d[i] = value;
  }
}

std::int32_t iterateWithVectors(std::int32_t n, double* d, double* e, Matrix z, Pace& pace) {
  if (n <= 1 || pace.stopped()) return pace.stopped() ? kStopped : kDone;
  std::int32_t status = kDone;
  Tridiagonal matrix(n, d, e);
  ColumnRotations rotations(z, n, pace);
  for (int l = 0; l < n && status == kDone && !pace.stopped(); ++l)
    if (!matrix.isolate(l, [&](int i, double c, double s) { rotations.add(i, c, s); })) status = l + 1;
  rotations.apply();
  if (status == kDone) sortWithVectors(d, z, n, pace);
  return pace.stopped() ? kStopped : status;
}

void Tql2(const std::int32_t* nm, const std::int32_t* n, double* d, double* e, double* z, std::int32_t* ierr) {
  Pace unasked;
  *ierr = iterateWithVectors(*n, d, e, {z, *nm}, unasked);
}

}  // namespace studystats::core
