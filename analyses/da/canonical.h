// Scatter matrices of the variables of a discriminant model, and its canonical functions.
#pragma once

#include <cstdint>

#include "analyses/da/pooled_covariance.h"
#include "analyses/da/subset_model.h"
#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// For m variables; the numbers of a matrix lie without a gap.
struct CanonicalScratch {
  CanonicalScratch(Arena& arena, std::int32_t m)
      : withinSS(arena, area(m, m)),
        between(arena, area(m, m)),
        rows(arena, area(m, m)),
        whitened(arena, area(m, m)),
        vectors(arena, area(m, m)),
        products(arena, productScratch(m)),
        means(arena, m),
        withinValues(arena, m),
        values(arena, m),
        work1(arena, m),
        work2(arena, m) {}

  Array<double> withinSS, between;
  Array<double> rows;      // whitening vectors: element a * m + k of the k-th belongs to variable a
  Array<double> whitened;  // between-class scatter
  Array<double> vectors;   // eigenvectors, first of withinSS, then of the whitened scatter
  Array<double> products, means, withinValues, values, work1, work2;
};

// What DaScat (classification.h) computes, of the model's variables among themselves: scratch.withinSS and between.
// Samples' classes are not looked at.
void scatterMatrices(const DaSamples& samples, const PooledCovariance& within, const SubsetModel& model,
                     CanonicalScratch& scratch, Pace& pace);

// Outputs of DaCanon (classification.h) of the same names.
struct CanonicalFunctions {
  std::int32_t* count;
  double* values;
  Matrix vectors;
};

// The placeholder that a model of one variable gets.
void onlyCanonicalFunction(const CanonicalFunctions& out);

// The canonical functions of m variables whose scatter matrices are in scratch. kDone, kSingular or kStopped.
std::int32_t canonicalFunctions(std::int32_t m, std::int32_t g, const CanonicalFunctions& out,
                                CanonicalScratch& scratch, Pace& pace);

}  // namespace studystats::core
