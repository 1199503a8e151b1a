// Principal components of fewer rows than columns, from the products of the rows.
#pragma once

#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// n rows, p columns.
struct SmallerSideScratch {
  SmallerSideScratch(Arena& arena, std::int32_t n, std::int32_t p)
      : centred(arena, area(p, n)), products(arena, area(n, n)), zeros(arena, n), work(arena, n) {}

  Array<double> centred;   // p x n: a row of the data is a column here
  Array<double> products;  // n x n, and then their eigenvectors
  Array<double> zeros, work;
};

// eigenvalues (n; the last is 0 but for rounding) and the loadings (p x k) of the first k < n components, whose signs
// are those of the largest loadings; both are 0 where a variance is nothing but rounding. means: of the columns. kDone
// or the number of the eigenvalue that did not converge; without meaning once pace has stopped.
std::int32_t smallerSideAxes(ConstMatrix data, std::int32_t n, std::int32_t p, std::int32_t k, const double* means,
                             double* eigenvalues, Matrix loadings, SmallerSideScratch& scratch, Pace& pace);

}  // namespace studystats::core
