// Correlations of all pairs of columns, a block of columns against a block of columns.
//
// Each column is brought to mean 0 and length 1 over its own present rows; r of two complete columns is then one sum of
// products. With missing cells (held as 0, beside a column of ones and zeros) the six sums over the common rows come
// from the same kernel; they only find candidates, whose r is computed again in two passes, because subtracting squares
// of sums loses digits.
#include "host/preparation/related_columns.h"

#include "host/preparation/magnitude.h"
#include "host/preparation/same_information.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numeric>
#include <optional>

namespace studystats {
namespace {

constexpr std::size_t kBlock = 64;   // columns taken together: six blocks of sums stay in the second-level cache
constexpr std::size_t kRows = 32;    // rows taken together
constexpr double kDoubt = 1e-6;      // how far rounding may move an r that comes from six sums
constexpr double kCancelled = 1e-7;  // spread left of a sum of squares; below it nothing is known
constexpr std::size_t kFewestRows = 3;

using Cells = std::span<const double>;
using Strip = std::array<std::array<double, kBlock>, kRows>;  // rows x columns
using Sums = std::array<std::array<double, kBlock>, kBlock>;

// A column with spread, and how its cells come to mean 0 and length 1: (cell * factor - mean) * scale.
struct Standard {
  std::size_t column = 0;
  Cells cells;
  bool gaps = false;
  double factor = 1;
  double mean = 0;
  double scale = 1;
};

std::optional<Standard> standardOf(std::size_t column, Cells cells) {
  if (isConstant(cells)) return {};
  Standard one{column, cells, false, unitFactor(cells)};
  double sum = 0, count = 0, square = 0;
  for (const double cell : cells)
    if (!std::isnan(cell)) {
      sum += cell * one.factor;
      ++count;
    }
  one.gaps = count < static_cast<double>(cells.size());
  one.mean = sum / count;
  for (const double cell : cells)
    if (!std::isnan(cell)) square += (cell * one.factor - one.mean) * (cell * one.factor - one.mean);
  one.scale = 1 / std::sqrt(square);
  return std::isfinite(square) && square > 0 ? std::optional(one) : std::nullopt;
}

// Some rows of a block of columns; what lies beyond the last column is zero.
struct Block {
  Strip unit{}, square{}, present{};

  void take(std::span<const Standard> columns, std::size_t row, std::size_t count) {
    for (std::size_t j = 0; j < columns.size(); ++j) {
      const Standard& one = columns[j];
      for (std::size_t i = 0; i < count; ++i) {
        const double cell = one.cells[row + i];
        const bool missing = one.gaps && std::isnan(cell);
        unit[i][j] = missing ? 0.0 : (cell * one.factor - one.mean) * one.scale;
        present[i][j] = missing ? 0.0 : 1.0;
      }
    }
  }
  void squares(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
      for (std::size_t j = 0; j < kBlock; ++j) square[i][j] = unit[i][j] * unit[i][j];
  }
};

// sums[k][j] += left(row, k) * right(row, j), row after row.
void addProducts(const Strip& left, const Strip& right, std::size_t count, Sums& sums) {
  for (std::size_t k = 0; k < kBlock; ++k) {
    double* __restrict sum = sums[k].data();
    for (std::size_t i = 0; i < count; ++i) {
      const double factor = left[i][k];
      const double* __restrict cells = right[i].data();
      for (std::size_t j = 0; j < kBlock; ++j) sum[j] += factor * cells[j];
    }
  }
}

// Sums over the rows that two columns have in common; all but xy stay empty where both are complete.
struct Products {
  Block left, right;
  Sums xy, n, x, y, xx, yy;

  void compute(std::span<const Standard> first, std::span<const Standard> second, bool gaps) {
    left = right = {};
    for (Sums* sums : {&xy, &n, &x, &y, &xx, &yy})
      for (auto& row : *sums) row.fill(0.0);
    const std::size_t rows = first[0].cells.size();
    for (std::size_t i = 0; i < rows; i += kRows) {
      const std::size_t count = std::min(kRows, rows - i);
      left.take(first, i, count);
      right.take(second, i, count);
      addProducts(left.unit, right.unit, count, xy);
      if (!gaps) continue;
      left.squares(count);
      right.squares(count);
      addProducts(left.present, right.present, count, n);
      addProducts(left.unit, right.present, count, x);
      addProducts(left.present, right.unit, count, y);
      addProducts(left.square, right.present, count, xx);
      addProducts(left.present, right.square, count, yy);
    }
  }

