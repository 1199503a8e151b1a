// Discriminant analysis as DisAnl (studystats/analyses.h) runs it: selection of variables and classifier on all model
// samples, validation of both by the plan of the shared settings, and the classifier's canonical functions and
// distances.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "analyses/da/canonical.h"
#include "analyses/da/cross_validation.h"
#include "analyses/da/scratch.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

struct DaAnalysis {
  DaProblem problem;
  const std::int32_t* inModel;  // n; 1 = may be a training sample
  ProgressMonitor* monitor;
  std::int32_t* continueFlag;
};

// Outputs of DisAnl.
struct DaOutputs {
  // Of the model on all model samples.
  std::int32_t* modelRows;  // n: rows in the model by class, ties in increasing order; then the others
  DaSteps steps;
  std::int32_t* selected;              // p
  MatrixView<std::int32_t> confusion;  // g x g, resubstituted
  MatrixView<float> distances;         // n x g; each fold writes its held-out samples' from row 1 on
  CanonicalFunctions canonical;        // a fold whose model has one variable writes the placeholder

  // Of the validation.
  DaCounts counts;
  float* fractionCorrect;
  float* classFraction;  // g
};

// The analysis of more samples than classes; the status of DisAnl.
std::int32_t discriminate(const DaAnalysis& analysis, const DaOutputs& out, DaScratch& scratch);

}  // namespace studystats::core
