// Stepwise regression with its cross-validation, step by step.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "tests/definition/random.h"

namespace studystats::definition {

// What random folds are drawn from, in place of the library's generator.
extern Generator mlrGenerator;

// The argument list of MulReg.
void mulReg(const double* data, const std::int32_t* rowTags, std::int32_t* rowIds, const std::int32_t* usable,
            std::int32_t nRows, std::int32_t nCols, const double* scale, const double* shift, double* corr,
            std::int64_t reserved, float fEnter, float fRemove, std::int32_t maxSteps, float corrLimit,
            std::int32_t* flags, std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* fitted,
            double* resid, float* fStart, float* sStart, double* rawIntercept, double* intercept, double* multR,
            double* fValue, double* sValue, double* fProb, double* q2, double* press, double* cvInterceptSd,
            std::int32_t* df, double* sumSq, double* rawCoef, double* coef, double* cvCoefSd, double* coefSe,
            double* tValue, double* tProb, std::int32_t* inList, std::int32_t* cvSelCount, float* stepPartialF,
            float* stepF, float* stepS, std::int32_t* stepAction, std::int32_t* stepVar, std::int32_t* nIn,
            std::int32_t* nSteps, const std::int32_t* maxFolds, std::int32_t* status, ProgressMonitor* progressMonitor,
            std::int32_t* continueFlag);

}  // namespace studystats::definition
