#include "tests/definition/cross_products.h"

#include "numeric/matrix_view.h"

namespace studystats::definition {

void crossProducts(const double* x, const std::int32_t* ldx, const std::int32_t* ldc, const std::int32_t* nRows,
                   const std::int32_t* nCols, double* c, double* means) {
  const core::ConstMatrix data{x, *ldx};
  const core::Matrix products{c, *ldc};
  for (int j = 0; j < *nCols; ++j) {
    double sum = 0;
    for (int i = 0; i < *nRows; ++i) sum += data(i, j);
    means[j] = sum / *nRows;
  }
  for (int j = 0; j < *nCols; ++j)
    for (int k = 0; k <= j; ++k) {
      double sum = 0;
      for (int i = 0; i < *nRows; ++i) sum += (data(i, k) - means[k]) * (data(i, j) - means[j]);
      products(j, k) = products(k, j) = sum;
    }
}

}  // namespace studystats::definition
