// Cross-validation of a partial least squares model: prediction errors for every number of components, and jackknife
// standard errors of the coefficients.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "analyses/pls/components.h"
#include "analyses/pls/scratch.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

struct PlsValidation {
  ConstMatrix data;            // n x m: descriptors, then responses, centred as a whole
  const std::int32_t* rowUse;  // n; 1 = a row of the model. The others are neither trained on nor held out
  std::int32_t n, m, p, q;
  std::int32_t nComputed;  // components that are validated, of those that the folds' models have
  ProgressMonitor* const* monitor;
  std::int32_t* continueFlag;

  // out
  std::int32_t* rowOrder;  // n: the rows of the model, counted from 1, sorted by ascending first response; without
                           // responses by the column behind the descriptors. Entries behind them keep what they hold
  Matrix press;            // nComponents x q: weighted squared prediction errors
  double* coefErrors;      // p x nComponents x q, of the first nComputed components; 0 where no fold was run. Not
                           // written on failure
};

// Sums over the folds, p x nComponents x q: of each coefficient the mean so far, and the squares about it.
struct PlsFoldSums {
  double *means, *squares;
};

// Makes plan and folds over the rows of the model and runs them: work (n * (p + q) numbers), model and coefs (p x
// nComponents x q) are the current fold's. kDone; kNotConverged from a fold; kStopped when the host asked to stop.
std::int32_t crossValidate(const PlsValidation& validation, double* work, const PlsModel& model, double* coefs,
                           const PlsFoldSums& sums, PlsFoldScratch& scratch);

// The same by addresses. work holds n * m numbers; the model's arrays are as in PlsFit; foldCoefs, s1 and s2 are p x
// nComponents x q; s1 keeps the mean of the folds' coefficients so far, s2 the squares about it. rowTags, workTags,
// scales, means, scaled and sampleWork are not looked at. Obtains its scratch memory before the first fold: status
// kNoScratch.
void PlsCvl(const double* data, const std::int32_t* rowTags, double* work, std::int32_t* workTags,
            std::int32_t* rowOrder, const std::int32_t* rowUse, const std::int32_t* n, const std::int32_t* m,
            const std::int32_t* q, const std::int32_t* p, const std::int32_t* nComputed,
            const std::int32_t* nComponents, const double* scales, const double* means, const std::int32_t* scaled,
            double* press, double* coefErrors, double* sampleWork, double* foldCoefs, double* weights, double* loadings,
            double* respWeights, double* inner, double* s1, double* s2, std::int32_t* status,
            ProgressMonitor* const* monitor, std::int32_t* continueFlag);

}  // namespace studystats::core
