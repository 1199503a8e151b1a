// Stepwise regression of a table: preparation, the analysis, and what its figures are worth.
//
// The analysis is given the model's rows alone; rows without a response are predicted with the equation afterwards. Its
// outputs are filled before the call, so that an abandoned validation is seen: the spread of the constant is never
// negative.
#include "host/mlr/regression.h"

#include "host/distributions.h"
#include "host/folds.h"
#include "host/mlr/leverage.h"
#include "host/mlr/regression_call.h"
#include "host/model/model_build.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

[[noreturn]] void refuseStatus(const RegressionCall& call, const UsedData& used) {
  if (call.status == 5)
    throw OutOfMemory(fmt::format("not enough memory for a regression on {} x {} numbers.", used.rows.size(),
                                  used.descriptors.size()));
  std::vector<std::string> names;
  for (std::size_t j = 0; j < used.descriptors.size(); ++j)
    if (call.flags[j] == 1) names.push_back(used.descriptors[j]);
  throw NotComputed(
      fmt::format("the regression became singular with {} in the model: one of them is a combination of the "
                  "others. Try --exclude one of them, or a lower --corr-limit.",
                  listed(names, 8)));
}

RegressionFit fitOf(const RegressionCall& call, std::size_t n) {
  RegressionFit fit;
  fit.dfModel = call.df[0];
  fit.dfResidual = call.df[1];
  fit.sumSqModel = call.sumSq[0];
  fit.sumSqResidual = call.sumSq[1];
  fit.sumSqTotal = call.sumSq[2];
  fit.multipleR = call.multR;
  fit.r2 = fit.sumSqTotal > 0 ? fit.sumSqModel / fit.sumSqTotal : 0;
  fit.adjustedR2 = fit.dfResidual > 0
                       ? 1 - (fit.sumSqResidual / fit.dfResidual) / (fit.sumSqTotal / static_cast<double>(n - 1))
                       : std::numeric_limits<double>::quiet_NaN();
  fit.s = call.sValue;
  fit.rmse = std::sqrt(fit.sumSqResidual / static_cast<double>(n));
  fit.f = call.fValue;
  if (call.fProb >= 0) fit.fProbability = call.fProb;
  return fit;
}

