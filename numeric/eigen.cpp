// Eigenvalues and eigenvectors of a symmetric matrix, largest eigenvalue first.

#include "numeric/eigen.h"

#include <algorithm>

#include "numeric/matrix_view.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// Column k changes places with column n - 1 - k, whole declared columns, spare rows included.
void reverseColumns(Matrix z, int n, Pace& pace) {
  for (int k = 0; k < n / 2 && pace.goOn(z.ld); ++k)
    std::swap_ranges(z.column(k), z.column(k) + z.ld, z.column(n - 1 - k));
}

std::int32_t decompose(ConstMatrix a, std::int32_t n, double* w, Matrix z, double* work1, Pace& pace) {
  if (n < 1) return kDone;
  reduceWithVectors(a, n, w, work1, z, pace);
  const std::int32_t status = iterateWithVectors(n, w, work1, z, pace);
  if (pace.stopped()) return kStopped;
  reverseColumns(z, n, pace);
  std::reverse(w, w + n);
  return pace.stopped() ? kStopped : status;
}

}  // namespace

void EigSym(const std::int32_t* nm, const std::int32_t* n, double* a, double* w, const std::int32_t* wantVectors,
            double* z, double* work1, double* work2, std::int32_t* ierr) {
  if (*n > *nm) {
    *ierr = static_cast<std::int32_t>(std::int64_t{10} * *n);
    return;
  }
  *ierr = kDone;
  if (*n < 1) return;

  if (*wantVectors != 0) {
    Pace unasked;
    *ierr = decompose({a, *nm}, *n, w, {z, *nm}, work1, unasked);
    return;
  }
  Tred1(nm, n, a, w, work1, work2);
  Tql1(n, w, work1, ierr);
  std::reverse(w, w + *n);
}

std::int32_t eigenSystem(const double* a, std::int32_t n, double* w, double* z, double* work1, Pace& pace) {
  return decompose({a, n}, n, w, {z, n}, work1, pace);
}

}  // namespace studystats::core
