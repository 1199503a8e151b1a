// The folds of the entry points: systematic groups dealt over the rows of the model sorted by ascending first response,
// or random subsets of them.
#pragma once

#include <cstdint>
#include <span>

#include "numeric/folds.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"
#include "numeric/sorting.h"

namespace studystats::core {

// For n rows.
struct PlsOrderScratch {
  PlsOrderScratch(Arena& arena, std::int32_t n)
      : key(arena, n),
        sortBuffer(arena, n),
        modelRows(arena, n),
        positions(arena, n),
        inverse(arena, n),
        order(arena, n),
        usable(arena, n),
        heldOut(arena, n) {}

  Array<double> key;  // the first response of the model rows, sorted
  Array<SortEntry> sortBuffer;
  Array<std::int32_t> modelRows;  // from 0
  Array<std::int32_t> positions, inverse, order, usable, heldOut;
};

// The table whose folds are planned.
struct PlsRows {
  ConstMatrix data;            // n x m: descriptors, then responses
  const std::int32_t* rowUse;  // n; 1 = a row of the model. The others are neither trained on nor held out
  std::int32_t n, m, p;
};

// Folds planned over the rows of the model, told as rows of the table.
struct PlsFolds {
  PlannedFolds planned;  // over n model rows
  const std::int32_t* modelRows;

  engine::FoldRows operator()(std::int32_t fold, std::span<std::int32_t> rows);
};

// Makes the plan, as the stored settings have it, and the validation order. Without responses the key is the column
// behind the descriptors. rowOrder (n, out): the rows of the model in that order, counted from 1; entries behind them
// keep what they hold.
PlsFolds planFolds(const PlsRows& table, std::int32_t* rowOrder, PlsOrderScratch& scratch);

}  // namespace studystats::core
