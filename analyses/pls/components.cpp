// NIPALS for several responses: weights w = X'u / u'u of unit length, scores t = Xw / w'w, response weights c = Y't /
// t't, response scores u = Yc / c'c, and around again until u stands still. A single response stands still at once.
// Descriptors and responses are then deflated by the component.
//
// Wold, Sjostrom & Eriksson (2001), Chemometrics and Intelligent Laboratory Systems 58, 109-130; Geladi & Kowalski
// (1986), Analytica Chimica Acta 185, 1-17.
#include "analyses/pls/components.h"

#include <algorithm>
#include <cmath>

#include "analyses/pls/weighted_sums.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kMostPasses = 1000;
constexpr double kStandsStill = 1.0e-6;         // largest change of a response score
constexpr double kShortest = double{1.0e-10F};  // response weights of this length or less are not normalised

double sumOfSquares(const double* values, std::int32_t n) {
  double sum = 0.0;
  for (std::int32_t i = 0; i < n; ++i) sum += values[i] * values[i];
  return sum;
}

// A divisor: no sum of squares that is 0 ever divides.
double orOne(double sum) { return sum == 0.0 ? 1.0 : sum; }

void divideBy(double divisor, double* values, std::int32_t n) {
  for (std::int32_t i = 0; i < n; ++i) values[i] /= divisor;
}

void multiplyBy(double factor, double* values, std::int32_t n) {
  for (std::int32_t i = 0; i < n; ++i) values[i] *= factor;
}

// Weights of unit length; zeros stay zeros.
void normaliseWeights(double* w, std::int32_t p) {
  const double ww = sumOfSquares(w, p);
  if (ww != 0.0) divideBy(std::sqrt(ww), w, p);
}

// Response weights of unit length, unless they are very short, or not numbers.
void normaliseResponseWeights(double* c, std::int32_t q) {
  const double length = std::sqrt(sumOfSquares(c, q));
  if (length > kShortest) divideBy(length, c, q);
}

// A difference that is not a number counts as none.
bool standsStill(const double* u, const double* before, std::int32_t n) {
  for (std::int32_t i = 0; i < n; ++i)
    if (std::fabs(u[i] - before[i]) > kStandsStill) return false;
  return true;
}

// Passes until u stands still; the scores' sum of squares, or 1 when that is 0, in tt.
std::int32_t iterate(const PlsData& d, const PlsComponent& out, double* u, double* uBefore, double& tt, Pace& pace) {
  for (int pass = 1;; ++pass) {
    normaliseWeights(out.weights, d.p);
    columnSums(d.x, out.weights, orOne(sumOfSquares(out.weights, d.p)), out.scores, pace);
    tt = orOne(sumOfSquares(out.scores, d.n));
    columnSums(d.y, out.scores, tt, out.respWeights, pace);
    normaliseResponseWeights(out.respWeights, d.q);
    rowSums(d.y, out.respWeights, orOne(sumOfSquares(out.respWeights, d.q)), u, pace);
    if (pace.stopped()) return kStopped;
    if (d.q <= 1) return kDone;
    if (pass == kMostPasses) return kNotConverged;
    if (pass > 1 && standsStill(u, uBefore, d.n)) return kDone;
    std::copy_n(u, d.n, uBefore);
    rowSums(d.x, u, orOne(sumOfSquares(u, d.n)), out.weights, pace);
  }
}

// Sum of squares about the mean.
double squaresAboutMean(const double* values, std::int32_t n) {
  double mean = 0.0, sum = 0.0;
  for (std::int32_t i = 0; i < n; ++i) mean += values[i];
  mean /= n;
  for (std::int32_t i = 0; i < n; ++i) sum += (values[i] - mean) * (values[i] - mean);
  return sum;
}

// Copies a few samples, descriptor by descriptor: rows that lie together are read together.
void takeDescriptors(ConstMatrix data, const std::int32_t* rows, std::int32_t count, std::int32_t p, Matrix samples) {
  for (std::int32_t j = 0; j < p; ++j) {
    const double* column = data.column(j);
    for (std::int32_t i = 0; i < count; ++i) samples(j, i) = rows[i] >= 0 ? column[rows[i]] : 0.0;
  }
}

void prepareSamples(const ColumnUnits& units, std::int32_t count, std::int32_t p, Matrix samples) {
  for (std::int32_t i = 0; i < count; ++i)
    for (std::int32_t j = 0; j < p; ++j) samples(j, i) = units.prepared(samples(j, i), j);
}

