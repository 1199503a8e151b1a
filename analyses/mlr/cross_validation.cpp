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

namespace studystats::core {
namespace {

using engine::FoldRows;
using engine::RegressionFold;
using engine::Status;

// Predictions of the rows by a model of the table's columns, whose variables count from 1.
void predict(const MlrProblem& v, std::span<const std::int32_t> rows, const ColumnUnits& units,
             const std::int32_t* list, std::int32_t nIn, const double* coef, double intercept, double* predictions) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    double sum = 0.0;
    for (std::int32_t a = 0; a < nIn; ++a) {
      const std::int32_t j = list[a] - 1;
      const double value = v.x(rows[i], j);
      sum += coef[a] * (units ? units.filled(value, j) : value);
    }
    predictions[i] = intercept + sum;
  }
}

// The intercept in raw units.
double rawIntercept(const MlrProblem& v, const MlrModel& model, const double* coef, double intercept) {
  if (v.scale == nullptr) return intercept;
  double shifted = 0.0;
  for (std::int32_t a = 0; a < model.nIn; ++a) {
    const std::int32_t j = model.inList[a] - 1;
    shifted += coef[a] * v.shift[j] / v.scale[j];
  }
  return intercept - shifted;
}

// Sum of squared deviations of refitted numbers from their mean. A single fold's do not deviate, numbers or not.
double squaredDeviations(const MlrSums& sums, std::int32_t nIn, std::int32_t a) {
  if (sums.nFolds == 1) return 0.0;
  const auto refit = [&](std::int32_t g) { return sums.refits[std::ptrdiff_t{g} * (nIn + 1) + a]; };
  double mean = 0.0, squares = 0.0;
  for (std::int32_t g = 0; g < sums.nFolds; ++g) mean += refit(g);
  mean /= sums.nFolds;
  for (std::int32_t g = 0; g < sums.nFolds; ++g) squares += (mean - refit(g)) * (mean - refit(g));
  return squares;
}

}  // namespace

MlrFoldScratch::MlrFoldScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t mostVariables,
                               std::int32_t columns, bool prepares)
    : most(mostVariables),
      products(arena, p, columns),
      inverse(arena, area(mostVariables, mostVariables)),
      training(arena, area(n, p)),
      fit(arena, n, mostVariables),
      preparation(arena, prepares, n, p),
      means(arena, p),
      t(arena, p),
      ownCoef(arena, mostVariables),
      coef(arena, mostVariables),
      predictions(arena, n),
      rows(arena, n),
      flags(arena, p),
      outList(arena, p),
      ownList(arena, p),
      inList(arena, p),
      own(arena, mostVariables),
      refit(arena, mostVariables) {}

ColumnUnits takeRows(const MlrProblem& v, std::span<const std::int32_t> rows, Matrix to, PreparationScratch& s,
                     Pace& pace) {
  const ColumnUnits units = columnUnits(v.preparation, v.x, rows, v.p - 1, v.p, s, pace);
  for (std::int32_t j = 0; j < v.p; ++j) {
    const double* column = v.x.column(j);
    double* packed = to.column(j);
    for (std::size_t i = 0; i < rows.size(); ++i) packed[i] = column[rows[i]];
    for (std::size_t i = 0; units && i < rows.size(); ++i) packed[i] = units.prepared(packed[i], j);
  }
  return units;
}

void convertToTable(const ColumnUnits& units, std::int32_t response, const std::int32_t* list, std::int32_t nIn,
                    double* coef, double& intercept) {
  if (!units) return;
  double shifted = 0.0;
  for (std::int32_t a = 0; a < nIn; ++a) {
    const std::int32_t j = list[a] - 1;
    coef[a] = coef[a] * units.scale[response] / units.scale[j];
    shifted += coef[a] * units.shift[j];
  }
  intercept = intercept * units.scale[response] + units.shift[response] - shifted;
}

ColumnProducts productsOf(ConstMatrix x, std::int32_t nRows, const MlrProblem& v, double* means,
                          ProductScratch& scratch, Pace& pace) {
  if (v.nStart > v.p / 2) {
    crossProducts(x, nRows, v.p, {scratch.columns.data(), v.p}, means, pace);
    return {ConstMatrix{scratch.columns.data(), v.p}, ConstMatrix{nullptr, 0}};
  }
  columnMeans(x, nRows, v.p, means);
  return {x, nRows, v.p, means, scratch};
}

