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

}  // namespace

// A block of samples at a time. Every score still takes its terms from the first variable to the last.
void projectSamples(ConstMatrix data, std::int32_t n, std::int32_t p, ConstMatrix loadings, std::int32_t k,
                    Matrix scores, Pace& pace) {
  for (int a = 0; a < k && pace.goOn(n); ++a) std::fill_n(scores.column(a), n, 0.0);
  for (std::int64_t i = 0; i < n; i += kSamples) {
    const int samples = static_cast<int>(std::min<std::int64_t>(kSamples, n - i));
    int j = 0;
    const auto add = [&](int first, int last) {
      if (j + kVariables <= p)
        addVariables(data.block(i, j), loadings.block(j, first), samples, last - first, scores.block(i, first));
      else
        addVariable(&data(i, j), loadings.block(j, first), samples, last - first, scores.block(i, first));
    };
    for (; j < p; j += j + kVariables <= p ? kVariables : 1)
      if (!pace.inParts(k, 2 * std::int64_t{kVariables} * samples, 1, add)) return;
  }
}

void scoreSamples(ConstMatrix data, std::int32_t n, std::int32_t p, ConstMatrix loadings, std::int32_t k, Matrix scores,
                  double* means, double* deviations, Pace& pace) {
  projectSamples(data, n, p, loadings, k, scores, pace);
  const ConstMatrix result{scores.data, scores.ld};
  if (pace.stopped() || !columnMeans(result, n, k, means, pace)) return;
  columnSquares(result, n, k, means, deviations, pace);
  for (int a = 0; a < k; ++a) {
    const double variance = n > 1 ? deviations[a] / (n - 1) : deviations[a];
    const double deviation = std::sqrt(variance);
    deviations[a] = deviation == 0.0 ? 1.0 : deviation;
  }
}

void covariances(ConstMatrix data, std::int32_t n, std::int32_t p, double* means, Matrix crossProducts, Matrix c,
                 Pace& pace) {
  if (!core::crossProducts(data, n, p, crossProducts, means, pace)) return;
  for (int j = 0; j < p && pace.goOn(2 * std::int64_t{p}); ++j)
    for (int i = 0; i < p; ++i) c(i, j) = crossProducts(i, j) / (n - 1);
}

std::int32_t principalAxes(ConstMatrix a, std::int32_t p, double* eigenvalues, Matrix vectors, double* work,
                           Pace& pace) {
  const std::int32_t status = eigenSystem(a.data, p, eigenvalues, vectors.data, work, pace);
  for (int k = 0; k < p && status == kDone; ++k)
    if (eigenvalues[k] < 0.0) eigenvalues[k] = 0.0;
  return status;
}

void accumulateExplained(ConstMatrix loadings, const double* variances, std::int32_t p, std::int32_t k,
                         Matrix explained, Pace& pace) {
  for (int a = 0; a < k && pace.goOn(4 * std::int64_t{p}); ++a)
    for (int j = 0; j < p; ++j) {
      const double before = a > 0 ? explained(j, a - 1) : 0.0;
      const double sum = before + loadings(j, a) * loadings(j, a) * variances[a];
      explained(j, a) = sum > 1.0 ? 1.0 : sum;
    }
}

std::int32_t principalComponents(ConstMatrix data, std::int32_t n, std::int32_t p, std::int32_t k,
                                 const PcaOutputs& out, const PcaScratch& s, Pace& pace) {
  // 1. Covariances of the variables.
  if (n > 1) covariances(data, n, p, s.means, s.crossProducts, out.covariance, pace);
  for (int j = 0; j < p && out.variances != nullptr; ++j) out.variances[j] = out.covariance(j, j);

  // 2. Variances along the components, largest first; rounding can leave those that should be 0 below it.
  const ConstMatrix covariance{out.covariance.data, p}, loadings{out.eigenvectors.data, p};
  const std::int32_t status = principalAxes(covariance, p, out.eigenvalues, out.eigenvectors, s.work, pace);
  if (status != kDone) return status;

  // 3. What the components explain of each variable.
  if (out.cumExplained.data != nullptr) accumulateExplained(loadings, out.eigenvalues, p, k, out.cumExplained, pace);

  // 4. Scores of the samples.
  if (out.scores.data != nullptr && !pace.stopped())
    scoreSamples(data, n, p, loadings, k, out.scores, out.scoreMeans, out.scoreStdDevs, pace);
  return kDone;
}

}  // namespace studystats::core
