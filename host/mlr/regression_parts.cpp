#include "host/mlr/regression_parts.h"

#include "host/folds.h"
#include "host/result/common.h"
#include "host/result/write.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

constexpr const char* kNotValidated = "Not validated.";
constexpr const char* kOfTheConstant = "Of the constant.";

const RegressionValidation* validationOf(const Regression& result) {
  return result.validation ? &*result.validation : nullptr;
}

// The part of the response's sum of squares that the model explains after each step. From the end backwards: after the
// last step stands the final model, and the degrees of freedom give each sum of squares from its s.
std::vector<double> r2OfSteps(const Regression& result) {
  std::vector<double> r2(result.steps.size());
  int df = result.fit.dfResidual;
  for (std::size_t k = result.steps.size(); k-- > 0;) {
    const SelectionStep& step = result.steps[k];
    r2[k] = 1 - step.s * step.s * df / result.fit.sumSqTotal;
    df += step.entered ? 1 : -1;
  }
  return r2;
}

ResultPart responsePart(const Regression& result) {
  const auto of = only(&result);
  return objectPart("response", "What is predicted, over the model's rows.",
                    {{"name", kText, of(&Regression::response), "The column."},
                     {"mean", figures(3), of(&Regression::responseMean), "Its mean.", "", "response"},
                     {"sd", "sd of " + result.response, figures(3), of(&Regression::responseSd),
                      "Its standard deviation, n - 1.", "", "response"}});
}

ResultPart settingsPart(const Regression& result) {
  const auto of = only(&result);
  return objectPart(
      "selection", "How descriptors were chosen.",
      {{"method", kText, [&result](std::size_t) { return stepwise(result) ? "stepwise" : "all"; }, "stepwise or all."},
       {"f_enter", figures(6), of(&Regression::fEnter), "F that a descriptor needs to enter."},
       {"f_remove", figures(6), of(&Regression::fRemove), "F below which it leaves."},
       {"correlation_limit", figures(6), of(&Regression::corrLimit),
        "Largest absolute correlation between descriptors of the model."},
       {"max_steps", kWhole, of(&Regression::maxSteps), "Most steps."},
       {"stop_reason", kText, of(&Regression::stopReason), "Why the selection ended."}});
}

}  // namespace

ResultPart fitPart(const RegressionFit& fit) {
  using Fit = RegressionFit;
  const auto of = only(&fit);
  return objectPart(
      "fit", "The equation on the rows that it was made from.",
      {{"r2", "R²", kExplained, of(&Fit::r2), "1 - sum of squared residuals / sum of squares about the mean."},
       {"adjusted_r2", "adjusted R²", kExplained, of(&Fit::adjustedR2), "R² for the degrees of freedom.",
        "No degrees of freedom are left."},
       {"multiple_r", "R", kExplained, of(&Fit::multipleR), "Correlation of observed and fitted values."},
       {"s", figures(3), of(&Fit::s), "Standard error of estimate.", "", "response"},
       {"rmse", "RMSE", figures(3), of(&Fit::rmse), "Root of the mean squared residual.", "", "response"},
       {"f", fmt::format("F({}, {})", fit.dfModel, fit.dfResidual), figures(3), of(&Fit::f),
        "Mean square of the model over that of the residuals."},
       {"f_probability", "p", kProbability, of(&Fit::fProbability), "Of an F so large by chance.",
        "It could not be computed."},
       {"df_model", kWhole, of(&Fit::dfModel), "Degrees of freedom of the model."},
       {"df_residual", kWhole, of(&Fit::dfResidual), "Degrees of freedom of the residuals."},
       {"sum_of_squares_model", figures(6), of(&Fit::sumSqModel), "Sum of squares of the model.", "", "response²"},
       {"sum_of_squares_residual", figures(6), of(&Fit::sumSqResidual), "Sum of squared residuals.", "", "response²"},
       {"sum_of_squares_total", figures(6), of(&Fit::sumSqTotal), "Sum of squares about the mean.", "", "response²"}});
}

