// The inverse of a square matrix by Gauss-Jordan elimination with full pivoting, on scratch memory that the caller
// holds.
#pragma once

#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Scratch for matrices up to n x n.
struct InverseScratch {
  InverseScratch(Arena& arena, std::int32_t n) : from(arena, n), to(arena, n), done(arena, n), largest(arena, n) {}

  Array<std::int32_t> from, to;  // the column swaps
  Array<double> done;            // 1 for a row that has had its pivot
  Array<double> largest;         // per column, the largest magnitude among the rows that have not
};

// Replaces the leading n x n block of a by its inverse; kDone or kSingular, as InvMat describes them, or kStopped.
std::int32_t invert(std::int32_t n, Matrix a, InverseScratch& scratch, Pace& pace);

}  // namespace studystats::core