std::span<const std::int32_t> countedFromZero(const std::int32_t* list, std::int32_t n, std::int32_t* to) {
  for (std::int32_t a = 0; a < n; ++a) to[a] = list[a] - 1;
  return {to, static_cast<std::size_t>(n)};
}

RegressionFold runFold(const MlrProblem& v, const MlrModel& model, const FoldRows& rows, MlrFoldScratch& s,
                       Pace& pace) {
  const auto ended = [](std::int32_t status) { return status == kStopped ? Status::Stopped : Status::Singular; };
  RegressionFold fold;
  fold.rows = rows;
  const auto nTraining = static_cast<std::int32_t>(rows.training.size());
  const Matrix training{s.training.data(), v.n};
  const ColumnUnits units = takeRows(v, rows.training, training, s.preparation, pace);

  // 1. The fold's own selection.
  std::copy_n(v.start, v.p, s.flags.data());
  ColumnProducts products = productsOf({training.data, v.n}, nTraining, v, s.means.data(), s.products, pace);
  filterCollinear(v.rules.corrLimit, products, v.p - 1, s.flags.data(), pace);
  const RegressionRows fitted{{training.data, v.n}, nTraining, v.p, v.p - 1, s.means.data()};
  const FitArrays own{s.ownCoef.data(), &fold.own.intercept, {s.inverse.data(), s.most},
                      s.t.data(),       s.ownList.data(),    s.outList.data()};
  std::int32_t status = selectVariables(fitted, products, v.rules, s.flags.data(), own, nullptr, s.fit, pace);
  fold.status = ended(status);
  if (status != kDone) return fold;
  fold.selected = true;
  const auto nOwn = static_cast<std::int32_t>(std::count(s.flags.data(), s.flags.data() + v.p - 1, 1));
  fold.own.descriptors = countedFromZero(s.ownList.data(), nOwn, s.own.data());
  fold.own.coefficients = {s.ownCoef.data(), static_cast<std::size_t>(nOwn)};

  convertToTable(units, v.p - 1, s.ownList.data(), nOwn, s.ownCoef.data(), fold.own.intercept);

  // 2. Its predictions.
  predict(v, rows.heldOut, units, s.ownList.data(), nOwn, s.ownCoef.data(), fold.own.intercept, s.predictions.data());
  fold.predictions = {s.predictions.data(), rows.heldOut.size()};

  // 3. The model of all rows, refitted.
  FitNumbers fit;
  const FitArrays refitted{s.coef.data(), &fold.refit.intercept, own.inv, s.t.data(), s.inList.data(), own.outList};
  status = fitModel(fitted, products, model.flags, refitted, s.fit, fit, pace);
  fold.status = status == kDone ? Status::Done : ended(status);
  if (status != kDone) return fold;
  convertToTable(units, v.p - 1, s.inList.data(), fit.nIn, s.coef.data(), fold.refit.intercept);
  fold.refit.descriptors = countedFromZero(s.inList.data(), fit.nIn, s.refit.data());
  fold.refit.coefficients = {s.coef.data(), static_cast<std::size_t>(fit.nIn)};
  fold.rawIntercept = rawIntercept(v, model, s.coef.data(), fold.refit.intercept);
  return fold;
}

void addFold(const MlrProblem& v, const RegressionFold& fold, double weight, MlrSums& sums) {
  if (fold.selected)
    for (const std::int32_t j : fold.own.descriptors) ++sums.selCount[j];
  if (fold.status != Status::Done) {
    *sums.press = 0.0;
    return;
  }
  for (std::size_t i = 0; i < fold.rows.heldOut.size(); ++i) {
    const double error = fold.predictions[i] - v.x(fold.rows.heldOut[i], v.p - 1);
    *sums.press += weight * (error * error);
  }
  const auto nIn = static_cast<std::ptrdiff_t>(fold.refit.coefficients.size());
  double* refit = sums.refits + sums.nFolds++ * (nIn + 1);
  *std::copy(fold.refit.coefficients.begin(), fold.refit.coefficients.end(), refit) = fold.rawIntercept;
}

// The factors stand in two orders, which differ in the last bit.
double jackknifeSpread(const MlrSums& sums, std::int32_t nIn, std::int32_t a, double weight) {
  const std::int32_t g = sums.nFolds;
  const double squares = squaredDeviations(sums, nIn, a);
  return a < nIn ? std::sqrt(weight * (g - 1) / g * squares) : std::sqrt((g - 1) * weight * squares / g);
}

}  // namespace studystats::core
