// Row sums take one column after the other, so that the data are read in the order in which they lie; column sums run
// side by side, each down its own column. What is computed together changes the speed and not one bit.
#include "analyses/pls/weighted_sums.h"

#include <algorithm>
#include <cmath>

#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kColumns = 8;     // column sums side by side: enough to hide the latency of an addition
constexpr int kRows = 256;      // rows of those taken together: their terms stay in the first-level cache
constexpr int kRowSums = 2048;  // row sums formed together: they stay there, too

// Terms of kColumns sums. What lies beyond the data is zero: added to a sum that began at +0, it changes no bit.
struct Terms {
  alignas(64) double q[kColumns][kRows] = {};
};

// Products are divided in the way that the divisor allows; all give the same bits.
enum class Division { kNone, kMultiply, kDivide };

Division divisionBy(double divisor, MagnitudeKey smallest, const double* v, std::int32_t nWeights) {
  if (divisor == 1.0) return Division::kNone;
  if (smallest < kSmallestFactor || !canMultiply(divisor)) return Division::kDivide;
  return smallestMagnitude(v, nWeights) < kSmallestFactor ? Division::kDivide : Division::kMultiply;
}

template <class Loop>
[[gnu::always_inline]] inline void dividing(Division how, double divisor, Loop loop) {
  switch (how) {
    case Division::kNone:
      return loop(DivideByOne{});
    case Division::kMultiply:
      return loop(Multiply(divisor));
    case Division::kDivide:
      return loop(Divide{divisor});
  }
}

bool allFinite(const double* values, std::int32_t n) {
  return std::all_of(values, values + n, [](double value) { return std::isfinite(value); });
}

STUDYSTATS_MULTIVERSION
MagnitudeKey smallestKey(const double* values, std::ptrdiff_t n) {
  MagnitudeKey smallest = kNoMagnitude;
  for (std::ptrdiff_t i = 0; i < n; ++i) smallest = std::min(smallest, magnitudeKey(values[i]));
  return smallest;
}

// Row sums of one column more.
STUDYSTATS_MULTIVERSION
void addColumn(const double* __restrict x, std::int32_t rows, double v, Division how, double divisor,
               double* __restrict sums) {
  dividing(
      how, divisor, [=](auto quotient) __attribute__((always_inline)) {
        for (std::int32_t i = 0; i < rows; ++i) sums[i] += quotient(x[i] * v);
      });
}

// The same of what the column is deflated to; the smallest magnitude of that.
STUDYSTATS_MULTIVERSION
MagnitudeKey deflateAndAddColumn(double* __restrict x, const double* __restrict down, double along, std::int32_t rows,
                                 double v, Division how, double divisor, double* __restrict sums) {
  MagnitudeKey smallest = kNoMagnitude;
  dividing(
      how, divisor, [ =, &smallest ](auto quotient) __attribute__((always_inline)) {
        MagnitudeKey least = kNoMagnitude;
        for (std::int32_t i = 0; i < rows; ++i) {
          x[i] -= down[i] * along;
          sums[i] += quotient(x[i] * v);
          least = std::min(least, magnitudeKey(x[i]));
        }
        smallest = least;
      });
  return smallest;
}

// Column sums of `columns` columns, kRows rows or fewer more.
STUDYSTATS_MULTIVERSION
void addRows(ConstMatrix x, int rows, int columns, const double* v, Division how, double divisor, Terms& terms,
             double* sums) {
  dividing(
      how, divisor, [ =, &terms ](auto quotient) __attribute__((always_inline)) {
        for (int k = 0; k < columns; ++k) {
          const double* column = x.column(k);
          double* __restrict q = terms.q[k];
          for (int i = 0; i < rows; ++i) q[i] = quotient(column[i] * v[i]);
        }
      });
  double together[kColumns];
  std::copy_n(sums, kColumns, together);
  for (int i = 0; i < rows; ++i)
    for (int k = 0; k < kColumns; ++k) together[k] += terms.q[k][i];
  std::copy_n(together, kColumns, sums);
}

