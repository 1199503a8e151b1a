// The entry candidate: the variable with the largest squared partial correlation with the response given the model.
//
// Every candidate j is regressed on the model variables, w = inv * c(., j), and its residuals e are correlated with
// those of the model: q = (sum of (resid - mean) * e)^2 / (sum of e^2 * rss). Sixty-four candidates are worked on at a
// time, side by side in the innermost loops, over a few rows of the data after another. Each candidate has its own
// accumulators and sees variables and rows in their order, so the blocks change the speed and not one bit.
#include "numeric/entry_candidate.h"

#include <algorithm>
#include <cmath>

#include "numeric/least_squares.h"
#include "numeric/multiversion.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

constexpr int kRows = 8;         // rows taken together: a cache line of each column
constexpr int kCandidates = 64;  // candidates taken together
constexpr int kVariables = 4;    // model variables added to a prediction in one pass over the candidates
constexpr int kLanes = 8;        // candidates are padded to whole vectors

std::ptrdiff_t padded(std::ptrdiff_t n, int to) { return (n + to - 1) / to * to; }
std::ptrdiff_t paddedModel(std::ptrdiff_t nIn) { return padded(std::max<std::ptrdiff_t>(nIn, 1), kVariables); }

struct Block {
  int n = 0;
  std::int32_t columns[kCandidates] = {};
  alignas(64) double x[kRows][kCandidates] = {};
  alignas(64) double intercept[kCandidates] = {};
  alignas(64) double see[kCandidates] = {};  // sum of e^2
  alignas(64) double sre[kCandidates] = {};  // sum of (resid - mean) * e
};

// weights(a, q) = sum over b of inv(a, b) * products(b, q), b in order.
STUDYSTATS_MULTIVERSION
void combine(ConstMatrix inv, std::int32_t nIn, const double* __restrict products, double* __restrict weights, int n) {
  for (std::int32_t a = 0; a < nIn; ++a) {
    double* __restrict w = weights + std::ptrdiff_t{a} * kCandidates;
    for (int q = 0; q < n; ++q) w[q] = 0.0;
    for (std::int32_t b = 0; b < nIn; ++b) {
      const double factor = inv.data[a + std::ptrdiff_t{b} * inv.ld];
      const double* c = products + std::ptrdiff_t{b} * kCandidates;
      for (int q = 0; q < n; ++q) w[q] += factor * c[q];
    }
  }
}

// Adds nRows rows to the sums of a block. Weights and values of the model are padded with zeros to kVariables or a
// multiple: adding 0 * 0 to a sum that began at +0 changes no bit of it.
STUDYSTATS_MULTIVERSION
void addRows(Block& block, int nRows, int n, std::ptrdiff_t nModel, const double* __restrict weights,
             const double* __restrict modelRows, const double* __restrict residual) {
  alignas(64) double predicted[kCandidates];
  for (int i = 0; i < nRows; ++i) {
    const double* m = modelRows + i * nModel;
    for (int q = 0; q < n; ++q) {
      double sum = 0.0;
      for (int v = 0; v < kVariables; ++v) sum += weights[v * kCandidates + q] * m[v];
      predicted[q] = sum;
    }
    for (std::ptrdiff_t a = kVariables; a < nModel; a += kVariables) {
      const double* w = weights + a * kCandidates;
      for (int q = 0; q < n; ++q) {
        double sum = predicted[q];
        for (int v = 0; v < kVariables; ++v) sum += w[v * kCandidates + q] * m[a + v];
        predicted[q] = sum;
      }
    }
    const double d = residual[i];
    for (int q = 0; q < n; ++q) {
      const double e = block.x[i][q] - (block.intercept[q] + predicted[q]);
      block.see[q] += e * e;
      block.sre[q] += d * e;
    }
  }
}

// Each candidate of the block regressed on the model variables.
void regressOnModel(const CandidateQuestion& s, const ColumnProducts& c, Block& block, int n,
                    CandidateScratch& scratch) {
  double* weights = scratch.weights.data();
  for (std::int32_t b = 0; b < s.nIn; ++b)
    for (int q = 0; q < block.n; ++q)
      scratch.products[std::ptrdiff_t{b} * kCandidates + q] = c(block.columns[q], s.inList[b] - 1);
  combine(s.inv, s.nIn, scratch.products.data(), weights, n);

  for (int q = 0; q < block.n; ++q) {
    double sum = 0.0;
    for (std::int32_t a = 0; a < s.nIn; ++a)
      sum += s.means[s.inList[a] - 1] * weights[std::ptrdiff_t{a} * kCandidates + q];
    block.intercept[q] = s.means[block.columns[q]] - sum;
  }
}

