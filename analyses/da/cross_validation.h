// Cross-validation of a discriminant analysis, its selection of variables included: what one fold does, and what is
// counted over the folds.
#pragma once

#include <studystats/engine/discriminant.h>

#include <cstdint>
#include <span>

#include "analyses/da/selection.h"
#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// What is analysed, shared by all folds.
struct DaProblem {
  ConstMatrix x;                // n x p, all samples
  const std::int32_t* classOf;  // n; g classes from firstClass on, any other number is unknown
  std::int32_t firstClass;
  std::int32_t n, p, g;
  DaRules rules;
};

// The class of a sample, 1 ... g; 0: unknown.
std::int32_t classOfSample(const DaProblem& problem, std::int32_t row);

// Sizes of one fit: of models that the rules allow.
struct DaSizes {
  DaSizes(std::int32_t samples, std::int32_t variables, std::int32_t classes, const DaRules& rules)
      : n(samples), p(variables), g(classes), most(mostVariables(rules, p)), whole(rules.takesAll()) {}

  std::int32_t n, p, g;
  std::int32_t most;  // variables in a model
  bool whole;         // all of them at once: then the whole covariance is needed
};

// One fit and its scratch memory.
struct DaFit {
  DaFit(Arena& arena, const DaSizes& size);

  DaSamples samples{};  // the packed ones, or the first n rows of the problem
  Array<double> packed, means, products;
  CovarianceScratch covariance;
  PooledCovariance within{ConstMatrix{nullptr, 0}};
  Array<std::int32_t> tags, classSize;  // classes of the samples; their number of each class
  SubsetModel model;
};

// Selects on the listed rows of the problem, counted from 0. classSize: divisors of the class means; null: the listed
// rows are counted. selected (p): out. kDone, kSingular, kNotConverged or kStopped; then fit.samples are the rows,
// fit.means their class means, fit.within their covariance as far as the model needs it, fit.model the model.
std::int32_t fitRows(const DaProblem& problem, std::span<const std::int32_t> rows, const std::int32_t* classSize,
                     std::int32_t* selected, const DaSteps* steps, DaFit& fit, Pace& pace);

// Rows that the model classifies into each class, by their own: g x g.
void countResubstituted(DaFit& fit, MatrixView<std::int32_t> confusion, Pace& pace);

// One fold at a time.
struct DaFoldScratch {
  DaFoldScratch(Arena& arena, const DaSizes& size)
      : fit(arena, size),
        distances(arena, area(size.n, size.g)),
        rows(arena, size.n),
        predicted(arena, size.n),
        selected(arena, size.p) {}

  DaFit fit;
  Array<double> distances;
  Array<std::int32_t> rows, predicted, selected;
};

// Selection on the training rows, and the rows held out classified. Distances of a model of one variable are plain
// differences.
engine::DiscriminantFold runFold(const DaProblem& problem, const engine::FoldRows& rows, DaFoldScratch& scratch,
                                 Pace& pace);

// Counts over the folds.
struct DaCounts {
  std::int32_t* selCount;              // p
  MatrixView<std::int32_t> confusion;  // g x g, true class by predicted class
  std::int32_t *validated, *correct;   // g

  void clear(std::int32_t p, std::int32_t g) const;
};

// A fold that failed counts nothing.
void addFold(const DaProblem& problem, const engine::DiscriminantFold& fold, const DaCounts& counts);

}  // namespace studystats::core
