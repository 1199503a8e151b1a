// The discriminant analysis as its callers in C++ take it: its parts, over memory of their own.
#include <studystats/engine/discriminant.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>
#include <optional>
#include <vector>

#include "analyses/da/canonical.h"
#include "analyses/da/cross_validation.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::engine {
namespace {

using namespace studystats::core;  // NOLINT(google-build-using-namespace)

DaRules rulesOf(const DiscriminantRules& rules, std::int32_t n, std::int32_t p) {
  const std::int32_t most = std::min(rules.mostVariables < 1 ? n : rules.mostVariables, p);
  switch (rules.choice) {
    case VariableChoice::Automatic:
      return {kAutomatic, 0, most};
    case VariableChoice::Number:
      return {kToCount, std::max(rules.number, 1), most};
    case VariableChoice::Everything:
      return {kAllOrEveryStep, 0, p};
    case VariableChoice::EveryStep:
      break;
  }
  return {kEveryStep, 0, most};
}

DaProblem problemOf(const DiscriminantTask& task) {
  const std::int32_t n = std::max(task.table.rows, 0), p = std::max(task.table.columns, 0);
  const DaRules rules = rulesOf(task.rules, n, p);
  return {{task.table.data, task.table.ld}, task.classOf.data(), 0, n, p, std::max(task.classes, 0), rules};
}

struct AllRowsScratch {
  explicit AllRowsScratch(Arena& arena, const DaSizes& size)
      : rowsOfSteps(std::max(size.most, 1)),
        fit(arena, size),
        means(arena, area(size.most, size.g)),
        rows(arena, size.n),
        selected(arena, size.p),
        order(arena, rowsOfSteps),
        confusion(arena, area(size.g, size.g)),
        fraction(arena, rowsOfSteps),
        distance(arena, rowsOfSteps),
        classFraction(arena, area(rowsOfSteps, size.g)),
        shares(arena, area(rowsOfSteps, size.g)),
        selCount(arena, size.p),
        cvConfusion(arena, area(size.g, size.g)),
        validated(arena, size.g),
        correct(arena, size.g) {}

  std::int32_t rowsOfSteps;
  DaFit fit;
  Array<double> means;
  Array<std::int32_t> rows, selected, order, confusion;
  Array<float> fraction, distance;
  Array<float> classFraction;  // by step, as a selection writes it, ...
  Array<float> shares;         // ... and step after step
  Array<std::int32_t> selCount, cvConfusion, validated, correct;
};

// The functions of m variables in g classes, besides the scratch memory that holds most of what is shown.
struct FunctionsScratch {
  FunctionsScratch(Arena& arena, std::int32_t m, std::int32_t g)
      : work(arena, m), values(arena, m), vectors(arena, area(m, std::min(m, g))) {}

  CanonicalScratch work;
  Array<double> values, vectors;
};

std::span<const std::int32_t> counts(const Array<std::int32_t>& array, std::int32_t n) {
  return {array.data(), static_cast<std::size_t>(n)};
}

// Plain differences of one variable in units of its standard deviation.
void scaleDistances(const DaFit& fit, double* distances, std::int32_t n, std::int32_t g, std::int32_t ld) {
  if (fit.model.m != 1) return;
  const std::int32_t j = fit.model.variables[0];
  const double deviation = std::sqrt(fit.within(j, j));
  if (!(deviation > 0.0)) return;
  for (std::int32_t c = 0; c < g; ++c)
    for (std::int32_t i = 0; i < n; ++i) distances[i + std::ptrdiff_t{c} * ld] /= deviation;
}

}  // namespace

struct [[gnu::visibility("hidden")]] Discriminant::State {
  State(const DiscriminantTask& task, std::int32_t nPlaces)
      : problem(problemOf(task)), size(problem.n, problem.p, problem.g, problem.rules), all(size) {
    places.reserve(static_cast<std::size_t>(std::max(nPlaces, 0)));
    for (std::int32_t i = 0; i < nPlaces && all; ++i) places.emplace_back(size);
  }

  bool obtained() const {
    return all && std::all_of(places.begin(), places.end(), [](const auto& place) { return static_cast<bool>(place); });
  }

