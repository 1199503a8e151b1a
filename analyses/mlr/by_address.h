// The internal routines of the regression's selection of variables, every argument by address. Matrices are
// column-major; variables and steps count from 1.
#pragma once

#include <cstdint>

namespace studystats::core {

// Thins a starting model: of two variables 1 ... m in the model whose absolute correlation exceeds corrLimit (plus
// 1e-5) the later one leaves. A variable that has left removes no other. r has leading dimension ld; flags in-out, 1 =
// in.
void CorFilt(const float* corrLimit, const double* r, const std::int32_t* ld, const std::int32_t* m,
             std::int32_t* flags);

// Selects variables 1 ... m for the regression of column m + 1 on the first nObs rows of x.
//
// A step enters the candidate with the largest partial correlation and fits; its t^2, the partial F, is then held
// against fEnter, and a variable below it leaves again and ends the selection. Otherwise a step removes the weakest
// variable when its t^2 is below fRemove. Equality keeps a variable. The selection also ends after maxSteps steps, when
// no candidate is left, when the variable just entered is the one removed, or with a fit that fails. At the step limit
// the last entry is not tested. A negative maxSteps counts as 0: one fit of the starting model.
//
//   c, means, r   cross-products, means and correlations of the same rows
//   flags         in-out: starting model, final model
//   inv, coef, intercept, t, inList, outList   out: the last fit that succeeded, as RegFit writes them
//   fStart, sStart                             out: F and standard error of estimate of the starting model
//   stepAction, stepVar, stepPartialF, stepF, stepS   maxSteps each, out. Step k: 1 entered or 0 removed; the variable;
//                 its t^2; F and standard error after the step. Dropped steps leave their traces behind nSteps; the
//                 partial F of an entry that was not tested is not written
//   nSteps        out: steps of the final model's path
//   status        0; 1 or 5 from the fit that failed, whose F and standard error are 0
void StepReg(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
             const std::int32_t* maxSteps, const std::int32_t* m, const double* c, const double* means,
             const float* fEnter, const float* fRemove, std::int32_t* flags, double* inv, const double* r,
             const float* corrLimit, double* coef, double* intercept, double* t, std::int32_t* stepAction,
             std::int32_t* stepVar, std::int32_t* nSteps, float* fStart, float* sStart, float* stepPartialF,
             float* stepF, float* stepS, std::int32_t* status, std::int32_t* inList, std::int32_t* outList);

}  // namespace studystats::core
