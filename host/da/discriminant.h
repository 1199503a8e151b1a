// The parts of a discriminant analysis that its steps, summary and files share.
#pragma once

#include <studystats/host/discriminant.h>

#include "host/da/run.h"

#include <optional>
#include <string>
#include <vector>

namespace studystats {

// The nearest class, from 0. Distances as the analysis gives them, in 32 bits; where the smallest are equal there, the
// class whose distance is smaller in `precise`, and of equal ones the first.
std::size_t nearestClass(std::span<const double> distances, std::span<const double> precise);

std::vector<std::size_t> classesWithFewRows(const Discriminant& result);  // fewer than folds that could test them

void remarkOnDiscriminant(Discriminant& result, const FoldedDiscriminant& folds);

}  // namespace studystats