  DaCounts validated() {
    return {all->selCount.data(), {all->cvConfusion.data(), size.g}, all->validated.data(), all->correct.data()};
  }

  std::span<const std::int32_t> modelRows(std::span<const std::int32_t> listed);
  void showSteps(std::int32_t nSteps, const DaCandidate& refused);
  void showModel();

  DaProblem problem;
  DaSizes size;
  Obtained<AllRowsScratch> all;
  std::vector<Obtained<DaFoldScratch>> places;
  std::span<const std::int32_t> rows;
  std::vector<DiscriminantStep> steps;
  DiscriminantModel model;
  std::optional<Obtained<FunctionsScratch>> functions;
};

std::span<const std::int32_t> Discriminant::State::modelRows(std::span<const std::int32_t> listed) {
  if (!listed.empty()) return listed;
  std::iota(all->rows.data(), all->rows.data() + size.n, 0);
  return counts(all->rows, size.n);
}

// The refused step stands behind those taken.
void Discriminant::State::showSteps(std::int32_t nSteps, const DaCandidate& refused) {
  AllRowsScratch& s = *all;
  const auto show = [&](std::int32_t k, std::int32_t variable, float fraction, float distance) {
    const std::span<float> shares(s.shares.data() + std::ptrdiff_t{k} * size.g, static_cast<std::size_t>(size.g));
    for (std::int32_t c = 0; c < size.g; ++c)
      shares[static_cast<std::size_t>(c)] = s.classFraction[k + std::ptrdiff_t{c} * s.rowsOfSteps];
    steps.push_back({variable, fraction, distance, shares});
  };
  steps.clear();
  for (std::int32_t k = 0; k < nSteps; ++k) show(k, s.order[k] - 1, s.fraction[k], s.distance[k]);
  if (refused.variable >= 0) show(nSteps, refused.variable, refused.fraction, refused.distance);
  model.steps = {steps.data(), static_cast<std::size_t>(nSteps)};
  model.refused = refused.variable < 0 ? nullptr : &steps.back();
}

void Discriminant::State::showModel() {
  AllRowsScratch& s = *all;
  const SubsetModel& subset = s.fit.model;
  const std::int32_t m = subset.m, g = size.g;
  for (std::int32_t c = 0; c < g; ++c)
    for (std::int32_t a = 0; a < m; ++a)
      Matrix{s.means.data(), m}(a, c) = Matrix{s.fit.means.data(), size.p}(subset.variables[a], c);
  model.variables = counts(subset.variables, m);
  model.classSizes = counts(s.fit.classSize, g);
  model.means = {s.means.data(), m, g, m};
  model.inverse = {m == 1 ? subset.weights.data() : subset.block.data(), m, m, m};
  model.confusion = counts(s.confusion, g * g);
}

Discriminant::Discriminant(const DiscriminantTask& task, std::int32_t places) try {
  auto state = std::make_unique<State>(task, places);
  if (!state->obtained()) return;
  state->rows = state->modelRows(task.rows);
  state->steps.reserve(static_cast<std::size_t>(state->all->rowsOfSteps));
  state_ = std::move(state);
} catch (const std::bad_alloc&) {
}

Discriminant::~Discriminant() = default;

Discriminant::operator bool() const { return state_ != nullptr; }

Status Discriminant::fit(const Checkpoint& checkpoint) {
  if (!state_) return Status::NoMemory;
  Pace pace(checkpoint);
  AllRowsScratch& s = *state_->all;
  state_->model = {};
  state_->functions.reset();
  std::int32_t nSteps = 0;
  DaCandidate refused;
  const DaSteps steps{&nSteps,           s.order.data(), s.fraction.data(), {s.classFraction.data(), s.rowsOfSteps},
                      s.distance.data(), &refused};
  const std::int32_t status = fitRows(state_->problem, state_->rows, nullptr, s.selected.data(), &steps, s.fit, pace);
  if (status == kDone) countResubstituted(s.fit, {s.confusion.data(), state_->size.g}, pace);
  if (pace.stopped()) return Status::Stopped;
  state_->showSteps(nSteps, refused);
  if (status == kDone) state_->showModel();
  return static_cast<Status>(status);
}

