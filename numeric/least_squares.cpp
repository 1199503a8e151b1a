// The fit of one model: coefficients b = (X'X)^-1 X'y from centred cross-products, residuals from the data, and from
// both the t-value of every coefficient, F and the standard error of estimate.
//
// The residual sum of squares is summed from the residuals themselves: total minus explained would lose the digits of a
// good fit.
#include "numeric/least_squares.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numeric/regression_fit.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// Fitted values, built variable after variable in position order: first the finished sum, then the intercept.
void fitRows(ConstMatrix x, std::int32_t nRows, std::int32_t nIn, const std::int32_t* inList, double intercept,
             const double* coef, double* __restrict fitted) {
  std::fill_n(fitted, std::max(nRows, 0), 0.0);
  for (std::int32_t a = 0; a < nIn; ++a) {
    const double* v = x.column(inList[a] - 1);
    for (std::int32_t i = 0; i < nRows; ++i) fitted[i] += coef[a] * v[i];
  }
  for (std::int32_t i = 0; i < nRows; ++i) fitted[i] = intercept + fitted[i];
}

// The residuals; the result is the sum of their squares.
double takeResiduals(const double* y, std::int32_t nRows, const double* fitted, double* resid) {
  double rss = 0.0;
  for (std::int32_t i = 0; i < nRows; ++i) {
    resid[i] = y[i] - fitted[i];
    rss += resid[i] * resid[i];
  }
  return rss;
}

// The block of cross-products of the model variables. A constant variable gets a diagonal of 1, and so coefficient 0.
void copyBlock(const ColumnProducts& products, std::int32_t nIn, const std::int32_t* inList, Matrix block) {
  for (std::int32_t b = 0; b < nIn; ++b) {
    for (std::int32_t a = 0; a < nIn; ++a) block(a, b) = products(inList[a] - 1, inList[b] - 1);
    if (block(b, b) == 0.0) block(b, b) = 1.0;
  }
}

// F and the standard error of estimate, in 32-bit floats from the quotients on.
void summarise(double tss, std::int32_t nObs, FitNumbers& fit) {
  const auto df = static_cast<float>(nObs - fit.nIn - 1);
  const double ssr = tss - fit.rss;
  if (fit.nIn >= 1)
    fit.fStat = static_cast<float>(ssr / fit.rss) * (df / static_cast<float>(fit.nIn));
  else
    fit.fStat = static_cast<float>(ssr / (fit.rss == 0.0 ? 1.0 : fit.rss)) * df;
  fit.sEst = std::sqrt(static_cast<float>(fit.rss) / df);
}

}  // namespace

std::int32_t fitModel(const RegressionRows& rows, ColumnProducts& products, const std::int32_t* flags,
                      const FitArrays& out, FitScratch& scratch, FitNumbers& fit, Pace& pace) {
  SplitVars(&rows.nCols, &rows.response, flags, &fit.nIn, out.inList, &fit.nOut, out.outList);
  const std::int32_t nIn = fit.nIn;
  const std::int32_t* inList = out.inList;

  products.require(rows.response, pace);
  for (std::int32_t a = 0; a < nIn; ++a) products.require(inList[a] - 1, pace);
  copyBlock(products, nIn, inList, out.inv);
  if (const std::int32_t status = invert(nIn, out.inv, scratch.inverse, pace); status != kDone) return status;

  double explained = 0.0;
  for (std::int32_t a = 0; a < nIn; ++a) {
    double sum = 0.0;
    for (std::int32_t b = 0; b < nIn; ++b) sum += out.inv(a, b) * products(inList[b] - 1, rows.response);
    out.coef[a] = sum;
    explained += rows.means[inList[a] - 1] * sum;
  }
  *out.intercept = rows.means[rows.response] - explained;

  double* resid = scratch.resid.data();
  fitRows(rows.x, rows.nObs, nIn, inList, *out.intercept, out.coef, scratch.fitted.data());
  fit.rss = takeResiduals(rows.x.column(rows.response), rows.nObs, scratch.fitted.data(), resid);
  double sum = 0.0;
  for (std::int32_t i = 0; i < rows.nObs; ++i) sum += resid[i];
  fit.meanResid = sum / rows.nObs;

  TVals(&fit.rss, &nIn, inList, &rows.nObs, out.coef, &out.inv.ld, out.inv.data, out.t, &fit.weakest);
  summarise(products(rows.response, rows.response), rows.nObs, fit);
  return pace.goOn(std::int64_t{2} * rows.nObs * (nIn + 1)) ? kDone : kStopped;
}

