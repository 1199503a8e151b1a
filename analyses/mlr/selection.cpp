// Stepwise selection as told in by_address.h. The best entry candidate is looked for only when a step comes to enter
// one, so a fit whose entry test fails, and the last fit of a selection, go without. Draper & Smith, Applied Regression
// Analysis, 3rd ed. (1998), chapter 15.
#include "analyses/mlr/selection.h"

#include <algorithm>
#include <cmath>

#include "numeric/status.h"

namespace studystats::core {
namespace {

void recordFit(const StepHistory* history, std::int32_t k, const FitNumbers& fit) {
  if (history == nullptr) return;
  (k == 0 ? *history->fStart : history->f[k - 1]) = fit.fStat;
  (k == 0 ? *history->sStart : history->s[k - 1]) = fit.sEst;
}

enum Action : std::int32_t { kRemoved = 0, kEntered = 1 };

void recordAction(const StepHistory* history, std::int32_t k, Action action, std::int32_t variable) {
  if (history == nullptr) return;
  history->action[k - 1] = action;
  history->variable[k - 1] = variable;
}

void recordPartialF(const StepHistory* history, std::int32_t k, double partialF) {
  if (history != nullptr) history->partialF[k - 1] = static_cast<float>(partialF);
}

}  // namespace

std::int32_t mostVariables(std::int32_t nStart, std::int32_t m, const SelectionRules& rules) {
  return static_cast<std::int32_t>(std::min<std::int64_t>(m, std::int64_t{nStart} + rules.maxSteps));
}

void filterCollinear(float corrLimit, ColumnProducts& products, std::int32_t m, std::int32_t* flags, Pace& pace) {
  const double limit = corrLimit + 1e-5F;  // a 32-bit sum
  for (std::int32_t i = 0; i < m; ++i) {
    if (flags[i] != 1) continue;
    products.require(i, pace);
    for (std::int32_t j = i + 1; j < m; ++j)
      if (std::fabs(products.correlation(i, j)) > limit) flags[j] = 0;
  }
}

std::int32_t selectVariables(const RegressionRows& rows, ColumnProducts& products, const SelectionRules& rules,
                             std::int32_t* flags, const FitArrays& model, const StepHistory* history,
                             FitScratch& scratch, Pace& pace) {
  const auto finish = [history](std::int32_t nSteps, std::int32_t status) {
    if (history != nullptr) *history->nSteps = nSteps;
    return status;
  };
  const auto partialF = [&model](std::int32_t variable) { return model.t[variable - 1] * model.t[variable - 1]; };

  std::int32_t last = 0;  // the variable that the latest step entered
  bool stopping = false;
  for (std::int32_t k = 0;;) {
    FitNumbers fit;
    const std::int32_t status = fitModel(rows, products, flags, model, scratch, fit, pace);
    recordFit(history, k, fit);
    if (stopping) return finish(k - 2, status);
    if (status != kDone || k >= rules.maxSteps) return finish(k, status);
    ++k;
    if (last > 0) {
      recordPartialF(history, k - 1, partialF(last));
      if (rules.fEnter > partialF(last)) {
        flags[last - 1] = 0;
        stopping = true;
        continue;
      }
    }
    if (fit.weakest > 0 && rules.fRemove > partialF(fit.weakest)) {
      flags[fit.weakest - 1] = 0;
      recordAction(history, k, kRemoved, fit.weakest);
      recordPartialF(history, k, partialF(fit.weakest));
      stopping = fit.weakest == last;
      last = 0;
      continue;
    }
    last = entryCandidate(rows, products, rules.corrLimit, model, fit, scratch, pace);
    if (pace.stopped()) return finish(k - 1, kStopped);
    if (last == 0) return finish(k - 1, kDone);
    flags[last - 1] = 1;
    recordAction(history, k, kEntered, last);
  }
}

}  // namespace studystats::core
