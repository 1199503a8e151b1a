// Models of finished analyses.
#pragma once

#include <studystats/host/discriminant.h>
#include <studystats/host/partial_least_squares.h>
#include <studystats/host/principal_components.h>
#include <studystats/host/regression.h>

#include "host/model/model_data.h"

namespace studystats {

// What every model has; `chosen`: the descriptors that it needs, in order.
ModelData modelOf(Model::Kind kind, const UsedData& used, const std::vector<std::size_t>& chosen, double level);

Model sealed(ModelData data);

}  // namespace studystats
