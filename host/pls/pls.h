// The parts of a partial least squares analysis that its steps, summary and files share.
#pragma once

#include <studystats/host/partial_least_squares.h>

#include "host/pls/preparation.h"

namespace studystats {

// What lies outside the domain of the model: beyond either limit.
bool outsideDomain(const PartialLeastSquares& result, const PlsRow& row);

void remarkOnPls(PartialLeastSquares& result);

}  // namespace studystats
