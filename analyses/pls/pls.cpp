// Partial least squares: components of the model rows, cross-validation, the choice of the number of components by the
// ratio of successive errors, and the model in raw units.
//
// Wold (1978), Technometrics 20, 397-405 (the ratio rule, here of square roots).
#include "analyses/pls/pls.h"

#include <algorithm>
#include <cmath>

#include "analyses/pls/components.h"
#include "analyses/pls/cross_validation.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/scratch.h"
#include "numeric/matrix_view.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// Rows of the model, counted from 1; 0 stands for a row of zeros in the place of any other.
void listModelRows(const std::int32_t* rowUse, std::int32_t n, std::int32_t* rows, std::int32_t* rowOrder) {
  for (std::int32_t i = 0; i < n; ++i) {
    rows[i] = rowUse[i] == 1 ? i + 1 : 0;
    if (rows[i] > 0) rowOrder[i] = rows[i];
  }
}

// Sums of squares by component and response, nComponents x q, and the total of each response.
struct ResponseErrors {
  ConstMatrix press, rss;
  const double* tss;

  // Root of the prediction error over the error that the components before left; 0 when nothing was left.
  double ratio(std::int32_t a, std::int32_t k) const {
    const double before = a == 0 ? tss[k] : rss(a - 1, k);
    return before > 0.0 ? std::sqrt(press(a, k) / before) : 0.0;
  }
};

// The leading components of which each predicts some response well enough; one at least.
std::int32_t chooseComponents(const ResponseErrors& errors, std::int32_t q, std::int32_t nComponents, double limit) {
  const auto passes = [&](std::int32_t a) {
    for (std::int32_t k = 0; k < q; ++k)
      if (errors.ratio(a, k) <= limit) return true;
    return false;
  };
  std::int32_t chosen = 0;
  while (chosen < nComponents && passes(chosen)) ++chosen;
  return std::max(chosen, 1);
}

// Scales and means of the descriptors, then of the responses.
struct RawUnits {
  const double *scales, *means;
};

// Predictions of all rows by the first nUse components, in raw units.
void fitRows(ConstMatrix data, std::int32_t n, const PlsModel& model, std::int32_t nUse, const RawUnits& raw,
             PlsSampleScratch& s, Matrix fitted) {
  if (model.q < 1) return;
  scoreRows(data, n, model, nUse, s, [&](std::int32_t i, const PlsSampleScores& scores) {
    for (std::int32_t k = 0; k < model.q; ++k) {
      double last = 0.0;
      predictResponse(model, k, nUse, scores, [&last](std::int32_t, double predicted) { last = predicted; });
      fitted(i, k) = last * raw.scales[model.p + k] + raw.means[model.p + k];
    }
  });
}

// Coefficients and their errors (p x nComponents x q) in raw units, and the intercepts (nComponents x q).
void convertToRawUnits(const PlsModel& model, const RawUnits& raw, double* coefs, double* errors, Matrix intercepts) {
  for (std::int32_t k = 0; k < model.q; ++k) {
    const double scale = raw.scales[model.p + k];
    for (std::int32_t a = 0; a < model.nComponents; ++a) {
      double shifted = 0.0;
      for (std::int32_t j = 0; j < model.p; ++j) {
        coefs[j] = coefs[j] * scale / raw.scales[j];
        errors[j] = errors[j] * scale / raw.scales[j];
        shifted += raw.means[j] * coefs[j];
      }
      intercepts(a, k) = raw.means[model.p + k] - shifted;
      coefs += model.p;
      errors += model.p;
    }
  }
}

struct PlsStatistics {
  Matrix ratios, q2, r2;
};

// Of the chosen components; 0 for a response without spread.
void summarise(const ResponseErrors& errors, std::int32_t q, std::int32_t chosen, const PlsStatistics& out) {
  for (std::int32_t k = 0; k < q; ++k)
    for (std::int32_t a = 0; a < chosen; ++a) {
      const double tss = errors.tss[k];
      out.ratios(a, k) = errors.ratio(a, k);
      out.q2(a, k) = tss > 0.0 ? 1.0 - errors.press(a, k) / tss : 0.0;
      out.r2(a, k) = tss > 0.0 ? 1.0 - errors.rss(a, k) / tss : 0.0;
    }
}

}  // namespace

std::int32_t analyse(const PlsAnalysis& given) {
  const std::int32_t n = given.n, p = given.p, q = given.q, nModel = given.nComponents;
  if (n < 0 || p < 0 || given.m < std::int64_t{p} + q) return kSingular;
  Obtained<PlsScratch> memory(n, p, q, nModel);
  if (!memory) return kNoScratch;
  PlsScratch& scratch = *memory;
  listModelRows(given.rowUse, n, scratch.folds.rows.data(), given.rowOrder);
  if (!given.scaled) std::fill_n(given.scales, given.m, 1.0);

  // 1. Components and coefficients of the model.
  const PlsModel& model = scratch.model.view;
  const PlsResidualSums sums{given.tss, given.rss};
  PlsData samples(scratch.data.data(), n, p, q);
  takeSamples(given.data, scratch.folds.rows.data(), samples);
  std::int32_t status = fitComponents(samples, model, scratch.folds.component, &sums);
  if (status != kDone) return status;
  coefficients(model, {scratch.folds.rotations.data(), p}, scratch.folds.samples, given.coefs);

  // 2. Cross-validation.
  const PlsValidation validation{
      given.data,         given.rowUse,   n,           given.m,         p, q, nModel, given.monitor,
      given.continueFlag, given.rowOrder, given.press, given.coefErrors};
  status = crossValidate(validation, scratch.data.data(), scratch.foldModel.view, scratch.foldCoefs.data(),
                         {scratch.means.data(), scratch.squares.data()}, scratch.folds);
  if (status != kDone) return status;
  if (nModel < 1) return kSingular;

  // 3. The number of components.
  const ResponseErrors errors{{given.press.data, nModel}, {given.rss.data, nModel}, given.tss};
  const std::int32_t chosen = given.keepAll ? nModel : chooseComponents(errors, q, nModel, given.ratioLimit);

  // 4. Predictions, the model in raw units, and its statistics.
  const RawUnits raw{given.scales, given.means};
  fitRows(given.data, n, model, chosen, raw, scratch.folds.samples, given.fitted);
  convertToRawUnits(model, raw, given.coefs, given.coefErrors, given.intercepts);
  summarise(errors, q, chosen, {given.pressRatios, given.q2, given.r2});
  return kDone;
}

}  // namespace studystats::core
