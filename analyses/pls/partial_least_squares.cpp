// Partial least squares as its callers in C++ take it: its parts, over memory of their own.
#include <studystats/engine/partial_least_squares.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <vector>

#include "analyses/pls/components.h"
#include "analyses/pls/cross_validation.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/scratch.h"
#include "numeric/status.h"

namespace studystats::engine {
namespace {

using namespace studystats::core;  // NOLINT(google-build-using-namespace)

PlsSizes sizesOf(const PartialLeastSquaresTask& task) {
  const std::int32_t q = std::max(task.responses, 0);
  return {std::max(task.table.rows, 0), std::max(task.table.columns - q, 0), q, std::max(task.components, 0)};
}

// What fit gives, and what is summed over the folds.
struct AllRowsScratch {
  AllRowsScratch(Arena& arena, const PartialLeastSquaresTask& task, PlsSizes size)
      : rotations(arena, size.perComponent()),
        coefs(arena, task.coefficients ? size.coefficients() : 0),
        means(arena, task.coefficientErrors ? size.coefficients() : 0),
        squares(arena, task.coefficientErrors ? size.coefficients() : 0),
        errors(arena, task.coefficientErrors ? size.coefficients() : 0),
        model(arena, size, task.scores),
        intercepts(arena, size.figures()),
        tss(arena, size.q),
        rss(arena, size.figures()),
        press(arena, size.figures()),
        preparation(arena, prepares(task.preparation), size.n, size.p + size.q),
        rows(arena, size.n) {}

  Array<double> rotations, coefs;
  Array<double> means, squares, errors;  // of the coefficients, over the folds
  PlsModelScratch model;
  Array<double> intercepts, tss, rss, press;
  PreparationScratch preparation;
  Array<std::int32_t> rows;
};

std::span<const double> numbers(const Array<double>& array, std::ptrdiff_t n) {
  return {array.data(), static_cast<std::size_t>(n)};
}

// Sums of squares of the responses in the table's units.
void convertSquares(const PlsSizes& size, const ColumnUnits& units, double* tss, Matrix rss) {
  for (std::int32_t k = 0; units && k < size.q; ++k) {
    const double square = units.scale[size.p + k] * units.scale[size.p + k];
    tss[k] *= square;
    for (std::int32_t a = 0; a < size.nComponents; ++a) rss(a, k) *= square;
  }
}

}  // namespace

struct [[gnu::visibility("hidden")]] PartialLeastSquares::State {
  State(const PartialLeastSquaresTask& given, std::int32_t nPlaces)
      : task(given),
        computable(given.table.rows >= 0 && given.responses >= 0 && given.table.columns >= given.responses &&
                   given.components > 0),
        problem{{given.table.data, given.table.ld}, sizesOf(given), given.preparation, given.coefficientErrors},
        all(task, problem.size) {
    const bool preparing = prepares(task.preparation);
    places.reserve(static_cast<std::size_t>(nPlaces));
    for (std::int32_t i = 0; i < nPlaces && all; ++i)
      places.emplace_back(problem.size, task.coefficientErrors, preparing);
  }

  bool obtained() const {
    return all && std::all_of(places.begin(), places.end(), [](const auto& place) { return static_cast<bool>(place); });
  }

