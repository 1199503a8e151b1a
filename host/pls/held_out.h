// Predictions of the rows held out: every fold of a validated model fitted again.
#pragma once

#include "host/pls/pls_call.h"

#include <cstddef>
#include <vector>

namespace studystats {

struct PlsHeldOut {
  struct Prediction {
    std::size_t fold = 0;        // from 1
    std::vector<double> values;  // component, response; table units
  };
  std::vector<std::vector<Prediction>> rows;  // of each model row: none, one, or several with random draws
  std::vector<std::size_t> ranks;             // components that the training rows of each fold hold
};

enum class FoldCentring {
  AllRows,     // as the analysis has it: the means of all the model's rows
  WithinFold,  // descriptors and responses centred on the fold's training rows
};

// The first `components` of every fold's model, for all responses.
PlsHeldOut plsHeldOut(const PreparedPls& prepared, const FoldPlan& plan, const std::vector<std::int32_t>& order,
                      int components, FoldCentring centring, Watch& watch, double from, double to);

// Folds by a column exist by fitting each of them alone: fills in PRESS and the coefficients' errors, or the status of
// the fold that failed.
void validatePlsByColumn(PlsCall& call, const PreparedPls& prepared, Watch& watch, double from, double to);

// The component (from 1) that does not converge on the training rows of a fold; 0 when all do.
std::size_t failingComponent(const PreparedPls& prepared, const FoldRows& fold, Watch& watch);

}  // namespace studystats
