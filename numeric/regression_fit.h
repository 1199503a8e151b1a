// One least-squares fit and its entry candidate, on scratch memory that the caller holds: what RegFit and EntCand
// (least_squares.h) do, for a selection that fits many models in a row. Indices count from 0, variables in lists
// from 1.
#pragma once

#include <cstdint>

#include "numeric/column_products.h"
#include "numeric/entry_candidate.h"
#include "numeric/matrix_inverse.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

// The rows that a model is fitted on.
struct RegressionRows {
  ConstMatrix x;
  std::int32_t nObs;
  std::int32_t nCols;     // length of the lists
  std::int32_t response;  // its column; the columns before it are the candidate variables
  const double* means;
};

// Scratch for fits of up to nVariables model variables on nRows rows.
struct FitScratch {
  FitScratch(Arena& arena, std::int32_t nRows, std::int32_t nVariables)
      : fitted(arena, nRows), resid(arena, nRows), inverse(arena, nVariables), candidate(arena, nRows, nVariables) {}

  Array<double> fitted, resid;
  InverseScratch inverse;
  CandidateScratch candidate;
};

// The arrays that a fit writes, shaped as in RegFit; inv has as many rows as the largest model at least.
struct FitArrays {
  double* coef;
  double* intercept;
  Matrix inv;
  double* t;
  std::int32_t* inList;
  std::int32_t* outList;
};

struct FitNumbers {
  std::int32_t nIn = 0, nOut = 0;
  double rss = 0.0;
  double meanResid = 0.0;
  std::int32_t weakest = 0;
  float fStat = 0.0F, sEst = 0.0F;
};

// Everything of RegFit but the entry candidate; kDone, kSingular or kStopped. The residuals stay in scratch.resid.
std::int32_t fitModel(const RegressionRows& rows, ColumnProducts& products, const std::int32_t* flags,
                      const FitArrays& out, FitScratch& scratch, FitNumbers& numbers, Pace& pace);

// The entry candidate of the model just fitted, 0 when there is none.
std::int32_t entryCandidate(const RegressionRows& rows, const ColumnProducts& products, float corrLimit,
                            const FitArrays& model, const FitNumbers& numbers, FitScratch& scratch, Pace& pace);

}  // namespace studystats::core
