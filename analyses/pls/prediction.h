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
void scoreSamples(const PlsModel& model, std::int32_t nUse, int samples, PlsSampleScratch& scratch);

// Calls take(i, scores) for each of the n rows of x in order.
template <class Take>
void scoreRows(ConstMatrix x, std::int32_t n, const PlsModel& model, std::int32_t nUse, PlsSampleScratch& s,
               Take take) {
  for (std::int32_t i = 0; i < n;) {
    const int samples = n - i >= kSampleBlock ? kSampleBlock : 1;
    for (std::int32_t j = 0; j < model.p; ++j)
      for (int r = 0; r < samples; ++r) s.samples[std::ptrdiff_t{j} * samples + r] = x(i + r, j);
    scoreSamples(model, nUse, samples, s);
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

// Regression coefficients (p x nComponents x q, descriptor fastest) after 1, 2, ... components: the predictions of
// samples that are 1 in one descriptor and 0 in the others. rotations (p x nComponents) is scratch.
void coefficients(const PlsModel& model, Matrix rotations, PlsSampleScratch& scratch, double* coefs);

}  // namespace studystats::core