  PartialLeastSquaresTask task;
  bool computable;
  PlsProblem problem;
  Obtained<AllRowsScratch> all;
  std::vector<Obtained<PlsFoldScratch>> places;
  PartialLeastSquaresModel model;
  PlsSums sums{};
  double weight = 1.0;
};

PartialLeastSquares::PartialLeastSquares(const PartialLeastSquaresTask& task, std::int32_t places) try {
  auto state = std::make_unique<State>(task, std::max(places, 1));
  if (!state->obtained()) return;
  AllRowsScratch& s = *state->all;
  if (task.rows.empty()) {
    std::iota(s.rows.data(), s.rows.data() + state->problem.size.n, 0);
    state->task.rows = {s.rows.data(), static_cast<std::size_t>(state->problem.size.n)};
  }
  const std::int32_t a = state->problem.size.nComponents;
  const bool sumsCoefficients = task.coefficientErrors;
  state->sums = {{s.press.data(), a},
                 sumsCoefficients ? s.means.data() : nullptr,
                 sumsCoefficients ? s.squares.data() : nullptr,
                 a};
  state_ = std::move(state);
} catch (const std::bad_alloc&) {
}

PartialLeastSquares::~PartialLeastSquares() = default;

PartialLeastSquares::operator bool() const { return state_ != nullptr; }

Status PartialLeastSquares::fit(const Checkpoint& checkpoint) {
  if (!state_) return Status::NoMemory;
  if (!state_->computable) return Status::Singular;
  const PlsProblem& v = state_->problem;
  AllRowsScratch& s = *state_->all;
  PlsFoldScratch& place = *state_->places.front();
  const std::int32_t a = v.size.nComponents;
  Pace pace(checkpoint);

  // 1. Components.
  const PlsModel& fittedModel = s.model.view;
  const Matrix rss{s.rss.data(), a};
  const PlsResidualSums sums{s.tss.data(), rss};
  const PlsFitted fitted = fitRows(v, state_->task.rows, fittedModel, s.preparation, &sums, place, pace);
  convertSquares(v.size, fitted.units, s.tss.data(), rss);

  // 2. Rotations, and coefficients when they are asked for.
  const Matrix rotations{s.rotations.data(), v.size.p};
  const bool extracted = fitted.extraction.status == kDone;
  if (extracted) findRotations(fittedModel, rotations, place.samples, pace);
  if (extracted && state_->task.coefficients)
    coefficientsInUnits(fittedModel, {rotations.data, rotations.ld}, fitted.units, s.coefs.data(),
                        {s.intercepts.data(), a}, pace);

  // 3. What the caller sees.
  const bool withCoefs = state_->task.coefficients, prepared = static_cast<bool>(fitted.units);
  const std::ptrdiff_t nColumns = prepared ? v.size.p + v.size.q : 0;
  state_->model = {
      .components = fitted.extraction.nComponents,
      .rank = fitted.rank,
      .weights = numbers(s.model.weights, v.size.perComponent()),
      .loadings = numbers(s.model.loadings, v.size.perComponent()),
      .rotations = numbers(s.rotations, v.size.perComponent()),
      .responseWeights = numbers(s.model.respWeights, v.size.figures()),
      .inner = numbers(s.model.inner, a),
      .scores = numbers(s.model.scores, state_->task.scores ? std::ssize(state_->task.rows) * a : 0),
      .scoreSquares = numbers(s.model.scoreSquares, a),
      .totalSquares = numbers(s.tss, v.size.q),
      .residualSquares = numbers(s.rss, v.size.figures()),
      .coefficients = numbers(s.coefs, withCoefs ? v.size.coefficients() : 0),
      .intercepts = numbers(s.intercepts, withCoefs ? v.size.figures() : 0),
      .prepared = {numbers(s.preparation.fill, nColumns), numbers(s.preparation.shift, nColumns),
                   numbers(s.preparation.scale, nColumns)},
  };
  return pace.stopped() ? Status::Stopped : static_cast<Status>(fitted.extraction.status);
}

PartialLeastSquaresModel PartialLeastSquares::model() const { return state_->model; }

PartialLeastSquaresFold PartialLeastSquares::fold(const FoldSource& folds, std::int32_t number,
                                                  const Checkpoint& checkpoint, std::int32_t place) {
  PartialLeastSquaresFold none;
  none.status = !state_ ? Status::NoMemory : state_->computable ? Status::Stopped : Status::Singular;
  if (none.status != Status::Stopped) return none;
  Pace pace(checkpoint);
  if (!pace.begin(number + 1, folds.count)) return none;
  PlsFoldScratch& s = *state_->places[static_cast<std::size_t>(place)];
  const std::span<std::int32_t> buffer(s.rows.data(), static_cast<std::size_t>(state_->problem.size.n));
  return runFold(state_->problem, folds.rows(number, buffer), s, pace);
}

void PartialLeastSquares::add(const PartialLeastSquaresFold& fold, double weight) {
  if (fold.status != Status::Done) return;
  state_->weight = weight;
  addFold(state_->problem, fold, weight, state_->sums);
}

void PartialLeastSquares::restart() {
  if (!state_) return;
  clearSums(state_->problem.size, state_->sums);
  state_->sums.nFolds = 0;
}

PartialLeastSquaresValidation PartialLeastSquares::validation() {
  const PlsSizes& size = state_->problem.size;
  AllRowsScratch& s = *state_->all;
  const bool withErrors = state_->task.coefficientErrors;
  if (withErrors) standardErrors(size, state_->sums, state_->weight, s.errors.data());
  return {numbers(s.press, size.figures()), numbers(s.errors, withErrors ? size.coefficients() : 0)};
}

}  // namespace studystats::engine
