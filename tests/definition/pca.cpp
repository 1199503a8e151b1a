#include "tests/definition/pca.h"

#include <cmath>
#include <cstddef>
#include <vector>

#include "numeric/matrix_view.h"
#include "tests/definition/cross_products.h"
#include "tests/definition/eigen.h"

namespace studystats::definition {

void principalComponents(const double* data, std::int32_t n, std::int32_t p, std::int32_t* nComponents,
                         double* eigenvalues, double* eigenvectors, double* covariance, double* cumExplained,
                         double* scores, double* scoreMeans, double* scoreStdDevs, std::int32_t* status) {
  const core::ConstMatrix x{data, n};
  const core::Matrix v{eigenvectors, p}, c{covariance, p}, explained{cumExplained, p}, t{scores, n};
  const auto size = static_cast<std::size_t>(p);
  std::vector<double> crossProduct(size * size), mean(size), work1(size), work2(size);

  crossProducts(data, &n, &p, &n, &p, crossProduct.data(), mean.data());
  if (n >= 2)
    for (int j = 0; j < p; ++j)
      for (int i = 0; i < p; ++i) c(i, j) = core::ConstMatrix{crossProduct.data(), p}(i, j) / (n - 1);

  const std::int32_t wantVectors = 1;
  eigSym(&p, &p, covariance, eigenvalues, &wantVectors, eigenvectors, work1.data(), work2.data(), status);
  if (*status != 0) return;
  for (int k = 0; k < p; ++k) eigenvalues[k] = eigenvalues[k] < 0 ? 0 : eigenvalues[k];

  for (int j = 0; j < p; ++j) {
    double s = 0;
    for (int k = 0; k < p; ++k) {
      s = s + v(j, k) * v(j, k) * eigenvalues[k];
      if (s > 1) s = 1;
      explained(j, k) = s;
    }
  }

  for (int k = 0; k < p; ++k) {
    double sum = 0;
    for (int i = 0; i < n; ++i) {
      t(i, k) = 0;
      for (int j = 0; j < p; ++j) t(i, k) += x(i, j) * v(j, k);
      sum += t(i, k);
    }
    scoreMeans[k] = sum / n;
    double ss = 0;
    for (int i = 0; i < n; ++i) ss += (t(i, k) - scoreMeans[k]) * (t(i, k) - scoreMeans[k]);
    if (n > 1) ss = ss / (n - 1);
    scoreStdDevs[k] = std::sqrt(ss) == 0 ? 1 : std::sqrt(ss);
  }
  for (int j = 0; j < p; ++j)
    for (int i = j; i < p; ++i) c(j, i) = c(i, j);
  *nComponents = n > p ? p : n - 1;
}

}  // namespace studystats::definition
