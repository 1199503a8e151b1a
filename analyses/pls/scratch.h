// All scratch memory of one partial least squares analysis, obtained before anything is computed and used by everything
// that follows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analyses/pls/components.h"
#include "analyses/pls/prediction.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"
#include "numeric/sorting.h"

namespace studystats::core {

// Weights, loadings, response weights and inner coefficients of one model.
struct PlsModelScratch {
  PlsModelScratch(Arena& arena, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : weights(arena, area(p, nComponents)),
        loadings(arena, area(p, nComponents)),
        respWeights(arena, area(nComponents, q)),
        inner(arena, nComponents),
        scoreSquares(arena, nComponents),
        view{p,
             q,
             nComponents,
             {weights.data(), p},
             {loadings.data(), p},
             {respWeights.data(), nComponents},
             inner.data(),
             scoreSquares.data()} {}

  Array<double> weights, loadings, respWeights, inner, scoreSquares;
  PlsModel view;
};

// What a validation needs beside the model that it fits and the sums that it keeps: n rows, p descriptors, q responses.
struct PlsFoldScratch {
  PlsFoldScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : component(arena, n, q),
        samples(arena, p, nComponents),
        rotations(arena, area(p, nComponents)),
        key(arena, n),
        sortBuffer(arena, n),
        modelRows(arena, n),
        positions(arena, n),
        inverse(arena, n),
        order(arena, n),
        usable(arena, n),
        heldOut(arena, n),
        rows(arena, area(n, 2)) {}

  PlsComponentScratch component;
  PlsSampleScratch samples;
  Array<double> rotations;

  // Of the validation order: positions among the rows of the model, counted from 1.
  Array<double> key;
  Array<SortEntry> sortBuffer;
  Array<std::int32_t> modelRows, positions, inverse, order, usable, heldOut;

  Array<std::int32_t> rows;  // of the data, counted from 1: those of a training subset in column 1, or held out
};

struct PlsScratch {
  PlsScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : data(arena, area(n, std::ptrdiff_t{p} + q)),
        foldCoefs(arena, area(area(p, nComponents), q)),
        means(arena, area(area(p, nComponents), q)),
        squares(arena, area(area(p, nComponents), q)),
        model(arena, p, q, nComponents),
        foldModel(arena, p, q, nComponents),
        folds(arena, n, p, q, nComponents) {}

  Array<double> data;                       // samples of the fit and of the folds
  Array<double> foldCoefs, means, squares;  // of the coefficients over the folds
  PlsModelScratch model, foldModel;
  PlsFoldScratch folds;
};

}  // namespace studystats::core
