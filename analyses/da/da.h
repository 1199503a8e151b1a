// Discriminant analysis behind its entry point.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

namespace studystats::core {

// DisAnl (studystats/analyses.h) with every argument by address.
void DaCore(const double* data, const std::int32_t* classOf, std::int32_t* modelRows, const std::int32_t* inModel,
            const std::int32_t* nSamples, const std::int32_t* nVars, const std::int32_t* classCount,
            const std::int32_t* selectMode, const std::int32_t* nSelect, const std::int32_t* method,
            const std::int32_t* groups, const float* fraction, double* canonVectors, double* canonValues,
            float* stepFraction, float* stepClassFraction, float* cvFractionCorrect, float* cvClassFraction,
            float* distances, std::int32_t* selected, std::int32_t* cvSelCount, std::int32_t* selectOrder,
            std::int32_t* confusion, std::int32_t* cvConfusion, std::int32_t* nSteps, std::int32_t* nCanonical,
            std::int32_t* status, ProgressMonitor* const* progressMonitor, std::int32_t* continueFlag);

}  // namespace studystats::core
