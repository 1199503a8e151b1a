// Cross-validation of a regression, its selection of variables included.
#pragma once

#include <studystats/frame.h>

#include <cstdint>

#include "analyses/mlr/scratch.h"
#include "analyses/mlr/selection.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

struct MlrValidation {
  ConstMatrix data;  // n x p, response last
  std::int32_t n, p;
  std::int32_t most;  // variables that a model can have
  const std::int32_t* rowTags;
  SelectionRules rules;
  const std::int32_t* flags;   // the model selected on all rows
  const std::int32_t* inList;  // its nIn variables
  std::int32_t nIn;
  const double *scale, *shift;
  ProgressMonitor* monitor;
  std::int32_t* continueFlag;

  // out
  double* press;           // weighted squared prediction errors; starts at the value it holds
  std::int32_t* selCount;  // by variable: folds whose own selection chose it
  double* coefSd;          // by variable, of the model's: jackknife spread of the coefficients refitted in the folds
  double* interceptSd;     // the same of the intercept in untransformed units
};

// Runs the folds of the plan that is stored, over scratch.order and scratch.usable; scratch.startFlags is the model
// that every fold starts from. kDone, or kStopped when the host asked to stop.
//
// A fold in which a fit fails ends the validation with kDone: press is then 0 and the spreads are not written.
std::int32_t crossValidate(const MlrValidation& validation, MlrScratch& scratch);

}  // namespace studystats::core
