// The parts of a regression that its summary and files share.
#pragma once

#include <studystats/host/regression.h>

#include <string>

namespace studystats {

void remarkOnRegression(Regression& result);

}  // namespace studystats
