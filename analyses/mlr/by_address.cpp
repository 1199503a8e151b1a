// Sizes are read, arrays become views, scratch memory is obtained; selection.cpp does the work.
#include "analyses/mlr/by_address.h"

#include <algorithm>

#include "analyses/mlr/selection.h"
#include "numeric/status.h"

namespace studystats::core {

void CorFilt(const float* corrLimit, const double* r, const std::int32_t* ld, const std::int32_t* m,
             std::int32_t* flags) {
  ColumnProducts products({nullptr, 0}, {r, *ld});
  Pace unasked;
  filterCollinear(*corrLimit, products, *m, flags, unasked);
}

void StepReg(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
             const std::int32_t* maxSteps, const std::int32_t* m, const double* c, const double* means,
             const float* fEnter, const float* fRemove, std::int32_t* flags, double* inv, const double* r,
             const float* corrLimit, double* coef, double* intercept, double* t, std::int32_t* stepAction,
             std::int32_t* stepVar, std::int32_t* nSteps, float* fStart, float* sStart, float* stepPartialF,
             float* stepF, float* stepS, std::int32_t* status, std::int32_t* inList, std::int32_t* outList) {
  const SelectionRules rules{*fEnter, *fRemove, *corrLimit, std::max(*maxSteps, 0)};
  Obtained<FitScratch> scratch(*nObs, *m);
  if (!scratch) {
    *nSteps = 0;
    *status = kNoScratch;
    return;
  }
  const RegressionRows rows{{x, *ldx}, *nObs, *nCols, *m, means};
  ColumnProducts products(ConstMatrix{c, *nCols}, ConstMatrix{r, *nCols});
  const FitArrays model{coef, intercept, {inv, *nCols}, t, inList, outList};
  Pace unasked;
  const StepHistory history{fStart, sStart, stepPartialF, stepF, stepS, stepAction, stepVar, nSteps};
  *status = selectVariables(rows, products, rules, flags, model, &history, *scratch, unasked);
}

}  // namespace studystats::core
