#include "tests/definition/sorting.h"

namespace studystats::definition {

void sortColumn(std::vector<double>& keys, std::vector<std::int32_t>& rowIds, std::int32_t direction) {
  for (std::size_t i = 1; i < keys.size(); ++i) {
    const double key = keys[i];
    const std::int32_t id = rowIds[i];
    std::size_t j = i;
    while (j > 0 && (direction <= 0 ? keys[j - 1] > key : key > keys[j - 1])) {
      keys[j] = keys[j - 1];
      rowIds[j] = rowIds[j - 1];
      --j;
    }
    keys[j] = key;
    rowIds[j] = id;
  }
}

std::vector<std::int32_t> validationOrder(std::vector<double>& keys, std::vector<std::int32_t>& rowIds) {
  const std::size_t n = keys.size();
  std::vector<std::int32_t> inverse(n + 1), order(n);
  for (std::size_t i = 1; i <= n; ++i) inverse[static_cast<std::size_t>(rowIds[i - 1])] = static_cast<std::int32_t>(i);
  sortColumn(keys, rowIds, 0);
  for (std::size_t i = 0; i < n; ++i) order[i] = inverse[static_cast<std::size_t>(rowIds[i])];
  return order;
}

}  // namespace studystats::definition
