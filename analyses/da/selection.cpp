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

enum SelectMode : std::int32_t { kAutomatic = 0, kToCount = 1, kAllOrEveryStep = 2 };

struct Candidate {
  std::int32_t variable = -1;  // counted from 0
  float fraction = 0.0F, distance = 0.0F;
};

bool withinTolerance(float a, float b) { return std::fabs(a - b) <= kTolerance; }

// Whether the subset in hand beats the best; if it does, both its scores are filled in and its samples classified.
bool beats(const SubsetFit& fit, Candidate& candidate, const Candidate& best) {
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
std::int32_t findCandidate(const SubsetFit& fit, std::int32_t* selected, const DaSteps* steps, std::int32_t step,
                           Candidate& best) {
  for (std::int32_t j = 0; j < fit.samples.p; ++j) {
    if (selected[j] == 1) continue;
    selected[j] = 1;
    const std::int32_t status = fit.take(selected);
    selected[j] = 0;
    if (status != kDone) return status;
    Candidate candidate{.variable = j};
    if (!beats(fit, candidate, best)) continue;
    best = candidate;
    if (steps != nullptr) fit.classFractions(&steps->classFraction(step, 0), steps->classFraction.ld);
  }
  return kDone;
}

bool refused(const DaRules& rules, const Candidate& best, const Candidate& last) {
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

std::int32_t selectForward(const SubsetFit& fit, const DaRules& rules, std::int32_t* selected, const DaSteps* steps) {
  Candidate last;
  for (std::int32_t nSteps = 0;;) {
    Candidate best;
    if (const std::int32_t status = findCandidate(fit, selected, steps, nSteps, best); status != kDone) return status;
    if (refused(rules, best, last)) break;
    selected[best.variable] = 1;
    if (steps != nullptr) {
      steps->fraction[nSteps] = best.fraction;
      steps->order[nSteps] = best.variable + 1;
      *steps->nSteps = nSteps + 1;
    }
    last = best;
    if (complete(rules, ++nSteps, best.fraction)) break;
  }
  return fit.take(selected);
}

std::int32_t selectAll(const SubsetFit& fit, const std::int32_t* selected, const DaSteps* steps) {
  const std::int32_t status = fit.take(selected);
  if (status != kDone || steps == nullptr) return status;
  steps->fraction[0] = fit.fractionCorrect();
  steps->order[0] = 0;
  fit.classFractions(steps->classFraction.data, steps->classFraction.ld);
  *steps->nSteps = 1;
  return kDone;
}

}  // namespace

std::int32_t SubsetFit::take(const std::int32_t* selected) const {
  chooseVariables(selected, samples.p, model);
  if (model.m < 1) return kNotConverged;
  if (model.m > 1) return invertCovariance(moments.within, model);
  invertVariance(moments.within, model);
  return kDone;
}

float SubsetFit::fractionCorrect() const {
  nearestClasses(samples.x, samples.n, moments.means, samples.g, model, {nullptr, 0});
  std::int32_t correct = 0;
  for (std::int32_t i = 0; i < samples.n; ++i) correct += model.nearest[i] == samples.classOf[i] ? 1 : 0;
  return static_cast<float>(correct) / static_cast<float>(samples.n);
}

float SubsetFit::separation() const { return classSeparation(moments, samples.g, model); }

void SubsetFit::classFractions(float* shares, std::ptrdiff_t stride) const {
  for (std::int32_t c = 1; c <= samples.g; ++c, shares += stride) {
    std::int32_t correct = 0;
    for (std::int32_t i = 0; i < samples.n; ++i) correct += samples.classOf[i] == c && model.nearest[i] == c ? 1 : 0;
    *shares = static_cast<float>(std::min(correct, kMostCounted)) / static_cast<float>(samples.classSize[c - 1]);
  }
}

std::int32_t selectSubset(const DaSamples& samples, const DaRules& rules, std::int32_t* selected, Matrix means,
                          Matrix within, double* products, const DaSteps* steps, SubsetModel& model) {
  const bool useAll = rules.mode == kAllOrEveryStep && rules.nSelect < 1;
  if (steps != nullptr) *steps->nSteps = 0;
  std::fill_n(selected, std::max(samples.p, 0), useAll ? 1 : 0);
  if (!canBePooled(samples)) return kSingular;
  poolCovariance(samples, means, within, products);
  const SubsetFit fit{samples, {{means.data, means.ld}, {within.data, within.ld}}, model};
  return useAll ? selectAll(fit, selected, steps) : selectForward(fit, rules, selected, steps);
}

}  // namespace studystats::core
