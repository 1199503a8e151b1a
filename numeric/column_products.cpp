// One column of the cross-product matrix: the sums of many columns of the data side by side, each taking its rows from
// the first to the last.
#include "numeric/column_products.h"

#include <algorithm>

#include "numeric/cross_products.h"
#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kRows = 8;       // rows taken together: a cache line of each column
constexpr int kColumns = 128;  // sums kept side by side

struct Strip {
  alignas(64) double x[kRows][kColumns];
  alignas(64) double sums[kColumns];
};

// sums(q) += deviation * (x(i, q) - means(q)), row after row.
STUDYSTATS_MULTIVERSION
void addProducts(Strip& strip, int nRows, int nColumns, const double* means, const double* deviations) {
  for (int i = 0; i < nRows; ++i) {
    const double deviation = deviations[i];
    const double* x = strip.x[i];
    for (int q = 0; q < nColumns; ++q) strip.sums[q] += deviation * (x[q] - means[q]);
  }
}

void productsWithColumn(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means, std::int32_t v,
                        double* products, Pace& pace) {
  Strip strip;
  for (std::int32_t j = 0; j < p; j += kColumns) {
    const int columns = std::min(kColumns, p - j);
    std::fill_n(strip.sums, columns, 0.0);
    for (std::int64_t i = 0; i < n; i += kRows) {
      const int rows = static_cast<int>(std::min<std::int64_t>(kRows, n - i));
      double deviations[kRows];
      for (int k = 0; k < rows; ++k) deviations[k] = x(i + k, v) - means[v];
      for (int q = 0; q < columns; ++q) {
        const double* column = x.column(j + q) + i;
        if (rows == kRows)
          for (int k = 0; k < kRows; ++k) strip.x[k][q] = column[k];
        else
          for (int k = 0; k < rows; ++k) strip.x[k][q] = column[k];
      }
      addProducts(strip, rows, columns, means + j, deviations);
      if (!pace.goOn(std::int64_t{2} * rows * columns)) return;
    }
    std::copy_n(strip.sums, columns, products + j);
  }
}

}  // namespace

ColumnProducts::ColumnProducts(ConstMatrix x, std::int32_t n, std::int32_t p, const double* means,
                               ProductScratch& scratch)
    : x_(x), n_(n), p_(p), means_(means), scratch_(&scratch) {
  columnSquares(x, n, p, means, scratch.squares.data());
  std::fill_n(scratch.slotOf.data(), std::max(p, 0), 0);
}

void ColumnProducts::require(std::int32_t j, Pace& pace) {
  if (scratch_ == nullptr || scratch_->slotOf[j] != 0) return;
  scratch_->slotOf[j] = ++nColumns_;
  productsWithColumn(x_, n_, p_, means_, j, column(nColumns_), pace);
}

}  // namespace studystats::core
