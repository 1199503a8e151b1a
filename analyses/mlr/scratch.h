// Scratch memory of the selection on all rows and of what is summed over the folds.
#pragma once

#include <cstdint>

#include "numeric/regression_fit.h"
#include "numeric/scratch.h"

namespace studystats::core {

struct MlrScratch {
  // n rows, p columns, models of up to `most` variables.
  MlrScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t most, std::int32_t folds)
      : fit(arena, n, most),
        inverse(arena, area(most, most)),
        refits(arena, area(folds, std::ptrdiff_t{most} + 1)),
        means(arena, p),
        t(arena, p),
        diagonal(arena, p),
        start(arena, p),
        outList(arena, p) {}

  FitScratch fit;
  Array<double> inverse;
  Array<double> refits;  // of MlrSums
  Array<double> means, t;
  Array<double> diagonal;  // of the inverse, by position in the model
  Array<std::int32_t> start, outList;
};

}  // namespace studystats::core
