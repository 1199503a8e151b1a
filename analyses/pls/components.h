// The components of a partial least squares model, extracted one after the other by NIPALS.
#pragma once

#include <cstdint>

#include "analyses/pls/weighted_sums.h"
#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/preparation.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Current data: p descriptors and q responses of n samples. Descriptors lie sample after sample (p x n), since two sums
// in three run over the samples; responses lie response after response (n x q).
struct PlsData {
  // In storage for n * (p + q) numbers.
  PlsData(double* storage, std::int32_t nSamples, std::int32_t nDescriptors, std::int32_t nResponses)
      : n(nSamples),
        p(nDescriptors),
        q(nResponses),
        x{{storage, p}, p, n},
        y{{storage + std::ptrdiff_t{p} * n, n}, n, q} {}

  std::int32_t n, p, q;
  Block x, y;
};

// Takes samples from data (descriptors in columns, then responses): those of the n rows, counted from 0; zeros for -1.
// Values are prepared when there are units; every row is one of data then.
void takeSamples(ConstMatrix data, const std::int32_t* rows, const ColumnUnits& units, PlsData& samples, Pace& pace);

// A model of nComponents components.
struct PlsModel {
  std::int32_t p, q, nComponents;
  Matrix weights;        // p x nComponents
  Matrix loadings;       // p x nComponents, columns of unit length
  Matrix respWeights;    // nComponents x q
  double* inner;         // nComponents: inner coefficients
  double* scoreSquares;  // nComponents: sum of squares of the scores
  Matrix scores{};       // n x nComponents; null: they are not kept
};

// Vectors of the extraction, for n rows and q responses.
struct PlsComponentScratch {
  PlsComponentScratch(Arena& arena, std::int32_t n, std::int32_t q)
      : u(arena, n), uBefore(arena, n), scores(arena, n), respWeights(arena, q) {}

  Array<double> u, uBefore, scores, respWeights;
};

struct PlsComponent {
  double *scores, *weights, *loadings, *respWeights, *inner;
  double scoreSquares = 0.0;
};

// Sums of squares of each response: about its mean over all rows (q), and left after each component (nComponents x q).
struct PlsResidualSums {
  double* tss;
  Matrix rss;
};

// The vector that the first pass starts from, the first response, or zeros without responses; its sum of squares, or 1
// when that is 0.
double startVector(const PlsData& data, double* u);

// One component of the current data, from the first pass's unnormalised weights on: the descriptors' sums over the
// samples with the start vector. kDone, kStopped, or kNotConverged after 1000 passes: weights, scores and response
// weights are then those of the last pass, and nothing else is written.
std::int32_t extractComponent(const PlsData& data, PlsComponent& component, double* u, double* uBefore, Pace& pace);

struct PlsExtraction {
  std::int32_t status;         // kDone, kNotConverged or kStopped
  std::int32_t nComponents{};  // extracted, those before the one that failed
};

// All components of the data, which are deflated in place; the last component is left in the descriptors, and its
// scores in the scratch. sums may be null.
PlsExtraction fitComponents(PlsData& data, const PlsModel& model, PlsComponentScratch& scratch,
                            const PlsResidualSums* sums, Pace& pace);

}  // namespace studystats::core
