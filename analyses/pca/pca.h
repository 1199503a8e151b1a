// Principal component analysis by the eigenvectors of the covariance matrix.
#pragma once

#include <cstdint>

#include "analyses/pca/by_address.h"  // IWYU pragma: export
#include "numeric/matrix_view.h"
#include "numeric/pace.h"

namespace studystats::core {

// Outputs of PCAnal (studystats/analyses.h) of the same names, and the variances of the variables (p). Of the explained
// shares and of the scores the first k columns are computed; what has no data is not.
struct PcaOutputs {
  double* eigenvalues;
  Matrix eigenvectors, covariance, cumExplained, scores;
  double *scoreMeans, *scoreStdDevs;
  double* variances = nullptr;
};

// Scratch of the analysis: crossProducts p x p, or the covariance itself; means and work p numbers each.
struct PcaScratch {
  Matrix crossProducts;
  double *means, *work;
};

// The analysis of n samples and p variables, one at least of both: kDone or the number of the eigenvalue that did not
// converge; without meaning once pace has stopped. The eigenvectors may take the place of the covariance. A single
// sample has none: what is there is decomposed.
std::int32_t principalComponents(ConstMatrix data, std::int32_t n, std::int32_t p, std::int32_t k,
                                 const PcaOutputs& out, const PcaScratch& scratch, Pace& pace);

// c = products / (n - 1) of the centred columns; means (p): out. Their place may be the same.
void covariances(ConstMatrix data, std::int32_t n, std::int32_t p, double* means, Matrix crossProducts, Matrix c,
                 Pace& pace);

// Eigenvalues, largest first and none below 0, and eigenvectors of a (p x p); a may be the place of the vectors. work:
// p numbers. Result as above.
std::int32_t principalAxes(ConstMatrix a, std::int32_t p, double* eigenvalues, Matrix vectors, double* work,
                           Pace& pace);

// scores(i, a) = sum over j of data(i, j) * loadings(j, a), for n samples, p variables and k components.
void projectSamples(ConstMatrix data, std::int32_t n, std::int32_t p, ConstMatrix loadings, std::int32_t k,
                    Matrix scores, Pace& pace);

// Those scores, their means and standard deviations, as PcaScr describes them.
void scoreSamples(ConstMatrix data, std::int32_t n, std::int32_t p, ConstMatrix loadings, std::int32_t k, Matrix scores,
                  double* means, double* deviations, Pace& pace);

// explained(j, a) = min(1, explained(j, a - 1) + loadings(j, a)^2 * variances(a)); a not-a-number stays one.
void accumulateExplained(ConstMatrix loadings, const double* variances, std::int32_t p, std::int32_t k,
                         Matrix explained, Pace& pace);

}  // namespace studystats::core
