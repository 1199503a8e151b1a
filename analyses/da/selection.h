// Stepwise selection of the variables of a discriminant analysis: forward, by how well and how far apart a subset keeps
// the classes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analyses/da/by_address.h"  // IWYU pragma: export
#include "analyses/da/pooled_covariance.h"
#include "analyses/da/subset_model.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

struct DaRules {
  std::int32_t mode, nSelect, maxSteps;
};

// Where DaStep's arguments of these names are written.
struct DaSteps {
  std::int32_t *nSteps, *order;
  float* fraction;
  MatrixView<float> classFraction;
};

// The samples of one fit, its moments, and the subset in hand.
struct SubsetFit {
  const DaSamples& samples;
  DaMoments moments;
  SubsetModel& model;

  // Builds the model of a subset: kDone, kSingular, or kNotConverged for no variable at all.
  std::int32_t take(const std::int32_t* selected) const;
  // Classifies the samples; the share of those whose nearest class is their own.
  float fractionCorrect() const;
  // Sum of the distances between class means.
  float separation() const;
  // Of the samples classified last, the shares by class; `stride` numbers from one class to the next.
  void classFractions(float* shares, std::ptrdiff_t stride) const;
};

// What DaStep (by_address.h) does, on scratch memory of the caller: products has productScratch(p) numbers, model is
// left at the final selection. steps may be null: then nothing is computed that only they would show.
std::int32_t selectSubset(const DaSamples& samples, const DaRules& rules, std::int32_t* selected, Matrix means,
                          Matrix within, double* products, const DaSteps* steps, SubsetModel& model);

}  // namespace studystats::core
