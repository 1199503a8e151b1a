// The internal routines of the principal component analysis, every argument by address.
#pragma once

#include <cstdint>

namespace studystats::core {

// Does the work of PCAnal (studystats/analyses.h), whose arguments it takes by address in the same order.
// status: kDone; kNoScratch or, without samples or variables, kSingular: nothing else is written; the number of an
// eigenvalue that did not converge: covariance, eigenvalues and eigenvectors are written, the rest is not.
void PcaCore(const double* data, const std::int32_t* nRows, const std::int32_t* nVars, std::int32_t* nComponents,
             double* eigenvalues, double* eigenvectors, double* covariance, double* cumExplained, double* scores,
             double* scoreMeans, double* scoreStdDevs, std::int32_t* status);

// Scores of n samples on p components, their means and standard deviations:
//
//   scores(i, k) = sum over j of data(i, j) * eigenvectors(j, k)       data: n x p, eigenvectors: p x p, scores: n x p
//
// The data enter as they are, not centred. Standard deviations have the divisor n - 1 (none for n = 1), and an exact 0
// is replaced by 1, so that scores can be divided by them.
void PcaScr(const double* data, const std::int32_t* p, const std::int32_t* n, const double* eigenvectors,
            double* scores, double* scoreMeans, double* scoreStdDevs);

}  // namespace studystats::core
