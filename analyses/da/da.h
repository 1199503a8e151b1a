// Discriminant analysis: selection of variables and classifier on all model samples, cross-validation of both, and the
// classifier's canonical functions and distances.
#pragma once

#include <cstdint>

#include "analyses/da/cross_validation.h"
#include "analyses/da/scratch.h"
#include "analyses/da/selection.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

// What the model on all model samples gives, and the shares of held-out samples classified correctly; the other outputs
// are in DaAnalysis.
struct DaModelOutputs {
  DaSteps steps;
  std::int32_t* selected;              // p
  MatrixView<std::int32_t> confusion;  // g x g, resubstituted
  float* fractionCorrect;
  float* classFraction;  // g
};

// The analysis of more samples than classes; the status of DisAnl (studystats/analyses.h).
std::int32_t discriminate(const DaAnalysis& analysis, const DaModelOutputs& out, DaScratch& scratch);

}  // namespace studystats::core
