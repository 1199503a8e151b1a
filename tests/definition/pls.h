// Partial least squares by NIPALS with its cross-validation, step by step; the coefficients are predictions of unit
// vectors.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "tests/definition/random.h"

namespace studystats::definition {

// What random folds are drawn from, in place of the library's generator.
extern Generator plsGenerator;

// One component of the current data (n rows, p descriptors and q responses): scores (n), weights (p), loadings (p),
// response weights (q), inner coefficient. status 0, or 2 when 1000 passes did not converge.
void plsCmp(const double* data, const std::int32_t* n, const std::int32_t* m, const std::int32_t* p,
            const std::int32_t* q, double* scores, double* weights, double* loadings, double* respWeights,
            double* innerCoef, std::int32_t* status);

// The prediction of one response for the sample in column 1 of sampleWork after 1 ... nUse components.
void plsPrd(double* sampleWork, const std::int32_t* nUse, const std::int32_t* p, const std::int32_t* nModel,
            const double* respColumn, const double* b, const double* weights, const double* loadings, double* contrib,
            double* cumulative);

// All components of data, which is deflated in place, and the coefficients (p x nComponents x q) of the model.
void plsFit(double* data, const std::int32_t* n, const std::int32_t* m, const std::int32_t* p, const std::int32_t* q,
            const std::int32_t* nComponents, double* weights, double* loadings, double* respWeights, double* b,
            double* coefs, std::int32_t* status);

// The argument list of PlsAnl.
void plsAnl(const double* data, const std::int32_t* rowTags, std::int32_t* rowOrder, const std::int32_t* rowUse,
            std::int32_t nRows, std::int32_t nCols, std::int64_t unread1, double* scales, const double* means,
            const void* unread2, std::int32_t nResponses, std::int32_t nDescriptors, std::int32_t keepAll,
            float ratioLimit, std::int32_t nComponents, std::int32_t scaled, std::int32_t cvMethod,
            std::int32_t cvGroups, float cvFraction, double* coefs, double* coefErrors, double* pressRatios, double* q2,
            double* r2, double* rss, double* tss, double* intercepts, double* fitted, double* press,
            std::int32_t* status, ProgressMonitor* progressMonitor, std::int32_t* continueFlag);

}  // namespace studystats::definition
