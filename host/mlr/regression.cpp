// Stepwise regression of a table: preparation, the analysis, and what its figures are worth.
//
// The engine is given the model's rows alone; rows without a response are predicted with the equation afterwards.
#include "host/mlr/regression.h"

#include "host/distributions.h"
#include "host/folds.h"
#include "host/mlr/leverage.h"
#include "host/mlr/run.h"
#include "host/model/model_build.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

std::optional<double> number(double value) {
  return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

// The constant's error is that of the fit where every descriptor is 0 in the table's units.
RegressionTerm constantOf(const RegressionRun& run, double coefficient, double standardError, bool validated) {
  RegressionTerm constant;
  constant.name = "(constant)";
  constant.coefficient = coefficient;
  constant.preparedCoefficient = run.equation.intercept;
  constant.standardError = number(standardError);
  if (standardError > 0) {
    constant.t = coefficient / standardError;
    constant.p = number(tProbability(*constant.t, run.fit.dfResidual));
  }
  if (validated) constant.foldSpread = run.folds.constantSpread;
  return constant;
}

RegressionTerm termOf(const RegressionRun& run, std::size_t a, const UsedData& used, const LeverageModel& leverage,
                      bool validated) {
  const FittedEquation& equation = run.equation;
  const std::size_t j = equation.chosen[a];
  RegressionTerm term;
  term.name = used.descriptors[j];
  term.coefficient = equation.coefficients[a] / used.scale[j];
  term.preparedCoefficient = equation.coefficients[a];
  term.standardError = number(equation.standardErrors[a] / used.scale[j]);
  term.t = number(equation.t[a]);
  if (equation.p[a] >= 0) term.p = equation.p[a];
  if (validated) term.foldSpread = number(run.folds.spreads[a] / used.scale[j]);
  term.perSd = equation.coefficients[a] * leverage.preparedSd(a);
  term.vif = number(leverage.vif()[a]);
  term.foldsChosen = run.folds.timesChosen[j];
  for (const SameInformation& same : used.setAside)
    if (same.kept == term.name) term.sameAs.push_back(same.setAside);
  return term;
}

// The constant first. An equation in the table's units: x' = (x - shift) / scale is put in for each descriptor.
std::vector<RegressionTerm> termsOf(const RegressionRun& run, const UsedData& used, const LeverageModel& leverage,
                                    bool validated) {
  std::vector<RegressionTerm> terms(1);
  double shifted = 0;
  for (std::size_t a = 0; a < run.equation.chosen.size(); ++a) {
    terms.push_back(termOf(run, a, used, leverage, validated));
    shifted += terms.back().coefficient * used.shift[run.equation.chosen[a]];
  }
  terms.front() =
      constantOf(run, run.equation.intercept - shifted, run.fit.s * std::sqrt(leverage.atTableZero(used)), validated);
  return terms;
}

std::vector<SelectionStep> stepsOf(const RegressionRun& run, const UsedData& used) {
  std::vector<SelectionStep> steps;
  for (std::size_t k = 0; k < run.steps; ++k) {
    const TriedStep& step = run.tried[k];
    steps.push_back({used.descriptors[step.descriptor], step.entered, number(step.partialF), step.f, step.s});
  }
  return steps;
}

// Steps behind the path tell why it ended: one that was tried and taken back is still there.
std::string stopReasonOf(const RegressionRun& run, const Regression& result) {
  if (result.selection == Selection::All) return "every descriptor within the correlation limit is in the model";
  if (run.steps >= static_cast<std::size_t>(result.maxSteps))
    return fmt::format("stopped by --max-steps {}", result.maxSteps);
  if (run.equation.chosen.size() == result.used.descriptors.size()) return "every descriptor is in the model";
  if (run.tried.size() <= run.steps || !run.tried[run.steps].entered)
    return "no candidate is left within the correlation limit";
  const TriedStep& next = run.tried[run.steps];
  const std::string& name = result.used.descriptors[next.descriptor];
  if (run.steps + 1 < run.tried.size() && !run.tried[run.steps + 1].entered)
    return fmt::format("the next, {}, would enter (F {}) and leave at once (F-to-remove {})", name,
                       significant(next.partialF, 3), brief(result.fRemove, 6));
  return fmt::format("the next, {}, fails F-to-enter (F {})", name, significant(next.partialF, 3));
}

std::vector<SelectedDescriptor> runnersUpOf(const RegressionRun& run, const UsedData& used) {
  std::vector<SelectedDescriptor> runners;
  for (std::size_t j = 0; j < used.descriptors.size(); ++j)
    if (run.folds.timesChosen[j] > 0 && !std::binary_search(run.equation.chosen.begin(), run.equation.chosen.end(), j))
      runners.push_back({used.descriptors[j], run.folds.timesChosen[j]});
  std::stable_sort(runners.begin(), runners.end(),
                   [](const SelectedDescriptor& a, const SelectedDescriptor& b) { return a.folds > b.folds; });
  return runners;
}

Equation equationOf(const Regression& result, bool prepared) {
  Equation equation{.response = result.response,
                    .constant = prepared ? result.terms[0].preparedCoefficient : result.terms[0].coefficient,
                    .terms = {}};
  for (std::size_t a = 1; a < result.terms.size(); ++a)
    equation.terms.push_back(
        {result.terms[a].name, prepared ? result.terms[a].preparedCoefficient : result.terms[a].coefficient});
  return equation;
}

void placeRows(Regression& result, const PreparedRegression& prepared, const RegressionRun& run,
               const LeverageModel& leverage) {
  const Prepared& data = prepared.data;
  for (std::size_t i = 0; i < data.modelRows.size(); ++i) {
    RegressionRow row{.name = data.modelRows[i].name, .role = Role::Model, .observed = prepared.response[i]};
    row.fitted = run.equation.fitted[i];
    row.residual = run.equation.residuals[i];
    row.leverage = leverage.of(data.model, i);
    const double spread = result.fit.s * std::sqrt(1 - row.leverage);
    if (spread > 0) row.standardised = *row.residual / spread;
    result.rows.push_back(std::move(row));
  }
  for (std::size_t i = 0; i < data.predictedRows.size(); ++i) {
    RegressionRow row{.name = data.predictedRows[i].name, .role = Role::Predicted};
    double sum = 0;
    for (std::size_t a = 0; a < run.equation.chosen.size(); ++a)
      sum += run.equation.coefficients[a] * data.predicted(i, run.equation.chosen[a]);
    row.fitted = run.equation.intercept + sum;
    row.leverage = leverage.of(data.predicted, i);
    row.observed = responseOf(data.predictedRows[i], result.response);
    if (row.observed) row.residual = *row.observed - row.fitted;
    result.rows.push_back(std::move(row));
  }
}

void addHeldOut(Regression& result, const HeldOutRows& heldOut) {
  for (std::size_t i = 0; i < heldOut.size(); ++i) {
    RegressionRow& row = result.rows[i];
    row.timesHeldOut = heldOut[i].size();
    if (heldOut[i].empty()) continue;
    if (heldOut[i].size() == 1) row.fold = heldOut[i].front().fold;
    double sum = 0;
    for (const HeldOut& one : heldOut[i]) sum += one.values.front();
    row.heldOut = sum / static_cast<double>(heldOut[i].size());
  }
}

void judgeValidation(Regression& result, const RegressionRun& run) {
  const FoldedRegression& folds = run.folds;
  const double total = run.fit.sumSqTotal, n = static_cast<double>(result.used.rows.size());
  if (folds.singularFold == 0) {
    RegressionValidation validation;
    validation.q2 = total > 0 ? (total - folds.press) / total : 0;
    validation.press = folds.press;
    validation.rmse = std::sqrt(folds.press / n);
    validation.constantSpread = folds.constantSpread;
    // The figure that other tools print: the chosen descriptors alone, all of them in every fold.
    if (result.selection == Selection::Stepwise && !run.equation.chosen.empty())
      validation.fixedSetQ2 = total > 0 ? (total - folds.keptPress) / total : 0;
    result.validation = validation;
    return;
  }
  const std::string fold = fmt::format("fold {} of {} became singular{}", folds.singularFold, run.plan.folds,
                                       folds.culprits.empty() ? "" : " (" + folds.culprits + ")");
  result.validation = Result<RegressionValidation>::failure(fold);
  result.remarks.push_back(
      {Severity::Warning,
       "not-validated",
       fmt::format("not validated: {}. Try --exclude one of its descriptors, a lower --corr-limit (now "
                   "{}), or other folds (--folds {}).",
                   fold, brief(result.corrLimit, 6), run.plan.folds > 5 ? 5 : 10),
       {}});
}

Model modelOf(const Regression& result, const FittedEquation& equation, const LeverageModel& leverage) {
  ModelData data = modelOf(Model::Kind::Regression, result.used, equation.chosen, result.level);
  data.responses = {result.response};
  RegressionModel model;
  model.stepwise = result.selection == Selection::Stepwise;
  model.intercept = equation.intercept;
  model.coefficients = equation.coefficients;
  model.equation = result.equation.exact();
  model.inTableUnits = TableEquation{result.terms.front().coefficient, {}};
  for (std::size_t a = 1; a < result.terms.size(); ++a)
    model.inTableUnits->coefficients.push_back(result.terms[a].coefficient);
  model.r2 = result.fit.r2;
  model.s = result.fit.s;
  model.rmse = result.fit.rmse;
  model.dfResidual = result.fit.dfResidual;
  if (result.validation) {
    model.q2 = result.validation->q2;
    model.crossValidatedRmse = result.validation->rmse;
    data.validation.scheme = describedFolds(result.plan) + (model.stepwise ? ", selection in each" : "");
  } else {
    data.validation.reason = result.validation.error();
  }
  model.means = leverage.means();
  model.sds = leverage.sds();
  model.axes = leverage.axes();
  model.leverageLimit = result.leverageLimit;
  data.regression = std::move(model);
  return sealed(std::move(data));
}

}  // namespace

