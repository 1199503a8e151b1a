// Eigenvalues and eigenvectors of a real symmetric matrix: Householder reduction to tridiagonal form, then QL with
// implicit shifts, the EISPACK path of 1983 with every element's operations in the published order.
//
// The signs of the eigenvectors and the last bits of all results hang on that order, so no other method may stand in.
// Martin, Reinsch & Wilkinson (1968), Numerische Mathematik 11, 181-195; Bowdler, Martin, Reinsch & Wilkinson (1968),
// Numerische Mathematik 11, 293-306; Smith et al., Matrix Eigensystem Routines - EISPACK Guide.
//
// Matrices are column-major with nm rows declared, vectors have n numbers. Nothing is allocated, nothing is thrown, and
// with n below 1 nothing is written but a status of 0. Not-a-numbers and infinities end with some result.
#pragma once

#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"

namespace studystats::core {

// All eigenvalues, and on request all eigenvectors, of the symmetric matrix whose lower triangle is in a (n x n).
//
// w            eigenvalues, largest first.
// wantVectors  0: eigenvalues only. z is not touched; the strict lower triangle of a is overwritten with Householder
//              data, work1 and work2 are scratch.
//              Other: column k of z (n x n) is the eigenvector of w(k), of length 1. a and work2 are not touched;
//              work1 is scratch. Rows n+1...nm of z are carried along when the columns are put in reverse order.
// ierr         0; 10 n when n > nm (nothing else is written); l when eigenvalue l needs more than 30 iterations (w and
//              z hold what there was by then, in reverse order).
void EigSym(const std::int32_t* nm, const std::int32_t* n, double* a, double* w, const std::int32_t* wantVectors,
            double* z, double* work1, double* work2, std::int32_t* ierr);

// EigSym with eigenvectors, of a and z with n rows declared, asking through pace whether to go on. 0, l as above, or
// kStopped: w and z are then without meaning.
std::int32_t eigenSystem(const double* a, std::int32_t n, double* w, double* z, double* work1, Pace& pace);

// Reduction of the lower triangle of a to a tridiagonal matrix: diagonal d, subdiagonal e(2...n) with e(1) = 0, its
// squares e2. The strict lower triangle of a receives the Householder vectors; the rest of a is not changed.
void Tred1(const std::int32_t* nm, const std::int32_t* n, double* a, double* d, double* e, double* e2);

// The same with the orthogonal transformation accumulated in z. Only the lower triangle of a is read; a is not changed
// unless it is z.
void Tred2(const std::int32_t* nm, const std::int32_t* n, const double* a, double* d, double* e, double* z);
void reduceWithVectors(ConstMatrix a, std::int32_t n, double* d, double* e, Matrix z, Pace& pace);

// Eigenvalues of a tridiagonal matrix, ascending in d. e(2...n) is its subdiagonal and is destroyed.
// ierr: 0; l when eigenvalue l needs more than 30 iterations (d(1...l-1) are right, though not the smallest).
void Tql1(const std::int32_t* n, double* d, double* e, std::int32_t* ierr);

// The same, with the rotations applied to the columns of z (rows 1...n), which are sorted along with the eigenvalues.
// ierr as above; d and z are then not sorted.
void Tql2(const std::int32_t* nm, const std::int32_t* n, double* d, double* e, double* z, std::int32_t* ierr);
std::int32_t iterateWithVectors(std::int32_t n, double* d, double* e, Matrix z, Pace& pace);  // or kStopped

// sqrt(a^2 + b^2) without needless overflow or underflow, by the iteration of Moler & Morrison (1983), IBM Journal of
// Research and Development 27, 577-581. Not-a-number for a not-a-number and for two infinities.
double Pythag(const double* a, const double* b);

}  // namespace studystats::core
