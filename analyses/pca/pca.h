// Principal component analysis by the eigenvectors of the covariance matrix.
#pragma once

#include <cstdint>

#include "analyses/pca/by_address.h"  // IWYU pragma: export
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Outputs of PCAnal (studystats/analyses.h) of the same names.
struct PcaOutputs {
  std::int32_t* nComponents;
  double* eigenvalues;
  Matrix eigenvectors, covariance, cumExplained, scores;
  double *scoreMeans, *scoreStdDevs;
};

// For p variables.
struct PcaScratch {
  PcaScratch(Arena& arena, std::int32_t p)
      : crossProducts(arena, area(p, p)), means(arena, p), work1(arena, p), work2(arena, p) {}

  Array<double> crossProducts, means, work1, work2;
};

// The analysis of n samples and p variables, one at least of both: kDone, or the number of the eigenvalue that did not
// converge.
std::int32_t principalComponents(ConstMatrix data, std::int32_t n, std::int32_t p, const PcaOutputs& out,
                                 PcaScratch& scratch);

// Scores of n samples on p components, their means and standard deviations, as PcaScr describes them.
void scoreSamples(ConstMatrix data, std::int32_t n, std::int32_t p, ConstMatrix eigenvectors, Matrix scores,
                  double* means, double* deviations);

}  // namespace studystats::core