  // Whether |r| may lie beyond the limit, as far as the sums can tell.
  bool candidate(std::size_t k, std::size_t j, double limit) const {
    const double rows = n[k][j];
    if (rows < static_cast<double>(kFewestRows)) return false;
    const double a = xx[k][j] - x[k][j] * x[k][j] / rows;
    const double b = yy[k][j] - y[k][j] * y[k][j] / rows;
    if (a < kCancelled * xx[k][j] || b < kCancelled * yy[k][j]) return true;
    return std::abs(xy[k][j] - x[k][j] * y[k][j] / rows) > (limit - kDoubt) * std::sqrt(a * b);
  }
};

// r over the common rows, in two passes; 0 where there is none.
double correlation(const Standard& first, const Standard& second) {
  std::vector<double> a, b;
  for (std::size_t i = 0; i < first.cells.size(); ++i)
    if (!std::isnan(first.cells[i]) && !std::isnan(second.cells[i])) {
      a.push_back(first.cells[i] * first.factor);
      b.push_back(second.cells[i] * second.factor);
    }
  if (a.size() < kFewestRows || isConstant(a) || isConstant(b)) return 0;
  const double aMean = std::accumulate(a.begin(), a.end(), 0.0) / static_cast<double>(a.size());
  const double bMean = std::accumulate(b.begin(), b.end(), 0.0) / static_cast<double>(b.size());
  double aa = 0, bb = 0, ab = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    aa += (a[i] - aMean) * (a[i] - aMean);
    bb += (b[i] - bMean) * (b[i] - bMean);
    ab += (a[i] - aMean) * (b[i] - bMean);
  }
  const double r = ab / (std::sqrt(aa) * std::sqrt(bb));
  return std::isfinite(r) ? r : 0;
}

bool stronger(const RelatedPair& a, const RelatedPair& b) {
  if (std::abs(a.r) != std::abs(b.r)) return std::abs(a.r) > std::abs(b.r);
  return a.first != b.first ? a.first < b.first : a.second < b.second;
}

void keepStrongest(std::vector<RelatedPair>& pairs, std::size_t most) {
  if (pairs.size() <= most) return;
  std::nth_element(pairs.begin(), pairs.begin() + static_cast<std::ptrdiff_t>(most), pairs.end(), stronger);
  pairs.resize(most);
}

// Columns with spread, the complete ones first, so that most blocks have no missing cell.
std::vector<Standard> standardised(const std::vector<Cells>& columns) {
  std::vector<Standard> standards;
  for (std::size_t j = 0; j < columns.size(); ++j)
    if (const std::optional<Standard> one = standardOf(j, columns[j])) standards.push_back(*one);
  std::stable_partition(standards.begin(), standards.end(), [](const Standard& one) { return !one.gaps; });
  return standards;
}

}  // namespace

RelatedPairs relatedColumns(const std::vector<std::span<const double>>& columns, double limit, std::size_t most,
                            Watch& watch, double from, double to) {
  RelatedPairs related;
  if (columns.empty() || columns[0].size() < kFewestRows) return related;
  const std::vector<Standard> standards = standardised(columns);
  const std::span<const Standard> all(standards);
  const auto products = std::make_unique<Products>();

  const auto collect = [&](std::size_t k0, std::size_t j0, std::size_t k, std::size_t j, bool gaps) {
    const Standard &first = standards[k0 + k], &second = standards[j0 + j];
    double r = products->xy[k][j];
    if (gaps) r = products->candidate(k, j, limit) ? correlation(first, second) : 0;
    if (!(std::abs(r) > limit)) return;
    ++related.found;
    const auto [low, high] = std::minmax(first.column, second.column);
    related.strongest.push_back({low, high, std::clamp(r, -1.0, 1.0)});
    if (related.strongest.size() > 2 * most + 1000) keepStrongest(related.strongest, most);
  };

  for (std::size_t k0 = 0; k0 < all.size(); k0 += kBlock) {
    const auto left = all.subspan(k0, std::min(kBlock, all.size() - k0));
    for (std::size_t j0 = k0; j0 < all.size(); j0 += kBlock) {
      const auto right = all.subspan(j0, std::min(kBlock, all.size() - j0));
      watch.check();
      const bool gaps = right.back().gaps;
      products->compute(left, right, gaps);
      for (std::size_t k = 0; k < left.size(); ++k)
        for (std::size_t j = j0 > k0 ? 0 : k + 1; j < right.size(); ++j) collect(k0, j0, k, j, gaps);
    }
    watch.report("correlations", "correlations", from, to, static_cast<std::int64_t>(k0 + left.size()),
                 static_cast<std::int64_t>(all.size()));
  }
  keepStrongest(related.strongest, most);
  std::sort(related.strongest.begin(), related.strongest.end(), stronger);
  return related;
}

}  // namespace studystats
