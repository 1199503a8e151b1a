// Column means, sums of squared deviations, and the matrix of centred cross-products.
#pragma once

#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"

namespace studystats::core {

// Means of the columns of x and the centred sums of squares and cross-products
//
//   c(j, k) = sum over i of (x(i, k) - means(k)) * (x(i, j) - means(j)),
//
// not divided by any count. Every sum runs from the first row to the last.
//
// x       ldx x nCols   in; only the first nRows rows are read
// c       ldc x nCols   out; both triangles of the leading nCols x nCols block, exactly symmetric
// means   nCols         out
//
// No rows (or fewer): the means are not numbers, c is 0. No columns: nothing is written. Allocates nothing.
void CrsPrd(const double* x, const std::int32_t* ldx, const std::int32_t* ldc, const std::int32_t* nRows,
            const std::int32_t* nCols, double* c, double* means);

// The same, asking through pace whether to go on; false: stopped, and c and means are without meaning.
bool crossProducts(ConstMatrix x, std::int32_t n, std::int32_t p, Matrix c, double* means, Pace& pace);

// The same products of deviations from centres (p) of the caller's.
bool productsAbout(const double* centres, ConstMatrix x, std::int32_t n, std::int32_t p, Matrix c, Pace& pace);

// means(j) = (sum over i of x(i, j)) / n. n = 0: not a number.
void columnMeans(ConstMatrix x, std::int32_t n, std::int32_t p, double* means);
bool columnMeans(ConstMatrix x, std::int32_t n, std::int32_t p, double* means, Pace& pace);

// squares(j) = sum over i of (x(i, j) - means(j))^2.
void columnSquares(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, double* squares);
bool columnSquares(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, double* squares, Pace& pace);

}  // namespace studystats::core
