// Centred cross-products of the columns of a data matrix, computed a column at a time when a regression asks for it.
//
// A selection looks at the products of all variables with the few that ever enter its model: of p columns of the
// matrix it needs a dozen. Each product is the sum that CrsPrd forms, so it has the same bits.
#pragma once

#include <cmath>
#include <cstdint>

#include "numeric/matrix_view.h"

namespace studystats::core {

// c(i, j) / sqrt(c(i, i) * c(j, j)), or c(i, j) itself when one of the two columns has no spread.
inline double correlationOf(double product, double squaresI, double squaresJ) {
  return squaresI > 0.0 && squaresJ > 0.0 ? product / std::sqrt(squaresI * squaresJ) : product;
}

class ColumnProducts {
 public:
  // All products are in c (symmetric); correlations are read from r, or formed from c when r is null.
  ColumnProducts(ConstMatrix c, ConstMatrix r) : c_(c), r_(r) {}

  // Of the first n rows of x, p columns; means (p) are theirs. The diagonal of c (p x p) is computed here, a column
  // when it is first required; known (p) is scratch. The arrays must outlive the object.
  ColumnProducts(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, Matrix c, std::int32_t* known);

  // Makes sure that column j is there.
  void require(std::int32_t j);

  // Columns j that have been required, or the diagonal.
  double operator()(std::int32_t i, std::int32_t j) const { return c_(i, j); }
  double correlation(std::int32_t i, std::int32_t j) const {
    return r_.data != nullptr ? r_(i, j) : correlationOf(c_(i, j), c_(i, i), c_(j, j));
  }

 private:
  ConstMatrix c_;
  ConstMatrix r_{nullptr, 0};
  ConstMatrix x_{nullptr, 0};
  std::int32_t n_ = 0, p_ = 0;
  const double* means_ = nullptr;
  double* columns_ = nullptr;
  std::int32_t* known_ = nullptr;
};

}  // namespace studystats::core
