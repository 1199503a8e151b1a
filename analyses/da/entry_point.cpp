// DisAnl, the exported name.
#include <studystats/analyses.h>

#include "analyses/da/by_address.h"

void DisAnl(const double* data, const std::int32_t* classOf, std::int32_t* modelRows, const std::int32_t* inModel,
            std::int32_t nSamples, std::int32_t nVars, std::int32_t nClasses, std::int32_t selectMode,
            std::int32_t nSelect, std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* canonVectors,
            double* canonValues, float* stepFraction, float* stepClassFraction, float* cvFractionCorrect,
            float* cvClassFraction, float* distances, std::int32_t* selected, std::int32_t* cvSelCount,
            std::int32_t* selectOrder, std::int32_t* confusion, std::int32_t* cvConfusion, std::int32_t* nSteps,
            std::int32_t* nCanonical, std::int32_t* status, ProgressMonitor* progressMonitor,
            std::int32_t* continueFlag) {
  studystats::core::DaCore(data, classOf, modelRows, inModel, &nSamples, &nVars, &nClasses, &selectMode, &nSelect,
                           &cvMethod, &cvGroups, &cvFraction, canonVectors, canonValues, stepFraction,
                           stepClassFraction, cvFractionCorrect, cvClassFraction, distances, selected, cvSelCount,
                           selectOrder, confusion, cvConfusion, nSteps, nCanonical, status, &progressMonitor,
                           continueFlag);
}
