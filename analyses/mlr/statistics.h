// The statistics that are reported with a fitted regression.
#pragma once

#include <cstdint>

#include "numeric/matrix_view.h"

namespace studystats::core {

// The model as the selection left it: nIn variables inList, coefficients by position, diagonal of the inverse of their
// cross-products by position; data n x p with the response last; tss the response's sum of squared deviations.
struct FittedModel {
  ConstMatrix data;
  std::int32_t n, p, nIn;
  const std::int32_t* inList;
  const double *coef, *intercept, *inverseDiagonal;
  double tss, press;
};

// Outputs of MulReg of the same names.
struct MlrStatistics {
  double *fitted, *resid;
  double* sumSq;
  const std::int32_t* df;
  double *multR, *fValue, *sValue, *fProb, *q2;
  double *coefSe, *tValue, *tProb;
};

void modelStatistics(const FittedModel& model, const MlrStatistics& out);

}  // namespace studystats::core
