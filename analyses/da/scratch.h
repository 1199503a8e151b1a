// All scratch memory of one call of DisAnl, obtained before anything is computed and used by everything that follows.
#pragma once

#include <cstdint>

#include "analyses/da/canonical.h"
#include "analyses/da/cross_validation.h"
#include "numeric/scratch.h"
#include "numeric/sorting.h"

namespace studystats::core {

struct DaScratch {
  DaScratch(Arena& arena, const DaSizes& size)
      : full(arena, size),
        fold(arena, size),
        canonical(arena, size.most),
        classSize(arena, size.g),
        keys(arena, size.n),
        sortBuffer(arena, size.n),
        order(arena, size.n),
        usable(arena, size.n),
        heldOut(arena, size.n),
        validated(arena, size.g),
        correct(arena, size.g) {}

  DaFit full;  // of all model samples
  DaFoldScratch fold;
  CanonicalScratch canonical;
  Array<std::int32_t> classSize;  // of all samples

  // Of the validation order and the folds.
  Array<double> keys;
  Array<SortEntry> sortBuffer;
  Array<std::int32_t> order, usable, heldOut;
  Array<std::int32_t> validated, correct;  // by class
};

}  // namespace studystats::core
