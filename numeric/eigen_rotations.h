// Plane rotations of neighbouring columns, collected and applied many at a time.
//
// The rotations of a QL sweep do not depend on the vectors that they turn. They wait here until enough have come
// together, and are then applied to one block of rows after another: a block stays in the cache for thousands of
// rotations. Each row still sees every rotation in its order, so not a bit of the result depends on the waiting.
#pragma once

#include "numeric/matrix_view.h"
#include "numeric/pace.h"

namespace studystats::core {

class ColumnRotations {
 public:
  // Of the first nRows rows of z. Once pace has stopped nothing more is applied.
  ColumnRotations(Matrix z, int nRows, Pace& pace) : z_(z), nRows_(nRows), pace_(pace) {}

  // Columns i and i + 1, counted from 0: new z(i) = c z(i) - s z(i+1), new z(i+1) = s z(i) + c z(i+1).
  void add(int i, double c, double s);

  // Applies what waits. Nothing is applied unless this is called in the end.
  void apply();

 private:
  static constexpr int kMostRotations = 2048;
  static constexpr int kMostRuns = 256;

  // Rotations of columns (first, first+1), (first-1, first), ...: numbers begin...end-1.
  struct Run {
    int first, begin, end;
  };

  Matrix z_;
  int nRows_;
  Pace& pace_;
  int nRotations_ = 0, nRuns_ = 0;
  Run runs_[kMostRuns];
  double c_[kMostRotations], s_[kMostRotations];
};

}  // namespace studystats::core
