// Every fold repeats the collinearity filter and the stepwise selection on its training rows and predicts its held-out
// rows with the model that it selected: the honest figure, since a choice of variables made with the held-out rows in
// sight would flatter the prediction. The same fold refits the model selected on all rows, and the spread of those
// coefficients is their jackknife standard error.
//
// Efron & Tibshirani, An Introduction to the Bootstrap (1993), chapter 11; Hastie, Tibshirani & Friedman, The Elements
// of Statistical Learning, 2nd ed. (2009), section 7.10.2.
#include "analyses/mlr/cross_validation.h"

#include <algorithm>
#include <cmath>

#include "numeric/cross_products.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

// Means and cross-products of the training rows. A fold that starts with an empty model needs few of the products.
ColumnProducts trainingProducts(const MlrValidation& v, std::int32_t nTrain, MlrScratch& s) {
  const double* x = s.training.data();
  double* c = s.products.data();
  if (std::count(s.foldFlags.data(), s.foldFlags.data() + v.p - 1, 1) > 0) {
    CrsPrd(x, &v.n, &v.p, &nTrain, &v.p, c, s.means.data());
    return {ConstMatrix{c, v.p}, ConstMatrix{nullptr, 0}};
  }
  columnMeans({x, v.n}, nTrain, v.p, s.means.data());
  return {ConstMatrix{x, v.n}, nTrain, v.p, s.means.data(), Matrix{c, v.p}, s.known.data()};
}

// Adds the weighted squared prediction errors of the held-out rows.
void predictHeldOut(const MlrValidation& v, MlrScratch& s, double intercept, double weight) {
  for (std::int32_t i = 0; i < v.n; ++i) {
    if (s.heldOut[i] != 1) continue;
    double sum = 0.0;
    for (std::int32_t a = 0; s.foldInList[a] > 0; ++a) sum += s.coef[a] * v.data(i, s.foldInList[a] - 1);
    const double error = intercept + sum - v.data(i, v.p - 1);
    *v.press += weight * (error * error);
  }
}

// What fold g refitted: nIn coefficients and, behind them, the untransformed intercept.
double& refit(const MlrValidation& v, MlrScratch& s, std::int32_t g, std::int32_t a) {
  return s.refits[std::ptrdiff_t{g} * (v.nIn + 1) + a];
}

void keepRefit(const MlrValidation& v, MlrScratch& s, std::int32_t g, double intercept) {
  double shifted = 0.0;
  for (std::int32_t a = 0; a < v.nIn; ++a) {
    const std::int32_t j = v.inList[a] - 1;
    refit(v, s, g, a) = s.coef[a];
    shifted += s.coef[a] * v.shift[j] / v.scale[j];
  }
  refit(v, s, g, v.nIn) = intercept - shifted;
}

// One fold, counted from 0; kDone or the status of the fit that failed.
std::int32_t runFold(const MlrValidation& v, MlrScratch& s, std::int32_t g, double weight) {
  const std::int32_t group = g + 1;
  std::int32_t nTrain = 0;
  std::copy_n(s.startFlags.data(), v.p, s.foldFlags.data());
  VldTrn(v.data.data, v.rowTags, s.training.data(), s.trainingTags.data(), s.order.data(), s.heldOut.data(),
         s.usable.data(), &v.n, &v.p, &nTrain, &group);

  // 1. The fold's own selection.
  ColumnProducts products = trainingProducts(v, nTrain, s);
  filterCollinear(v.rules.corrLimit, products, v.p - 1, s.foldFlags.data());
  double intercept = 0.0;
  const RegressionRows rows{{s.training.data(), v.n}, nTrain, v.p, v.p - 1, s.means.data()};
  const FitArrays model{s.coef.data(), &intercept,          {s.inverse.data(), v.most},
                        s.t.data(),    s.foldInList.data(), s.outList.data()};
  std::int32_t status = selectVariables(rows, products, v.rules, s.foldFlags.data(), model, nullptr, s.fit);
  if (status != kDone) return status;
  for (std::int32_t j = 0; j < v.p - 1; ++j) v.selCount[j] += s.foldFlags[j] == 1 ? 1 : 0;

  // 2. Its predictions.
  predictHeldOut(v, s, intercept, weight);

  // 3. The model of all rows, refitted.
  FitNumbers fit;
  status = fitModel(rows, products, v.flags, model, s.fit, fit);
  if (status == kDone) keepRefit(v, s, g, intercept);
  return status;
}

// Sum of squared deviations of refitted numbers from their mean. A single fold's do not deviate, numbers or not.
double squaredDeviations(const MlrValidation& v, MlrScratch& s, std::int32_t nFolds, std::int32_t a) {
  if (nFolds == 1) return 0.0;
  double mean = 0.0, squares = 0.0;
  for (std::int32_t g = 0; g < nFolds; ++g) mean += refit(v, s, g, a);
  mean /= nFolds;
  for (std::int32_t g = 0; g < nFolds; ++g) squares += (mean - refit(v, s, g, a)) * (mean - refit(v, s, g, a));
  return squares;
}

// Jackknife spreads over G folds, sqrt((G - 1) / G * sum of squared deviations), with the weight of the plan. The
// factors stand in two orders, which differ in the last bit.
void spreads(const MlrValidation& v, MlrScratch& s, std::int32_t nFolds, double weight) {
  for (std::int32_t a = 0; a < v.nIn; ++a)
    v.coefSd[v.inList[a] - 1] = std::sqrt(weight * (nFolds - 1) / nFolds * squaredDeviations(v, s, nFolds, a));
  *v.interceptSd = std::sqrt((nFolds - 1) * weight * squaredDeviations(v, s, nFolds, v.nIn) / nFolds);
}

}  // namespace

std::int32_t crossValidate(const MlrValidation& v, MlrScratch& scratch) {
  const std::int32_t nFolds = cvFolds;
  const double weight = cvPressWeight;
  for (std::int32_t g = 0; g < nFolds; ++g) {
    const std::int32_t report = g + 1;
    updateminorprogress(&v.monitor, &report, &nFolds, v.continueFlag);
    if (*v.continueFlag == 0) return kStopped;
    if (runFold(v, scratch, g, weight) != kDone) {
      *v.press = 0.0;
      return kDone;
    }
  }
  spreads(v, scratch, nFolds, weight);
  return kDone;
}

}  // namespace studystats::core
