// Multiple linear regression: stepwise selection on all rows, cross-validation of the whole selection, and the model's
// statistics in transformed and in untransformed units.
#include <studystats/analyses.h>

#include <algorithm>
#include <cmath>

#include "analyses/mlr/cross_validation.h"
#include "analyses/mlr/scratch.h"
#include "analyses/mlr/selection.h"
#include "analyses/mlr/statistics.h"
#include "numeric/cross_products.h"
#include "numeric/least_squares.h"
#include "numeric/multiversion.h"
#include "numeric/sorting.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

// An F-to-enter at or below this, as 32-bit floats, or no steps allowed: every variable starts in the model.
constexpr float kEnterAll = 1e-10F;

// row(j) = c(i, j) / sqrt(c(i, i) * c(j, j)), or c(i, j) where one of the two columns has no spread. Both triangles are
// computed: the products are symmetric to the bit, and so is this.
STUDYSTATS_MULTIVERSION
void correlateColumn(const double* __restrict products, const double* __restrict squares, double own, std::int32_t p,
                     double* __restrict column) {
  for (std::int32_t i = 0; i < p; ++i) {
    const double quotient = products[i] / std::sqrt(squares[i] * own);
    column[i] = squares[i] > 0.0 && own > 0.0 ? quotient : products[i];
  }
}

void correlations(ConstMatrix c, std::int32_t p, double* squares, Matrix r) {
  for (std::int32_t j = 0; j < p; ++j) squares[j] = c(j, j);
  for (std::int32_t j = 0; j < p; ++j) {
    correlateColumn(c.column(j), squares, squares[j], p, r.column(j));
    r(j, j) = 1.0;
  }
}

// Keeps what the statistics need of the last fit, whose arrays the folds use again; the number of its variables.
std::int32_t recordModel(const FitArrays& model, std::int32_t n, std::int32_t m, std::int32_t* df, MlrScratch& s) {
  const auto nIn = m - static_cast<std::int32_t>(std::count(model.inList, model.inList + m, 0));
  for (std::int32_t a = 0; a < nIn; ++a) s.diagonal[a] = model.inv(a, a);
  df[0] = nIn;
  df[1] = n - nIn - 1;
  df[2] = n - 1;
  return nIn;
}

// Makes the plan and the validation order by ascending response. The builder of systematic groups reads its marks of
// usable rows by position, that of random subsets by row: they are laid out so that both mean the row.
void orderForValidation(ConstMatrix data, std::int32_t n, std::int32_t p, std::int32_t* rowIds,
                        const std::int32_t* usable, MlrScratch& s) {
  VldPln(&n);
  std::copy_n(data.column(p - 1), n, s.response.data());
  orderRows(s.response.data(), rowIds, n, s.order.data(), s.positions.data(), s.sortBuffer.data());
  std::copy_n(usable, n, s.usable.data());
  if (cvMethod != kSystematicGroups) return;
  for (std::int32_t i = 0; i < n; ++i) s.usable[i] = s.order[i] > 0 ? usable[s.order[i] - 1] : 0;
}

}  // namespace
}  // namespace studystats::core

void MulReg(const double* data, const std::int32_t* rowTags, std::int32_t* rowIds, const std::int32_t* usable,
            std::int32_t nRows, std::int32_t nCols, const double* scale, const double* shift, double* corr,
            std::int64_t /*reserved*/, float fEnter, float fRemove, std::int32_t maxSteps, float corrLimit,
            std::int32_t* flags, std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* fitted,
            double* resid, float* fStart, float* sStart, double* rawIntercept, double* intercept, double* multR,
            double* fValue, double* sValue, double* fProb, double* q2, double* press, double* cvInterceptSd,
            std::int32_t* df, double* sumSq, double* rawCoef, double* coef, double* cvCoefSd, double* coefSe,
            double* tValue, double* tProb, std::int32_t* inList, std::int32_t* cvSelCount, float* stepPartialF,
            float* stepF, float* stepS, std::int32_t* stepAction, std::int32_t* stepVar, std::int32_t* nIn,
            std::int32_t* nSteps, const std::int32_t* maxFolds, std::int32_t* status, ProgressMonitor* progressMonitor,
            std::int32_t* continueFlag) {
  namespace core = studystats::core;
  core::cvMethod = cvMethod;
  core::cvGroups = cvGroups;
  core::cvFraction = cvFraction;
  *continueFlag = 1;
  *fStart = *sStart = 0.0F;
  *status = core::kSingular;
  if (nRows < 0 || nCols < 1) return;

  const std::int32_t m = nCols - 1;
  const core::SelectionRules rules{fEnter, fRemove, corrLimit, std::max(maxSteps, 0)};
  const bool startWithAll = fEnter <= core::kEnterAll || maxSteps <= 0;
  const std::int32_t folds = core::planValidation({cvMethod, cvGroups, cvFraction}, nRows).folds;
  core::Obtained<core::MlrScratch> memory(nRows, nCols, std::max(*maxFolds, folds));
  if (!memory) {
    *status = core::kNoScratch;
    return;
  }
  core::MlrScratch& scratch = *memory;

  // 1. The starting model, of which every fold keeps a copy.
  if (startWithAll) std::fill_n(flags, nCols, 1);
  std::copy_n(flags, m, scratch.startFlags.data());
  const auto nStart = static_cast<std::int32_t>(std::count(flags, flags + m, 1));
  const std::int32_t most = core::mostVariables(nStart, m, rules);

  // 2. Means, cross-products and correlations of all columns.
  const core::ConstMatrix x{data, nRows}, c{scratch.products.data(), nCols};
  core::CrsPrd(data, &nRows, &nCols, &nRows, &nCols, scratch.products.data(), scratch.means.data());
  core::correlations(c, nCols, scratch.diagonal.data(), {corr, nCols});
  const double tss = c(m, m);

  // 3. Collinear variables leave the starting model; then the selection on all rows.
  core::CorFilt(&corrLimit, corr, &nCols, &m, flags);
  core::ColumnProducts products(c, core::ConstMatrix{corr, nCols});
  const core::RegressionRows rows{x, nRows, nCols, m, scratch.means.data()};
  const core::FitArrays model{
      coef, intercept, {scratch.inverse.data(), most}, scratch.t.data(), inList, scratch.outList.data()};
  const core::StepHistory history{fStart, sStart, stepPartialF, stepF, stepS, stepAction, stepVar, nSteps};
  *status = core::selectVariables(rows, products, rules, flags, model, &history, scratch.fit);
  if (*status != core::kDone) return;
  *nIn = core::recordModel(model, nRows, m, df, scratch);

  // 4. Cross-validation of filter and selection.
  *press = 0.0;
  std::fill_n(cvSelCount, m, 0);
  core::orderForValidation(x, nRows, nCols, rowIds, usable, scratch);
  const core::MlrValidation validation{x,          nRows,    nCols,        most,  rowTags,         rules,        flags,
                                       inList,     *nIn,     scale,        shift, progressMonitor, continueFlag, press,
                                       cvSelCount, cvCoefSd, cvInterceptSd};
  *status = core::crossValidate(validation, scratch);
  if (*status != core::kDone) return;

  // 5. Statistics of the model of all rows, and the model in untransformed units.
  core::modelStatistics({x, nRows, nCols, *nIn, inList, coef, intercept, scratch.diagonal.data(), tss, *press},
                        {fitted, resid, sumSq, df, multR, fValue, sValue, fProb, q2, coefSe, tValue, tProb});
  core::UnScale(coef, intercept, &nCols, nIn, inList, scale, shift, cvCoefSd, coefSe, rawCoef, rawIntercept);
}
