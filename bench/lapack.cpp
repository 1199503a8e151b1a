// The calls are declared here: neither library's header is needed.

#include "bench/lapack.h"

#include <cstddef>

extern "C" {
void dsyev_(const char* job, const char* triangle, const int* n, double* a, const int* lda, double* w, double* work,
            const int* workLength, int* info, std::size_t jobLength, std::size_t triangleLength);
char* openblas_get_corename();
void openblas_set_num_threads(int count);
}

namespace studystats::bench {

Dsyev::Dsyev(int n) : n_(n) {
  openblas_set_num_threads(1);
  double best = 0.0;
  const int ask = -1;
  int info = 0;
  dsyev_("V", "L", &n_, nullptr, &n_, nullptr, &best, &ask, &info, 1, 1);
  work_.resize(static_cast<std::size_t>(best));
}

void Dsyev::operator()(double* a, double* w) {
  const int length = static_cast<int>(work_.size());
  int info = 0;
  dsyev_("V", "L", &n_, a, &n_, w, work_.data(), &length, &info, 1, 1);
}

std::string openblasCore() { return openblas_get_corename(); }

}  // namespace studystats::bench