Regression regress(const TableView& table, const RegressionOptions& options) try {
  Watch watch(options.progress, options.stop);
  watch.report("preparing", "preparing the table", 0, 2, 0, 1);
  const PreparedRegression prepared = prepareRegression(table, options, watch);
  const std::size_t n = prepared.response.size();

  Regression result;
  result.used = prepared.data.used;
  result.remarks = prepared.data.remarks;
  result.response = options.response;
  result.responseMean =
      std::accumulate(prepared.response.begin(), prepared.response.end(), 0.0) / static_cast<double>(n);
  result.responseSd = sampleSd(prepared.response);
  result.selection = options.selection;
  result.fEnter = options.fEnter;
  result.fRemove = options.fRemove;
  result.corrLimit = options.corrLimit;
  result.maxSteps = prepared.maxSteps;
  result.level = options.level;

  // 1. The selection on all rows, and in every fold.
  const RegressionRun run = runRegression(prepared, options, watch, 2, 98);
  result.fit = run.fit;
  result.plan = run.plan;
  result.steps = stepsOf(run, result.used);
  result.stopReason = stopReasonOf(run, result);
  judgeValidation(result, run);

  // 2. Standard errors, intervals and leverages.
  const LeverageModel leverage(prepared.data.model, run.equation.chosen);
  result.terms = termsOf(run, result.used, leverage, static_cast<bool>(result.validation));
  const double t = tQuantile(result.level, result.fit.dfResidual);
  for (RegressionTerm& term : result.terms)
    if (term.standardError) term.halfWidth = number(t * *term.standardError);
  result.conditionNumber = leverage.condition();
  result.runnersUp = runnersUpOf(run, result.used);
  result.equation = equationOf(result, false);
  result.preparedEquation = equationOf(result, true);
  result.leverageLimit = 3.0 * static_cast<double>(run.equation.chosen.size() + 1) / static_cast<double>(n);
  placeRows(result, prepared, run, leverage);
  if (result.validation) addHeldOut(result, run.folds.heldOut);

  result.model = modelOf(result, run.equation, leverage);
  remarkOnRegression(result);
  watch.report("analysis", "done", 98, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
