// All scratch memory of one regression analysis, obtained before anything is computed and used by everything that
// follows.
#pragma once

#include <cstdint>

#include "numeric/regression_fit.h"
#include "numeric/scratch.h"
#include "numeric/sorting.h"

namespace studystats::core {

struct MlrScratch {
  // n rows, p columns. Room for a model of every variable: how many it can have is known when the flags have been read.
  MlrScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t folds)
      : fit(arena, n, p - 1),
        products(arena, area(p, p)),
        inverse(arena, area(p - 1, p - 1)),
        means(arena, p),
        t(arena, p),
        coef(arena, p - 1),
        startFlags(arena, p),
        outList(arena, p),
        diagonal(arena, p),
        response(arena, n),
        sortBuffer(arena, n),
        positions(arena, n),
        order(arena, n),
        usable(arena, n),
        training(arena, area(n, p)),
        trainingTags(arena, area(n, 2)),
        heldOut(arena, n),
        foldFlags(arena, p),
        foldInList(arena, p),
        known(arena, p),
        refits(arena, area(folds, p)) {}

  // Of the selection on all rows; the folds use the first six again.
  FitScratch fit;
  Array<double> products, inverse, means, t, coef;
  Array<std::int32_t> startFlags, outList;
  Array<double> diagonal;

  // Of the validation order.
  Array<double> response;
  Array<SortEntry> sortBuffer;
  Array<std::int32_t> positions, order, usable;

  // Of the folds.
  Array<double> training;
  Array<std::int32_t> trainingTags, heldOut, foldFlags, foldInList, known;
  Array<double> refits;  // by fold: coefficients by position, then the untransformed intercept
};

}  // namespace studystats::core
