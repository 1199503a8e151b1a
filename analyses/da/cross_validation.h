// Cross-validation of a discriminant analysis, its selection of variables included.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "analyses/da/canonical.h"
#include "analyses/da/scratch.h"
#include "analyses/da/selection.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

struct DaAnalysis {
  ConstMatrix data;             // n x p, all samples
  const std::int32_t* classOf;  // n; a class outside 1 ... g is unknown
  const std::int32_t* inModel;  // n; 1 = may be a training sample
  std::int32_t n, p, g;
  DaRules rules;
  ProgressMonitor* monitor;
  std::int32_t* continueFlag;

  // out
  std::int32_t* modelRows;             // n: rows in the model by class, ties in increasing order; then the others
  std::int32_t* selCount;              // by variable: folds whose own selection chose it
  MatrixView<std::int32_t> confusion;  // g x g, true class by predicted class, of the held-out samples
  MatrixView<float> distances;         // n x g; each fold writes its held-out samples' from row 1 on
  CanonicalFunctions canonical;        // a fold whose model has one variable writes the placeholder
};

// Runs the folds, over again with one sample a group when the selection fails in one of them: cvGroups is then 0, and
// the validation outputs are those of the second course alone. When that fails too, cvGroups gets its value back.
// Leaves the tallies by class in scratch.validated and scratch.correct.
//
// kDone, the status of the selection that failed, or kStopped when the host asked to stop.
std::int32_t crossValidate(const DaAnalysis& analysis, DaScratch& scratch);

}  // namespace studystats::core
