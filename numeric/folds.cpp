#include "numeric/folds.h"

#include <studystats/analyses.h>

#include <numeric>

namespace studystats::core {

void markOtherGroups(const std::int32_t* order, const std::int32_t* usable, std::int32_t n, std::int32_t folds,
                     std::int32_t group, std::int32_t* heldOut) {
  for (std::int32_t i = 0; i < n; ++i) {
    const bool namesRow = order[i] >= 1 && order[i] <= n;
    if (usable[i] == 1 && i % folds != group && namesRow) heldOut[order[i] - 1] = 0;
  }
}

engine::FoldRows PlannedFolds::operator()(std::int32_t fold, std::span<std::int32_t> rows) {
  std::fill_n(heldOut, n, 1);
  std::size_t nTraining = 0, nListed = 0;
  if (method == kSystematicGroups) {
    markOtherGroups(order, usable, n, std::max(plan.folds, 1), fold, heldOut);
    for (std::int32_t row = 0; row < n; ++row)
      if (heldOut[row] == 0) rows[nTraining++] = row;
  } else {
    drawTraining(
        n, plan.leaveOut, usable, heldOut, [] { return Nmrand(0); },
        [&](std::int32_t row) { rows[nTraining++] = row; });
  }
  nListed = nTraining;
  for (std::int32_t row = 0; row < n; ++row)
    if (heldOut[row] == 1) rows[nListed++] = row;
  return {rows.first(nTraining), rows.subspan(nTraining, nListed - nTraining)};
}

}  // namespace studystats::core

namespace studystats::engine {

Folds Folds::dealt(std::span<const std::int32_t> order, std::int32_t groups) {
  std::vector<std::int32_t> groupOf(order.size());
  for (std::size_t i = 0; i < order.size(); ++i)
    groupOf[static_cast<std::size_t>(order[i])] = static_cast<std::int32_t>(i % static_cast<std::size_t>(groups));
  return grouped(groupOf);
}

Folds Folds::grouped(std::span<const std::int32_t> groupOf) {
  Folds folds;
  folds.foldOf_.assign(groupOf.begin(), groupOf.end());
  for (const std::int32_t fold : groupOf) folds.count_ = std::max(folds.count_, fold + 1);
  return folds;
}

Folds Folds::drawn(std::int32_t rows, std::int32_t count, std::int32_t heldOut, Generator& generator) {
  Folds folds;
  folds.count_ = count;
  folds.weight_ = rows / static_cast<double>(std::int64_t{count} * heldOut);
  const auto n = static_cast<std::size_t>(rows);
  const std::vector<std::int32_t> usable(n, 1);
  std::vector<std::int32_t> left(n);
  for (std::int32_t fold = 0; fold < count; ++fold) {
    left.assign(n, 1);
    folds.ends_.push_back(folds.drawn_.size());
    core::drawTraining(
        rows, heldOut, usable.data(), left.data(), [&] { return generator(); },
        [&](std::int32_t row) { folds.drawn_.push_back(row); });
    folds.ends_.push_back(folds.drawn_.size());
    for (std::int32_t row = 0; row < rows; ++row)
      if (left[static_cast<std::size_t>(row)] == 1) folds.drawn_.push_back(row);
  }
  folds.ends_.push_back(folds.drawn_.size());
  return folds;
}

FoldRows Folds::rows(std::int32_t fold, std::span<std::int32_t> buffer) const {
  if (foldOf_.empty()) {
    const std::span<const std::int32_t> drawn(drawn_);
    const std::size_t* ends = ends_.data() + 2 * std::ptrdiff_t{fold};
    return {drawn.subspan(ends[0], ends[1] - ends[0]), drawn.subspan(ends[1], ends[2] - ends[1])};
  }
  std::size_t nTraining = 0, nListed = 0;
  for (std::size_t row = 0; row < foldOf_.size(); ++row)
    if (foldOf_[row] != fold && foldOf_[row] >= 0) buffer[nTraining++] = static_cast<std::int32_t>(row);
  nListed = nTraining;
  for (std::size_t row = 0; row < foldOf_.size(); ++row)
    if (foldOf_[row] == fold) buffer[nListed++] = static_cast<std::int32_t>(row);
  return {buffer.first(nTraining), buffer.subspan(nTraining, nListed - nTraining)};
}

FoldSource Folds::source() const { return {count_, weight_, *this}; }

}  // namespace studystats::engine
