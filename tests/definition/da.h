// Discriminant analysis with its selection validated, step by step.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "tests/definition/random.h"

namespace studystats::definition {

// What random folds are drawn from, in place of the library's generator; and the groups of the validation settings, in
// place of the library's own.
extern Generator daGenerator;
extern std::int32_t daGroups;

// The argument list of DisAnl.
void disAnl(const double* data, const std::int32_t* classOf, std::int32_t* modelRows, const std::int32_t* inModel,
            std::int32_t nSamples, std::int32_t nVars, std::int32_t nClasses, std::int32_t selectMode,
            std::int32_t nSelect, std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* canonVectors,
            double* canonValues, float* stepFraction, float* stepClassFraction, float* cvFractionCorrect,
            float* cvClassFraction, float* distances, std::int32_t* selected, std::int32_t* cvSelCount,
            std::int32_t* selectOrder, std::int32_t* confusion, std::int32_t* cvConfusion, std::int32_t* nSteps,
            std::int32_t* nCanonical, std::int32_t* status, ProgressMonitor* progressMonitor,
            std::int32_t* continueFlag);

}  // namespace studystats::definition
