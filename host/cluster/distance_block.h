// The distances between some rows and some others: all pairs of a table at once would take the square of its rows.
#pragma once

#include <studystats/utilities.h>

#include <cstdint>
#include <span>
#include <vector>

namespace studystats {

class DistanceBlock {
 public:
  static constexpr std::size_t kRows = 512;  // of either side: the block and its rows stay in the cache

  DistanceBlock(const DataMatrix& points, StatsDistanceUtils::STATS_DIST_TYPE type) : points_(points), type_(type) {}

  // All pairs of a row of `left` and one of `right`.
  void compute(std::span<const std::int32_t> left, std::span<const std::int32_t> right);

  // From row left[i] to each row of `right`, until the next call.
  std::span<const double> from(std::size_t i) const { return std::span(distances_[i]).subspan(offset_); }

 private:
  const DataMatrix& points_;
  StatsDistanceUtils::STATS_DIST_TYPE type_;
  DataMatrix block_, distances_;
  std::size_t offset_ = 0;
};

// Rows first, first + 1, ... as far as there are n, at most kRows.
std::span<const std::int32_t> blockOfRows(std::span<const std::int32_t> rows, std::size_t first);

}  // namespace studystats
