// PlsAnl: stores the validation settings, and hands its arguments to the analysis.
#include <studystats/analyses.h>

#include <algorithm>

#include "analyses/pls/pls.h"
#include "numeric/status.h"
#include "numeric/validation.h"

void PlsAnl(const double* data, const std::int32_t* /*rowTags*/, std::int32_t* rowOrder, const std::int32_t* rowUse,
            std::int32_t nRows, std::int32_t nCols, std::int64_t /*reserved1*/, double* scales, const double* means,
            const void* /*reserved2*/, std::int32_t nResponses, std::int32_t nDescriptors, std::int32_t keepAll,
            float ratioLimit, std::int32_t nComponents, std::int32_t scaled, std::int32_t cvMethod,
            std::int32_t cvGroups, float cvFraction, double* coefs, double* coefErrors, double* pressRatios, double* q2,
            double* r2, double* rss, double* tss, double* intercepts, double* fitted, double* press,
            std::int32_t* status, ProgressMonitor* progressMonitor, std::int32_t* continueFlag) {
  namespace core = studystats::core;
  core::cvMethod = cvMethod;
  core::cvGroups = cvGroups;
  core::cvFraction = cvFraction;
  *continueFlag = 1;
  *status = core::kSingular;
  const std::int32_t a = std::max(nComponents, 0);
  *status = core::analyse({
      .data = {data, nRows},
      .rowUse = rowUse,
      .n = nRows,
      .m = nCols,
      .p = nDescriptors,
      .q = std::max(nResponses, 0),
      .nComponents = a,
      .keepAll = keepAll != 0,
      .scaled = scaled != 0,
      .ratioLimit = double{ratioLimit},
      .means = means,
      .monitor = &progressMonitor,
      .rowOrder = rowOrder,
      .scales = scales,
      .coefs = coefs,
      .coefErrors = coefErrors,
      .pressRatios = {pressRatios, a},
      .q2 = {q2, a},
      .r2 = {r2, a},
      .rss = {rss, a},
      .tss = tss,
      .intercepts = {intercepts, a},
      .fitted = {fitted, nRows},
      .press = {press, a},
      .continueFlag = continueFlag,
  });
}
