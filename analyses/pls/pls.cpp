// Partial least squares behind its entry point: components of the model rows, cross-validation, the choice of the
// number of components by the ratio of successive errors, and the model in raw units.
#include "analyses/pls/pls.h"

#include <studystats/engine/partial_least_squares.h>

#include <algorithm>
#include <span>

#include "analyses/pls/components.h"
#include "analyses/pls/cross_validation.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/scratch.h"
#include "analyses/pls/validation_order.h"
#include "numeric/host_reports.h"
#include "numeric/matrix_view.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// All scratch memory of one call, obtained before anything is computed.
struct PlsScratch {
  PlsScratch(Arena& arena, PlsSizes size)
      : fold(arena, size, true, false),
        means(arena, size.coefficients()),
        squares(arena, size.coefficients()),
        model(arena, size, false),
        order(arena, size.n),
        rows(arena, size.n) {}

  PlsFoldScratch fold;
  Array<double> means, squares;  // of the coefficients over the folds
  PlsModelScratch model;
  PlsOrderScratch order;
  Array<std::int32_t> rows;
};

// Rows of the model, counted from 0; -1 stands for a row of zeros in the place of any other.
std::span<const std::int32_t> listModelRows(const std::int32_t* rowUse, std::int32_t n, std::int32_t* rows,
                                            std::int32_t* rowOrder) {
  for (std::int32_t i = 0; i < n; ++i) {
    rows[i] = rowUse[i] == 1 ? i : -1;
    if (rows[i] >= 0) rowOrder[i] = i + 1;
  }
  return {rows, static_cast<std::size_t>(n)};
}

// Predictions of all rows by the first nUse components, in raw units.
void predictAllRows(ConstMatrix data, std::int32_t n, const PlsModel& model, std::int32_t nUse, const RawUnits& raw,
                    PlsSampleScratch& s, Matrix fitted, Pace& pace) {
  if (model.q < 1) return;
  scoreRows(data, nullptr, n, model, nUse, {}, s, pace, [&](std::int32_t i, const PlsSampleScores& scores) {
    for (std::int32_t k = 0; k < model.q; ++k) {
      double last = 0.0;
      predictResponse(model, k, nUse, scores, [&last](std::int32_t, double predicted) { last = predicted; });
      fitted(i, k) = last * raw.scales[model.p + k] + raw.means[model.p + k];
    }
  });
}

struct PlsStatistics {
  Matrix ratios, q2, r2;
};

// Of the chosen components; 0 for a response without spread.
void summarise(const engine::ComponentErrors& errors, std::int32_t chosen, const PlsStatistics& out) {
  for (std::size_t k = 0; k < errors.totalSquares.size(); ++k)
    for (std::int32_t a = 0; a < chosen; ++a) {
      const auto response = static_cast<std::int32_t>(k);
      const std::size_t at = k * static_cast<std::size_t>(errors.components) + static_cast<std::size_t>(a);
      const double tss = errors.totalSquares[k];
      out.ratios(a, response) = pressRatio(errors, a, response);
      out.q2(a, response) = tss > 0.0 ? 1.0 - errors.press[at] / tss : 0.0;
      out.r2(a, response) = tss > 0.0 ? 1.0 - errors.residualSquares[at] / tss : 0.0;
    }
}

// The folds of the plan, one after the other; kDone, kNotConverged or kStopped.
std::int32_t validate(const PlsAnalysis& given, const PlsProblem& problem, PlsScratch& s, Pace& pace) {
  PlsFolds folds = planFolds({given.data, given.rowUse, given.n, given.m, given.p}, given.rowOrder, s.order);
  const std::int32_t nFolds = folds.planned.plan.folds;
  const double weight = folds.planned.plan.pressWeight;
  PlsSums sums{given.press, s.means.data(), s.squares.data(), given.nComponents};
  clearSums(problem.size, sums);
  for (std::int32_t g = 0; g < nFolds; ++g) {
    if (!pace.begin(g + 1, nFolds)) return kStopped;
    const engine::FoldRows rows = folds(g, {s.fold.rows.data(), static_cast<std::size_t>(given.n)});
    const engine::PartialLeastSquaresFold fold = runFold(problem, rows, s.fold, pace);
    if (fold.status != engine::Status::Done) return static_cast<std::int32_t>(fold.status);
    addFold(problem, fold, weight, sums);
  }
  standardErrors(problem.size, sums, weight, given.coefErrors);
  return kDone;
}

}  // namespace

std::int32_t analyse(const PlsAnalysis& given) {
  const std::int32_t n = given.n, p = given.p, q = given.q, nModel = given.nComponents;
  if (n < 0 || p < 0 || given.m < std::int64_t{p} + q) return kSingular;
  const PlsProblem problem{given.data, {n, p, q, nModel}};
  Obtained<PlsScratch> scratch(problem.size);
  if (!scratch) return kNoScratch;
  const auto rows = listModelRows(given.rowUse, n, scratch->rows.data(), given.rowOrder);
  if (!given.scaled) std::fill_n(given.scales, given.m, 1.0);

  // 1. Components and coefficients of the model.
  const HostReports reports{given.monitor, given.continueFlag};
  Pace pace{engine::Checkpoint(reports)};
  const PlsModel& model = scratch->model.view;
  const Matrix rotations{scratch->fold.rotations.data(), p};
  const PlsResidualSums sums{given.tss, given.rss};
  const PlsFitted fitted = fitRows(problem, rows, model, scratch->fold.preparation, &sums, scratch->fold, pace);
  if (fitted.extraction.status != kDone) return fitted.extraction.status;
  findRotations(model, rotations, scratch->fold.samples, pace);
  coefficients(model, {rotations.data, p}, given.coefs, pace);

  // 2. Cross-validation.
  if (const std::int32_t status = validate(given, problem, *scratch, pace); status != kDone) return status;
  if (nModel < 1) return kSingular;

  // 3. The number of components.
  const auto figures = static_cast<std::size_t>(problem.size.figures());
  const engine::ComponentErrors errors{
      nModel, {given.press.data, figures}, {given.rss.data, figures}, {given.tss, static_cast<std::size_t>(q)}};
  const std::int32_t chosen = given.keepAll ? nModel : componentsByRatio(errors, given.ratioLimit);

  // 4. Predictions, the model in raw units, and its statistics.
  const RawUnits raw{given.scales, given.means};
  predictAllRows(given.data, n, model, chosen, raw, scratch->fold.samples, given.fitted, pace);
  convertToRawUnits(model, raw, given.coefs);
  convertToRawUnits(model, raw, given.coefErrors);
  findIntercepts(model, raw, given.coefs, given.intercepts);
  summarise(errors, chosen, {given.pressRatios, given.q2, given.r2});
  return kDone;
}

}  // namespace studystats::core
