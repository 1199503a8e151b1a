// What makes a covariance within classes singular: found by comparison, so that a message can name it.
#pragma once

#include "host/da/preparation.h"

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace studystats {

// A column that has one value in all the rows given (from 0) of each class.
bool constantWithinClasses(std::span<const double> column, const PreparedDiscriminant& prepared,
                           const std::vector<std::size_t>& rows);

// Pairs of columns, an earlier one and one that repeats it within every class up to scale and sign: their class-centred
// values are correlated to 1e-12 of 1. By the later column; columns constant within classes are passed over.
// O(p n + p log p): only columns whose projections on one direction agree are compared.
std::vector<std::pair<std::size_t, std::size_t>> identicalWithinClasses(const PreparedDiscriminant& prepared,
                                                                        const std::vector<std::size_t>& rows);

// "x1 is constant; x3 and x7 are identical up to scale within every class"; empty when nothing is found.
std::string withinClassCulprits(const PreparedDiscriminant& prepared, const std::vector<std::size_t>& rows);

}  // namespace studystats
