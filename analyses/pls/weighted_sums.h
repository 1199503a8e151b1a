// Weighted sums over a block of numbers, the one operation of NIPALS: every product is divided before it is added, and
// every sum takes its terms in order into one accumulator that starts at 0. Results are without meaning once pace has
// stopped.
#pragma once

#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/quotient.h"

namespace studystats::core {

// A block of a matrix, and the smallest magnitude in it that is not 0, or a smaller one.
struct Block {
  Matrix x;
  std::int32_t rows, columns;
  MagnitudeKey smallest = 0;
};

MagnitudeKey smallestMagnitude(const double* values, std::ptrdiff_t n);

// sums(j) = sum over i of x(i, j) * v(i) / divisor.
void columnSums(const Block& block, const double* v, double divisor, double* sums, Pace& pace);

// sums(i) = sum over j of x(i, j) * v(j) / divisor.
void rowSums(const Block& block, const double* v, double divisor, double* sums, Pace& pace);

// x(i, j) -= down(i) * along(j).
void deflate(Block& block, const double* down, const double* along, Pace& pace);

// deflate, and rowSums of what is left, in one pass over the block.
void deflateAndSum(Block& block, const double* down, const double* along, const double* v, double divisor, double* sums,
                   Pace& pace);

}  // namespace studystats::core
