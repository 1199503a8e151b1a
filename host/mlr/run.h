// A prepared regression run by the engine: the selection on all rows, and the same in every fold.
#pragma once

#include <studystats/host/regression.h>

#include "host/held_out.h"
#include "host/mlr/preparation.h"
#include "host/watch.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

// The equation and what belongs to its terms, by position; of prepared descriptors, in the response's unit.
struct FittedEquation {
  std::vector<std::size_t> chosen;  // descriptors, from 0
  std::vector<double> coefficients, standardErrors, t, p;
  double intercept = 0;
  std::vector<double> fitted, residuals;  // by row
};

// A step of the selection that was tried, and taken back when it stands behind the path.
struct TriedStep {
  std::size_t descriptor = 0;
  bool entered = true;
  double partialF = 0;  // not-a-number when it was not tested
  double f = 0, s = 0;
};

// What the folds gave, as far as they were run.
struct FoldedRegression {
  std::size_t singularFold = 0;     // from 1: the fold that ended the validation; 0: none did
  std::string culprits;             // "x3, x7 identical in its rows"; empty when none were found
  double press = 0, keptPress = 0;  // of the folds' own selections, and of the equation's descriptors in every fold
  std::vector<std::size_t> timesChosen;  // by descriptor
  std::vector<double> spreads;           // of the coefficients, by position
  double constantSpread = 0;             // table units
  HeldOutRows heldOut;
};

struct RegressionRun {
  FittedEquation equation;
  RegressionFit fit;
  std::vector<TriedStep> tried;
  std::size_t steps = 0;  // of those, the path
  FoldPlan plan;
  FoldedRegression folds;
};

// Progress goes from `from` to `to` percent. Throws NotComputed when the selection on all rows becomes singular.
RegressionRun runRegression(const PreparedRegression& prepared, const RegressionOptions& options, Watch& watch,
                            double from, double to);

}  // namespace studystats
