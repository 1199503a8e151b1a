// Matrices of distances: of all rows from each other, block by block, and of rows from those that an index names.
#include <algorithm>

#include "utils/distance_blocks.h"
#include "utils/distances.h"
#include "utils/matrices.h"

using namespace studystats::core;

namespace StatsDistanceUtils {
namespace {

constexpr const char* kOperation = "GenerateDistanceMatrix";

constexpr int kLine = 8;  // numbers in a cache line
constexpr int kRows = 8;  // rows that are mirrored together

// Writes the distances of a left and a right block to their place.
void store(const DistanceBlocks& blocks, std::size_t left, std::size_t right, DataMatrix& dist) {
  for (int i = 0; i < blocks.nLeft(); ++i)
    std::copy_n(blocks.row(i), blocks.nRight(), dist[left + std::size_t(i)].data() + right);
}

// Asks for the memory that some rows on the other side of the diagonal will be written to: they lie far apart.
void expectRows(const DistanceBlocks& blocks, int from, int to, std::size_t left, std::size_t right, DataMatrix& dist) {
  for (int j = from; j < to; ++j) {
    const double* row = dist[right + std::size_t(j)].data() + left;
    for (int i = 0; i < blocks.nLeft(); i += kLine) __builtin_prefetch(row + i, 1);
  }
}

// The same on the other side of the diagonal. Some rows of it are put together first, so that each is written in one
// go.
void storeMirrored(const DistanceBlocks& blocks, std::size_t left, std::size_t right, DataMatrix& dist) {
  double rows[kRows][DistanceBlocks::kLeft];
  for (int j0 = 0; j0 < blocks.nRight(); j0 += kRows) {
    const int end = std::min(j0 + kRows, blocks.nRight());
    expectRows(blocks, end, std::min(end + kRows, blocks.nRight()), left, right, dist);
    for (int i = 0; i < blocks.nLeft(); ++i)
      for (int j = j0; j < end; ++j) rows[j - j0][i] = blocks.row(i)[j];
    for (int j = j0; j < end; ++j)
      std::copy_n(rows[j - j0], blocks.nLeft(), dist[right + std::size_t(j)].data() + left);
  }
}

}  // namespace

void GenerateDistanceMatrix(const DataMatrix& data, DataMatrix& dist, STATS_DIST_TYPE type) {
  require(!data.empty(), kOperation);
  requireRows(data, kOperation);
  if (&data == &dist) return GenerateDistanceMatrix(DataMatrix(data), dist, type);

  const std::int32_t n = StatsMatrixUtils::RowCount(data);
  DistanceBlocks blocks(data, n, type);
  StatsMatrixUtils::ResizeDataMatrix(&dist, n, n, 0.0);
  for (std::int64_t left = 0; left < n; left += DistanceBlocks::kLeft)
    for (std::int64_t right = left; right < n; right += DistanceBlocks::kRight) {
      blocks.compute(std::int32_t(left), std::int32_t(right));
      store(blocks, std::size_t(left), std::size_t(right), dist);
      storeMirrored(blocks, std::size_t(left), std::size_t(right), dist);
    }
  for (std::size_t i = 0; i < dist.size(); ++i) dist[i][i] = 0.0;
}

void GenerateDistanceMatrix(const DataMatrix& data, const IndexMatrix& index, DataMatrix& dist, STATS_DIST_TYPE type) {
  require(!data.empty(), kOperation);
  const std::size_t n = requireRows(data, kOperation);
  requireBlock(index, index.size(), n, kOperation);
  for (const auto& others : index)
    for (std::size_t r = 0; r < n; ++r) require(isIndex(others[r], n), kOperation);
  if (&data == &dist) return GenerateDistanceMatrix(DataMatrix(data), index, dist, type);

  StatsMatrixUtils::ResizeDataMatrix(&dist, StatsMatrixUtils::ColumnCount(index), std::int32_t(n), 0.0);
  for (std::size_t k = 0; k < index.size(); ++k)
    for (std::size_t r = 0; r < n; ++r) {
      const auto other = std::size_t(index[k][r]);
      dist[k][r] = distanceBetween(
          data.size(), [&](std::size_t c) { return data[c][r]; }, [&](std::size_t c) { return data[c][other]; }, type);
    }
}

}  // namespace StatsDistanceUtils
