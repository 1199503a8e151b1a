// Each fold fits a model on its training rows and predicts the rows that it holds out, from the centring of the whole
// data set. The coefficients of the folds spread around those of the whole: their jackknife standard errors.
//
// Wold (1978), Technometrics 20, 397-405; Efron & Tibshirani, An Introduction to the Bootstrap (1993), chapter 11;
// Martens & Martens (2000), Food Quality and Preference 11, 5-16.
#include "analyses/pls/cross_validation.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

// Lists the rows of the model, and makes the plan and the validation order over them. Equal responses keep the rows'
// order, and so do all rows without responses. The number of rows of the model.
std::int32_t orderForValidation(const PlsValidation& v, PlsFoldScratch& s) {
  std::int32_t nModel = 0;
  for (std::int32_t i = 0; i < v.n; ++i)
    if (v.rowUse[i] == 1) s.modelRows[nModel++] = i + 1;
  VldPln(&nModel);

  for (std::int32_t i = 0; i < nModel; ++i) s.key[i] = v.q < 1 ? 0.0 : v.data(s.modelRows[i] - 1, v.p);
  std::iota(s.positions.data(), s.positions.data() + nModel, 1);
  orderRows(s.key.data(), s.positions.data(), nModel, s.order.data(), s.inverse.data(), s.sortBuffer.data());
  for (std::int32_t i = 0; i < nModel; ++i) v.rowOrder[i] = s.modelRows[s.order[i] - 1];
  std::fill_n(s.usable.data(), nModel, 1);
  return nModel;
}

void clearSums(const PlsValidation& v, const PlsModel& model, const PlsFoldSums& sums) {
  const std::ptrdiff_t perResponse = std::ptrdiff_t{v.p} * model.nComponents, used = std::ptrdiff_t{v.p} * v.nComputed;
  for (std::int32_t k = 0; k < v.q; ++k) {
    std::fill_n(v.press.column(k), v.nComputed, 0.0);
    std::fill_n(sums.means + k * perResponse, used, 0.0);
    std::fill_n(sums.squares + k * perResponse, used, 0.0);
  }
}

// Lists the training rows of fold g, counted from 0, in the order in which the plan gives them; their number. The rows'
// numbers travel as their tags.
std::int32_t listTraining(std::int32_t nModel, std::int32_t g, PlsFoldScratch& s) {
  const std::int32_t group = g + 1, noColumns = 0;
  std::int32_t nTrain = 0;
  VldTrn(nullptr, s.modelRows.data(), nullptr, s.rows.data(), s.order.data(), s.heldOut.data(), s.usable.data(),
         &nModel, &noColumns, &nTrain, &group);
  return nTrain;
}

// Packs the rows that the fold holds out, in increasing order; their number.
std::int32_t packHeldOut(const PlsValidation& v, std::int32_t nModel, Matrix to, PlsFoldScratch& s) {
  std::int32_t nHeld = 0;
  for (std::int32_t i = 0; i < nModel; ++i)
    if (s.heldOut[i] == 1) s.rows[nHeld++] = s.modelRows[i];
  for (std::int32_t j = 0; j < v.p + v.q; ++j) {
    const double* column = v.data.column(j);
    double* packed = to.column(j);
    for (std::int32_t i = 0; i < nHeld; ++i) packed[i] = column[s.rows[i] - 1];
  }
  return nHeld;
}

// Mean and squares about it, brought up to date with the coefficients of fold g: no difference of large sums is formed.
// Welford (1962), Technometrics 4, 419-420.
void addCoefficients(const PlsValidation& v, const PlsModel& model, const double* coefs, std::int32_t g,
                     const PlsFoldSums& sums) {
  const std::ptrdiff_t perResponse = std::ptrdiff_t{v.p} * model.nComponents, used = std::ptrdiff_t{v.p} * v.nComputed;
  for (std::int32_t k = 0; k < v.q; ++k) {
    double* __restrict means = sums.means + k * perResponse, * __restrict squares = sums.squares + k * perResponse;
    const double* __restrict values = coefs + k * perResponse;
    for (std::ptrdiff_t e = 0; e < used; ++e) {
      const double fromOldMean = values[e] - means[e];
      means[e] += fromOldMean / (g + 1);
      squares[e] += fromOldMean * (values[e] - means[e]);
    }
  }
}

