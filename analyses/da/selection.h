// Stepwise selection of the variables of a discriminant analysis: forward, by how well and how far apart a subset keeps
// the classes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analyses/da/by_address.h"  // IWYU pragma: export
#include "analyses/da/pooled_covariance.h"
#include "analyses/da/subset_model.h"
#include "numeric/matrix_view.h"
#include "numeric/pace.h"

namespace studystats::core {

enum SelectMode : std::int32_t { kAutomatic = 0, kToCount = 1, kAllOrEveryStep = 2, kEveryStep = 3 };

struct DaRules {
  std::int32_t mode, nSelect, maxSteps;

  bool takesAll() const { return mode == kAllOrEveryStep && nSelect < 1; }
};

// The most variables that a model can have, of p.
std::int32_t mostVariables(const DaRules& rules, std::int32_t p);

// A variable, counted from 0, or -1; and the scores of the subset with it.
struct DaCandidate {
  std::int32_t variable = -1;
  float fraction = 0.0F, distance = 0.0F;
};

// Where DaStep's arguments of these names are written. Where there is room for them, also the distance sums and the
// candidate at which an automatic selection ended.
struct DaSteps {
  std::int32_t *nSteps, *order;
  float* fraction;
  MatrixView<float> classFraction;
  float* distance = nullptr;
  DaCandidate* refused = nullptr;
};

// The samples of one fit, their class means and covariance, and the subset in hand. What it gives is without meaning
// once pace has stopped.
struct SubsetFit {
  const DaSamples& samples;
  ConstMatrix means;
  PooledCovariance& within;
  SubsetModel& model;
  Pace& pace;

  // Builds the model of the model's variables: kDone, kSingular, or kNotConverged for no variable at all.
  std::int32_t build() const;
  // Classifies the samples; the share of those whose nearest class is their own.
  float fractionCorrect() const;
  // Sum of the distances between class means.
  float separation() const;
  // Of the samples classified last, the shares by class; `stride` numbers from one class to the next.
  void classFractions(float* shares, std::ptrdiff_t stride) const;
};

// What DaStep (by_address.h) does first, whatever the samples are: no steps, all variables or none. steps may be null.
void clearSelection(const DaRules& rules, std::int32_t p, std::int32_t* selected, const DaSteps* steps);

// And then, for samples that canBePooled, on scratch memory of the caller: the model, for mostVariables, is left at the
// final selection. steps may be null: then nothing is computed that only they would show. kStopped once pace has.
std::int32_t selectSubset(const SubsetFit& fit, const DaRules& rules, std::int32_t* selected, const DaSteps* steps);

}  // namespace studystats::core
