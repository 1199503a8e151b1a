// Principal component analysis: the covariance matrix of the variables, C = V diag(lambda) V', decomposed by the
// symmetric eigensolver; scores T = X V.
//
// The covariance matrix and not the data is decomposed: it costs p^3 whatever the number of samples, its eigenvectors
// are orthonormal to rounding even where eigenvalues repeat, and the signs are the eigensolver's.
// Jolliffe, Principal Component Analysis, 2nd ed. (2002).
#include "analyses/pca/pca.h"

#include <studystats/analyses.h>

#include <algorithm>
#include <cmath>

#include "numeric/cross_products.h"
#include "numeric/eigen.h"
#include "numeric/matrix_view.h"
#include "numeric/multiversion.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kSamples = 256;  // samples taken together: their values of some variables stay in the first-level cache
constexpr int kVariables = 8;  // variables taken together: that many terms for each load and store of a score

// scores(i, k) += data(i, j) * loadings(j, k), variable after variable, for kVariables of them.
STUDYSTATS_MULTIVERSION
void addVariables(ConstMatrix data, ConstMatrix loadings, int nSamples, int nComponents, Matrix scores) {
  for (int k = 0; k < nComponents; ++k) {
    const double* loading = loadings.column(k);
    double* __restrict score = scores.column(k);
    for (int i = 0; i < nSamples; ++i) {
      double sum = score[i];
      for (int j = 0; j < kVariables; ++j) sum += data(i, j) * loading[j];
      score[i] = sum;
    }
  }
}

void addVariable(const double* variable, ConstMatrix loadings, int nSamples, int nComponents, Matrix scores) {
  for (int k = 0; k < nComponents; ++k) {
    const double loading = loadings(0, k);
    double* __restrict score = scores.column(k);
    for (int i = 0; i < nSamples; ++i) score[i] += variable[i] * loading;
  }
}

// A block of samples at a time. Every score still takes its terms from the first variable to the last.
void projectSamples(ConstMatrix data, ConstMatrix loadings, std::int32_t n, std::int32_t p, Matrix scores) {
  for (int k = 0; k < p; ++k) std::fill_n(scores.column(k), n, 0.0);
  for (std::int64_t i = 0; i < n; i += kSamples) {
    const int samples = static_cast<int>(std::min<std::int64_t>(kSamples, n - i));
    int j = 0;
    for (; j + kVariables <= p; j += kVariables)
      addVariables(data.block(i, j), loadings.block(j, 0), samples, p, scores.block(i, 0));
    for (; j < p; ++j) addVariable(&data(i, j), loadings.block(j, 0), samples, p, scores.block(i, 0));
  }
}

void divideBy(double divisor, ConstMatrix from, std::int32_t p, Matrix to) {
  for (int j = 0; j < p; ++j)
    for (int i = 0; i < p; ++i) to(i, j) = from(i, j) / divisor;
}

void mirrorLowerTriangle(std::int32_t p, Matrix a) {
  for (int j = 0; j < p; ++j)
    for (int i = j + 1; i < p; ++i) a(j, i) = a(i, j);
}

// explained(j, k) = min(1, explained(j, k - 1) + loadings(j, k)^2 * variances(k)); a not-a-number stays one.
void accumulateExplained(ConstMatrix loadings, const double* variances, std::int32_t p, Matrix explained) {
  for (int k = 0; k < p; ++k)
    for (int j = 0; j < p; ++j) {
      const double before = k > 0 ? explained(j, k - 1) : 0.0;
      const double sum = before + loadings(j, k) * loadings(j, k) * variances[k];
      explained(j, k) = sum > 1.0 ? 1.0 : sum;
    }
}

}  // namespace

void PcaScr(const double* data, const std::int32_t* p, const std::int32_t* n, const double* eigenvectors,
            double* scores, double* scoreMeans, double* scoreStdDevs) {
  const std::int32_t nSamples = std::max(*n, 0), nComponents = *p;
  const Matrix projected{scores, nSamples};
  projectSamples({data, nSamples}, {eigenvectors, nComponents}, nSamples, nComponents, projected);

  const ConstMatrix result{scores, nSamples};
  columnMeans(result, nSamples, nComponents, scoreMeans);
  columnSquares(result, nSamples, nComponents, scoreMeans, scoreStdDevs);
  for (int k = 0; k < nComponents; ++k) {
    const double variance = nSamples > 1 ? scoreStdDevs[k] / (nSamples - 1) : scoreStdDevs[k];
    const double deviation = std::sqrt(variance);
    scoreStdDevs[k] = deviation == 0.0 ? 1.0 : deviation;
  }
}

void PcaCore(const double* data, const std::int32_t* nRows, const std::int32_t* nVars, std::int32_t* nComponents,
             double* eigenvalues, double* eigenvectors, double* covariance, double* cumExplained, double* scores,
             double* scoreMeans, double* scoreStdDevs, std::int32_t* status) {
  const std::int32_t n = *nRows, p = *nVars;
  *status = kSingular;
  if (n < 1 || p < 1) return;

  Scratch<double> crossProducts(area(p, p));
  const std::int32_t length = crossProducts ? p : 0;  // gigabytes of vectors are no use without their matrix
  Scratch<double> means(length), work1(length), work2(length);
  if (!obtained(crossProducts, means, work1, work2)) {
    *status = kNoScratch;
    return;
  }

  // 1. Covariances of the variables. A single sample has none, and the caller's matrix stays as it is.
  CrsPrd(data, &n, &p, &n, &p, crossProducts.data(), means.data());
  if (n > 1) divideBy(n - 1, {crossProducts.data(), p}, p, {covariance, p});

  // 2. Variances along the components, largest first; rounding can leave those that should be 0 below it.
  const std::int32_t wantVectors = 1;
  EigSym(&p, &p, covariance, eigenvalues, &wantVectors, eigenvectors, work1.data(), work2.data(), status);
  if (*status != kDone) return;
  for (int k = 0; k < p; ++k)
    if (eigenvalues[k] < 0.0) eigenvalues[k] = 0.0;

  // 3. What the components explain of each variable.
  accumulateExplained({eigenvectors, p}, eigenvalues, p, {cumExplained, p});

  // 4. Scores of the samples.
  PcaScr(data, &p, &n, eigenvectors, scores, scoreMeans, scoreStdDevs);

  // 5. Both triangles of the covariances, those of a caller's single sample included.
  mirrorLowerTriangle(p, {covariance, p});

  // 6. As many components as the data can support.
  *nComponents = n > p ? p : n - 1;
}

}  // namespace studystats::core

void PCAnal(const double* data, std::int32_t nRows, std::int32_t nVars, std::int32_t* nComponents, double* eigenvalues,
            double* eigenvectors, double* covariance, double* cumExplained, double* scores, double* scoreMeans,
            double* scoreStdDevs, std::int32_t* status) {
  studystats::core::PcaCore(data, &nRows, &nVars, nComponents, eigenvalues, eigenvectors, covariance, cumExplained,
                            scores, scoreMeans, scoreStdDevs, status);
}
