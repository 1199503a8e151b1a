// Partial least squares behind its entry point.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "numeric/matrix_view.h"

namespace studystats::core {

// What PlsAnl (studystats/analyses.h) is given and writes, under the names that it has there.
struct PlsAnalysis {
  // in
  ConstMatrix data;  // n x m
  const std::int32_t* rowUse;
  std::int32_t n, m, p, q, nComponents;
  bool keepAll, scaled;
  double ratioLimit;
  const double* means;
  ProgressMonitor* const* monitor;

  // out
  std::int32_t* rowOrder;
  double *scales, *coefs, *coefErrors;
  Matrix pressRatios, q2, r2, rss;  // nComponents x q
  double* tss;
  Matrix intercepts;  // nComponents x q
  Matrix fitted;      // n x q
  Matrix press;       // nComponents x q
  std::int32_t* continueFlag;
};

// Fits, validates as the stored settings have it, chooses the components and predicts; the status.
std::int32_t analyse(const PlsAnalysis& analysis);

}  // namespace studystats::core
