// Stepwise selection of the variables of a regression: forward selection with backward elimination.
#pragma once

#include <studystats/engine/regression.h>

#include <cstdint>

#include "analyses/mlr/by_address.h"  // IWYU pragma: export
#include "numeric/column_products.h"
#include "numeric/regression_fit.h"

namespace studystats::core {

using SelectionRules = engine::SelectionRules;

// The most variables that a model can have on the way from a starting model of nStart out of m.
std::int32_t mostVariables(std::int32_t nStart, std::int32_t m, const SelectionRules& rules);

// Where StepReg's arguments of these names are written.
struct StepHistory {
  float *fStart, *sStart;
  float *partialF, *f, *s;
  std::int32_t *action, *variable;
  std::int32_t* nSteps;
};

// What CorFilt (by_address.h) does.
void filterCollinear(float corrLimit, ColumnProducts& products, std::int32_t m, std::int32_t* flags, Pace& pace);

// What StepReg does, on scratch memory of the caller that suits a model of mostVariables; history may be null. kStopped
// once pace has stopped.
std::int32_t selectVariables(const RegressionRows& rows, ColumnProducts& products, const SelectionRules& rules,
                             std::int32_t* flags, const FitArrays& model, const StepHistory* history,
                             FitScratch& scratch, Pace& pace);

}  // namespace studystats::core
