#include "host/cluster/distance_block.h"

#include <algorithm>

namespace studystats {

// The library's matrix is of all rows of a block among each other: those of both sides are put into one.
void DistanceBlock::compute(std::span<const std::int32_t> left, std::span<const std::int32_t> right) {
  const bool same = left.data() == right.data() && left.size() == right.size();
  block_.resize(points_.size());
  for (std::size_t j = 0; j < points_.size(); ++j) {
    std::vector<double>& column = block_[j];
    column.clear();
    for (const std::int32_t row : left) column.push_back(points_[j][static_cast<std::size_t>(row)]);
    if (same) continue;
    for (const std::int32_t row : right) column.push_back(points_[j][static_cast<std::size_t>(row)]);
  }
  offset_ = same ? 0 : left.size();
  StatsDistanceUtils::GenerateDistanceMatrix(block_, distances_, type_);
}

std::span<const std::int32_t> blockOfRows(std::span<const std::int32_t> rows, std::size_t first) {
  return rows.subspan(first, std::min(DistanceBlock::kRows, rows.size() - first));
}

}  // namespace studystats
