// The parts of a regression that its summary and files share.
#pragma once

#include <studystats/host/regression.h>

#include <string>

namespace studystats {

struct RegressionCall;
void remarkOnRegression(Regression& result, const RegressionCall& call);

std::string describedFolds(const FoldPlan& plan);  // "7 folds of 29 or 30 rows"

}  // namespace studystats