std::int32_t entryCandidate(const RegressionRows& rows, const ColumnProducts& products, float corrLimit,
                            const FitArrays& model, const FitNumbers& fit, FitScratch& scratch, Pace& pace) {
  return findEntryCandidate({.x = rows.x,
                             .nObs = rows.nObs,
                             .means = rows.means,
                             .nIn = fit.nIn,
                             .nOut = fit.nOut,
                             .inList = model.inList,
                             .outList = model.outList,
                             .inv = {model.inv.data, model.inv.ld},
                             .corrLimit = corrLimit,
                             .resid = scratch.resid.data(),
                             .rss = fit.rss,
                             .meanResid = fit.meanResid},
                            products, scratch.candidate, pace);
}

void RegFit(const double* x, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
            const std::int32_t* yCol, const std::int32_t* flags, const double* c, const double* means, double* inv,
            const double* r, const float* corrLimit, double* coef, double* intercept, std::int32_t* enter,
            std::int32_t* weakest, double* t, float* fStat, float* sEst, std::int32_t* status, std::int32_t* inList,
            std::int32_t* outList) {
  Obtained<FitScratch> scratch(*nObs, std::max(*yCol, 1) - 1);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;

  const RegressionRows rows{{x, *ldx}, *nObs, *nCols, *yCol - 1, means};
  const FitArrays out{coef, intercept, {inv, *nCols}, t, inList, outList};
  ColumnProducts products(ConstMatrix{c, *nCols}, ConstMatrix{r, *nCols});
  FitNumbers fit;
  Pace unasked;
  *status = fitModel(rows, products, flags, out, *scratch, fit, unasked);
  if (*status != kDone) return;
  *enter = entryCandidate(rows, products, *corrLimit, out, fit, *scratch, unasked);
  *weakest = fit.weakest;
  *fStat = fit.fStat;
  *sEst = fit.sEst;
}

void SplitVars(const std::int32_t* n, const std::int32_t* m, const std::int32_t* flags, std::int32_t* nIn,
               std::int32_t* inList, std::int32_t* nOut, std::int32_t* outList) {
  std::fill_n(inList, std::max(*n, 0), 0);
  std::fill_n(outList, std::max(*n, 0), 0);
  *nIn = *nOut = 0;
  for (std::int32_t j = 1; j <= *m; ++j)
    if (flags[j - 1] == 1)
      inList[(*nIn)++] = j;
    else
      outList[(*nOut)++] = j;
}

void TVals(const double* rss, const std::int32_t* nIn, const std::int32_t* inList, const std::int32_t* nObs,
           const double* coef, const std::int32_t* ldInv, const double* inv, double* t, std::int32_t* weakest) {
  const ConstMatrix inverse{inv, *ldInv};
  const double variance = *rss / (*nObs - *nIn - 1);
  double smallest = std::numeric_limits<double>::infinity();
  *weakest = 0;
  for (std::int32_t a = 0; a < *nIn; ++a) {
    const double value = coef[a] / std::sqrt(std::fabs(inverse(a, a) * variance));
    t[inList[a] - 1] = value;
    if (value * value <= smallest) {
      smallest = value * value;
      *weakest = inList[a];
    }
  }
}

void RegPred(const double* x, const std::int32_t* nRows, const std::int32_t* yCol, const std::int32_t* nIn,
             const std::int32_t* inList, const double* intercept, const double* coef, double* fitted, double* resid,
             double* rss) {
  const ConstMatrix data{x, *nRows};
  fitRows(data, *nRows, *nIn, inList, *intercept, coef, fitted);
  *rss = takeResiduals(data.column(*yCol - 1), *nRows, fitted, resid);
}

void UnScale(const double* coef, const double* intercept, const std::int32_t* nCols, const std::int32_t* nIn,
             const std::int32_t* inList, const double* scale, const double* shift, double* perVar1, double* perVar2,
             double* coefOut, double* interceptOut) {
  double shifted = 0.0;
  for (std::int32_t a = 0; a < *nIn; ++a) {
    coefOut[a] = coef[a] / scale[inList[a] - 1];
    shifted += coefOut[a] * shift[inList[a] - 1];
  }
  *interceptOut = *intercept - shifted;
  for (std::int32_t j = 0; j < *nCols - 1; ++j) {
    perVar1[j] /= scale[j];
    perVar2[j] /= scale[j];
  }
}

}  // namespace studystats::core