// Adds the weighted squared prediction errors of the packed held-out rows.
void predictHeldOut(const PlsValidation& v, const PlsModel& model, ConstMatrix heldOut, std::int32_t nHeld,
                    double weight, PlsFoldScratch& s) {
  scoreRows(heldOut, nHeld, model, model.nComponents, s.samples, [&](std::int32_t i, const PlsSampleScores& scores) {
    for (std::int32_t k = 0; k < v.q; ++k)
      predictResponse(model, k, v.nComputed, scores, [&](std::int32_t a, double predicted) {
        const double error = heldOut(i, v.p + k) - predicted;
        v.press(a, k) += weight * (error * error);
      });
  });
}

void standardErrors(const PlsValidation& v, const PlsModel& model, const PlsFoldSums& sums, std::int32_t nFolds,
                    double weight) {
  const std::ptrdiff_t perResponse = std::ptrdiff_t{v.p} * model.nComponents, used = std::ptrdiff_t{v.p} * v.nComputed;
  const double shrink = static_cast<double>(nFolds - 1) / nFolds;
  for (std::int32_t k = 0; k < v.q; ++k)
    for (std::ptrdiff_t e = k * perResponse; e < k * perResponse + used; ++e)
      v.coefErrors[e] = std::sqrt(sums.squares[e] * shrink * weight);
}

}  // namespace

std::int32_t crossValidate(const PlsValidation& v, double* work, const PlsModel& model, double* coefs,
                           const PlsFoldSums& sums, PlsFoldScratch& s) {
  *v.continueFlag = 1;
  const std::int32_t nModel = orderForValidation(v, s);
  const std::int32_t nFolds = cvFolds;
  const double weight = cvPressWeight;
  clearSums(v, model, sums);

  for (std::int32_t g = 0; g < nFolds; ++g) {
    const std::int32_t report = g + 1;
    updateminorprogress(v.monitor, &report, &nFolds, v.continueFlag);
    if (*v.continueFlag == 0) return kStopped;

    // 1. The model of the training rows.
    PlsData training(work, listTraining(nModel, g, s), v.p, v.q);
    takeSamples(v.data, s.rows.data(), training);
    const std::int32_t status = fitComponents(training, model, s.component, nullptr);
    if (status != kDone) return status;
    coefficients(model, {s.rotations.data(), v.p}, s.samples, coefs);
    addCoefficients(v, model, coefs, g, sums);

    // 2. Its predictions.
    const std::int32_t nHeld = packHeldOut(v, nModel, {work, v.n}, s);
    predictHeldOut(v, model, {work, v.n}, nHeld, weight, s);
  }
  standardErrors(v, model, sums, nFolds, weight);
  return kDone;
}

namespace {

// What PlsCvl's caller does not bring.
struct PlsFoldsScratch {
  PlsFoldsScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : folds(arena, n, p, q, nComponents), scoreSquares(arena, nComponents) {}
  PlsFoldScratch folds;
  Array<double> scoreSquares;
};

}  // namespace

void PlsCvl(const double* data, const std::int32_t* /*rowTags*/, double* work, std::int32_t* /*workTags*/,
            std::int32_t* rowOrder, const std::int32_t* rowUse, const std::int32_t* nRows, const std::int32_t* /*m*/,
            const std::int32_t* nResponses, const std::int32_t* nDescriptors, const std::int32_t* nComputed,
            const std::int32_t* nComponents, const double* /*scales*/, const double* /*means*/,
            const std::int32_t* /*scaled*/, double* press, double* coefErrors, double* /*sampleWork*/,
            double* foldCoefs, double* weights, double* loadings, double* respWeights, double* inner, double* s1,
            double* s2, std::int32_t* status, ProgressMonitor* const* monitor, std::int32_t* continueFlag) {
  *continueFlag = 1;
  *status = kSingular;
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  const std::int32_t nModel = std::max(*nComponents, 0), nUsed = std::clamp(*nComputed, 0, nModel);
  Obtained<PlsFoldsScratch> scratch(n, p, q, nModel);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const PlsModel model{
      p, q, nModel, {weights, p}, {loadings, p}, {respWeights, nModel}, inner, scratch->scoreSquares.data()};
  const PlsValidation validation{{data, n}, rowUse,          n,         p, q, nUsed, monitor, continueFlag,
                                 rowOrder,  {press, nModel}, coefErrors};
  *status = crossValidate(validation, work, model, foldCoefs, {s1, s2}, scratch->folds);
}

}  // namespace studystats::core