const DiscriminantModel& Discriminant::model() const { return state_->model; }

Status Discriminant::canonical(CanonicalModel& canonical, const Checkpoint& checkpoint) {
  if (state_->model.variables.empty()) return Status::Singular;
  Pace pace(checkpoint);
  const DaFit& fit = state_->all->fit;
  const std::int32_t m = fit.model.m, g = state_->size.g;
  state_->functions.emplace(m, g);
  if (!*state_->functions) return Status::NoMemory;
  FunctionsScratch& s = **state_->functions;
  std::int32_t count = 0;
  scatterMatrices(fit.samples, fit.within, fit.model, s.work, pace);
  const std::int32_t status =
      pace.stopped() ? kStopped
                     : canonicalFunctions(m, g, {&count, s.values.data(), {s.vectors.data(), m}}, s.work, pace);
  if (status == kStopped) return Status::Stopped;
  canonical.withinScatter = {s.work.withinSS.data(), m, m, m};
  canonical.betweenScatter = {s.work.between.data(), m, m, m};
  if (status != kDone) return Status::NotConverged;
  canonical.whitening = {s.work.rows.data(), m, m, m};
  canonical.eigenvalues = {s.values.data(), static_cast<std::size_t>(count)};
  canonical.vectors = {s.vectors.data(), m, count, m};
  return Status::Done;
}

Status Discriminant::place(const Table& table, std::span<const std::int32_t> rows, double* distances, std::int32_t ld,
                           std::span<std::int32_t> predicted, const Checkpoint& checkpoint) {
  if (state_->model.variables.empty()) return Status::Singular;
  Pace pace(checkpoint);
  DaFit& fit = state_->all->fit;
  const std::int32_t g = state_->size.g, most = state_->size.n;  // rows at once
  const auto n = static_cast<std::int32_t>(rows.empty() ? table.rows : std::ssize(rows));
  for (std::int64_t first = 0; first < n; first += most) {
    const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(most, n - first));
    const ConstMatrix x{table.data, table.ld};
    const RowsOf part{rows.empty() ? x.block(first, 0) : x, count, rows.empty() ? nullptr : rows.data() + first};
    const MatrixView<double> to{distances + first, ld};
    nearestClasses(part, {fit.means.data(), state_->size.p}, g, fit.model, to, pace);
    if (pace.stopped()) return Status::Stopped;
    scaleDistances(fit, to.data, count, g, ld);
    for (std::int32_t i = 0; i < count && !predicted.empty(); ++i)
      predicted[static_cast<std::size_t>(first + i)] = fit.model.nearest[i] - 1;
  }
  return Status::Done;
}

DiscriminantFold Discriminant::fold(const FoldSource& folds, std::int32_t number, const Checkpoint& checkpoint,
                                    std::int32_t place) {
  Pace pace(checkpoint);
  DiscriminantFold stopped;
  stopped.status = Status::Stopped;
  if (!pace.begin(number + 1, folds.count)) return stopped;
  DaFoldScratch& s = *state_->places[static_cast<std::size_t>(place)];
  const std::span<std::int32_t> buffer(s.rows.data(), static_cast<std::size_t>(state_->size.n));
  DiscriminantFold fold = runFold(state_->problem, folds.rows(number, buffer), s, pace);
  scaleDistances(s.fit, s.distances.data(), fold.distances.rows, fold.distances.columns, fold.distances.ld);
  return fold;
}

void Discriminant::add(const DiscriminantFold& fold) { addFold(state_->problem, fold, state_->validated()); }

void Discriminant::restart() { state_->validated().clear(state_->size.p, state_->size.g); }

DiscriminantValidation Discriminant::validation() const {
  const AllRowsScratch& s = *state_->all;
  const std::int32_t g = state_->size.g;
  return {counts(s.selCount, state_->size.p), counts(s.cvConfusion, g * g), counts(s.validated, g),
          counts(s.correct, g)};
}

}  // namespace studystats::engine
