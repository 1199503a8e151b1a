// A regression as JSON and as CSV files.
#include "host/json.h"
#include "host/mlr/regression.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

Json jsonEquation(const Equation& equation, const char* units) {
  Json json{{"units", units},
            {"text", equation.exact()},
            {"constant", jsonNumber(equation.constant)},
            {"terms", Json::array()}};
  for (const Equation::Term& term : equation.terms)
    json["terms"].push_back({{"name", term.name}, {"coefficient", jsonNumber(term.coefficient)}});
  return json;
}

Json jsonFit(const RegressionFit& fit) {
  return {{"r2", jsonNumber(fit.r2)},
          {"adjusted_r2", jsonNumber(fit.adjustedR2)},
          {"multiple_r", jsonNumber(fit.multipleR)},
          {"s", jsonNumber(fit.s)},
          {"rmse", jsonNumber(fit.rmse)},
          {"f", jsonNumber(fit.f)},
          {"f_probability", jsonNumber(fit.fProbability)},
          {"df_model", fit.dfModel},
          {"df_residual", fit.dfResidual},
          {"sum_of_squares_model", jsonNumber(fit.sumSqModel)},
          {"sum_of_squares_residual", jsonNumber(fit.sumSqResidual)},
          {"sum_of_squares_total", jsonNumber(fit.sumSqTotal)}};
}

Json jsonValidation(const Regression& result) {
  Json json = jsonPlan(result.plan);
  const bool done = static_cast<bool>(result.validation);
  json["q2"] = done ? jsonNumber(result.validation->q2) : Json(nullptr);
  json["press"] = done ? jsonNumber(result.validation->press) : Json(nullptr);
  json["rmse"] = done ? jsonNumber(result.validation->rmse) : Json(nullptr);
  json["fixed_set_q2"] = done ? jsonNumber(result.validation->fixedSetQ2) : Json(nullptr);
  if (!done) json["reason"] = "not validated: " + result.validation.error();
  return json;
}

Json jsonTerm(const RegressionTerm& term) {
  return {{"name", term.name},
          {"coefficient", jsonNumber(term.coefficient)},
          {"prepared_coefficient", jsonNumber(term.preparedCoefficient)},
          {"standard_error", jsonNumber(term.standardError)},
          {"half_width", jsonNumber(term.halfWidth)},
          {"t", jsonNumber(term.t)},
          {"p", jsonNumber(term.p)},
          {"fold_spread", jsonNumber(term.foldSpread)},
          {"per_sd", jsonNumber(term.perSd)},
          {"vif", jsonNumber(term.vif)},
          {"folds_chosen", term.foldsChosen},
          {"same_as", term.sameAs}};
}

Json jsonStep(const SelectionStep& step) {
  return {{"descriptor", step.descriptor},
          {"action", step.entered ? "entered" : "removed"},
          {"partial_f", jsonNumber(step.partialF)},
          {"f", jsonNumber(step.f)},
          {"s", jsonNumber(step.s)}};
}

Json jsonRow(const RegressionRow& row) {
  return {{"name", row.name},
          {"role", nameOf(row.role)},
          {"observed", jsonNumber(row.observed)},
          {"fitted", jsonNumber(row.fitted)},
          {"residual", jsonNumber(row.residual)},
          {"standardised_residual", jsonNumber(row.standardised)},
          {"leverage", jsonNumber(row.leverage)},
          {"held_out", jsonNumber(row.heldOut)},
          {"times_held_out", row.timesHeldOut},
          {"fold", row.fold == 0 ? Json(nullptr) : Json(row.fold)}};
}

std::string exactOr(const std::optional<double>& value) { return value ? exact(*value) : std::string(); }

std::string coefficientsCsv(const Regression& result) {
  CsvText csv;
  csv.row({"term", "coefficient", "prepared_coefficient", "standard_error", "half_width", "t", "p", "fold_spread",
           "per_sd", "vif", "folds_chosen"});
  for (const RegressionTerm& term : result.terms)
    csv.row({term.name, exact(term.coefficient), exact(term.preparedCoefficient), exactOr(term.standardError),
             exactOr(term.halfWidth), exactOr(term.t), exactOr(term.p), exactOr(term.foldSpread), exactOr(term.perSd),
             exactOr(term.vif), result.validation ? std::to_string(term.foldsChosen) : std::string()});
  return csv.text();
}

