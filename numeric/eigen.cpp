// Eigenvalues and eigenvectors of a symmetric matrix, largest eigenvalue first.

#include "numeric/eigen.h"

#include <algorithm>

#include "numeric/matrix_view.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// Column k changes places with column n - 1 - k, whole declared columns, spare rows included.
void reverseColumns(Matrix z, int n) {
  for (int k = 0; k < n / 2; ++k) std::swap_ranges(z.column(k), z.column(k) + z.ld, z.column(n - 1 - k));
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
    Tred2(nm, n, a, w, work1, z);
    Tql2(nm, n, w, work1, z, ierr);
    reverseColumns({z, *nm}, *n);
  } else {
    Tred1(nm, n, a, w, work1, work2);
    Tql1(n, w, work1, ierr);
  }
  std::reverse(w, w + *n);
}

}  // namespace studystats::core
