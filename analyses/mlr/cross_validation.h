// Cross-validation of a regression, its selection of variables included: what one fold does, and what is summed over
// the folds.
#pragma once

#include <studystats/engine/regression.h>

#include <cstdint>

#include "analyses/mlr/selection.h"
#include "numeric/matrix_view.h"
#include "numeric/preparation.h"
#include "numeric/regression_fit.h"
#include "numeric/scratch.h"

namespace studystats::core {

// What is analysed, shared by all folds.
struct MlrProblem {
  ConstMatrix x;  // n x p, response last
  std::int32_t n, p;
  SelectionRules rules;
  const std::int32_t* start;    // p: the model that every selection starts from, 1 = in
  std::int32_t nStart;          // variables in it
  const double *scale, *shift;  // p; null: the variables have not been transformed
  engine::Preparation preparation{};
};

// The model selected on all rows.
struct MlrModel {
  const std::int32_t* flags;   // p
  const std::int32_t* inList;  // its variables, from 1
  std::int32_t nIn;
};

// One fold at a time. Models have `most` variables at most, and `columns` columns of their cross-products are needed.
struct MlrFoldScratch {
  MlrFoldScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t mostVariables, std::int32_t columns,
                 bool prepares);

  std::int32_t most;
  ProductScratch products;
  Array<double> inverse, training;
  FitScratch fit;
  PreparationScratch preparation;
  Array<double> means, t, ownCoef, coef, predictions;
  Array<std::int32_t> rows, flags, outList, ownList, inList;  // lists from 1, and ...
  Array<std::int32_t> own, refit;                             // ... the same from 0, as they are shown
};

// The rows, one below the other, prepared by themselves; the units that did it.
ColumnUnits takeRows(const MlrProblem& problem, std::span<const std::int32_t> rows, Matrix to,
                     PreparationScratch& preparation, Pace& pace);

// A model of prepared columns, whose variables count from 1, in the table's units; nothing is done without units.
void convertToTable(const ColumnUnits& units, std::int32_t response, const std::int32_t* list, std::int32_t nIn,
                    double* coef, double& intercept);

// Means and cross-products of the first nRows rows of x: all of them when most variables are in the starting model, or
// else a column when a selection asks for it.
ColumnProducts productsOf(ConstMatrix x, std::int32_t nRows, const MlrProblem& problem, double* means,
                          ProductScratch& scratch, Pace& pace);

// The variables of the lists, counted from 0.
std::span<const std::int32_t> countedFromZero(const std::int32_t* list, std::int32_t n, std::int32_t* to);

// Selection on the training rows, predictions of those held out, and the model of all rows refitted.
engine::RegressionFold runFold(const MlrProblem& problem, const MlrModel& model, const engine::FoldRows& rows,
                               MlrFoldScratch& scratch, Pace& pace);

// Sums over the folds.
struct MlrSums {
  double* press;
  std::int32_t* selCount;  // by variable
  double* refits;          // by fold: coefficients by position, then the untransformed intercept
  std::int32_t nFolds = 0;
};

// A fold that is singular ends the validation: press is then 0.
void addFold(const MlrProblem& problem, const engine::RegressionFold& fold, double weight, MlrSums& sums);

// Jackknife spreads over the folds: spread(a) of the coefficient of position a, spread(nIn) of the intercept.
double jackknifeSpread(const MlrSums& sums, std::int32_t nIn, std::int32_t a, double weight);

}  // namespace studystats::core
