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
  DaFit(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t g)
      : means(arena, area(p, g)), within(arena, area(p, p)), model(arena, n, p) {}

  Array<double> means, within;
  SubsetModel model;
};

struct DaScratch {
  // n samples, p variables, g classes.
  DaScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t g)
      : full(arena, n, p, g),
        fold(arena, n, p, g),
        products(arena, productScratch(p)),
        variableMeans(arena, p),
        withinSS(arena, area(p, p)),
        between(arena, area(p, p)),
        canonical(arena, p),
        samples(arena, area(n, p)),
        tags(arena, area(n, 2)),
        classSize(arena, g),
        keys(arena, n),
        sortBuffer(arena, n),
        order(arena, n),
        usable(arena, n),
        heldOut(arena, n),
        foldSelected(arena, p),
        validated(arena, g),
        correct(arena, g) {}

  DaFit full, fold;  // of all model samples, and of the training samples of the current fold
  Array<double> products, variableMeans, withinSS, between;
  CanonicalScratch canonical;

  Array<double> samples;          // packed: those of the model, of a training subset, or held out
  Array<std::int32_t> tags;       // their classes in column 1
  Array<std::int32_t> classSize;  // as the current fit counts them

  // Of the validation order and the folds.
  Array<double> keys;
  Array<SortEntry> sortBuffer;
  Array<std::int32_t> order, usable, heldOut, foldSelected;
  Array<std::int32_t> validated, correct;  // by class
};

}  // namespace studystats::core
