// The regression as its callers in C++ take it: its parts, over memory of their own.
#include <studystats/engine/regression.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
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
        columns(static_cast<std::int32_t>(std::min<std::int64_t>(p, 2 * std::int64_t{most} + 1))) {
    if (static_cast<std::int32_t>(task.start.size()) > p / 2) columns = p;
  }
  std::int32_t n, p;
  std::int32_t most;     // variables in a model
  std::int32_t columns;  // of the cross-products that one selection and one refit ask for
};

struct AllRowsScratch {
  AllRowsScratch(Arena& arena, Sizes size, std::int32_t maxSteps, std::int32_t folds)
      : products(arena, size.p, size.columns),
        method(arena, size.n, size.p, size.most, folds),
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
  Array<double> coef, spreads;
  Array<double> fitted, residuals, errors, t, tProbabilities;
  Array<std::int32_t> inList, flags, variables, selCount;
  Array<float> partialF, f, s;
  Array<std::int32_t> action, variable;
  Array<SelectionStep> steps;
};

Status statusOf(std::int32_t status) { return static_cast<Status>(status); }

}  // namespace

struct Regression::State {
  State(const RegressionTask& task, std::int32_t folds, std::int32_t nPlaces)
      : size(task), rules(task.rules), all(size, std::max(rules.maxSteps, 0), folds) {
    places.reserve(static_cast<std::size_t>(nPlaces));
    for (std::int32_t i = 0; i < nPlaces && all; ++i) places.emplace_back(size.n, size.p, size.most, size.columns);
  }

  bool obtained() const {
    return all && std::all_of(places.begin(), places.end(), [](const auto& place) { return static_cast<bool>(place); });
  }

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

Regression::Regression(const RegressionTask& task, std::int32_t folds, std::int32_t places) try {
  auto state = std::make_unique<State>(task, folds, places);
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
                    task.shift.empty() ? nullptr : task.shift.data()};
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
  std::copy_n(v.start, v.p, s.flags.data());
  std::fill_n(s.partialF.data(), v.rules.maxSteps, std::numeric_limits<float>::quiet_NaN());
  ColumnProducts products = productsOf(v.x, v.n, v, s.method.means.data(), s.products, pace);
  filterCollinear(v.rules.corrLimit, products, v.p - 1, s.flags.data(), pace);

  float fStart = 0.0F, sStart = 0.0F;
  std::int32_t nSteps = 0;
  const StepHistory history{&fStart,    &sStart,         s.partialF.data(), s.f.data(),
                            s.s.data(), s.action.data(), s.variable.data(), &nSteps};
  RegressionModel& model = state_->model;
  const FitArrays arrays{s.coef.data(),     &model.equation.intercept, {s.method.inverse.data(), state_->size.most},
                         s.method.t.data(), s.inList.data(),           s.method.outList.data()};
  const std::int32_t status = selectVariables({v.x, v.n, v.p, v.p - 1, s.method.means.data()}, products, v.rules,
                                              s.flags.data(), arrays, &history, s.method.fit, pace);

  const auto nIn = static_cast<std::int32_t>(std::count(s.flags.data(), s.flags.data() + v.p - 1, 1));
  for (std::int32_t j = 0, a = 0; j + 1 < v.p; ++j)
    if (s.flags[j] == 1) s.variables[a++] = j;
  model.equation.descriptors = {s.variables.data(), static_cast<std::size_t>(nIn)};
  model.equation.coefficients = {s.coef.data(), model.equation.descriptors.size()};
  for (std::int32_t a = 0; status == kDone && a < nIn; ++a) s.method.diagonal[a] = arrays.inv(a, a);
  std::size_t nTried = 0;
  for (; nTried < static_cast<std::size_t>(v.rules.maxSteps) && s.variable[static_cast<std::ptrdiff_t>(nTried)] != 0;
       ++nTried) {
    const auto k = static_cast<std::ptrdiff_t>(nTried);
    s.steps[k] = {s.variable[k] - 1, s.action[k] == 1, s.partialF[k], s.f[k], s.s[k]};
  }
  model.tried = {s.steps.data(), nTried};
  model.steps = model.tried.first(static_cast<std::size_t>(nSteps));
  if (status == kDone) model.totalSquares = products(v.p - 1, v.p - 1);
  return statusOf(status);
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
