// Scratch memory of one partial least squares fit, with room for its model and what that predicts. Each place where
// folds are run has one.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analyses/pls/components.h"
#include "analyses/pls/prediction.h"
#include "numeric/matrix_view.h"
#include "numeric/preparation.h"
#include "numeric/scratch.h"

namespace studystats::core {

// n rows, p descriptors, q responses.
struct PlsSizes {
  std::int32_t n, p, q, nComponents;

  std::ptrdiff_t perComponent() const { return area(p, nComponents); }
  std::ptrdiff_t figures() const { return area(nComponents, q); }          // one a component and response
  std::ptrdiff_t coefficients() const { return area(perComponent(), q); }  // and descriptor
  std::ptrdiff_t data() const { return area(n, std::ptrdiff_t{p} + q); }
};

// Weights, loadings, response weights and inner coefficients of one model; its scores, when they are kept.
struct PlsModelScratch {
  PlsModelScratch(Arena& arena, const PlsSizes& size, bool keepScores)
      : weights(arena, size.perComponent()),
        loadings(arena, size.perComponent()),
        respWeights(arena, size.figures()),
        inner(arena, size.nComponents),
        scoreSquares(arena, size.nComponents),
        scores(arena, keepScores ? area(size.n, size.nComponents) : 0),
        view{size.p,
             size.q,
             size.nComponents,
             {weights.data(), size.p},
             {loadings.data(), size.p},
             {respWeights.data(), size.nComponents},
             inner.data(),
             scoreSquares.data(),
             {keepScores ? scores.data() : nullptr, size.n}} {}

  Array<double> weights, loadings, respWeights, inner, scoreSquares, scores;
  PlsModel view;
};

struct PlsFoldScratch {
  PlsFoldScratch(Arena& arena, PlsSizes size, bool coefficients, bool prepares)
      : data(arena, size.data()),
        predictions(arena, area(size.n, size.figures())),
        coefs(arena, coefficients ? size.coefficients() : 0),
        rotations(arena, coefficients ? size.perComponent() : 0),
        intercepts(arena, size.figures()),
        model(arena, size, false),
        component(arena, size.n, size.q),
        samples(arena, size.p, size.nComponents),
        preparation(arena, prepares, size.n, size.p + size.q),
        responseSquares(arena, size.q),
        rows(arena, size.n) {}

  Array<double> data;                           // samples of the fit
  Array<double> predictions, coefs, rotations;  // of the fold's model
  Array<double> intercepts;
  PlsModelScratch model;
  PlsComponentScratch component;
  PlsSampleScratch samples;
  PreparationScratch preparation;
  Array<double> responseSquares;  // of the training rows
  Array<std::int32_t> rows;       // of the fold, as they are asked for
};

}  // namespace studystats::core
