// The figures of a regression's page.
#include "host/mlr/regression_parts.h"
#include "host/report/chart_file.h"
#include "host/report/predictions.h"
#include "host/report/regression_page.h"
#include "host/report/selection.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr std::size_t kNamedSteps = 24;  // of a longer path, steps are only numbered

PredictedRows predictionsOf(const Regression& result, const Table& rows) {
  const auto any = [&](auto test) { return std::any_of(result.rows.begin(), result.rows.end(), test); };
  return {{result.response},
          &rows,
          result.validation && any([](const RegressionRow& row) { return row.heldOut.has_value(); }),
          any([](const RegressionRow& row) { return row.role == Role::Predicted && row.observed; }),
          heldOutByDraws(result.plan, result.rows, kMeanOfPredictions)};
}

ReportFigure coefficientSpread(const Regression& result) {
  const bool spread = static_cast<bool>(result.validation);
  const std::size_t names = result.terms.size() - 1;
  return {"coefficient-spread", spread ? "Coefficients and their spread over folds" : "Coefficients",
          fmt::format("The effect of {} per standard deviation{}.", counted(names, "descriptor"),
                      spread ? ", with the spread over the folds" : ""),
          spread ? "A whisker that crosses zero belongs to a descriptor whose sign depends on which rows are there."
                 : "What the response changes by when a descriptor changes by one standard deviation.",
          filledChart("coefficient-spread", {{"validated", spread}, {"lines", names}})};
}

ReportFigure selectionPath(const Regression& result) {
  const std::size_t steps = result.steps.size();
  return {"selection-path", "Selection path",
          fmt::format("Line over {} steps of the selection; R², s or F of the fit after each.", steps),
          "Fitted figures after each step. Circles entered, triangles left. A fit always seems to gain by a step.",
          filledChart("selection-path", {{"steps", steps}, {"named", steps <= kNamedSteps}})};
}

ReportFigure williams(const Regression& result) {
  std::vector<std::string> series{"model"};
  if (!result.used.predictedRows.empty()) series.emplace_back("kept out: leverage alone");
  return {"williams", "Leverage against standardised residual",
          "Scatter plot of standardised residual against leverage of each row, with the limits of both.",
          fmt::format("Right of {} rows are unlike the others; beyond ±3 they do not follow the equation.",
                      significant(result.leverageLimit, 3)),
          filledChart("williams", {{"limit", result.leverageLimit}, {"series", series}})};
}

}  // namespace

std::vector<ReportFigure> regressionFigures(const Regression& result, const Table& rows, const Table& selection) {
  const PredictedRows predictions = predictionsOf(result, rows);
  std::vector<ReportFigure> figures{observedPredicted(predictions)};
  if (result.terms.size() > 1) figures.push_back(coefficientSpread(result));
  if (stepwise(result) && result.validation && selection.rows() > 0)
    figures.push_back(
        selectionFigure(selection, result.plan.folds, "open bars are runners-up that the equation does not have."));
  if (!result.steps.empty()) figures.push_back(selectionPath(result));
  figures.push_back(residuals(predictions));
  figures.push_back(williams(result));
  return figures;
}

}  // namespace studystats
