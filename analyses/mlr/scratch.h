// All scratch memory of one regression analysis, obtained before anything is computed and used by everything that
// follows.
#pragma once

#include <cstdint>

#include "numeric/regression_fit.h"
#include "numeric/scratch.h"
#include "numeric/sorting.h"

namespace studystats::core {

struct MlrScratch {
  // n rows, p columns, models of up to `most` variables.
  MlrScratch(std::int32_t n, std::int32_t p, std::int32_t most, std::int32_t folds)
      : fit(n, most),
        products(area(p, p)),
        inverse(area(most, most)),
        means(p),
        t(p),
        coef(most),
        startFlags(p),
        outList(p),
        diagonal(p),
        response(n),
        sortBuffer(n),
        positions(n),
        order(n),
        usable(n),
        training(area(n, p)),
        trainingTags(area(n, 2)),
        heldOut(n),
        foldFlags(p),
        foldInList(p),
        known(p),
        refits(area(folds, std::ptrdiff_t{most} + 1)) {}

  explicit operator bool() const {
    return obtained(fit, products, inverse, means, t, coef, startFlags, outList, diagonal, response, sortBuffer,
                    positions, order, usable, training, trainingTags, heldOut, foldFlags, foldInList, known, refits);
  }

  // Of the selection on all rows; the folds use the first six again.
  FitScratch fit;
  Scratch<double> products, inverse, means, t, coef;
  Scratch<std::int32_t> startFlags, outList;
  Scratch<double> diagonal;

  // Of the validation order.
  Scratch<double> response;
  Scratch<SortEntry> sortBuffer;
  Scratch<std::int32_t> positions, order, usable;

  // Of the folds.
  Scratch<double> training;
  Scratch<std::int32_t> trainingTags, heldOut, foldFlags, foldInList, known;
  Scratch<double> refits;  // by fold: coefficients by position, then the untransformed intercept
};

}  // namespace studystats::core
