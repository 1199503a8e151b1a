// The distances between two blocks of points, all their pairs side by side.
#pragma once

#include <studystats/utilities.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace studystats::core {

class DistanceBlocks {
 public:
  static constexpr int kLeft = 64, kRight = 256;  // points of a block

  // Of the first nPoints points of a matrix, which must be there and outlive the object.
  DistanceBlocks(const DataMatrix& points, std::int32_t nPoints, StatsDistanceUtils::STATS_DIST_TYPE type);

  // The distances of points left ... left + kLeft - 1 from points right ... right + kRight - 1, as far as there are
  // any.
  void compute(std::int32_t left, std::int32_t right);
  int nLeft() const { return nLeft_; }
  int nRight() const { return nRight_; }
  // Of point left + i from the points of the right block; to be read until the next call.
  const double* row(int i) const { return distances_.data() + std::ptrdiff_t{i} * kRight; }

 private:
  const DataMatrix& points_;
  std::int32_t nPoints_;
  bool tanimoto_;
  std::vector<double> squares_;  // sums of squares, for Tanimoto distances
  std::vector<double> distances_;
  int nLeft_ = 0, nRight_ = 0;
};

}  // namespace studystats::core
