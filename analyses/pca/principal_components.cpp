// Principal components as their callers in C++ take them: the analysis, over memory of its own.
#include <studystats/engine/principal_components.h>

#include <algorithm>
#include <new>

#include "analyses/pca/pca.h"
#include "analyses/pca/smaller_side.h"
#include "numeric/cross_products.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::engine {
namespace {

using namespace studystats::core;  // NOLINT(google-build-using-namespace)

struct Sizes {
  explicit Sizes(const PrincipalComponentsTask& task)
      : n(std::max(task.table.rows, 0)),
        p(std::max(task.table.columns, 0)),
        fromRows(task.side == Side::Smaller && n < p),
        eigenvalues(fromRows ? std::max(n - 1, 0) : p),
        k(task.components < 0 ? eigenvalues : std::min(task.components, eigenvalues)) {}
  std::int32_t n, p;
  bool fromRows;
  std::int32_t eigenvalues, k;
};

// Lengths of what is not asked for, or belongs to the other side, are 0.
struct ComponentsScratch {
  ComponentsScratch(Arena& arena, Sizes size, const PrincipalComponentsTask& task)
      : rows(arena, size.fromRows ? size.n : 0, size.fromRows ? size.p : 0),
        loadings(arena, area(size.p, size.fromRows ? size.k : size.p)),
        covariance(arena, task.covariance ? area(size.p, size.p) : 0),
        explained(arena, task.explained ? area(size.p, size.k) : 0),
        scores(arena, task.scores ? area(size.n, size.k) : 0),
        scoreMeans(arena, task.scores ? size.k : 0),
        scoreDeviations(arena, task.scores ? size.k : 0),
        eigenvalues(arena, size.fromRows ? size.n : size.p),
        means(arena, size.p),
        variances(arena, size.p),
        work(arena, size.p) {}

  SmallerSideScratch rows;
  Array<double> loadings, covariance, explained, scores, scoreMeans, scoreDeviations, eigenvalues, means, variances,
      work;
};

// Nothing when it was not asked for.
double* wanted(bool asked, const Array<double>& array) { return asked ? array.data() : nullptr; }

std::span<const double> numbers(const Array<double>& array, std::int32_t n) {
  return {array.data(), static_cast<std::size_t>(n)};
}

}  // namespace

struct [[gnu::visibility("hidden")]] PrincipalComponents::State {
  explicit State(const PrincipalComponentsTask& asked) : task(asked), size(asked), scratch(size, asked) {}

  std::int32_t fromVariables(Pace & pace);
  std::int32_t fromRows(Pace & pace);
  void show();

  PrincipalComponentsTask task;
  Sizes size;
  Obtained<ComponentsScratch> scratch;
  PrincipalComponentsModel model;
};

std::int32_t PrincipalComponents::State::fromVariables(Pace& pace) {
  ComponentsScratch& s = *scratch;
  const Matrix vectors{s.loadings.data(), size.p};
  const Matrix covariance = task.covariance ? Matrix{s.covariance.data(), size.p} : vectors;
  const PcaOutputs out{s.eigenvalues.data(),
                       vectors,
                       covariance,
                       {wanted(task.explained, s.explained), size.p},
                       {wanted(task.scores, s.scores), size.n},
                       s.scoreMeans.data(),
                       s.scoreDeviations.data(),
                       s.variances.data()};
  return principalComponents({task.table.data, task.table.ld}, size.n, size.p, size.k, out,
                             {covariance, s.means.data(), s.work.data()}, pace);
}

std::int32_t PrincipalComponents::State::fromRows(Pace& pace) {
  ComponentsScratch& s = *scratch;
  const ConstMatrix data{task.table.data, task.table.ld};
  const Matrix loadings{s.loadings.data(), size.p}, covariance{s.covariance.data(), size.p};
  if (!columnMeans(data, size.n, size.p, s.means.data(), pace)) return kStopped;
  const std::int32_t status =
      smallerSideAxes(data, size.n, size.p, size.k, s.means.data(), s.eigenvalues.data(), loadings, s.rows, pace);
  if (status != kDone) return status;

  columnSquares(data, size.n, size.p, s.means.data(), s.variances.data(), pace);
  for (std::int32_t j = 0; j < size.p; ++j) s.variances[j] /= size.n - 1;
  if (task.covariance && !pace.stopped())
    covariances(data, size.n, size.p, s.means.data(), covariance, covariance, pace);
  if (task.explained)
    accumulateExplained({loadings.data, size.p}, s.eigenvalues.data(), size.p, size.k, {s.explained.data(), size.p},
                        pace);
  if (task.scores && !pace.stopped())
    scoreSamples(data, size.n, size.p, {loadings.data, size.p}, size.k, {s.scores.data(), size.n}, s.scoreMeans.data(),
                 s.scoreDeviations.data(), pace);
  return kDone;
}

void PrincipalComponents::State::show() {
  const ComponentsScratch& s = *scratch;
  const std::int32_t n = size.n, p = size.p, k = size.k;
  model.supported = std::min(n - 1, p);
  model.eigenvalues = numbers(s.eigenvalues, size.eigenvalues);
  model.loadings = {s.loadings.data(), p, k, p};
  model.means = numbers(s.means, p);
  model.variances = numbers(s.variances, p);
  if (task.scores) {
    model.scores = {s.scores.data(), n, k, n};
    model.scoreMeans = numbers(s.scoreMeans, k);
    model.scoreDeviations = numbers(s.scoreDeviations, k);
  }
  if (task.covariance) model.covariance = {s.covariance.data(), p, p, p};
  if (task.explained) model.explained = {s.explained.data(), p, k, p};
}

PrincipalComponents::PrincipalComponents(const PrincipalComponentsTask& task) try {
  auto state = std::make_unique<State>(task);
  if (state->scratch) state_ = std::move(state);
} catch (const std::bad_alloc&) {
}

PrincipalComponents::~PrincipalComponents() = default;

PrincipalComponents::operator bool() const { return state_ != nullptr; }

Status PrincipalComponents::fit(const Checkpoint& checkpoint) {
  if (!state_) return Status::NoMemory;
  if (state_->size.n < 2 || state_->size.p < 1) return Status::Singular;
  Pace pace(checkpoint);
  const std::int32_t status = state_->size.fromRows ? state_->fromRows(pace) : state_->fromVariables(pace);
  if (pace.stopped()) return Status::Stopped;
  if (status != kDone) return Status::NotConverged;
  state_->show();
  return Status::Done;
}

const PrincipalComponentsModel& PrincipalComponents::model() const { return state_->model; }

}  // namespace studystats::engine
