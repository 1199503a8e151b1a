// Scores and explained fractions of a principal component analysis, one output after the other.
#pragma once

#include <cstdint>

namespace studystats::definition {

// The arguments and outputs of PCAnal, for n and p of at least 1.
void principalComponents(const double* data, std::int32_t n, std::int32_t p, std::int32_t* nComponents,
                         double* eigenvalues, double* eigenvectors, double* covariance, double* cumExplained,
                         double* scores, double* scoreMeans, double* scoreStdDevs, std::int32_t* status);

}  // namespace studystats::definition
