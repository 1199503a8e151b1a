// Sizes are read, arrays become views, scratch memory is obtained; pca.cpp does the work.
#include "analyses/pca/by_address.h"

#include <algorithm>

#include "analyses/pca/pca.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::core {

namespace {

// What PCAnal needs besides its outputs.
struct PcanalScratch {
  PcanalScratch(Arena& arena, std::int32_t p) : crossProducts(arena, area(p, p)), means(arena, p), work(arena, p) {}
  Array<double> crossProducts, means, work;
};

void mirrorLowerTriangle(std::int32_t p, Matrix a) {
  for (int j = 0; j < p; ++j)
    for (int i = j + 1; i < p; ++i) a(j, i) = a(i, j);
}

}  // namespace

void PcaScr(const double* data, const std::int32_t* p, const std::int32_t* n, const double* eigenvectors,
            double* scores, double* scoreMeans, double* scoreStdDevs) {
  const std::int32_t nSamples = std::max(*n, 0);
  Pace unasked;
  scoreSamples({data, nSamples}, nSamples, *p, {eigenvectors, *p}, *p, {scores, nSamples}, scoreMeans, scoreStdDevs,
               unasked);
}

void PcaCore(const double* data, const std::int32_t* nRows, const std::int32_t* nVars, std::int32_t* nComponents,
             double* eigenvalues, double* eigenvectors, double* covariance, double* cumExplained, double* scores,
             double* scoreMeans, double* scoreStdDevs, std::int32_t* status) {
  const std::int32_t n = *nRows, p = *nVars;
  *status = kSingular;
  if (n < 1 || p < 1) return;
  Obtained<PcanalScratch> scratch(p);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const PcaOutputs out{eigenvalues, {eigenvectors, p}, {covariance, p}, {cumExplained, p},
                       {scores, n}, scoreMeans,        scoreStdDevs};
  Pace unasked;
  *status =
      principalComponents({data, n}, n, p, p, out,
                          {{scratch->crossProducts.data(), p}, scratch->means.data(), scratch->work.data()}, unasked);
  if (*status != kDone) return;
  if (n == 1) mirrorLowerTriangle(p, {covariance, p});  // a single sample's is the caller's
  *nComponents = n > p ? p : n - 1;
}

}  // namespace studystats::core
