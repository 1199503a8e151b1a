// The variable that a stepwise regression would bring in next.
#pragma once

#include <cstdint>

#include "numeric/column_products.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Scratch for models of up to nVariables variables on nRows rows.
struct CandidateScratch {
  CandidateScratch(Arena& arena, std::int32_t nRows, std::int32_t nVariables);

  Array<double> weights;    // of the model variables (rows) in the regression of each candidate (columns) on them
  Array<double> products;   // cross-products of the same
  Array<double> modelRows;  // values of the model variables in a few rows of the data
  Array<double> residual;   // centred residuals of the model
};

// A fitted model and the variables that might join it; lists count variables from 1.
struct CandidateQuestion {
  ConstMatrix x;
  std::int32_t nObs;
  const double* means;
  std::int32_t nIn, nOut;
  const std::int32_t* inList;
  const std::int32_t* outList;
  ConstMatrix inv;
  float corrLimit;
  const double* resid;
  double rss, meanResid;
};

// The answer as EntCand defines it; without meaning once pace has stopped.
std::int32_t findEntryCandidate(const CandidateQuestion& question, const ColumnProducts& products,
                                CandidateScratch& scratch, Pace& pace);

}  // namespace studystats::core