// rows(i, q) = x(row + i, columns[q]), a row of the result lying together: `stride` numbers apart from the next.
void takeRows(const CandidateQuestion& s, std::int64_t row, int nRows, const std::int32_t* columns, std::int32_t first,
              std::int32_t n, double* __restrict rows, std::ptrdiff_t stride) {
  for (std::int32_t q = 0; q < n; ++q) {
    const double* column = s.x.column(columns[q] - first) + row;
    if (nRows == kRows)
      for (int i = 0; i < kRows; ++i) rows[i * stride + q] = column[i];
    else
      for (int i = 0; i < nRows; ++i) rows[i * stride + q] = column[i];
  }
}

void sumResiduals(const CandidateQuestion& s, Block& block, int n, CandidateScratch& scratch, Pace& pace) {
  const std::ptrdiff_t nModel = paddedModel(s.nIn);
  double* modelRows = scratch.modelRows.data();
  std::fill_n(block.see, n, 0.0);
  std::fill_n(block.sre, n, 0.0);
  for (std::int64_t row = 0; row < s.nObs; row += kRows) {
    const int rows = static_cast<int>(std::min<std::int64_t>(kRows, s.nObs - row));
    takeRows(s, row, rows, block.columns, 0, block.n, block.x[0], kCandidates);
    takeRows(s, row, rows, s.inList, 1, s.nIn, modelRows, nModel);
    addRows(block, rows, n, nModel, scratch.weights.data(), modelRows, scratch.residual.data() + row);
    if (!pace.goOn(2 * rows * n * nModel)) return;
  }
}

bool collinear(const CandidateQuestion& s, const ColumnProducts& c, std::int32_t column) {
  const double limit = s.corrLimit + 1e-5F;  // a 32-bit sum
  for (std::int32_t a = 0; a < s.nIn; ++a)
    if (std::fabs(c.correlation(column, s.inList[a] - 1)) > limit) return true;
  return false;
}

}  // namespace

CandidateScratch::CandidateScratch(Arena& arena, std::int32_t nRows, std::int32_t nVariables)
    : weights(arena, area(paddedModel(nVariables), kCandidates)),
      products(arena, area(nVariables, kCandidates)),
      modelRows(arena, area(paddedModel(nVariables), kRows)),
      residual(arena, nRows) {}

std::int32_t findEntryCandidate(const CandidateQuestion& s, const ColumnProducts& products, CandidateScratch& scratch,
                                Pace& pace) {
  const std::ptrdiff_t nModel = paddedModel(s.nIn);
  std::fill_n(scratch.weights.data(), nModel * kCandidates, 0.0);
  std::fill_n(scratch.modelRows.data(), nModel * kRows, 0.0);
  for (std::int32_t i = 0; i < s.nObs; ++i) scratch.residual[i] = s.resid[i] - s.meanResid;

  std::int32_t enter = 0;
  double best = 0.0;
  Block block;
  for (std::int32_t k = 0; k < s.nOut && !pace.stopped();) {
    for (block.n = 0; k < s.nOut && block.n < kCandidates; ++k) {
      const std::int32_t column = s.outList[k] - 1;
      if (!collinear(s, products, column)) block.columns[block.n++] = column;
    }
    const int n = static_cast<int>(padded(block.n, kLanes));
    regressOnModel(s, products, block, n, scratch);
    sumResiduals(s, block, n, scratch, pace);
    for (int q = 0; q < block.n; ++q) {
      const double partial = block.sre[q] / std::sqrt(block.see[q] * s.rss);
      if (partial * partial >= best) {
        best = partial * partial;
        enter = block.columns[q] + 1;
      }
    }
  }
  return enter;
}

void EntCand(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
             const std::int32_t* nOut, const std::int32_t* outList, const double* resid, const std::int32_t* nIn,
             const std::int32_t* inList, const double* c, const double* inv, const double* r, const float* corrLimit,
             const double* means, const double* rss, const double* meanResid, std::int32_t* enter,
             std::int32_t* status) {
  *enter = 0;
  Obtained<CandidateScratch> scratch(*nObs, *nIn);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;
  const ColumnProducts products(ConstMatrix{c, *nCols}, ConstMatrix{r, *nCols});
  Pace unasked;
  *enter = findEntryCandidate({.x = {x, *ldx},
                               .nObs = *nObs,
                               .means = means,
                               .nIn = *nIn,
                               .nOut = *nOut,
                               .inList = inList,
                               .outList = outList,
                               .inv = {inv, *nCols},
                               .corrLimit = *corrLimit,
                               .resid = resid,
                               .rss = *rss,
                               .meanResid = *meanResid},
                              products, *scratch, unasked);
}

}  // namespace studystats::core
