// The eigensolver of LAPACK as OpenBLAS has it, on one thread: measured against, never linked to the library.
#pragma once

#include <string>
#include <vector>

namespace studystats::bench {

// Eigenvalues (ascending) and, in place of a, eigenvectors of the symmetric matrix in the lower triangle of a (n x n).
class Dsyev {
 public:
  explicit Dsyev(int n);
  void operator()(double* a, double* w);

 private:
  int n_;
  std::vector<double> work_;
};

// The processor that OpenBLAS has chosen its kernels for. The environment may have a say in it: OPENBLAS_CORETYPE.
std::string openblasCore();

}  // namespace studystats::bench
