// PCAnal, the exported name.
#include <studystats/analyses.h>

#include "analyses/pca/by_address.h"

void PCAnal(const double* data, std::int32_t nRows, std::int32_t nVars, std::int32_t* nComponents, double* eigenvalues,
            double* eigenvectors, double* covariance, double* cumExplained, double* scores, double* scoreMeans,
            double* scoreStdDevs, std::int32_t* status) {
  studystats::core::PcaCore(data, &nRows, &nVars, nComponents, eigenvalues, eigenvectors, covariance, cumExplained,
                            scores, scoreMeans, scoreStdDevs, status);
}
