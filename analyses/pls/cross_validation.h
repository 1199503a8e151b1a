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

// The steps of it, for whoever takes them one by one.

// Lists the rows of the model, and makes the plan and the validation order over them; their number.
std::int32_t orderForValidation(const PlsValidation& validation, PlsFoldScratch& scratch);

// Sets press and the sums to 0.
void clearSums(const PlsValidation& validation, const PlsModel& model, const PlsFoldSums& sums);

// List in scratch.rows, counted from 1, the rows that fold g (counted from 0) trains on, in the order in which the plan
// gives them, or then those that it holds out, in increasing order; their number.
std::int32_t listTraining(std::int32_t nModel, std::int32_t g, PlsFoldScratch& scratch);
std::int32_t listHeldOut(std::int32_t nModel, PlsFoldScratch& scratch);

// Adds the coefficients of fold g, counted from 0.
void addCoefficients(const PlsValidation& validation, const PlsModel& model, const double* coefs, std::int32_t g,
                     const PlsFoldSums& sums);

// The standard errors of the coefficients after the last fold; weight is the plan's.
void standardErrors(const PlsValidation& validation, const PlsModel& model, const PlsFoldSums& sums,
                    std::int32_t nFolds, double weight);

// PlsCvl: the same by addresses, with the working copies in the caller's arrays.
//
//   data, rowUse                     in: n x m, descriptors, then responses; n, 1 = a row of the model
//   rowTags                          in, n x 2: column 1 travels with the rows
//   work, workTags                   n x m, n x 2: the rows that the last fold holds out, packed in increasing order,
//                                    and their tags in column 1; the rest zero
//   rowOrder                         out, n: as above
//   nComputed, nComponents           components that are validated, and those of the folds' models
//   scales, means, scaled            not looked at
//   press                            out, nComponents x q
//   coefErrors                       out, p x nComponents x q; not written on failure
//   sampleWork                       p x nComponents: the last sample predicted, as PlsPrd leaves it
//   foldCoefs, weights ... inner     the last fold's model, as PlsFit gives it
//   s1, s2                           out, p x nComponents x q: sum over the folds of each coefficient, and of its
//   square status                           kDone; kNoScratch, kNotConverged, kStopped: sums are those of the folds
//   before;
//                                    kSingular when m is below p + q: nothing else is written
//
// Obtains its scratch memory before the first fold.
void PlsCvl(const double* data, const std::int32_t* rowTags, double* work, std::int32_t* workTags,
            std::int32_t* rowOrder, const std::int32_t* rowUse, const std::int32_t* n, const std::int32_t* m,
            const std::int32_t* q, const std::int32_t* p, const std::int32_t* nComputed,
            const std::int32_t* nComponents, const double* scales, const double* means, const std::int32_t* scaled,
            double* press, double* coefErrors, double* sampleWork, double* foldCoefs, double* weights, double* loadings,
            double* respWeights, double* inner, double* s1, double* s2, std::int32_t* status,
            ProgressMonitor* const* monitor, std::int32_t* continueFlag);

}  // namespace studystats::core
