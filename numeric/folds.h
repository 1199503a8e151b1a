// Which rows a fold trains on and holds out.
#pragma once

#include <studystats/engine/folds.h>

#include <algorithm>
#include <cstdint>
#include <span>

#include "numeric/validation.h"

namespace studystats::core {

// Systematic: heldOut(row) = 0 for the usable rows at the positions of other groups. Position i of order, whose entries
// count from 1, belongs to group i modulo folds; the marks of usable rows are read by position.
void markOtherGroups(const std::int32_t* order, const std::int32_t* usable, std::int32_t n, std::int32_t folds,
                     std::int32_t group, std::int32_t* heldOut);

// Random: train(row) for rows drawn one by one until leaveOut are left, heldOut(row) = 0. usable is read by row.
template <class Draw, class Train>
void drawTraining(std::int32_t n, std::int32_t leaveOut, const std::int32_t* usable, std::int32_t* heldOut, Draw draw,
                  Train train) {
  const auto nUsable = n - std::count(usable, usable + n, 0);
  const auto wanted = std::min<std::int64_t>(std::int64_t{n} - leaveOut, nUsable);
  // With one row left a draw finds it once in n: 64 n failures happen by chance once in e^64. A seed of large magnitude
  // may begin with some hundred draws outside the rows.
  const std::int64_t patience = 64 * std::int64_t{n} + 4096;
  std::int64_t found = 0;
  for (std::int64_t failures = 0; found < wanted && failures < patience;) {
    const auto row = static_cast<std::int64_t>(draw() * static_cast<float>(n));
    if (row < 0 || row >= n || heldOut[row] == 0 || usable[row] == 0) {
      ++failures;
      continue;
    }
    heldOut[row] = 0;
    train(static_cast<std::int32_t>(row));
    ++found;
    failures = 0;
  }
}

// The folds of an entry point, made as they are asked for: random ones are drawn from the process's generator.
struct PlannedFolds {
  std::int32_t method;
  ValidationPlan plan;
  std::int32_t n;
  const std::int32_t* order;   // n, positions of the validation order, rows from 1
  const std::int32_t* usable;  // n, laid out as markOtherGroups and drawTraining read it
  std::int32_t* heldOut;       // n, scratch

  engine::FoldRows operator()(std::int32_t fold, std::span<std::int32_t> rows);
  engine::FoldSource source() { return {plan.folds, plan.pressWeight, *this}; }
};

}  // namespace studystats::core
