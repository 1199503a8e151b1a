// Householder reflections as the reductions to tridiagonal form make them. Sums run in index order.

#include "numeric/eigen_householder.h"

#include <cmath>

namespace studystats::core {

Reflection makeReflection(double* x, int l) {
  Reflection made{};
  for (int k = 0; k < l; ++k) made.scale += std::fabs(x[k]);
  if (made.scale == 0.0) return made;

  double squares = 0.0;
  for (int k = 0; k < l; ++k) {
    x[k] /= made.scale;
    squares += x[k] * x[k];
  }
  const double last = x[l - 1];
  const double root = std::sqrt(squares);
  const double g = last >= 0.0 ? -root : root;  // -0.0 counts as positive, which copysign would not give
  made.h = squares - last * g;
  made.offDiagonal = made.scale * g;
  made.offDiagonalSq = made.scale * made.scale * squares;
  x[l - 1] = last - g;
  return made;
}

void makeUpdateVector(double* p, const double* u, double h, int l) {
  double product = 0.0;
  for (int j = 0; j < l; ++j) {
    p[j] /= h;
    product += p[j] * u[j];
  }
  const double half = product / (h + h);
  for (int j = 0; j < l; ++j) p[j] -= half * u[j];
}

}  // namespace studystats::core
