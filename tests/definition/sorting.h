// The insertion sort that defines the order, with the row numbers carried along.
#pragma once

#include <cstdint>
#include <vector>

namespace studystats::definition {

void sortColumn(std::vector<double>& keys, std::vector<std::int32_t>& rowIds, std::int32_t direction);

// Sorts keys and rowIds ascending; entry i is the position, counted from 1, at which the i-th row stood before.
std::vector<std::int32_t> validationOrder(std::vector<double>& keys, std::vector<std::int32_t>& rowIds);

}  // namespace studystats::definition