std::string stepsCsv(const Regression& result) {
  CsvText csv;
  csv.row({"step", "descriptor", "action", "partial_f", "f", "s"});
  for (std::size_t k = 0; k < result.steps.size(); ++k) {
    const SelectionStep& step = result.steps[k];
    csv.row({std::to_string(k + 1), step.descriptor, step.entered ? "entered" : "removed", exactOr(step.partialF),
             exact(step.f), exact(step.s)});
  }
  return csv.text();
}

std::string runnersUpCsv(const Regression& result) {
  CsvText csv;
  csv.row({"descriptor", "in_model", "folds_chosen", "folds"});
  const std::string folds = std::to_string(result.plan.folds);
  for (std::size_t a = 1; a < result.terms.size(); ++a)
    csv.row({result.terms[a].name, "yes", std::to_string(result.terms[a].foldsChosen), folds});
  for (const SelectedDescriptor& runner : result.runnersUp)
    csv.row({runner.name, "no", std::to_string(runner.folds), folds});
  return csv.text();
}

}  // namespace

std::string toJson(const Regression& result) {
  Json json{{"schema", "studystats.mlr/1"}, {"version", version()}, {"used", jsonUsed(result.used)}};
  json["response"] = {
      {"name", result.response}, {"mean", jsonNumber(result.responseMean)}, {"sd", jsonNumber(result.responseSd)}};
  json["selection"] = {{"method", result.selection == Selection::Stepwise ? "stepwise" : "all"},
                       {"f_enter", result.fEnter},
                       {"f_remove", result.fRemove},
                       {"correlation_limit", result.corrLimit},
                       {"max_steps", result.maxSteps},
                       {"stop_reason", result.stopReason}};
  json["fit"] = jsonFit(result.fit);
  json["validation"] = jsonValidation(result);
  json["terms"] = Json::array();
  for (const RegressionTerm& term : result.terms) json["terms"].push_back(jsonTerm(term));
  json["condition_number"] = jsonNumber(result.conditionNumber);
  json["equation"] = jsonEquation(result.equation, "table");
  json["prepared_equation"] = jsonEquation(result.preparedEquation, "prepared");
  json["steps"] = Json::array();
  for (const SelectionStep& step : result.steps) json["steps"].push_back(jsonStep(step));
  json["runners_up"] = Json::array();
  for (const SelectedDescriptor& runner : result.runnersUp)
    json["runners_up"].push_back({{"name", runner.name}, {"folds_chosen", runner.folds}});
  json["level"] = result.level;
  json["leverage_limit"] = jsonNumber(result.leverageLimit);
  json["rows"] = Json::array();
  for (const RegressionRow& row : result.rows) json["rows"].push_back(jsonRow(row));
  json["remarks"] = jsonRemarks(result.remarks);
  return jsonText(json);
}

std::vector<CsvFile> toTables(const Regression& result) {
  return {{"coefficients.csv", coefficientsCsv(result)},
          {"steps.csv", stepsCsv(result)},
          {"selection.csv", runnersUpCsv(result)},
          {"rows.csv", rowsAsCsv(result)}};
}

std::string rowsAsCsv(const Regression& result) {
  CsvText csv;
  csv.row({"name", "role", "observed", "fitted", "residual", "standardised_residual", "leverage", "held_out",
           "times_held_out", "fold"});
  for (const RegressionRow& row : result.rows)
    csv.row({row.name, nameOf(row.role), exactOr(row.observed), exact(row.fitted), exactOr(row.residual),
             exactOr(row.standardised), exact(row.leverage), exactOr(row.heldOut),
             row.timesHeldOut == 0 ? std::string() : std::to_string(row.timesHeldOut),
             row.fold == 0 ? std::string() : std::to_string(row.fold)});
  return csv.text();
}

}  // namespace studystats
