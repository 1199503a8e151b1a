// All scratch memory of one discriminant analysis, obtained before anything is computed and used by everything that
// follows.
#pragma once

#include <cstdint>

#include "analyses/da/canonical.h"
#include "analyses/da/pooled_covariance.h"
#include "analyses/da/subset_model.h"
#include "numeric/scratch.h"
#include "numeric/sorting.h"

namespace studystats::core {

// Class means, pooled covariance and model of one fit.
struct DaFit {
  DaFit(std::int32_t n, std::int32_t p, std::int32_t g) : means(area(p, g)), within(area(p, p)), model(n, p) {}
  explicit operator bool() const { return obtained(means, within, model); }

  Scratch<double> means, within;
  SubsetModel model;
};

struct DaScratch {
  // n samples, p variables, g classes.
  DaScratch(std::int32_t n, std::int32_t p, std::int32_t g)
      : full(n, p, g),
        fold(n, p, g),
        products(productScratch(p)),
        variableMeans(p),
        withinSS(area(p, p)),
        between(area(p, p)),
        canonical(p),
        samples(area(n, p)),
        tags(area(n, 2)),
        classSize(g),
        keys(n),
        sortBuffer(n),
        order(n),
        usable(n),
        heldOut(n),
        foldSelected(p),
        validated(g),
        correct(g) {}

  explicit operator bool() const {
    return obtained(full, fold, products, variableMeans, withinSS, between, canonical, samples, tags, classSize, keys,
                    sortBuffer, order, usable, heldOut, foldSelected, validated, correct);
  }

  DaFit full, fold;  // of all model samples, and of the training samples of the current fold
  Scratch<double> products, variableMeans, withinSS, between;
  CanonicalScratch canonical;

  Scratch<double> samples;          // packed: those of the model, of a training subset, or held out
  Scratch<std::int32_t> tags;       // their classes in column 1
  Scratch<std::int32_t> classSize;  // as the current fit counts them

  // Of the validation order and the folds.
  Scratch<double> keys;
  Scratch<SortEntry> sortBuffer;
  Scratch<std::int32_t> order, usable, heldOut, foldSelected;
  Scratch<std::int32_t> validated, correct;  // by class
};

}  // namespace studystats::core
