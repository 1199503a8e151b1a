// Columns in the units that an analysis is given.
#pragma once

#include <studystats/host/data.h>

#include "host/preparation/block.h"

#include <span>
#include <string>

namespace studystats {

// Standardises a column of the model's rows in place, and adds what was subtracted and divided by to `used`. Throws
// NotComputed, with the column's name, when the analysis cannot calculate with numbers of that size.
void standardise(std::span<double> column, const std::string& name, Scaling scaling, const Roles& roles,
                 UsedData& used);

}  // namespace studystats
