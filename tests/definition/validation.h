// Validation plan and subsets, step by step.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/definition/random.h"

namespace studystats::definition {

struct Plan {
  std::int32_t folds, leaveOut;
  double pressWeight;
};

Plan plan(std::int32_t method, std::int32_t groups, float fraction, std::int32_t n);

// The rows, counted from 1, that a fold trains on, in the order in which they are copied.
std::vector<std::int32_t> systematicTrainingRows(const std::vector<std::int32_t>& order,
                                                 const std::vector<std::int32_t>& usable, std::int32_t folds,
                                                 std::int32_t group);
std::vector<std::int32_t> randomTrainingRows(const std::vector<std::int32_t>& usable, std::int32_t leaveOut,
                                             Generator& generator);

}  // namespace studystats::definition
