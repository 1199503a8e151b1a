// Centred cross-products of the columns of a data matrix, computed a column at a time when a regression asks for it.
//
// A selection looks at the products of all variables with the few that ever enter its model: of p columns of the
// matrix it needs a dozen. Each product is the sum that CrsPrd forms, so it has the same bits.
#pragma once

#include <cmath>
#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// c(i, j) / sqrt(c(i, i) * c(j, j)), or c(i, j) itself when one of the two columns has no spread.
inline double correlationOf(double product, double squaresI, double squaresJ) {
  return squaresI > 0.0 && squaresJ > 0.0 ? product / std::sqrt(squaresI * squaresJ) : product;
}

// Room for the products of p columns with `most` of them.
struct ProductScratch {
  ProductScratch(Arena& arena, std::int32_t p, std::int32_t most)
      : columns(arena, area(p, most)), squares(arena, p), slotOf(arena, p) {}

  Array<double> columns, squares;
  Array<std::int32_t> slotOf;  // of a column that is there, from 1; else 0
};

class ColumnProducts {
 public:
  // All products are in c (symmetric); correlations are read from r, or formed from c when r is null.
  ColumnProducts(ConstMatrix c, ConstMatrix r) : c_(c), r_(r) {}

  // Of the first n rows of x, p columns; means (p) are theirs. Squares are computed here, other products a column at a
  // time, when it is first required: no more than scratch has room for. The arrays must outlive the object.
  ColumnProducts(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, ProductScratch& scratch);

  // Makes sure that column j is there; without meaning once pace has stopped.
  void require(std::int32_t j, Pace& pace);

  // Of columns one of which has been required, or the diagonal.
  double operator()(std::int32_t i, std::int32_t j) const {
    if (scratch_ == nullptr) return c_(i, j);
    if (i == j) return scratch_->squares[i];
    const std::int32_t slot = scratch_->slotOf[j];
    return slot != 0 ? column(slot)[i] : column(scratch_->slotOf[i])[j];
  }
  double correlation(std::int32_t i, std::int32_t j) const {
    return r_.data != nullptr ? r_(i, j) : correlationOf((*this)(i, j), (*this)(i, i), (*this)(j, j));
  }

 private:
  double* column(std::int32_t slot) const { return scratch_->columns.data() + std::ptrdiff_t{slot - 1} * p_; }

  ConstMatrix c_{nullptr, 0};
  ConstMatrix r_{nullptr, 0};
  ConstMatrix x_{nullptr, 0};
  std::int32_t n_ = 0, p_ = 0, nColumns_ = 0;
  const double* means_ = nullptr;
  ProductScratch* scratch_ = nullptr;
};

}  // namespace studystats::core
