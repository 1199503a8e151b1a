// Partial least squares: components of the model rows, cross-validation, the choice of the number of components by the
// ratio of successive errors, and the model in raw units.
//
// Wold (1978), Technometrics 20, 397-405 (the ratio rule, here of square roots).
#include <studystats/analyses.h>

#include <algorithm>
#include <cmath>

#include "analyses/pls/components.h"
#include "analyses/pls/cross_validation.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/scratch.h"
#include "numeric/matrix_view.h"
#include "numeric/status.h"
#include "numeric/validation.h"

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
}  // namespace studystats::core

void PlsAnl(const double* data, const std::int32_t* /*rowTags*/, std::int32_t* rowOrder, const std::int32_t* rowUse,
            std::int32_t nRows, std::int32_t nCols, std::int64_t /*reserved1*/, double* scales, const double* means,
            const void* /*reserved2*/, std::int32_t nResponses, std::int32_t nDescriptors, std::int32_t keepAll,
            float ratioLimit, std::int32_t nComponents, std::int32_t scaled, std::int32_t cvMethod,
            std::int32_t cvGroups, float cvFraction, double* coefs, double* coefErrors, double* pressRatios, double* q2,
            double* r2, double* rss, double* tss, double* intercepts, double* fitted, double* press,
            std::int32_t* status, ProgressMonitor* progressMonitor, std::int32_t* continueFlag) {
  namespace core = studystats::core;
  core::cvMethod = cvMethod;
  core::cvGroups = cvGroups;
  core::cvFraction = cvFraction;
  *continueFlag = 1;
  *status = core::kSingular;
  const std::int32_t n = nRows, p = nDescriptors, q = std::max(nResponses, 0), nModel = nComponents;
  if (n < 0 || p < 0 || nCols < std::int64_t{p} + q || nModel < 1) return;
  core::Obtained<core::PlsScratch> memory(n, p, q, nModel);
  if (!memory) {
    *status = core::kNoScratch;
    return;
  }
  core::PlsScratch& scratch = *memory;

  const core::ConstMatrix x{data, n};
  const core::PlsModel& model = scratch.model.view;
  core::listModelRows(rowUse, n, scratch.folds.rows.data(), rowOrder);
  if (scaled == 0) std::fill_n(scales, nCols, 1.0);

  // 1. Components and coefficients of the model.
  const core::PlsResidualSums sums{tss, {rss, nModel}};
  core::PlsData samples(scratch.data.data(), n, p, q);
  core::takeSamples(x, scratch.folds.rows.data(), samples);
  *status = core::fitComponents(samples, model, scratch.folds.component, &sums);
  if (*status != core::kDone) return;
  *status = core::kSingular;
  core::coefficients(model, {scratch.folds.rotations.data(), p}, scratch.folds.samples, coefs);

  // 2. Cross-validation.
  const core::PlsValidation validation{
      x, rowUse, n, p, q, nModel, &progressMonitor, continueFlag, rowOrder, {press, nModel}, coefErrors};
  *status = core::crossValidate(validation, scratch.data.data(), scratch.foldModel.view, scratch.foldCoefs.data(),
                                {scratch.means.data(), scratch.squares.data()}, scratch.folds);
  if (*status != core::kDone) return;

  // 3. The number of components.
  const core::ResponseErrors errors{{press, nModel}, {rss, nModel}, tss};
  const std::int32_t chosen = keepAll != 0 ? nModel : core::chooseComponents(errors, q, nModel, double{ratioLimit});

  // 4. Predictions, the model in raw units, and its statistics.
  const core::RawUnits raw{scales, means};
  core::fitRows(x, n, model, chosen, raw, scratch.folds.samples, {fitted, n});
  core::convertToRawUnits(model, raw, coefs, coefErrors, {intercepts, nModel});
  core::summarise(errors, q, chosen, {{pressRatios, nModel}, {q2, nModel}, {r2, nModel}});
}