std::optional<double> number(double value) {
  return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

// The constant's error is that of the fit where every descriptor is 0 in the table's units.
RegressionTerm constantOf(const RegressionCall& call, double standardError, bool validated) {
  RegressionTerm constant;
  constant.name = "(constant)";
  constant.coefficient = call.rawIntercept;
  constant.preparedCoefficient = call.intercept;
  constant.standardError = number(standardError);
  if (standardError > 0) {
    constant.t = call.rawIntercept / standardError;
    constant.p = number(tProbability(*constant.t, call.df[1]));
  }
  if (validated) constant.foldSpread = call.cvInterceptSd;
  return constant;
}

std::vector<RegressionTerm> termsOf(const RegressionCall& call, const UsedData& used, const LeverageModel& leverage,
                                    bool validated) {
  std::vector<RegressionTerm> terms{constantOf(call, call.sValue * std::sqrt(leverage.atTableZero(used)), validated)};
  for (std::size_t a = 0; a < call.chosen.size(); ++a) {
    const std::size_t j = call.chosen[a];
    RegressionTerm term;
    term.name = used.descriptors[j];
    term.coefficient = call.rawCoef[a];
    term.preparedCoefficient = call.coef[a];
    term.standardError = number(call.coefSe[j]);
    term.t = number(call.tValue[j]);
    if (call.tProb[j] >= 0) term.p = call.tProb[j];
    if (validated) term.foldSpread = number(call.cvCoefSd[j]);
    term.perSd = call.coef[a] * leverage.preparedSd(a);
    term.vif = number(leverage.vif()[a]);
    term.foldsChosen = static_cast<std::size_t>(call.cvSelCount[j]);
    for (const SameInformation& same : used.setAside)
      if (same.kept == term.name) term.sameAs.push_back(same.setAside);
    terms.push_back(std::move(term));
  }
  return terms;
}

std::vector<SelectionStep> stepsOf(const RegressionCall& call, const UsedData& used) {
  std::vector<SelectionStep> steps;
  for (std::size_t k = 0; k < static_cast<std::size_t>(call.nSteps); ++k) {
    SelectionStep step;
    step.descriptor = used.descriptors[static_cast<std::size_t>(call.stepVar[k] - 1)];
    step.entered = call.stepAction[k] == 1;
    step.partialF = number(static_cast<double>(call.stepPartialF[k]));
    step.f = static_cast<double>(call.stepF[k]);
    step.s = call.stepS[k];
    steps.push_back(std::move(step));
  }
  return steps;
}

// Entries behind the path tell why it ended: a step that was tried and taken back is still there.
std::string stopReasonOf(const RegressionCall& call, const UsedData& used, const RegressionOptions& options) {
  if (options.selection == Selection::All) return "every descriptor within the correlation limit is in the model";
  const auto k = static_cast<std::size_t>(call.nSteps);
  if (call.nSteps >= call.maxSteps) return fmt::format("stopped by --max-steps {}", call.maxSteps);
  if (call.chosen.size() == used.descriptors.size()) return "every descriptor is in the model";
  if (call.stepAction[k] != 1) return "no candidate is left within the correlation limit";
  const std::string& next = used.descriptors[static_cast<std::size_t>(call.stepVar[k] - 1)];
  if (k + 1 < call.stepAction.size() && call.stepAction[k + 1] == 0)
    return fmt::format("the next, {}, would enter (F {}) and leave at once (F-to-remove {})", next,
                       significant(static_cast<double>(call.stepPartialF[k]), 3), brief(options.fRemove, 6));
  return fmt::format("the next, {}, fails F-to-enter (F {})", next,
                     significant(static_cast<double>(call.stepPartialF[k]), 3));
}

std::vector<SelectedDescriptor> runnersUpOf(const RegressionCall& call, const UsedData& used) {
  std::vector<SelectedDescriptor> runners;
  for (std::size_t j = 0; j < used.descriptors.size(); ++j)
    if (call.flags[j] != 1 && call.cvSelCount[j] > 0)
      runners.push_back({used.descriptors[j], static_cast<std::size_t>(call.cvSelCount[j])});
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

void placeRows(Regression& result, const Prepared& prepared, const RegressionCall& call, const LeverageModel& leverage,
               const std::vector<double>& response) {
  for (std::size_t i = 0; i < prepared.modelRows.size(); ++i) {
    RegressionRow row{.name = prepared.modelRows[i].name, .role = Role::Model, .observed = response[i]};
    row.fitted = call.fitted[i];
    row.residual = call.resid[i];
    row.leverage = leverage.of(prepared.model, i);
    const double spread = result.fit.s * std::sqrt(1 - row.leverage);
    if (spread > 0) row.standardised = call.resid[i] / spread;
    result.rows.push_back(std::move(row));
  }
  for (std::size_t i = 0; i < prepared.predictedRows.size(); ++i) {
    RegressionRow row{.name = prepared.predictedRows[i].name, .role = Role::Predicted};
    double sum = 0;
    for (std::size_t a = 0; a < call.chosen.size(); ++a) sum += call.coef[a] * prepared.predicted(i, call.chosen[a]);
    row.fitted = call.intercept + sum;
    row.leverage = leverage.of(prepared.predicted, i);
    row.observed = responseOf(prepared.predictedRows[i], result.response);
    if (row.observed) row.residual = *row.observed - row.fitted;
    result.rows.push_back(std::move(row));
  }
}

// Predictions that do not add up to the analysis's own sum of squares would be those of other folds: none are shown
// then.
void addHeldOut(Regression& result, const std::vector<std::vector<HeldOutPrediction>>& predictions) {
  double squares = 0, count = 0;
  for (std::size_t i = 0; i < predictions.size(); ++i)
    for (const HeldOutPrediction& prediction : predictions[i]) {
      squares += std::pow(prediction.value - *result.rows[i].observed, 2);
      ++count;
    }
  const double press = count > 0 ? squares * static_cast<double>(predictions.size()) / count : 0;
  if (!(std::abs(press - result.validation->press) <= 1e-6 * result.validation->press)) {
    result.remarks.push_back({Severity::Note,
                              "held-out-rows-unknown",
                              "the predictions of the rows held out could not be found again; the sums stand.",
                              {}});
    return;
  }
  for (std::size_t i = 0; i < predictions.size(); ++i) {
    RegressionRow& row = result.rows[i];
    row.timesHeldOut = predictions[i].size();
    if (predictions[i].empty()) continue;
    if (predictions[i].size() == 1) row.fold = predictions[i].front().fold;
    double sum = 0;
    for (const HeldOutPrediction& prediction : predictions[i]) sum += prediction.value;
    row.heldOut = sum / static_cast<double>(predictions[i].size());
  }
}

void judgeValidation(Regression& result, const RegressionCall& call, const PreparedRegression& prepared) {
  const std::optional<SingularFold> singular = singularFold(call, prepared);
  if (!singular) {
    RegressionValidation validation;
    validation.q2 = call.q2;
    validation.press = call.press;
    validation.rmse = std::sqrt(call.press / static_cast<double>(prepared.response.size()));
    validation.constantSpread = call.cvInterceptSd;
    result.validation = validation;
    return;
  }
  const std::string fold = fmt::format("fold {} of {} became singular{}", singular->fold, call.foldsPlanned,
                                       singular->culprits.empty() ? "" : " (" + singular->culprits + ")");
  result.validation = Result<RegressionValidation>::failure(fold);
  result.remarks.push_back(
      {Severity::Warning,
       "not-validated",
       fmt::format("not validated: {}. Try --exclude one of its descriptors, a lower --corr-limit (now "
                   "{}), or other folds (--folds {}).",
                   fold, brief(result.corrLimit, 6), call.foldsPlanned > 5 ? 5 : 10),
       {}});
}

Model modelOf(const Regression& result, const RegressionCall& call, const LeverageModel& leverage) {
  ModelData data = modelOf(Model::Kind::Regression, result.used, call.chosen, result.level);
  data.responses = {result.response};
  RegressionModel model;
  model.stepwise = result.selection == Selection::Stepwise;
  model.intercept = call.intercept;
  for (std::size_t a = 0; a < call.chosen.size(); ++a) model.coefficients.push_back(call.coef[a]);
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
  RegressionCall call = callRegression(prepared, options, watch, 2, options.heldOutRows ? 60 : 85);
  if (call.status != 0) refuseStatus(call, result.used);
  if (prepared.folds.kind == Folds::Kind::Column) validateByColumn(call, prepared, options, watch, 10, 60);
  result.fit = fitOf(call, n);
  result.plan = planOf(call.foldsPlanned, prepared.folds, n);
  result.steps = stepsOf(call, result.used);
  result.stopReason = stopReasonOf(call, result.used, options);
  judgeValidation(result, call, prepared);

  // 2. The figure that other tools print: the chosen descriptors alone, all of them in every fold.
  if (result.validation && !call.chosen.empty() && options.selection == Selection::Stepwise) {
    RegressionValidation validation = *result.validation;
    validation.fixedSetQ2 = call.fixedSetQ2 ? call.fixedSetQ2
                                            : fixedSetQ2(prepared, call.chosen, watch, options.heldOutRows ? 60 : 85,
                                                         options.heldOutRows ? 70 : 98);
    result.validation = validation;
  }

  // 3. What the coefficients and rows are worth.
  const LeverageModel leverage(prepared.data.model, call.chosen);
  result.terms = termsOf(call, result.used, leverage, static_cast<bool>(result.validation));
  const double t = tQuantile(result.level, result.fit.dfResidual);
  for (RegressionTerm& term : result.terms)
    if (term.standardError) term.halfWidth = number(t * *term.standardError);
  result.conditionNumber = leverage.condition();
  result.runnersUp = runnersUpOf(call, result.used);
  result.equation = equationOf(result, false);
  result.preparedEquation = equationOf(result, true);
  result.leverageLimit = 3.0 * static_cast<double>(call.chosen.size() + 1) / static_cast<double>(n);
  placeRows(result, prepared.data, call, leverage, prepared.response);

  // 4. Rows held out, one by one.
  if (options.heldOutRows && result.validation)
    addHeldOut(result, heldOutPredictions(prepared, options, call, result.plan, watch, 70, 98));

  result.model = modelOf(result, call, leverage);
  remarkOnRegression(result, call);
  watch.report("analysis", "done", 98, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
