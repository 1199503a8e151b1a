// The regression as its callers in C++ take it: its parts, over memory of their own.
#include <studystats/engine/regression.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <vector>

#include "analyses/mlr/cross_validation.h"
#include "analyses/mlr/scratch.h"
#include "analyses/mlr/selection.h"
#include "analyses/mlr/statistics.h"
#include "numeric/status.h"

namespace studystats::engine {
namespace {

using namespace studystats::core;  // NOLINT(google-build-using-namespace)

// How far the models of a task can grow.
struct Sizes {
  explicit Sizes(const RegressionTask& task)
      : n(task.table.rows),
        p(task.table.columns),
        most(mostVariables(static_cast<std::int32_t>(task.start.size()), std::max(p - 1, 0), task.rules)),
        columns(static_cast<std::int32_t>(std::min<std::int64_t>(p, 2 * std::int64_t{most} + 1))),
        prepares(core::prepares(task.preparation)) {
    if (static_cast<std::int32_t>(task.start.size()) > p / 2) columns = p;
  }
  std::int32_t n, p;
  std::int32_t most;     // variables in a model
  std::int32_t columns;  // of the cross-products that one selection and one refit ask for
  bool prepares;
};

struct AllRowsScratch {
  AllRowsScratch(Arena& arena, Sizes size, std::int32_t maxSteps, std::int32_t folds)
      : products(arena, size.p, size.columns),
        method(arena, size.n, size.p, size.most, folds),
        preparation(arena, size.prepares, size.n, size.p),
        coef(arena, size.most),
        spreads(arena, size.most),
        fitted(arena, size.n),
        residuals(arena, size.n),
        errors(arena, size.p),
        t(arena, size.p),
        tProbabilities(arena, size.p),
        inList(arena, size.p),
        flags(arena, size.p),
        variables(arena, size.most),
        selCount(arena, size.p),
        partialF(arena, maxSteps),
        f(arena, maxSteps),
        s(arena, maxSteps),
        action(arena, maxSteps),
        variable(arena, maxSteps),
        steps(arena, maxSteps) {}

  ProductScratch products;
  MlrScratch method;
  PreparationScratch preparation;
  Array<double> coef, spreads;
  Array<double> fitted, residuals, errors, t, tProbabilities;
  Array<std::int32_t> inList, flags, variables, selCount;
  Array<float> partialF, f, s;
  Array<std::int32_t> action, variable;
  Array<SelectionStep> steps;
};

Status statusOf(std::int32_t status) { return static_cast<Status>(status); }

double residualSquares(const RegressionRows& rows, const LinearModel& model) {
  double squares = 0.0;
  for (std::int32_t i = 0; i < rows.nObs; ++i) {
    double sum = 0.0;
    for (std::size_t a = 0; a < model.descriptors.size(); ++a)
      sum += model.coefficients[a] * rows.x(i, model.descriptors[a]);
    const double residual = rows.x(i, rows.response) - (model.intercept + sum);
    squares += residual * residual;
  }
  return squares;
}

// What is told besides the model's equation, in the table's units.
void convertToTable(const ColumnUnits& units, std::int32_t response, AllRowsScratch& s, RegressionModel& model) {
  if (!units) return;
  const double scale = units.scale[response];
  model.totalSquares *= scale * scale;
  model.residualSquares *= scale * scale;
  for (std::size_t a = 0; a < model.equation.descriptors.size(); ++a) {
    const double ofDescriptor = units.scale[model.equation.descriptors[a]];
    s.method.diagonal[static_cast<std::ptrdiff_t>(a)] /= ofDescriptor * ofDescriptor;
  }
  for (std::size_t k = 0; k < model.tried.size(); ++k) {
    float& error = s.steps[static_cast<std::ptrdiff_t>(k)].s;
    error = static_cast<float>(error * scale);
  }
}

}  // namespace

struct [[gnu::visibility("hidden")]] Regression::State {
  State(const RegressionTask& task, std::int32_t folds, std::int32_t nPlaces)
      : size(task), rules(task.rules), all(size, std::max(rules.maxSteps, 0), folds) {
    places.reserve(static_cast<std::size_t>(nPlaces));
    for (std::int32_t i = 0; i < nPlaces && all; ++i)
      places.emplace_back(size.n, size.p, size.most, size.columns, size.prepares);
  }

  bool obtained() const {
    return all && std::all_of(places.begin(), places.end(), [](const auto& place) { return static_cast<bool>(place); });
  }

  ColumnUnits prepareRows(RegressionRows & rows, Pace & pace);
  void keepModel(std::int32_t status, const FitArrays& arrays, std::int32_t nSteps);

