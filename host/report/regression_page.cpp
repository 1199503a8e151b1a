// A regression as a page: what it predicts of rows held out, its coefficients, and how far its selection can be
// trusted.
#include "host/report/regression_page.h"

#include "host/mlr/regression_parts.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

std::string answerOf(const Regression& result) {
  if (!result.validation)
    return fmt::format("How well this equation predicts {} is not known: it was not validated.", result.response);
  const RegressionValidation& found = *result.validation;
  const std::string error =
      fmt::format("{} of rows left out is predicted with an error of about {} (cross-validated RMSE)", result.response,
                  significant(found.rmse, 3));
  if (found.q2 <= 0) return error + fmt::format(", no better than by the mean (q² = {}).", explainedText(found.q2));
  return error + fmt::format("; the equation explains {} of its variation there (q² = {}).", percent(found.q2, 0),
                             explainedText(found.q2));
}

std::vector<ReportTable> tablesOf(const Regression& result) {
  const bool validated = static_cast<bool>(result.validation), selected = stepwise(result) && validated;
  std::vector<std::string> fields{"term", "coefficient", "per_sd"};
  if (selected) fields.emplace_back("folds_chosen");
  for (const char* field : {"fold_spread", "standard_error", "t", "p", "vif"}) fields.emplace_back(field);
  std::vector<ReportTable> tables{pageTable(coefficientsPart(result), "Coefficients", result.equation.text(), fields)};
  if (selected)
    tables.push_back(pageTable(selectionFrequencyPart(result), "Selection frequency", "",
                               {"descriptor", "in_model", "folds_chosen"}));
  if (!result.steps.empty())
    tables.push_back(pageTable(stepsPart(result), "Steps of the selection", result.stopReason,
                               {"step", "action", "descriptor", "partial_f", "r2", "s", "f"}));
  fields = {"name"};
  if (!result.used.predictedRows.empty()) fields.emplace_back("role");
  fields.emplace_back("observed");
  if (validated) fields.insert(fields.end(), {"held_out", "held_out_residual", "fold"});
  fields.insert(fields.end(), {"fitted", "residual", "standardised_residual", "leverage"});
  tables.push_back(pageTable(regressionRowsPart(result), "Rows", samplingText(result.rows.size()), fields));
  return tables;
}

std::vector<ReportEntry> ownCard(const Regression& result) {
  std::vector<ReportEntry> card;
  if (stepwise(result)) card.push_back({"Selection", selectionText(result) + "; " + result.stopReason});
  card.push_back({"Folds", foldsText(result) + (result.plan.kind == Folds::Kind::Random
                                                    ? fmt::format("; seed {}", result.plan.seed)
                                                    : std::string())});
  card.push_back({"Fit", fmt::format("{}", fmt::join(fitFigures(result), ", "))});
  card.push_back({"Equation", result.equation.exact()});
  return card;
}

std::vector<ReportEntry> readingOf(const Regression& result) {
  std::vector<ReportEntry> reading;
  if (result.validation) {
    reading.push_back({"q² and RMSE, cross-validated",
                       "q² = 1 − PRESS / Σ(y − ȳ)², RMSE = √(PRESS / n), where PRESS = Σ(y − ŷ₋)² and ŷ₋ is the "
                       "prediction of a row by the fold that left it out" +
                           std::string(stepwise(result) ? ", its descriptors chosen again without that row." : ".")});
    if (result.validation->fixedSetQ2)
      reading.push_back({"q² with these descriptors kept",
                         "The same with the final descriptors in every fold. It is too good: the rows held out helped "
                         "to choose them."});
  }
  reading.push_back({"R², s", "R² = 1 − Σe² / Σ(y − ȳ)², s = √(Σe² / (n − k − 1)), e = y − ŷ, k descriptors."});
  reading.push_back({"per sd",
                     "What the response changes by when the descriptor changes by one standard "
                     "deviation. Its whisker is the fold spread in the same unit."});
  reading.push_back({"fold spread",
                     "The jackknife spread of the coefficient over the folds: how far it moves when rows "
                     "are left out."});
  reading.push_back({"t, p, std error",
                     "Of the final equation. They do not know that its descriptors were chosen on "
                     "the same rows, and are too good where they were."});
  reading.push_back({"VIF",
                     "1 / (1 − R²) of the descriptor on the others. Above 10 its coefficient cannot be read by "
                     "itself."});
  reading.push_back({"leverage", fmt::format("h = 1/n + (x − x̄)ᵀ(XᵀX)⁻¹(x − x̄). Above 3(k + 1)/n = {} a row lies at "
                                             "the edge of the table, and a prediction there is an extrapolation.",
                                             significant(result.leverageLimit, 3))});
  reading.push_back({"standardised residual", "e / (s √(1 − h)). Beyond 3 a row does not follow the equation."});
  return reading;
}

}  // namespace

ReportPage reportPage(const Regression& result, const ReportContext& context) {
  ReportPage page;
  page.analysis = "mlr";
  page.title = fmt::format("{} of {}", stepwise(result) ? "Stepwise regression" : "Regression", result.response);
  page.subtitle = fmt::format("{}, {} {}", madeFrom(result.used), result.terms.size() - 1,
                              stepwise(result) ? "chosen" : "in the model");
  page.answer = answerOf(result);
  if (!result.validation) page.banner = "Not validated: " + result.validation.error();
  page.frame = regressionFrame(result);
  page.data = {pageRows(regressionRowsPart(result)), pageData(coefficientsPart(result), "d:", "term"),
               pageData(selectionFrequencyPart(result), "d:", "descriptor"),
               pageData(stepsPart(result), "d:", "descriptor")};
  page.figures = regressionFigures(result, page.data[0], page.data[2]);
  page.tables = tablesOf(result);
  page.remarks = anchored(result.remarks, {{"unstable-selection", "selection-frequency"},
                                           {"collinear", "coefficients"},
                                           {"last-step-untested", "steps"},
                                           {"same-information", "coefficients"},
                                           {"high-leverage", "williams"},
                                           {"large-residuals", "williams"},
                                           {"outside-domain", "williams"}});
  remarkOnSampling(result.rows.size(), page);
  page.card = dataCard(result.used, ownCard(result), context);
  page.reading = readingOf(result);
  return page;
}

}  // namespace studystats
