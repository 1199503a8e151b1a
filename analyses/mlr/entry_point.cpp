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
#include "numeric/folds.h"
#include "numeric/host_reports.h"
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

// What the entry point needs of scratch memory besides that of its folds: the matrices of all columns, and the
// validation order.
struct MulRegScratch {
  MulRegScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t folds)
      : products(arena, area(p, p)),
        method(arena, n, p, p - 1, folds),
        fold(arena, n, p, p - 1, p, false),
        response(arena, n),
        sortBuffer(arena, n),
        positions(arena, n),
        order(arena, n),
        usable(arena, n),
        heldOut(arena, n) {}

  Array<double> products;
  MlrScratch method;
  MlrFoldScratch fold;
  Array<double> response;
  Array<SortEntry> sortBuffer;
  Array<std::int32_t> positions, order, usable, heldOut;
};

// Keeps what the statistics need of the last fit, whose arrays the folds use again; the number of its variables.
std::int32_t recordModel(const FitArrays& model, std::int32_t n, std::int32_t m, std::int32_t* df, MlrScratch& s) {
  const auto nIn = m - static_cast<std::int32_t>(std::count(model.inList, model.inList + m, 0));
  for (std::int32_t a = 0; a < nIn; ++a) s.diagonal[a] = model.inv(a, a);
  df[0] = nIn;
  df[1] = n - nIn - 1;
  df[2] = n - 1;
  return nIn;
}

// Makes the plan and the validation order by ascending response, and stores the plan. The builder of systematic groups
// reads its marks of usable rows by position, that of random subsets by row: they are laid out so that both mean the
// row.
PlannedFolds planFolds(ConstMatrix data, std::int32_t n, std::int32_t p, std::int32_t* rowIds,
                       const std::int32_t* usable, MulRegScratch& s) {
  VldPln(&n);
  std::copy_n(data.column(p - 1), n, s.response.data());
  orderRows(s.response.data(), rowIds, n, s.order.data(), s.positions.data(), s.sortBuffer.data());
  std::copy_n(usable, n, s.usable.data());
  for (std::int32_t i = 0; cvMethod == kSystematicGroups && i < n; ++i)
    s.usable[i] = s.order[i] > 0 ? usable[s.order[i] - 1] : 0;
  return {cvMethod, {cvFolds, cvLeaveOut, cvPressWeight}, n, s.order.data(), s.usable.data(), s.heldOut.data()};
}

// Runs the folds; kDone or kStopped. A singular fold ends them, and the spreads are then not written.
std::int32_t validate(const MlrProblem& problem, const MlrModel& model, PlannedFolds& folds, MlrFoldScratch& s,
                      MlrSums& sums, Pace& pace, double* coefSd, double* interceptSd) {
  const double weight = folds.plan.pressWeight;
  for (std::int32_t g = 0; g < folds.plan.folds; ++g) {
    if (!pace.begin(g + 1, folds.plan.folds)) return kStopped;
    const engine::FoldRows rows = folds(g, {s.rows.data(), static_cast<std::size_t>(problem.n)});
    const engine::RegressionFold fold = runFold(problem, model, rows, s, pace);
    addFold(problem, fold, weight, sums);
    if (fold.status != engine::Status::Done) return kDone;
  }
  for (std::int32_t a = 0; a < model.nIn; ++a)
    coefSd[model.inList[a] - 1] = jackknifeSpread(sums, model.nIn, a, weight);
  *interceptSd = jackknifeSpread(sums, model.nIn, model.nIn, weight);
  return kDone;
}

}  // namespace
}  // namespace studystats::core

void MulReg(const double* data, const std::int32_t* /*rowTags*/, std::int32_t* rowIds, const std::int32_t* usable,
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
  namespace engine = studystats::engine;
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
  core::Obtained<core::MulRegScratch> memory(nRows, nCols, std::max(*maxFolds, folds));
  if (!memory) {
    *status = core::kNoScratch;
    return;
  }
  core::MlrScratch& scratch = memory->method;

  // 1. The starting model, from which every fold starts, too.
  if (startWithAll) std::fill_n(flags, nCols, 1);
  std::copy_n(flags, m, scratch.start.data());
  const auto nStart = static_cast<std::int32_t>(std::count(flags, flags + m, 1));
  const core::MlrProblem problem{{data, nRows}, nRows, nCols, rules, scratch.start.data(), nStart, scale, shift};

  // 2. Means, cross-products and correlations of all columns.
  const core::ConstMatrix c{memory->products.data(), nCols};
  core::CrsPrd(data, &nRows, &nCols, &nRows, &nCols, memory->products.data(), scratch.means.data());
  core::correlations(c, nCols, scratch.diagonal.data(), {corr, nCols});
  const double tss = c(m, m);

  // 3. Collinear variables leave the starting model; then the selection on all rows.
  core::CorFilt(&corrLimit, corr, &nCols, &m, flags);
  core::ColumnProducts products(c, core::ConstMatrix{corr, nCols});
  const core::RegressionRows rows{problem.x, nRows, nCols, m, scratch.means.data()};
  const core::FitArrays model{
      coef, intercept, {scratch.inverse.data(), m}, scratch.t.data(), inList, scratch.outList.data()};
  const core::StepHistory history{fStart, sStart, stepPartialF, stepF, stepS, stepAction, stepVar, nSteps};
  core::Pace unasked;
  *status = core::selectVariables(rows, products, rules, flags, model, &history, scratch.fit, unasked);
  if (*status != core::kDone) return;
  *nIn = core::recordModel(model, nRows, m, df, scratch);

  // 4. Cross-validation of filter and selection.
  *press = 0.0;
  std::fill_n(cvSelCount, m, 0);
  core::PlannedFolds planned = core::planFolds(problem.x, nRows, nCols, rowIds, usable, *memory);
  core::MlrSums sums{press, cvSelCount, scratch.refits.data()};
  core::HostReports reports{&progressMonitor, continueFlag};
  core::Pace pace{engine::Checkpoint(reports)};
  *status = core::validate(problem, {flags, inList, *nIn}, planned, memory->fold, sums, pace, cvCoefSd, cvInterceptSd);
  if (*status != core::kDone) return;

  // 5. Statistics of the model of all rows, and the model in untransformed units.
  core::modelStatistics({problem.x, nRows, nCols, *nIn, inList, coef, intercept, scratch.diagonal.data(), tss, *press},
                        {fitted, resid, sumSq, df, multR, fValue, sValue, fProb, q2, coefSe, tValue, tProb});
  core::UnScale(coef, intercept, &nCols, nIn, inList, scale, shift, cvCoefSd, coefSe, rawCoef, rawIntercept);
}
