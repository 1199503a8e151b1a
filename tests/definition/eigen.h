// The symmetric eigensolver as EISPACK's release of August 1983 publishes it, loop for loop: TRED1, TQL1, TRED2, TQL2,
// PYTHAG and the order of the results. Arguments as in numeric/eigen.h. Slow, and right by inspection.
#pragma once

#include <cstdint>

namespace studystats::definition {

void eigSym(const std::int32_t* nm, const std::int32_t* n, double* a, double* w, const std::int32_t* wantVectors,
            double* z, double* work1, double* work2, std::int32_t* ierr);
void tred1(const std::int32_t* nm, const std::int32_t* n, double* a, double* d, double* e, double* e2);
void tql1(const std::int32_t* n, double* d, double* e, std::int32_t* ierr);
void tred2(const std::int32_t* nm, const std::int32_t* n, const double* a, double* d, double* e, double* z);
void tql2(const std::int32_t* nm, const std::int32_t* n, double* d, double* e, double* z, std::int32_t* ierr);
double pythag(const double* a, const double* b);

}  // namespace studystats::definition
