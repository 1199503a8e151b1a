#include "tests/definition/validation.h"

#include <algorithm>

namespace studystats::definition {

Plan plan(std::int32_t method, std::int32_t groups, float fraction, std::int32_t n) {
  const std::int32_t k = groups;
  if (method == 1) {
    if (k < 1) return {n, 1, 1.0};
    return {std::min(n, k), n / std::min(n, k), 1.0};
  }
  Plan p{};
  if (0 < k && k < n) {
    p.folds = std::max(2, static_cast<std::int32_t>(fraction * static_cast<float>(k)));
    p.leaveOut = static_cast<std::int32_t>(static_cast<float>(n + k - 1) / static_cast<float>(k));
  } else {
    p.folds = std::max(1, static_cast<std::int32_t>(static_cast<float>(n) * fraction));
    p.leaveOut = 1;
  }
  p.pressWeight = static_cast<double>(n) / (p.folds * p.leaveOut);
  return p;
}

std::vector<std::int32_t> systematicTrainingRows(const std::vector<std::int32_t>& order,
                                                 const std::vector<std::int32_t>& usable, std::int32_t folds,
                                                 std::int32_t group) {
  const std::size_t n = order.size();
  std::vector<std::int32_t> rows;
  for (std::size_t i = 1; i <= n; ++i)
    if (usable[i - 1] == 1 && static_cast<std::int32_t>(i - 1) % folds + 1 != group) rows.push_back(order[i - 1]);
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::vector<std::int32_t> randomTrainingRows(const std::vector<std::int32_t>& usable, std::int32_t leaveOut,
                                             Generator& generator) {
  const auto n = static_cast<std::int32_t>(usable.size());
  const auto available =
      static_cast<std::int32_t>(std::count_if(usable.begin(), usable.end(), [](int u) { return u != 0; }));
  std::vector<std::int32_t> rows;
  while (static_cast<std::int32_t>(rows.size()) < std::min(n - leaveOut, available)) {
    const auto r = static_cast<std::int64_t>(generator.draw(0) * static_cast<float>(n)) + 1;
    const bool taken = std::find(rows.begin(), rows.end(), r) != rows.end();
    if (r < 1 || r > n || taken || usable[static_cast<std::size_t>(r - 1)] == 0) continue;
    rows.push_back(static_cast<std::int32_t>(r));
  }
  return rows;
}

}  // namespace studystats::definition