ResultPart validationPart(const Regression& result) {
  using Validation = RegressionValidation;
  const auto of = only(validationOf(result));
  return objectPart(
      "validation", "What rows say that the equation has not seen: every fold selects again.",
      joined(
          {planFields(result.plan),
           {{"q2", "q²", kExplained, of(&Validation::q2), "1 - press / sum of squares about the mean.", kNotValidated},
            {"press", "PRESS", figures(3), of(&Validation::press),
             "Sum of squared errors of rows held out, weighted up to all rows.", kNotValidated, "response²"},
            {"rmse_cross_validated", "RMSE", figures(3), of(&Validation::rmse),
             "Root of press over the number of rows.", kNotValidated, "response"},
            {"fixed_set_q2", "q² with these descriptors kept", kExplained, of(&Validation::fixedSetQ2),
             "q² with the final descriptors in every fold; too good, as the rows held out helped to choose them.",
             "Not validated, or not with these descriptors."},
            {"reason", kText,
             [&result](std::size_t) {
               return result.validation ? Cell() : Cell("not validated: " + result.validation.error());
             },
             "Why there are no figures.", "Validated."}}}));
}

ResultPart coefficientsPart(const Regression& result) {
  using Term = RegressionTerm;
  const auto of = each(result.terms);
  const auto foldsChosen = [&result](std::size_t a) {
    return a == 0 || !result.validation ? Cell() : Cell(result.terms[a].foldsChosen);
  };
  return listPart(
      "coefficients", "The terms of the equation, the constant first.", result.terms.size(),
      {{"term", kText, of(&Term::name), "The descriptor, or (constant)."},
       {"coefficient", figures(kAllFigures), of(&Term::coefficient), "Of the descriptor as the table has it.", "",
        "response / descriptor"},
       {"prepared_coefficient", figures(kAllFigures), of(&Term::preparedCoefficient), "Of the descriptor as prepared.",
        "", "response"},
       {"standard_error", "std error", figures(4), of(&Term::standardError),
        "Of the coefficient; it does not know that descriptors were chosen on the same rows.",
        "It could not be computed.", "response / descriptor"},
       {"half_width", "+-", figures(4), of(&Term::halfWidth),
        "Of the coefficient's interval at the level, by Student's t.", "It could not be computed.",
        "response / descriptor"},
       {"t", decimals(2), of(&Term::t), "Coefficient over its standard error.", "It could not be computed."},
       {"p", kProbability, of(&Term::p), "Two-sided, of such a t by chance.", "It could not be computed."},
       {"fold_spread", figures(3), of(&Term::foldSpread), "Jackknife spread of the coefficient over the folds.",
        kNotValidated, "response / descriptor"},
       {"per_sd", result.responseSd >= 0.01 ? bar(3) : figures(3), of(&Term::perSd),
        "What the response changes by when the descriptor changes by one standard deviation.", kOfTheConstant,
        "response"},
       {"vif", "VIF", decimals(2), of(&Term::vif), "1 / (1 - R²) of the descriptor on the others.", kOfTheConstant},
       {"folds_chosen", "chosen", outOf(result.plan.folds), foldsChosen,
        "Folds whose own selection chose the descriptor.", "Of the constant; not validated."},
       {"same_as", listOf(kText), of(&Term::sameAs),
        "Descriptors set aside because they carry the same information."}});
}

ResultPart stepsPart(const Regression& result) {
  using Step = SelectionStep;
  const auto of = each(result.steps);
  return listPart("steps", "The selection step by step.", result.steps.size(),
                  {{"step", kWhole, [](std::size_t k) { return k + 1; }, "From 1."},
                   {"action", kText, of([](const Step& step) { return step.entered ? "entered" : "removed"; }),
                    "entered or removed."},
                   {"descriptor", kText, of(&Step::descriptor), "What entered or was removed."},
                   {"partial_f", "partial F", figures(4), of(&Step::partialF),
                    "Its F beside the descriptors in the model.", "Entered at the step limit, and was not tested."},
                   {"r2", "R²", kExplained, [r2 = r2OfSteps(result)](std::size_t k) { return r2[k]; },
                    "R² of the model after the step."},
                   {"s", figures(4), of(&Step::s), "Standard error of estimate after the step.", "", "response"},
                   {"f", "F", figures(4), of(&Step::f), "F of the model after the step."}});
}

ResultPart selectionFrequencyPart(const Regression& result) {
  std::vector<Choice> choices;
  for (std::size_t a = 1; a < result.terms.size(); ++a)
    choices.push_back({result.terms[a].name, result.terms[a].foldsChosen, true});
  for (const SelectedDescriptor& runner : result.runnersUp) choices.push_back({runner.name, runner.folds, false});
  return selectionFrequencyPart(std::move(choices), result.plan.folds);
}

