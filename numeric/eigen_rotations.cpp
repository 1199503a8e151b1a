// Collected plane rotations, applied block of rows by block of rows.

#include "numeric/eigen_rotations.h"

#include <algorithm>
#include <cstddef>

#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

constexpr int kRows = 128;  // rows taken together

// One column pair: lower is column i, upper column i + 1.
inline void rotate(double* __restrict lower, double* __restrict upper, int rows, double c, double s) {
  for (int r = 0; r < rows; ++r) {
    const double h = upper[r];
    upper[r] = s * lower[r] + c * h;
    lower[r] = c * lower[r] - s * h;
  }
}

// Rotations of neighbouring columns from right to left; upper is the right column of the first pair. Four rotations
// share one pass: the columns between them are turned twice while they are at hand.
STUDYSTATS_MULTIVERSION
void rotateRows(double* upper, std::ptrdiff_t ld, int rows, const double* c, const double* s, int count) {
  int t = 0;
  for (; t + 4 <= count; t += 4, upper -= 4 * ld) {
    double* __restrict z0 = upper;
    double* __restrict z1 = upper - ld;
    double* __restrict z2 = upper - 2 * ld;
    double* __restrict z3 = upper - 3 * ld;
    double* __restrict z4 = upper - 4 * ld;
    const double c0 = c[t], c1 = c[t + 1], c2 = c[t + 2], c3 = c[t + 3];
    const double s0 = s[t], s1 = s[t + 1], s2 = s[t + 2], s3 = s[t + 3];
    for (int r = 0; r < rows; ++r) {
      const double x1 = z1[r], x2 = z2[r], x3 = z3[r], x4 = z4[r];
      const double h0 = z0[r];
      const double h1 = c0 * x1 - s0 * h0;
      const double h2 = c1 * x2 - s1 * h1;
      const double h3 = c2 * x3 - s2 * h2;
      z0[r] = s0 * x1 + c0 * h0;
      z1[r] = s1 * x2 + c1 * h1;
      z2[r] = s2 * x3 + c2 * h2;
      z3[r] = s3 * x4 + c3 * h3;
      z4[r] = c3 * x4 - s3 * h3;
    }
  }
  for (; t < count; ++t, upper -= ld) rotate(upper - ld, upper, rows, c[t], s[t]);
}

}  // namespace

void ColumnRotations::add(int i, double c, double s) {
  if (nRotations_ == kMostRotations || nRuns_ == kMostRuns) apply();
  const bool continues = nRuns_ > 0 && runs_[nRuns_ - 1].first - (nRotations_ - runs_[nRuns_ - 1].begin) == i;
  if (!continues) runs_[nRuns_++] = {i, nRotations_, nRotations_};
  c_[nRotations_] = c;
  s_[nRotations_] = s;
  runs_[nRuns_ - 1].end = ++nRotations_;
}

void ColumnRotations::apply() {
  for (int row = 0; row < nRows_ && pace_.goOn(6 * kRows * std::int64_t{nRotations_}); row += kRows)
    for (const Run* run = runs_; run < runs_ + nRuns_; ++run)
      rotateRows(&z_(row, run->first + 1), z_.ld, std::min(kRows, nRows_ - row), c_ + run->begin, s_ + run->begin,
                 run->end - run->begin);
  nRotations_ = nRuns_ = 0;
}

}  // namespace studystats::core
