// Forward selection as told in by_address.h. A candidate's scores are computed as the comparison asks for them: with
// three classes or more few candidates come so near to the best that samples have to be classified.
//
// McLachlan, Discriminant Analysis and Statistical Pattern Recognition (1992), chapter 12.
#include "analyses/da/selection.h"

#include <algorithm>
#include <cmath>

#include "numeric/status.h"

namespace studystats::core {

namespace {

constexpr float kTolerance = 1e-5F;             // scores as near as this are equal
constexpr float kGrowth = 1.05F;                // of the distance sum, that makes up for a fraction which stands still
constexpr float kComplete = 0.999999F;          // a fraction that cannot be bettered
constexpr std::int32_t kMostCounted = 1 << 24;  // a 32-bit tally that grows by 1 grows no further

bool withinTolerance(float a, float b) { return std::fabs(a - b) <= kTolerance; }

// Whether the subset in hand beats the best; if it does, both its scores are filled in and its samples classified.
bool beats(const SubsetFit& fit, DaCandidate& candidate, const DaCandidate& best) {
  if (fit.samples.g == 2) {
    candidate.fraction = fit.fractionCorrect();
    const bool better = candidate.fraction > best.fraction;
    if (!better && !withinTolerance(candidate.fraction, best.fraction)) return false;
    candidate.distance = fit.separation();
    return better || candidate.distance > best.distance;
  }
  candidate.distance = fit.separation();
  const bool better = candidate.distance > best.distance;
  if (!better && !withinTolerance(candidate.distance, best.distance)) return false;
  candidate.fraction = fit.fractionCorrect();
  return better || candidate.fraction > best.fraction;
}

// The best variable to add, if any; kDone, or the status of the first subset that fails. Class fractions of the best go
// to row `step` of steps.
std::int32_t findCandidate(const SubsetFit& fit, const std::int32_t* selected, const DaSteps* steps, std::int32_t step,
                           DaCandidate& best) {
  for (std::int32_t j = 0; j < fit.samples.p; ++j) {
    if (selected[j] == 1) continue;
    insertVariable(j, fit.model);
    const std::int32_t status = fit.build();
    DaCandidate candidate{.variable = j};
    const bool taken = status == kDone && beats(fit, candidate, best);
    if (taken && steps != nullptr) fit.classFractions(&steps->classFraction(step, 0), steps->classFraction.ld);
    removeVariable(j, fit.model);
    if (fit.pace.stopped()) return kStopped;
    if (status != kDone) return status;
    if (taken) best = candidate;
  }
  return kDone;
}

bool refused(const DaRules& rules, const DaCandidate& best, const DaCandidate& last) {
  if (best.variable < 0) return true;
  if (rules.mode != kAutomatic) return false;
  return last.fraction > best.fraction ||
         (std::fabs(best.fraction - last.fraction) < kTolerance && last.distance * kGrowth > best.distance);
}

bool complete(const DaRules& rules, std::int32_t nSteps, float fraction) {
  if (nSteps >= rules.maxSteps) return true;
  if (rules.mode == kAutomatic) return fraction >= kComplete;
  return rules.mode == kToCount && nSteps >= rules.nSelect;
}

void recordStep(const DaSteps* steps, std::int32_t step, const DaCandidate& taken) {
  if (steps == nullptr) return;
  steps->fraction[step] = taken.fraction;
  steps->order[step] = taken.variable + 1;
  if (steps->distance != nullptr) steps->distance[step] = taken.distance;
  *steps->nSteps = step + 1;
}

std::int32_t selectForward(const SubsetFit& fit, const DaRules& rules, std::int32_t* selected, const DaSteps* steps) {
  DaCandidate last;
  fit.model.m = 0;
  for (std::int32_t nSteps = 0;;) {
    DaCandidate best;
    if (const std::int32_t status = findCandidate(fit, selected, steps, nSteps, best); status != kDone) return status;
    if (refused(rules, best, last)) {
      if (steps != nullptr && steps->refused != nullptr) *steps->refused = best;
      break;
    }
    selected[best.variable] = 1;
    insertVariable(best.variable, fit.model);
    recordStep(steps, nSteps, best);
    last = best;
    if (complete(rules, ++nSteps, best.fraction)) break;
    fit.within.require(best.variable, fit.pace);
  }
  return fit.build();
}

std::int32_t selectAll(const SubsetFit& fit, const std::int32_t* selected, const DaSteps* steps) {
  chooseVariables(selected, fit.samples.p, fit.model);
  const std::int32_t status = fit.build();
  if (status != kDone || steps == nullptr) return status;
  recordStep(steps, 0, {-1, fit.fractionCorrect(), steps->distance != nullptr ? fit.separation() : 0.0F});
  fit.classFractions(steps->classFraction.data, steps->classFraction.ld);
  return kDone;
}

}  // namespace

std::int32_t mostVariables(const DaRules& rules, std::int32_t p) {
  if (rules.takesAll()) return p;
  const std::int32_t steps = rules.mode == kToCount ? std::min(rules.nSelect, rules.maxSteps) : rules.maxSteps;
  return std::min(p, std::max(steps, 1));
}

std::int32_t SubsetFit::build() const {
  if (model.m < 1) return kNotConverged;
  if (model.m > 1) return invertCovariance(within, model, pace);
  invertVariance(within, model);
  return pace.stopped() ? kStopped : kDone;
}

float SubsetFit::fractionCorrect() const {
  nearestClasses({samples.x, samples.n}, means, samples.g, model, kNoDistances, pace);
  std::int32_t correct = 0;
  for (std::int32_t i = 0; i < samples.n; ++i) correct += model.nearest[i] == samples.classOf[i] ? 1 : 0;
  return static_cast<float>(correct) / static_cast<float>(samples.n);
}

float SubsetFit::separation() const { return classSeparation(means, within, samples.g, model, pace); }

void SubsetFit::classFractions(float* shares, std::ptrdiff_t stride) const {
  for (std::int32_t c = 1; c <= samples.g && pace.goOn(samples.n); ++c, shares += stride) {
    std::int32_t correct = 0;
    for (std::int32_t i = 0; i < samples.n; ++i) correct += samples.classOf[i] == c && model.nearest[i] == c ? 1 : 0;
    *shares = static_cast<float>(std::min(correct, kMostCounted)) / static_cast<float>(samples.classSize[c - 1]);
  }
}

void clearSelection(const DaRules& rules, std::int32_t p, std::int32_t* selected, const DaSteps* steps) {
  if (steps != nullptr) *steps->nSteps = 0;
  std::fill_n(selected, std::max(p, 0), rules.takesAll() ? 1 : 0);
}

std::int32_t selectSubset(const SubsetFit& fit, const DaRules& rules, std::int32_t* selected, const DaSteps* steps) {
  const std::int32_t status =
      rules.takesAll() ? selectAll(fit, selected, steps) : selectForward(fit, rules, selected, steps);
  return fit.pace.stopped() ? kStopped : status;
}

}  // namespace studystats::core