void takeResponses(ConstMatrix data, const std::int32_t* rows, const ColumnUnits& units, PlsData& d) {
  for (std::int32_t k = 0; k < d.q; ++k)
    for (std::int32_t i = 0; i < d.n; ++i) {
      const double value = rows[i] >= 0 ? data(rows[i], d.p + k) : 0.0;
      d.y.x(i, k) = units ? units.prepared(value, d.p + k) : value;
    }
  d.y.smallest = smallestMagnitude(d.y.x.data, std::ptrdiff_t{d.n} * d.q);
}

}  // namespace

void takeSamples(ConstMatrix data, const std::int32_t* rows, const ColumnUnits& units, PlsData& d, Pace& pace) {
  constexpr std::int32_t kTogether = 64;
  d.x.smallest = kNoMagnitude;
  pace.inParts(d.n, 4 * std::int64_t{d.p}, kTogether, [&](std::int32_t first, std::int32_t last) {
    for (std::int32_t i = first; i < last; i += kTogether) {
      const Matrix samples = d.x.x.block(0, i);
      const std::int32_t count = std::min(kTogether, last - i);
      takeDescriptors(data, rows + i, count, d.p, samples);
      if (units) prepareSamples(units, count, d.p, samples);
      d.x.smallest = std::min(d.x.smallest, smallestMagnitude(samples.data, std::ptrdiff_t{d.p} * count));
    }
  });
  takeResponses(data, rows, units, d);
}

double startVector(const PlsData& d, double* u) {
  if (d.q >= 1)
    std::copy_n(d.y.x.data, d.n, u);
  else
    std::fill_n(u, d.n, 0.0);
  return orOne(sumOfSquares(u, d.n));
}

std::int32_t extractComponent(const PlsData& d, PlsComponent& out, double* u, double* uBefore, Pace& pace) {
  // 1. Weights and scores.
  double tt = 1.0;
  if (const std::int32_t status = iterate(d, out, u, uBefore, tt, pace); status != kDone) return status;

  // 2. Loadings of unit length; scores and weights carry the norm.
  rowSums(d.x, out.scores, tt, out.loadings, pace);
  const double length = std::sqrt(orOne(sumOfSquares(out.loadings, d.p)));
  divideBy(length, out.loadings, d.p);
  multiplyBy(length, out.weights, d.p);
  multiplyBy(length, out.scores, d.n);

  // 3. Inner coefficient: the response scores regressed on the scores.
  out.scoreSquares = sumOfSquares(out.scores, d.n);
  const Block scores{{out.scores, d.n}, d.n, 1};
  columnSums(scores, u, orOne(out.scoreSquares), out.inner, pace);
  return pace.stopped() ? kStopped : kDone;
}

PlsExtraction fitComponents(PlsData& d, const PlsModel& model, PlsComponentScratch& s, const PlsResidualSums* sums,
                            Pace& pace) {
  double* c = s.respWeights.data();
  for (std::int32_t a = 0; a < model.nComponents; ++a) {
    // 1. What the component before left in the descriptors, and the first pass's weights.
    PlsComponent component{s.scores.data(), model.weights.column(a), model.loadings.column(a), c, model.inner + a};
    const double uu = startVector(d, s.u.data());
    if (a == 0)
      rowSums(d.x, s.u.data(), uu, component.weights, pace);
    else
      deflateAndSum(d.x, model.loadings.column(a - 1), s.scores.data(), s.u.data(), uu, component.weights, pace);

    // 2. The component.
    const std::int32_t status = extractComponent(d, component, s.u.data(), s.uBefore.data(), pace);
    if (status != kDone) return {status, a};
    model.scoreSquares[a] = component.scoreSquares;
    for (std::int32_t k = 0; k < d.q; ++k) model.respWeights(a, k) = c[k];
    if (model.scores.data != nullptr) std::copy_n(s.scores.data(), d.n, model.scores.column(a));

    // 3. What it leaves of the responses.
    if (sums != nullptr && a == 0)
      for (std::int32_t k = 0; k < d.q; ++k) sums->tss[k] = squaresAboutMean(d.y.x.column(k), d.n);
    multiplyBy(model.inner[a], c, d.q);
    deflate(d.y, s.scores.data(), c, pace);
    if (sums != nullptr)
      for (std::int32_t k = 0; k < d.q; ++k) sums->rss(a, k) = sumOfSquares(d.y.x.column(k), d.n);
  }
  return {pace.stopped() ? kStopped : kDone, model.nComponents};
}

}  // namespace studystats::core