ResultPart regressionRowsPart(const Regression& result) {
  using Row = RegressionRow;
  const auto of = each(result.rows);
  const Format unit = forSpread(result.responseSd);
  const auto heldOutResidual = [](const Row& row) {
    return row.observed && row.heldOut ? Cell(*row.observed - *row.heldOut) : Cell();
  };
  const char* unknown = "The response is not known.";
  const char* neverHeldOut = "Never held out.";
  return listPart(
      "rows", "The model's rows in table order, then those only predicted.", result.rows.size(),
      joined(
          {rowFields(result.used, result.rows),
           {{"observed", kGiven, of(&Row::observed), "The response in the table.", unknown, "response"},
            {"held_out", "predicted, held out", unit, of(&Row::heldOut),
             "Mean of its predictions while it was held out, by the folds' own selections.", neverHeldOut, "response"},
            {"held_out_residual", "error, held out", unit, of(heldOutResidual), "observed - held_out.", neverHeldOut,
             "response"}},
           foldFields(result.rows),
           {{"fitted", unit, of(&Row::fitted), "What the equation gives.", "", "response"},
            {"residual", unit, of(&Row::residual), "observed - fitted.", unknown, "response"},
            {"standardised_residual", "standardised", decimals(2), of(&Row::standardised),
             "Residual over s * root(1 - leverage).", "Not of the model, or its leverage is 1."},
            {"leverage", figures(3), of(&Row::leverage),
             "1/n and the squared distance from the middle of the model's rows; above leverage_limit a prediction "
             "is an extrapolation."}}}));
}

ResultPart regressionParts(const Regression& result) {
  const auto of = only(&result);
  return document(
      "studystats.mlr/1",
      {{"level", kShare, of(&Regression::level), "Of intervals and limits."},
       {"leverage_limit", figures(3), of(&Regression::leverageLimit), "3 (k + 1) / n, k descriptors, n rows."},
       {"condition_number", figures(3), of(&Regression::conditionNumber),
        "Root of the ratio of extreme eigenvalues of the descriptors' correlations.", "The model has no descriptors."},
       {"equation", kText, of([](const Regression& r) { return r.equation.exact(); }),
        "For descriptors as the table has them, with 17 digits."},
       {"prepared_equation", kText, of([](const Regression& r) { return r.preparedEquation.exact(); }),
        "For descriptors as prepared."}},
      {usedPart(result.used), responsePart(result), settingsPart(result), fitPart(result.fit), validationPart(result),
       coefficientsPart(result), stepsPart(result), selectionFrequencyPart(result), preparationPart(result.used),
       regressionRowsPart(result), remarksPart(result.remarks)});
}

bool stepwise(const Regression& result) { return result.selection == Selection::Stepwise; }

std::string foldsText(const Regression& result) {
  return describedFolds(result.plan) + (stepwise(result) ? ", selection repeated in each" : ", refitted in each");
}

std::string selectionText(const Regression& result) {
  return fmt::format("F-to-enter {}, F-to-remove {}, correlation limit {}, at most {}", brief(result.fEnter, 6),
                     brief(result.fRemove, 6), brief(result.corrLimit, 6),
                     counted(static_cast<std::size_t>(result.maxSteps), "step"));
}

std::vector<std::string> fitFigures(const Regression& result) {
  const ResultPart fit = fitPart(result.fit);
  std::vector<std::string> list;
  for (const char* name : {"f", "f_probability", "s", "multiple_r", "adjusted_r2"}) list.push_back(equation(fit, name));
  if (result.validation) list.push_back(equation(validationPart(result), "press"));
  list.push_back(equation(responsePart(result), "sd"));
  return list;
}

ReportFrame regressionFrame(const Regression& result) {
  const ResultPart fit = fitPart(result.fit), validation = validationPart(result);
  const bool done = static_cast<bool>(result.validation);
  const auto held = [&](const char* name) { return done ? shown(validation, name) : std::string("not validated"); };
  ReportFrame frame{{"", "fitted", "cross-validated"},
                    {{done ? "R² | q²" : "R²", shown(fit, "r2"), held("q2")},
                     {fmt::format("RMSE ({})", result.response), shown(fit, "rmse"), held("rmse_cross_validated")}}};
  if (done && result.validation->fixedSetQ2)
    frame.rows.push_back({columnOf(validation, "fixed_set_q2").heading, "", held("fixed_set_q2")});
  return frame;
}

std::string toJson(const Regression& result) { return jsonOf(regressionParts(result)); }
std::vector<CsvFile> toTables(const Regression& result) { return csvFiles(regressionParts(result)); }
std::string rowsAsCsv(const Regression& result) { return csvOf(regressionRowsPart(result)); }

}  // namespace studystats