// Deflates one column; the smallest magnitude that is left.
STUDYSTATS_MULTIVERSION
MagnitudeKey deflateColumn(double* __restrict x, const double* __restrict down, double along, std::int32_t rows) {
  MagnitudeKey smallest = kNoMagnitude;
  for (std::int32_t i = 0; i < rows; ++i) {
    x[i] -= down[i] * along;
    smallest = std::min(smallest, magnitudeKey(x[i]));
  }
  return smallest;
}

// Calls add(i, j, rows) for every column j in order, kRowSums rows from i on at a time.
template <class Add>
void sumRows(const Block& block, double* sums, Pace& pace, Add add) {
  std::fill_n(sums, block.rows, 0.0);
  for (std::int32_t i = 0; i < block.rows && !pace.stopped(); i += kRowSums) {
    const std::int32_t rows = std::min(kRowSums, block.rows - i);
    pace.inParts(block.columns, rows, 1, [&](std::int32_t first, std::int32_t last) {
      for (std::int32_t j = first; j < last; ++j) add(i, j, rows);
    });
  }
}

void sumRows(const Block& block, const double* v, Division how, double divisor, double* sums, Pace& pace) {
  sumRows(block, sums, pace, [&](std::int32_t i, std::int32_t j, std::int32_t rows) {
    addColumn(&block.x(i, j), rows, v[j], how, divisor, sums + i);
  });
}

void sumColumns(const Block& block, const double* v, Division how, double divisor, double* sums, Pace& pace) {
  const ConstMatrix x{block.x.data, block.x.ld};
  Terms terms;
  pace.inParts(block.columns, block.rows, kColumns, [&](std::int32_t first, std::int32_t last) {
    for (std::int32_t j = first; j < last; j += kColumns) {
      const int columns = std::min(kColumns, last - j);
      for (int k = columns; k < kColumns; ++k) std::fill_n(terms.q[k], kRows, 0.0);
      double together[kColumns] = {};
      for (std::int32_t i = 0; i < block.rows; i += kRows)
        addRows(x.block(i, j), std::min(kRows, block.rows - i), columns, v + i, how, divisor, terms, together);
      std::copy_n(together, columns, sums + j);
    }
  });
}

}  // namespace

MagnitudeKey smallestMagnitude(const double* values, std::ptrdiff_t n) { return smallestKey(values, n); }

void columnSums(const Block& block, const double* v, double divisor, double* sums, Pace& pace) {
  const Division how = divisionBy(divisor, block.smallest, v, block.rows);
  sumColumns(block, v, how, divisor, sums, pace);
  if (how == Division::kMultiply && !allFinite(sums, block.columns))
    sumColumns(block, v, Division::kDivide, divisor, sums, pace);
}

void rowSums(const Block& block, const double* v, double divisor, double* sums, Pace& pace) {
  const Division how = divisionBy(divisor, block.smallest, v, block.columns);
  sumRows(block, v, how, divisor, sums, pace);
  if (how == Division::kMultiply && !allFinite(sums, block.rows))
    sumRows(block, v, Division::kDivide, divisor, sums, pace);
}

void deflate(Block& block, const double* down, const double* along, Pace& pace) {
  block.smallest = kNoMagnitude;
  pace.inParts(block.columns, block.rows, 1, [&](std::int32_t first, std::int32_t last) {
    for (std::int32_t j = first; j < last; ++j)
      block.smallest = std::min(block.smallest, deflateColumn(block.x.column(j), down, along[j], block.rows));
  });
}

void deflateAndSum(Block& block, const double* down, const double* along, const double* v, double divisor, double* sums,
                   Pace& pace) {
  // What is left is not known before it is there, so the sums are formed over again when it is too small.
  const Division how = divisionBy(divisor, kNoMagnitude, v, block.columns);
  MagnitudeKey smallest = kNoMagnitude;
  sumRows(block, sums, pace, [&](std::int32_t i, std::int32_t j, std::int32_t rows) {
    smallest =
        std::min(smallest, deflateAndAddColumn(&block.x(i, j), down + i, along[j], rows, v[j], how, divisor, sums + i));
  });
  block.smallest = smallest;
  if (how == Division::kMultiply && (smallest < kSmallestFactor || !allFinite(sums, block.rows)))
    sumRows(block, v, Division::kDivide, divisor, sums, pace);
}

}  // namespace studystats::core
