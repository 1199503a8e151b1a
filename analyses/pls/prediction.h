// What a partial least squares model says of samples: their scores, predictions, and the regression coefficients.
#pragma once

#include <cstdint>

#include "analyses/pls/components.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

constexpr int kSampleBlock = 16;  // samples scored together

// Room for a block of samples: descriptor after descriptor, and their scores, component after component.
struct PlsSampleScratch {
  PlsSampleScratch(Arena& arena, std::int32_t p, std::int32_t nComponents)
      : samples(arena, area(p, kSampleBlock)), scores(arena, area(nComponents, kSampleBlock)) {}

  Array<double> samples, scores;
};

// The scores of one sample, `stride` apart.
struct PlsSampleScores {
  const double* first;
  int stride;

  double operator[](std::ptrdiff_t a) const { return first[a * stride]; }
};

// scratch.scores: the scores on the first nUse components of `samples` samples, kSampleBlock or 1, which lie in
// scratch.samples and are deflated there: t(a) = x'w(a), and x -= t(a) * p(a) as long as a is not the model's last.
// Without meaning once pace has stopped.
void scoreSamples(const PlsModel& model, std::int32_t nUse, int samples, PlsSampleScratch& scratch, Pace& pace);

// scratch.samples: `samples` samples, the listed rows of x or, without a list, rows first, first + 1, ...; prepared
// when there are units.
void gatherSamples(ConstMatrix x, const std::int32_t* rows, std::int32_t first, int samples, std::int32_t p,
                   const ColumnUnits& units, PlsSampleScratch& scratch);

// Calls take(i, scores) for each of n rows of x in order: the listed ones, or without a list the first n. Ends early
// when pace stops.
template <class Take>
void scoreRows(ConstMatrix x, const std::int32_t* rows, std::int32_t n, const PlsModel& model, std::int32_t nUse,
               const ColumnUnits& units, PlsSampleScratch& s, Pace& pace, Take take) {
  for (std::int32_t i = 0; i < n && !pace.stopped();) {
    const int samples = n - i >= kSampleBlock ? kSampleBlock : 1;
    gatherSamples(x, rows == nullptr ? nullptr : rows + i, i, samples, model.p, units, s);
    scoreSamples(model, nUse, samples, s, pace);
    for (int r = 0; r < samples; ++r) take(i + r, PlsSampleScores{s.scores.data() + r, samples});
    i += samples;
  }
}

// Calls take(a, prediction) with the prediction of response k by the first a + 1 components, a = 0 ... nUse - 1.
template <class Take>
void predictResponse(const PlsModel& model, std::int32_t k, std::int32_t nUse, const PlsSampleScores& t, Take take) {
  double cumulative = 0.0;
  for (std::int32_t a = 0; a < nUse; ++a) {
    const double contribution = model.inner[a] * model.respWeights(a, k) * t[a];
    cumulative = a == 0 ? contribution : cumulative + contribution;
    take(a, cumulative);
  }
}

// The rotations (p x nComponents): scores of samples that are 1 in one descriptor and 0 in the others.
void findRotations(const PlsModel& model, Matrix rotations, PlsSampleScratch& scratch, Pace& pace);

// Regression coefficients (p x nComponents x q, descriptor fastest) after 1, 2, ... components: the predictions of
// those samples.
void coefficients(const PlsModel& model, ConstMatrix rotations, double* coefs, Pace& pace);

// Units of the columns, descriptors and then responses: value = prepared * scale + mean.
struct RawUnits {
  const double *scales, *means;
};

// Coefficients (p x nComponents x q) for raw descriptors and responses.
void convertToRawUnits(const PlsModel& model, const RawUnits& raw, double* coefs);

// The intercepts (nComponents x q) that belong to such coefficients.
void findIntercepts(const PlsModel& model, const RawUnits& raw, const double* coefs, Matrix intercepts);

}  // namespace studystats::core
