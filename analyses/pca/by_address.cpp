// Sizes are read, arrays become views, scratch memory is obtained; pca.cpp does the work.
#include "analyses/pca/by_address.h"

#include <algorithm>

#include "analyses/pca/pca.h"
#include "numeric/status.h"

namespace studystats::core {

void PcaScr(const double* data, const std::int32_t* p, const std::int32_t* n, const double* eigenvectors,
            double* scores, double* scoreMeans, double* scoreStdDevs) {
  const std::int32_t nSamples = std::max(*n, 0);
  scoreSamples({data, nSamples}, nSamples, *p, {eigenvectors, *p}, {scores, nSamples}, scoreMeans, scoreStdDevs);
}

void PcaCore(const double* data, const std::int32_t* nRows, const std::int32_t* nVars, std::int32_t* nComponents,
             double* eigenvalues, double* eigenvectors, double* covariance, double* cumExplained, double* scores,
             double* scoreMeans, double* scoreStdDevs, std::int32_t* status) {
  const std::int32_t n = *nRows, p = *nVars;
  *status = kSingular;
  if (n < 1 || p < 1) return;
  Obtained<PcaScratch> scratch(p);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const PcaOutputs out{nComponents,       eigenvalues, {eigenvectors, p}, {covariance, p},
                       {cumExplained, p}, {scores, n}, scoreMeans,        scoreStdDevs};
  *status = principalComponents({data, n}, n, p, out, *scratch);
}

}  // namespace studystats::core