  Sizes size;
  SelectionRules rules;
  Obtained<AllRowsScratch> all;
  std::vector<Obtained<MlrFoldScratch>> places;
  MlrProblem problem{};
  RegressionModel model;
  MlrSums sums{};
  double press = 0.0, weight = 1.0;
  bool abandoned = false;
};

// Turns to a prepared copy of the rows, in the first place's memory, when that is asked for.
ColumnUnits Regression::State::prepareRows(RegressionRows& rows, Pace& pace) {
  if (!size.prepares) return {};
  MlrFoldScratch& place = *places.front();
  const std::span<std::int32_t> list(place.rows.data(), static_cast<std::size_t>(size.n));
  std::iota(list.begin(), list.end(), 0);
  const Matrix prepared{place.training.data(), size.n};
  rows.x = {prepared.data, prepared.ld};
  return takeRows(problem, list, prepared, all->preparation, pace);
}

// The last fit and its steps as the caller sees them.
void Regression::State::keepModel(std::int32_t status, const FitArrays& arrays, std::int32_t nSteps) {
  AllRowsScratch& s = *all;
  const std::int32_t m = problem.p - 1;
  const auto nIn = static_cast<std::int32_t>(std::count(s.flags.data(), s.flags.data() + m, 1));
  for (std::int32_t j = 0, a = 0; j < m; ++j)
    if (s.flags[j] == 1) s.variables[a++] = j;
  model.equation.descriptors = {s.variables.data(), static_cast<std::size_t>(nIn)};
  model.equation.coefficients = {s.coef.data(), model.equation.descriptors.size()};
  for (std::int32_t a = 0; status == kDone && a < nIn; ++a) s.method.diagonal[a] = arrays.inv(a, a);
  model.inverseDiagonal = {s.method.diagonal.data(), model.equation.descriptors.size()};
  std::size_t nTried = 0;
  for (; nTried < static_cast<std::size_t>(problem.rules.maxSteps); ++nTried) {
    const auto k = static_cast<std::ptrdiff_t>(nTried);
    if (s.variable[k] == 0) break;
    s.steps[k] = {s.variable[k] - 1, s.action[k] == 1, s.partialF[k], s.f[k], s.s[k]};
  }
  model.tried = {s.steps.data(), nTried};
  model.steps = model.tried.first(static_cast<std::size_t>(nSteps));
}

Regression::Regression(const RegressionTask& task, std::int32_t folds, std::int32_t places) try {
  auto state = std::make_unique<State>(task, folds, std::max(places, 1));
  if (!state->obtained()) return;
  AllRowsScratch& s = *state->all;
  state->rules.maxSteps = std::max(state->rules.maxSteps, 0);
  for (const std::int32_t j : task.start) s.method.start[j] = 1;
  state->problem = {{task.table.data, task.table.ld},
                    state->size.n,
                    state->size.p,
                    state->rules,
                    s.method.start.data(),
                    static_cast<std::int32_t>(task.start.size()),
                    task.scale.empty() ? nullptr : task.scale.data(),
                    task.shift.empty() ? nullptr : task.shift.data(),
                    task.preparation};
  state->sums = {&state->press, s.selCount.data(), s.method.refits.data()};
  state_ = std::move(state);
} catch (const std::bad_alloc&) {
}

Regression::~Regression() = default;

Regression::operator bool() const { return state_ != nullptr; }

Status Regression::fit(const Checkpoint& checkpoint) {
  if (!state_) return Status::NoMemory;
  const MlrProblem& v = state_->problem;
  AllRowsScratch& s = *state_->all;
  if (v.n < 1 || v.p < 1) return Status::Singular;
  Pace pace(checkpoint);

  // 1. The selection.
  RegressionRows rows{v.x, v.n, v.p, v.p - 1, s.method.means.data()};
  const ColumnUnits units = state_->prepareRows(rows, pace);
  std::copy_n(v.start, v.p, s.flags.data());
  std::fill_n(s.partialF.data(), v.rules.maxSteps, std::numeric_limits<float>::quiet_NaN());
  std::fill_n(s.variable.data(), v.rules.maxSteps, 0);
  ColumnProducts products = productsOf(rows.x, v.n, v, s.method.means.data(), s.products, pace);
  filterCollinear(v.rules.corrLimit, products, v.p - 1, s.flags.data(), pace);
  float fStart = 0.0F, sStart = 0.0F;
  std::int32_t nSteps = 0;
  const StepHistory history{&fStart,    &sStart,         s.partialF.data(), s.f.data(),
                            s.s.data(), s.action.data(), s.variable.data(), &nSteps};
  const FitArrays arrays{s.coef.data(),
                         &state_->model.equation.intercept,
                         {s.method.inverse.data(), state_->size.most},
                         s.method.t.data(),
                         s.inList.data(),
                         s.method.outList.data()};
  const std::int32_t status =
      selectVariables(rows, products, v.rules, s.flags.data(), arrays, &history, s.method.fit, pace);

  // 2. What the caller sees.
  state_->keepModel(status, arrays, nSteps);
  if (status != kDone) return statusOf(status);
  RegressionModel& model = state_->model;
  model.totalSquares = products(v.p - 1, v.p - 1);
  model.residualSquares = residualSquares(rows, model.equation);
  convertToTable(units, v.p - 1, s, model);
  core::convertToTable(units, v.p - 1, s.inList.data(), static_cast<std::int32_t>(model.equation.descriptors.size()),
                       s.coef.data(), model.equation.intercept);
  return Status::Done;
}

RegressionModel Regression::model() const { return state_->model; }

RegressionStatistics Regression::statistics() {
  const MlrProblem& v = state_->problem;
  AllRowsScratch& s = *state_->all;
  const LinearModel& model = state_->model.equation;
  const auto nIn = static_cast<std::int32_t>(model.descriptors.size());
  const std::int32_t df[] = {nIn, v.n - nIn - 1, v.n - 1};
  double sumSq[3], q2 = 0.0;
  RegressionStatistics result;
  modelStatistics({v.x, v.n, v.p, nIn, s.inList.data(), s.coef.data(), &model.intercept, s.method.diagonal.data(),
                   state_->model.totalSquares, state_->press},
                  {s.fitted.data(), s.residuals.data(), sumSq, df, &result.multipleR, &result.f, &result.s,
                   &result.fProbability, &q2, s.errors.data(), s.t.data(), s.tProbabilities.data()});
  const auto atPositions = [&](const Array<double>& byVariable) -> std::span<const double> {
    for (std::int32_t a = 0; a < nIn; ++a) byVariable[a] = byVariable[s.inList[a] - 1];  // the list ascends
    return {byVariable.data(), model.descriptors.size()};
  };
  const auto n = static_cast<std::size_t>(v.n);
  result.fitted = {s.fitted.data(), n};
  result.residuals = {s.residuals.data(), n};
  result.modelSquares = sumSq[0];
  result.residualSquares = sumSq[1];
  result.totalSquares = sumSq[2];
  result.modelDf = df[0];
  result.residualDf = df[1];
  result.standardErrors = atPositions(s.errors);
  result.t = atPositions(s.t);
  result.tProbabilities = atPositions(s.tProbabilities);
  return result;
}

RegressionFold Regression::fold(const FoldSource& folds, std::int32_t number, const Checkpoint& checkpoint,
                                std::int32_t place) {
  Pace pace(checkpoint);
  RegressionFold stopped;
  stopped.status = Status::Stopped;
  if (!pace.begin(number + 1, folds.count)) return stopped;
  MlrFoldScratch& s = *state_->places[static_cast<std::size_t>(place)];
  const AllRowsScratch& all = *state_->all;
  const MlrModel model{all.flags.data(), all.inList.data(),
                       static_cast<std::int32_t>(state_->model.equation.descriptors.size())};
  const std::span<std::int32_t> buffer(s.rows.data(), static_cast<std::size_t>(state_->size.n));
  return runFold(state_->problem, model, folds.rows(number, buffer), s, pace);
}

void Regression::add(const RegressionFold& fold, double weight) {
  state_->weight = weight;
  addFold(state_->problem, fold, weight, state_->sums);
  state_->abandoned = state_->abandoned || fold.status != Status::Done;
}

void Regression::restart() {
  if (!state_) return;
  state_->press = 0.0;
  state_->abandoned = false;
  state_->sums.nFolds = 0;
  std::fill_n(state_->sums.selCount, state_->size.p, 0);
}

RegressionValidation Regression::validation() {
  RegressionValidation result;
  AllRowsScratch& s = *state_->all;
  const auto nIn = static_cast<std::int32_t>(state_->model.equation.descriptors.size());
  result.abandoned = state_->abandoned;
  result.press = state_->press;
  result.timesChosen = {s.selCount.data(), static_cast<std::size_t>(std::max(state_->size.p - 1, 0))};
  for (std::int32_t a = 0; a < nIn; ++a) s.spreads[a] = jackknifeSpread(state_->sums, nIn, a, state_->weight);
  result.spreads = {s.spreads.data(), static_cast<std::size_t>(nIn)};
  result.interceptSpread = jackknifeSpread(state_->sums, nIn, nIn, state_->weight);
  return result;
}

}  // namespace studystats::engine
