// Cross-validation of a partial least squares model: prediction errors for every number of components, and jackknife
// standard errors of the coefficients. What one fold does, and what is summed over the folds.
#pragma once

#include <studystats/engine/partial_least_squares.h>
#include <studystats/frame.h>

#include <cstdint>
#include <span>

#include "analyses/pls/components.h"
#include "analyses/pls/scratch.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

// What is analysed, shared by all folds.
struct PlsProblem {
  ConstMatrix data;  // n x (p + q): descriptors, then responses
  PlsSizes size;
  engine::Preparation preparation{};
  bool coefficients = true;  // every fold gives them
};

struct PlsFitted {
  PlsExtraction extraction;
  std::int32_t rank = 0;  // leading components that are more than rounding
  ColumnUnits units;      // of the columns, by the rows of the fit
};

// The components of those rows (-1: a row of zeros); units lie in preparation. sums may be null.
PlsFitted fitRows(const PlsProblem& problem, std::span<const std::int32_t> rows, const PlsModel& model,
                  PreparationScratch& preparation, const PlsResidualSums* sums, PlsFoldScratch& scratch, Pace& pace);

// Coefficients and intercepts (0 without units) in the table's units.
void coefficientsInUnits(const PlsModel& model, ConstMatrix rotations, const ColumnUnits& units, double* coefs,
                         Matrix intercepts, Pace& pace);

// The model of the training rows, and its predictions of those held out.
engine::PartialLeastSquaresFold runFold(const PlsProblem& problem, const engine::FoldRows& rows,
                                        PlsFoldScratch& scratch, Pace& pace);

// Sums over the folds, of the first nComputed components.
struct PlsSums {
  Matrix press;             // nComponents x q: weighted squared prediction errors
  double *means, *squares;  // p x nComponents x q: of each coefficient the mean so far, and the squares about it
  std::int32_t nComputed;
  std::int32_t nFolds = 0;
};

// Sets press, means and squares to 0; the latter two may be null.
void clearSums(const PlsSizes& size, const PlsSums& sums);

void addFold(const PlsProblem& problem, const engine::PartialLeastSquaresFold& fold, double weight, PlsSums& sums);

// The coefficients of one fold more.
void addCoefficients(const PlsSizes& size, const double* coefs, PlsSums& sums);

// Jackknife standard errors of the coefficients, p x nComponents x q; 0 where no fold was run.
void standardErrors(const PlsSizes& size, const PlsSums& sums, double weight, double* errors);

// PlsCvl: cross-validation by addresses, with the working copies in the caller's arrays.
//
//   data, rowUse                     in: n x m, descriptors, then responses; n, 1 = a row of the model
//   rowTags                          in, n x 2: column 1 travels with the rows
//   work, workTags                   n x m, n x 2: the rows that the last fold holds out, packed in increasing order,
//                                    and their tags in column 1; the rest zero
//   rowOrder                         out, n: the rows of the model, counted from 1, in validation order
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
