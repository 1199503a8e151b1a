// Principal component analysis: the covariance matrix of the variables, C = V diag(lambda) V', decomposed by the
// symmetric eigensolver; scores T = X V.
//
// The covariance matrix and not the data is decomposed: it costs p^3 whatever the number of samples, its eigenvectors
// are orthonormal to rounding even where eigenvalues repeat, and the signs are the eigensolver's.
// Jolliffe, Principal Component Analysis, 2nd ed. (2002).
#include "analyses/pca/pca.h"

#include <algorithm>
#include <cmath>

#include "numeric/cross_products.h"
#include "numeric/eigen.h"
#include "numeric/multiversion.h"
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

void scoreSamples(ConstMatrix data, std::int32_t n, std::int32_t p, ConstMatrix eigenvectors, Matrix scores,
                  double* means, double* deviations) {
  projectSamples(data, eigenvectors, n, p, scores);
  const ConstMatrix result{scores.data, scores.ld};
  columnMeans(result, n, p, means);
  columnSquares(result, n, p, means, deviations);
  for (int k = 0; k < p; ++k) {
    const double variance = n > 1 ? deviations[k] / (n - 1) : deviations[k];
    const double deviation = std::sqrt(variance);
    deviations[k] = deviation == 0.0 ? 1.0 : deviation;
  }
}

std::int32_t principalComponents(ConstMatrix data, std::int32_t n, std::int32_t p, const PcaOutputs& out,
                                 PcaScratch& s) {
  // 1. Covariances of the variables. A single sample has none, and the caller's matrix stays as it is.
  CrsPrd(data.data, &data.ld, &p, &n, &p, s.crossProducts.data(), s.means.data());
  if (n > 1) divideBy(n - 1, {s.crossProducts.data(), p}, p, out.covariance);

  // 2. Variances along the components, largest first; rounding can leave those that should be 0 below it.
  const std::int32_t wantVectors = 1;
  std::int32_t status = kDone;
  EigSym(&p, &p, out.covariance.data, out.eigenvalues, &wantVectors, out.eigenvectors.data, s.work1.data(),
         s.work2.data(), &status);
  if (status != kDone) return status;
  for (int k = 0; k < p; ++k)
    if (out.eigenvalues[k] < 0.0) out.eigenvalues[k] = 0.0;
  const ConstMatrix eigenvectors{out.eigenvectors.data, p};

  // 3. What the components explain of each variable.
  accumulateExplained(eigenvectors, out.eigenvalues, p, out.cumExplained);

  // 4. Scores of the samples.
  scoreSamples(data, n, p, eigenvectors, out.scores, out.scoreMeans, out.scoreStdDevs);

  // 5. Both triangles of the covariances, those of a caller's single sample included.
  mirrorLowerTriangle(p, out.covariance);

  // 6. As many components as the data can support.
  *out.nComponents = n > p ? p : n - 1;
  return kDone;
}

}  // namespace studystats::core
