// The distances between two blocks of points, all their pairs side by side.
//
// The matrix is taken five columns at a time; every pair of points adds its five terms to its own sum. A pair sees the
// columns in their order, so the blocks change the speed and not one bit of a distance.
#include "utils/distance_blocks.h"

#include <algorithm>

#include "numeric/multiversion.h"
#include "utils/distances.h"

namespace studystats::core {
namespace {

constexpr int kColumns = 5;  // columns taken together: of more, g++ 12 no longer makes vectors
constexpr int kRight = DistanceBlocks::kRight;

// Some columns of the matrix, from a point on. Columns past the last are zero: adding 0 * 0 to a sum that began at +0
// changes no bit of it.
struct Strip {
  const double* x[kColumns];

  Strip(const DataMatrix& points, std::size_t column, std::size_t first) {
    static constexpr double kZeros[kRight] = {};
    for (std::size_t c = 0; c < kColumns; ++c)
      x[c] = column + c < points.size() ? points[column + c].data() + first : kZeros;
  }
};

// sums(i, j) += sum over the strip's columns c of (left(c, i) - right(c, j))^2.
STUDYSTATS_MULTIVERSION
void addSquaredDifferences(Strip left, int nLeft, Strip right, int nRight, double* sums) {
  for (int i = 0; i < nLeft; ++i) {
    double* __restrict row = sums + std::ptrdiff_t{i} * kRight;
    for (int j = 0; j < nRight; ++j) {
      double sum = row[j];
      for (int c = 0; c < kColumns; ++c) {
        const double difference = left.x[c][i] - right.x[c][j];
        sum += difference * difference;
      }
      row[j] = sum;
    }
  }
}

// sums(i, j) += sum over the strip's columns c of left(c, i) * right(c, j).
STUDYSTATS_MULTIVERSION
void addProducts(Strip left, int nLeft, Strip right, int nRight, double* sums) {
  for (int i = 0; i < nLeft; ++i) {
    double* __restrict row = sums + std::ptrdiff_t{i} * kRight;
    for (int j = 0; j < nRight; ++j) {
      double sum = row[j];
      for (int c = 0; c < kColumns; ++c) sum += left.x[c][i] * right.x[c][j];
      row[j] = sum;
    }
  }
}

STUDYSTATS_MULTIVERSION
void takeRoots(int nLeft, int nRight, double* sums) {
  for (int i = 0; i < nLeft; ++i) {
    double* row = sums + std::ptrdiff_t{i} * kRight;
    for (int j = 0; j < nRight; ++j) row[j] = std::sqrt(row[j]);
  }
}

STUDYSTATS_MULTIVERSION
void toTanimoto(const double* leftSquares, int nLeft, const double* rightSquares, int nRight,
                double* __restrict products) {
  for (int i = 0; i < nLeft; ++i) {
    double* __restrict row = products + std::ptrdiff_t{i} * kRight;
    const double squares = leftSquares[i];
    for (int j = 0; j < nRight; ++j) row[j] = tanimotoDistance(row[j], squares, rightSquares[j]);
  }
}

std::vector<double> sumsOfSquares(const DataMatrix& points, std::size_t n) {
  std::vector<double> sums(n);
  for (const auto& column : points)
    for (std::size_t i = 0; i < n; ++i) sums[i] += column[i] * column[i];
  return sums;
}

}  // namespace

DistanceBlocks::DistanceBlocks(const DataMatrix& points, std::int32_t nPoints, StatsDistanceUtils::STATS_DIST_TYPE type)
    : points_(points),
      nPoints_(nPoints),
      tanimoto_(isTanimoto(type)),
      squares_(tanimoto_ ? sumsOfSquares(points, std::size_t(nPoints)) : std::vector<double>()),
      distances_(std::size_t{kLeft} * kRight) {}

void DistanceBlocks::compute(std::int32_t left, std::int32_t right) {
  nLeft_ = std::min(kLeft, nPoints_ - left);
  nRight_ = std::min(kRight, nPoints_ - right);
  double* sums = distances_.data();
  std::fill_n(sums, nLeft_ * kRight, 0.0);
  for (std::size_t c = 0; c < points_.size(); c += kColumns)
    (tanimoto_ ? addProducts : addSquaredDifferences)(Strip(points_, c, std::size_t(left)), nLeft_,
                                                      Strip(points_, c, std::size_t(right)), nRight_, sums);
  if (tanimoto_)
    toTanimoto(squares_.data() + left, nLeft_, squares_.data() + right, nRight_, sums);
  else
    takeRoots(nLeft_, nRight_, sums);
}

}  // namespace studystats::core
