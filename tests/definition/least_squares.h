// The least-squares kernels, loop by loop, with the argument lists of numeric/least_squares.h.
#pragma once

#include <cstdint>

namespace studystats::definition {

void splitVars(const std::int32_t* n, const std::int32_t* m, const std::int32_t* flags, std::int32_t* nIn,
               std::int32_t* inList, std::int32_t* nOut, std::int32_t* outList);

void invMat(const std::int32_t* n, const std::int32_t* ld, double* a, std::int32_t* status);

void regFit(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
            const std::int32_t* yCol, const std::int32_t* flags, const double* c, const double* means, double* inv,
            const double* r, const float* corrLimit, double* coef, double* intercept, std::int32_t* enter,
            std::int32_t* weakest, double* t, float* fStat, float* sEst, std::int32_t* status, std::int32_t* inList,
            std::int32_t* outList);

void entCand(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
             const std::int32_t* nOut, const std::int32_t* outList, const double* resid, const std::int32_t* nIn,
             const std::int32_t* inList, const double* c, const double* inv, const double* r, const float* corrLimit,
             const double* means, const double* rss, const double* meanResid, std::int32_t* enter,
             std::int32_t* status);

void tVals(const double* rss, const std::int32_t* nIn, const std::int32_t* inList, const std::int32_t* nObs,
           const double* coef, const std::int32_t* ldInv, const double* inv, double* t, std::int32_t* weakest);

void regPred(const double* x, const std::int32_t* nRows, const std::int32_t* yCol, const std::int32_t* nIn,
             const std::int32_t* inList, const double* intercept, const double* coef, double* fitted, double* resid,
             double* rss);

void unScale(const double* coef, const double* intercept, const std::int32_t* nCols, const std::int32_t* nIn,
             const std::int32_t* inList, const double* scale, const double* shift, double* perVar1, double* perVar2,
             double* coefOut, double* interceptOut);

}  // namespace studystats::definition
