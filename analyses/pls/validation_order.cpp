// Equal keys keep the rows' order, and so do all rows where no column stands behind the descriptors.
#include "analyses/pls/validation_order.h"

#include <algorithm>
#include <numeric>

#include "numeric/validation.h"

namespace studystats::core {

engine::FoldRows PlsFolds::operator()(std::int32_t fold, std::span<std::int32_t> rows) {
  const engine::FoldRows positions = planned(fold, rows);
  for (std::int32_t& row : rows.first(positions.training.size() + positions.heldOut.size())) row = modelRows[row];
  return positions;
}

PlsFolds planFolds(const PlsRows& table, std::int32_t* rowOrder, PlsOrderScratch& s) {
  std::int32_t nModel = 0;
  for (std::int32_t i = 0; i < table.n; ++i)
    if (table.rowUse[i] == 1) s.modelRows[nModel++] = i;
  VldPln(&nModel);

  for (std::int32_t i = 0; i < nModel; ++i) s.key[i] = table.m > table.p ? table.data(s.modelRows[i], table.p) : 0.0;
  std::iota(s.positions.data(), s.positions.data() + nModel, 1);
  orderRows(s.key.data(), s.positions.data(), nModel, s.order.data(), s.inverse.data(), s.sortBuffer.data());
  for (std::int32_t i = 0; i < nModel; ++i) rowOrder[i] = s.modelRows[s.order[i] - 1] + 1;
  std::fill_n(s.usable.data(), nModel, 1);
  return {{cvMethod, {cvFolds, cvLeaveOut, cvPressWeight}, nModel, s.order.data(), s.usable.data(), s.heldOut.data()},
          s.modelRows.data()};
}

}  // namespace studystats::core
