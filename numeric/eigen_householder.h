// What the two reductions to tridiagonal form have in common: the vector u of a Householder reflection
// I - u u'/h, and the vector q of the rank-two update A - u q' - q u' that the reflection amounts to.
#pragma once

namespace studystats::core {

struct Reflection {
  double scale;          // sum of the magnitudes; 0: there is nothing to reflect, and nothing else is set
  double h;              // half the squared length of u
  double offDiagonal;    // subdiagonal element that the reflection leaves
  double offDiagonalSq;  // its square
};

// Turns x (l numbers) into the vector u that reflects x onto its last element.
Reflection makeReflection(double* x, int l);

// Turns p = A u (l numbers) into q = p/h - (u'p/2h^2) u.
void makeUpdateVector(double* p, const double* u, double h, int l);

}  // namespace studystats::core
