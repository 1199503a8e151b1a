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
  PlsModelScratch(std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : weights(area(p, nComponents)),
        loadings(area(p, nComponents)),
        respWeights(area(nComponents, q)),
        inner(nComponents),
        scoreSquares(nComponents),
        view{p,
             q,
             nComponents,
             {weights.data(), p},
             {loadings.data(), p},
             {respWeights.data(), nComponents},
             inner.data(),
             scoreSquares.data()} {}
  explicit operator bool() const { return obtained(weights, loadings, respWeights, inner, scoreSquares); }

  Scratch<double> weights, loadings, respWeights, inner, scoreSquares;
  PlsModel view;
};

// What a validation needs beside the model that it fits and the sums that it keeps: n rows, p descriptors, q responses.
struct PlsFoldScratch {
  PlsFoldScratch(std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : component(n, q),
        samples(p, nComponents),
        rotations(area(p, nComponents)),
        key(n),
        sortBuffer(n),
        modelRows(n),
        positions(n),
        inverse(n),
        order(n),
        usable(n),
        heldOut(n),
        rows(area(n, 2)) {}
  explicit operator bool() const {
    return obtained(component, samples, rotations, key, sortBuffer, modelRows, positions, inverse, order, usable,
                    heldOut, rows);
  }

  PlsComponentScratch component;
  PlsSampleScratch samples;
  Scratch<double> rotations;

  // Of the validation order: positions among the rows of the model, counted from 1.
  Scratch<double> key;
  Scratch<SortEntry> sortBuffer;
  Scratch<std::int32_t> modelRows, positions, inverse, order, usable, heldOut;

  Scratch<std::int32_t> rows;  // of the data, counted from 1: those of a training subset in column 1, or held out
};

struct PlsScratch {
  PlsScratch(std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : data(area(n, std::ptrdiff_t{p} + q)),
        foldCoefs(area(area(p, nComponents), q)),
        means(area(area(p, nComponents), q)),
        squares(area(area(p, nComponents), q)),
        tables(obtained(data, foldCoefs, means, squares)),
        model(tables ? p : 0, tables ? q : 0, tables ? nComponents : 0),
        foldModel(tables ? p : 0, tables ? q : 0, tables ? nComponents : 0),
        folds(tables ? n : 0, tables ? p : 0, tables ? q : 0, tables ? nComponents : 0) {}
  explicit operator bool() const { return tables && obtained(model, foldModel, folds); }

  Scratch<double> data;                       // samples of the fit and of the folds
  Scratch<double> foldCoefs, means, squares;  // of the coefficients over the folds
  bool tables;  // whether those were obtained; gigabytes of vectors are no use without them
  PlsModelScratch model, foldModel;
  PlsFoldScratch folds;
};

}  // namespace studystats::core
