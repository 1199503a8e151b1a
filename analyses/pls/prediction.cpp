// The coefficients are predictions of unit vectors, p * p * nComponents operations. The scores of those are the columns
// of the rotations R = W (P'W)^-1, for which r(a) = w(a) - sum over b < a of (p(b)'w(a)) * r(b) needs p *
// nComponents^2. It holds as long as the data have something left: beyond their rank the scores are rounding noise, the
// inner coefficients huge, and where a unit vector is deflated to 0 the recursion multiplies what it rounded off. So it
// is given up where scores are down at that level, and where its difference cancels.
//
// de Jong (1993), Chemometrics and Intelligent Laboratory Systems 18, 251-263.
#include "analyses/pls/prediction.h"

#include <algorithm>
#include <cmath>

#include "analyses/pls/weighted_sums.h"
#include "numeric/multiversion.h"

namespace studystats::core {
namespace {

// Scores whose sum of squares is this fraction of the largest one's, or less, are rounding noise.
constexpr double kRoundingLevel = 1.0e-20;

// The terms of a rotation may be larger than the rotation by this factor: of sixteen digits, fourteen are left.
constexpr double kMostCancelled = 50.0;

// t(r) += x(r) * w(j), x(r) of the samples side by side.
STUDYSTATS_MULTIVERSION
void scoreBlock(const double* __restrict samples, const double* w, std::int32_t p, double* __restrict t) {
  double sums[kSampleBlock] = {};
  for (std::int32_t j = 0; j < p; ++j) {
    const double* x = samples + std::ptrdiff_t{j} * kSampleBlock;
    for (int r = 0; r < kSampleBlock; ++r) sums[r] += x[r] * w[j];
  }
  for (int r = 0; r < kSampleBlock; ++r) t[r] = sums[r];
}

STUDYSTATS_MULTIVERSION
void deflateBlock(double* __restrict samples, const double* loadings, std::int32_t p, const double* __restrict t) {
  for (std::int32_t j = 0; j < p; ++j) {
    double* x = samples + std::ptrdiff_t{j} * kSampleBlock;
    for (int r = 0; r < kSampleBlock; ++r) x[r] -= t[r] * loadings[j];
  }
}

double scoreOne(const double* x, const double* w, std::int32_t p) {
  double t = 0.0;
  for (std::int32_t j = 0; j < p; ++j) t += x[j] * w[j];
  return t;
}

void deflateOne(double* __restrict x, const double* __restrict loadings, std::int32_t p, double t) {
  for (std::int32_t j = 0; j < p; ++j) x[j] -= t * loadings[j];
}

// A component that is exactly zero leaves everything as it is, and a sum that is not a number is no level.
bool isExhausted(const PlsModel& model) {
  double largest = 0.0;
  for (std::int32_t a = 0; a < model.nComponents; ++a) {
    const double squares = model.scoreSquares[a];
    if (squares == 0.0) continue;
    largest = std::max(largest, squares);
    if (!(squares > kRoundingLevel * largest)) return true;
  }
  return false;
}

double largestMagnitude(const double* values, std::int32_t n) {
  double largest = 0.0;
  for (std::int32_t i = 0; i < n; ++i) largest = std::max(largest, std::fabs(values[i]));
  return largest;
}

// False when a rotation is so small beside what it is the difference of that its digits are in doubt, or is not a
// number: the rotations are not complete then. products and largest: nComponents each.
bool rotationsByRecursion(const PlsModel& model, double* products, double* largest, Matrix r, Pace& pace) {
  const std::int32_t p = model.p;
  for (std::int32_t a = 0; a < model.nComponents; ++a) {
    const double* w = model.weights.column(a);
    double* ra = r.column(a);
    columnSums({model.loadings, p, a}, w, 1.0, products, pace);
    rowSums({r, p, a}, products, 1.0, ra, pace);
    if (pace.stopped()) return true;
    double squares = 0.0;
    for (std::int32_t j = 0; j < p; ++j) {
      squares += w[j] * w[j];
      ra[j] = w[j] - ra[j];
    }
    largest[a] = largestMagnitude(ra, p);

    // A product p(b)'w(a) is off by a rounding error of the length of w(a), the loadings being of unit length; the
    // errors of several are independent.
    const double length = std::sqrt(squares);
    double terms = largestMagnitude(w, p) * largestMagnitude(w, p);
    for (std::int32_t b = 0; b < a; ++b) {
      const double term = (std::fabs(products[b]) + length) * largest[b];
      terms += term * term;
    }
    if (!(std::sqrt(terms) <= kMostCancelled * largest[a])) return false;
  }
  return true;
}

void rotationsByDefinition(const PlsModel& model, PlsSampleScratch& s, Matrix r, Pace& pace) {
  const std::int32_t p = model.p;
  for (std::int32_t j = 0; j < p && !pace.stopped(); j += kSampleBlock) {
    const int units = std::min(kSampleBlock, p - j);
    std::fill_n(s.samples.data(), std::ptrdiff_t{p} * kSampleBlock, 0.0);
    for (int e = 0; e < units; ++e) s.samples[std::ptrdiff_t{j + e} * kSampleBlock + e] = 1.0;
    scoreSamples(model, model.nComponents, kSampleBlock, s, pace);
    for (std::int32_t a = 0; a < model.nComponents; ++a)
      std::copy_n(s.scores.data() + std::ptrdiff_t{a} * kSampleBlock, units, r.column(a) + j);
  }
}

}  // namespace

void scoreSamples(const PlsModel& model, std::int32_t nUse, int samples, PlsSampleScratch& s, Pace& pace) {
  double* x = s.samples.data();
  for (std::int32_t a = 0; a < nUse && pace.goOn(2 * std::int64_t{model.p} * samples); ++a) {
    double* t = s.scores.data() + std::ptrdiff_t{a} * samples;
    const double *w = model.weights.column(a), *loadings = model.loadings.column(a);
    const bool deflates = a + 1 < model.nComponents;
    if (samples == 1) {
      *t = scoreOne(x, w, model.p);
      if (deflates) deflateOne(x, loadings, model.p, *t);
    } else {
      scoreBlock(x, w, model.p, t);
      if (deflates) deflateBlock(x, loadings, model.p, t);
    }
  }
}

void gatherSamples(ConstMatrix x, const std::int32_t* rows, std::int32_t first, int samples, std::int32_t p,
                   const ColumnUnits& units, PlsSampleScratch& s) {
  std::int32_t taken[kSampleBlock];
  for (int r = 0; r < samples; ++r) taken[r] = rows == nullptr ? first + r : rows[r];
  for (std::int32_t j = 0; j < p; ++j) {
    const double* column = x.column(j);
    double* to = s.samples.data() + std::ptrdiff_t{j} * samples;
    for (int r = 0; r < samples; ++r) to[r] = units ? units.prepared(column[taken[r]], j) : column[taken[r]];
  }
}

void findRotations(const PlsModel& model, Matrix rotations, PlsSampleScratch& s, Pace& pace) {
  double *products = s.scores.data(), *largest = products + model.nComponents;
  if (isExhausted(model) || !rotationsByRecursion(model, products, largest, rotations, pace))
    rotationsByDefinition(model, s, rotations, pace);
}

void coefficients(const PlsModel& model, ConstMatrix rotations, double* coefs, Pace& pace) {
  const std::int32_t p = model.p;
  for (std::int32_t k = 0; k < model.q; ++k)
    for (std::int32_t a = 0; a < model.nComponents && pace.goOn(p); ++a) {
      const double factor = model.inner[a] * model.respWeights(a, k);
      const double* r = rotations.column(a);
      for (std::int32_t j = 0; j < p; ++j) coefs[j] = a == 0 ? factor * r[j] : coefs[j - p] + factor * r[j];
      coefs += p;
    }
}

void convertToRawUnits(const PlsModel& model, const RawUnits& raw, double* coefs) {
  for (std::int32_t k = 0; k < model.q; ++k) {
    const double scale = raw.scales[model.p + k];
    for (std::int32_t a = 0; a < model.nComponents; ++a, coefs += model.p)
      for (std::int32_t j = 0; j < model.p; ++j) coefs[j] = coefs[j] * scale / raw.scales[j];
  }
}

void findIntercepts(const PlsModel& model, const RawUnits& raw, const double* coefs, Matrix intercepts) {
  for (std::int32_t k = 0; k < model.q; ++k)
    for (std::int32_t a = 0; a < model.nComponents; ++a, coefs += model.p) {
      double shifted = 0.0;
      for (std::int32_t j = 0; j < model.p; ++j) shifted += raw.means[j] * coefs[j];
      intercepts(a, k) = raw.means[model.p + k] - shifted;
    }
}

}  // namespace studystats::core
