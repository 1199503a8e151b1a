// The analyses of the engine as tests see them: made from a table, run over folds, and everything told as numbers.
#pragma once

#include <studystats/engine.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <thread>
#include <vector>

namespace studystats {

// A table with a few missing cells: descriptors that share three latent variables, then two responses of those.
struct LatentTable {
  LatentTable(std::int32_t nRows, std::int32_t nDescriptors, std::uint64_t seed)
      : n(nRows), p(nDescriptors), cells(static_cast<std::size_t>(n) * static_cast<std::size_t>(p + 2)) {
    std::mt19937_64 random(seed);
    std::normal_distribution<double> normal;
    std::vector<double> latent(3 * static_cast<std::size_t>(n));
    for (double& value : latent) value = normal(random);
    for (std::size_t j = 0; j < static_cast<std::size_t>(p) + 2; ++j) {
      const double share[] = {normal(random), normal(random), normal(random)}, offset = 5 * normal(random);
      for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i) {
        double& cell = cells[i + j * static_cast<std::size_t>(n)];
        cell = offset + normal(random);
        for (std::size_t f = 0; f < 3; ++f) cell += share[f] * latent[3 * i + f];
        if (j < static_cast<std::size_t>(p) && random() % 50 == 0) cell = std::numeric_limits<double>::quiet_NaN();
      }
    }
  }

  engine::Table table(std::int32_t responses) const { return {cells.data(), n, p + responses, n}; }

  std::int32_t n, p;
  std::vector<double> cells;
};

using Told = std::vector<double>;

template <class Number>
void tell(Told& told, std::span<const Number> numbers) {
  told.push_back(static_cast<double>(numbers.size()));
  told.insert(told.end(), numbers.begin(), numbers.end());
}

inline void tell(Told& told, const engine::FoldRows& rows) {
  tell(told, rows.training);
  tell(told, rows.heldOut);
}

inline void tell(Told& told, const engine::LinearModel& model) {
  tell(told, model.descriptors);
  tell(told, model.coefficients);
  told.push_back(model.intercept);
}

constexpr engine::Preparation kAutoscaledAndFilled{.descriptors = {true, engine::Scaling::Autoscale},
                                                   .responses = {true, engine::Scaling::Range},
                                                   .filling = engine::Filling::Median};

struct RegressionRun {
  using Fold = engine::RegressionFold;
  RegressionRun(const LatentTable& data, std::int32_t folds, std::int32_t places)
      : analysis({.table = data.table(1),
                  .rules = {.fEnter = 2, .fRemove = 1.5F, .maxSteps = 6},
                  .preparation = kAutoscaledAndFilled},
                 folds, places) {}

  static void keep(Told& told, const Fold& fold) {
    tell(told, fold.rows);
    tell(told, fold.own);
    tell(told, fold.refit);
    tell(told, fold.predictions);
  }
  void keepAll(Told& told) {
    const engine::RegressionModel model = analysis.model();
    tell(told, model.equation);
    tell(told, model.inverseDiagonal);
    for (const engine::SelectionStep& step : model.tried) told.insert(told.end(), {step.partialF, step.f, step.s});
    const engine::RegressionValidation sums = analysis.validation();
    tell(told, sums.timesChosen);
    tell(told, sums.spreads);
    told.insert(told.end(), {model.totalSquares, model.residualSquares, sums.press, sums.interceptSpread});
  }

  engine::Regression analysis;
};

struct PartialLeastSquaresRun {
  using Fold = engine::PartialLeastSquaresFold;
  PartialLeastSquaresRun(const LatentTable& data, std::int32_t /*folds*/, std::int32_t places)
      : analysis({.table = data.table(2),
                  .responses = 2,
                  .components = 4,
                  .preparation = kAutoscaledAndFilled,
                  .scores = true,
                  .coefficients = true,
                  .coefficientErrors = true},
                 places) {}

  static void keep(Told& told, const Fold& fold) {
    tell(told, fold.rows);
    for (const auto& numbers : {fold.scoreSquares, fold.predictions, fold.coefficients, fold.intercepts})
      tell(told, numbers);
    told.insert(told.end(), {static_cast<double>(fold.components), static_cast<double>(fold.rank)});
  }
  void keepAll(Told& told) {
    const engine::PartialLeastSquaresModel m = analysis.model();
    for (const auto& numbers :
         {m.weights, m.loadings, m.rotations, m.responseWeights, m.inner, m.scores, m.scoreSquares, m.totalSquares,
          m.residualSquares, m.coefficients, m.intercepts, m.prepared.fill, m.prepared.shift, m.prepared.scale})
      tell(told, numbers);
    const engine::PartialLeastSquaresValidation sums = analysis.validation();
    tell(told, sums.press);
    tell(told, sums.coefficientErrors);
  }

  engine::PartialLeastSquares analysis;
};

// Fit and folds one after the other. Empty when it was stopped.
template <class Run>
Told runInOrder(Run& run, const engine::FoldSource& folds, const engine::Checkpoint& checkpoint = {}) {
  Told told;
  if (run.analysis.fit(checkpoint) != engine::Status::Done) return {};
  const auto keep = [&](const auto& fold) { Run::keep(told, fold); };
  if (run.analysis.validate(folds, checkpoint, keep) != engine::Status::Done) return {};
  run.keepAll(told);
  return told;
}

// As many folds at a time as there are places, each on a thread of its own, the last begun first.
template <class Run>
Told runOnThreads(Run& run, const engine::FoldSource& folds, std::int32_t places) {
  Told told;
  if (run.analysis.fit() != engine::Status::Done) return {};
  for (std::int32_t first = 0; first < folds.count; first += places) {
    const std::int32_t together = std::min(places, folds.count - first);
    std::vector<typename Run::Fold> done(static_cast<std::size_t>(together));
    std::vector<std::thread> threads;
    for (std::int32_t k = together - 1; k >= 0; --k)
      threads.emplace_back([&run, &folds, first, k, place = places - 1 - k, to = &done[static_cast<std::size_t>(k)]] {
        *to = run.analysis.fold(folds, first + k, {}, place);
      });
    for (std::thread& thread : threads) thread.join();
    for (const typename Run::Fold& fold : done) {
      Run::keep(told, fold);
      run.analysis.add(fold, folds.weight);
    }
  }
  run.keepAll(told);
  return told;
}

}  // namespace studystats
