// A regression as a page: what it predicts of rows held out, its coefficients, and how far its selection can be
// trusted.
#include "host/report/regression_page.h"

#include "host/folds.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/report/selection.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

bool stepwise(const Regression& result) { return result.selection == Selection::Stepwise; }

std::string foldText(const Regression& result) {
  return describedFolds(result.plan) + (stepwise(result) ? ", selection repeated in each" : ", refitted in each");
}

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

ReportFrame frameOf(const Regression& result) {
  const bool validated = static_cast<bool>(result.validation);
  const auto held = [&](auto figure) { return validated ? figure(*result.validation) : std::string("not validated"); };
  ReportFrame frame{{"", "fitted", "cross-validated"}, {}};
  frame.rows.push_back({validated ? "R² | q²" : "R²", explainedText(result.fit.r2),
                        held([](const RegressionValidation& v) { return explainedText(v.q2); })});
  frame.rows.push_back({fmt::format("RMSE ({})", result.response), significant(result.fit.rmse, 3),
                        held([](const RegressionValidation& v) { return significant(v.rmse, 3); })});
  if (validated && result.validation->fixedSetQ2)
    frame.rows.push_back({"q² with these descriptors kept", "", explainedText(*result.validation->fixedSetQ2)});
  return frame;
}

Table rowsOf(const Regression& result) {
  const auto rows = shown(result.rows);
  using Row = const RegressionRow*;
  ReportData data = rowData(result.rows);
  data.numbers("observed", rows, [](Row row) { return row->observed; })
      .numbers("heldOut", rows, [](Row row) { return row->heldOut; })
      .numbers("fitted", rows, [](Row row) { return row->fitted; })
      .numbers("heldOutError", rows,
               [](Row row) {
                 return row->observed && row->heldOut ? std::optional(*row->observed - *row->heldOut) : std::nullopt;
               })
      .numbers("residual", rows, [](Row row) { return row->residual; })
      .numbers("fold", rows,
               [](Row row) { return row->fold > 0 ? std::optional(static_cast<double>(row->fold)) : std::nullopt; })
      .numbers("timesHeldOut", rows, [](Row row) { return row->timesHeldOut; })
      .numbers("standardised", rows, [](Row row) { return row->standardised; })
      .numbers("leverage", rows, [](Row row) { return row->leverage; });
  return data.take();
}

// The spread over the folds in the unit of `perSd`.
std::optional<double> spreadPerSd(const RegressionTerm& term) {
  if (!term.perSd || !term.foldSpread || term.coefficient == 0) return std::nullopt;
  return std::abs(*term.foldSpread * *term.perSd / term.coefficient);
}

Table coefficientsOf(const Regression& result) {
  using Term = const RegressionTerm&;
  const bool validated = static_cast<bool>(result.validation);
  const auto end = [](Term term, double sign) {
    const std::optional<double> spread = spreadPerSd(term);
    return spread ? std::optional(*term.perSd + sign * *spread) : std::nullopt;
  };
  ReportData data("coefficients");
  data.texts("key", result.terms, [](Term term) { return "d:" + term.name; })
      .texts("term", result.terms, [](Term term) { return term.name; })
      .numbers("coefficient", result.terms, [](Term term) { return term.coefficient; })
      .numbers("perSd", result.terms, [](Term term) { return term.perSd; })
      .numbers("low", result.terms, [&](Term term) { return end(term, -1); })
      .numbers("high", result.terms, [&](Term term) { return end(term, 1); })
      .numbers("foldsChosen", result.terms,
               [&](Term term) {
                 return validated && &term != &result.terms.front()
                            ? std::optional(static_cast<double>(term.foldsChosen))
                            : std::nullopt;
               })
      .numbers("foldSpread", result.terms, [](Term term) { return term.foldSpread; })
      .numbers("standardError", result.terms, [](Term term) { return term.standardError; })
      .numbers("t", result.terms, [](Term term) { return term.t; })
      .numbers("p", result.terms, [](Term term) { return term.p; })
      .numbers("vif", result.terms, [](Term term) { return term.vif; });
  return data.take();
}

Table selectionOf(const Regression& result) {
  std::vector<Choice> choices;
  for (std::size_t a = 1; a < result.terms.size(); ++a)
    choices.push_back({result.terms[a].name, result.terms[a].foldsChosen, true});
  for (const SelectedDescriptor& runner : result.runnersUp) choices.push_back({runner.name, runner.folds, false});
  return selectionData(std::move(choices));
}

Table stepsOf(const Regression& result) {
  const std::vector<double> r2 = r2OfSteps(result);
  using Step = const SelectionStep&;
  const auto number = [&](Step step) { return static_cast<std::size_t>(&step - result.steps.data()); };
  ReportData data("steps");
  data.texts("key", result.steps, [](Step step) { return "d:" + step.descriptor; })
      .numbers("step", result.steps, [&](Step step) { return number(step) + 1; })
      .texts("label", result.steps,
             [&](Step step) {
               return fmt::format("{} {}{}", number(step) + 1, step.entered ? "" : "− ", step.descriptor);
             })
      .texts("change", result.steps, [](Step step) { return (step.entered ? "+ " : "− ") + step.descriptor; })
      .numbers("r2", result.steps, [&](Step step) { return r2[number(step)]; })
      .numbers("s", result.steps, [](Step step) { return step.s; })
      .numbers("f", result.steps, [](Step step) { return step.f; })
      .numbers("partialF", result.steps, [](Step step) { return step.partialF; });
  return data.take();
}

std::vector<ReportTable> tablesOf(const Regression& result) {
  const int folds = static_cast<int>(result.plan.folds);
  ReportTable coefficients{"coefficients",
                           "Coefficients",
                           result.equation.text(),
                           "coefficients",
                           {{"term", "term"},
                            {"coefficient", "coefficient", CellKind::Number, 6},
                            {"perSd", "effect per sd", CellKind::Bar, 3}}};
  if (result.validation && stepwise(result))
    coefficients.columns.push_back({"foldsChosen", "chosen", CellKind::Count, folds});
  const std::vector<ReportColumn> last{{"foldSpread", "fold spread", CellKind::Number, 3},
                                       {"standardError", "std error", CellKind::Number, 3},
                                       {"t", "t", CellKind::Fixed, 2},
                                       {"p", "p", CellKind::Probability},
                                       {"vif", "VIF", CellKind::Fixed, 2}};
  coefficients.columns.insert(coefficients.columns.end(), last.begin(), last.end());
  std::vector<ReportTable> tables{std::move(coefficients)};
  if (stepwise(result) && result.validation) tables.push_back(selectionTable(result.plan.folds));
  if (!result.steps.empty())
    tables.push_back({"steps",
                      "Steps of the selection",
                      result.stopReason,
                      "steps",
                      {{"step", "step", CellKind::Whole},
                       {"change", "descriptor"},
                       {"partialF", "partial F", CellKind::Number, 4},
                       {"r2", "R²", CellKind::Fixed, 3},
                       {"s", "s", CellKind::Number, 4},
                       {"f", "F", CellKind::Number, 4}}});
  const double sd = result.responseSd;
  ReportTable rows{"rows", "Rows", samplingText(result.rows.size()), "rows", {{"row", rowHeading(result.used)}}};
  if (!result.used.predictedRows.empty()) rows.columns.push_back({"role", "role"});
  rows.columns.push_back({"observed", "observed", CellKind::Value, 8});
  if (result.validation) {
    rows.columns.push_back(columnOfSize("heldOut", "predicted, held out", sd));
    rows.columns.push_back(columnOfSize("heldOutError", "error, held out", sd));
    rows.columns.push_back({"fold", "fold", CellKind::Whole});
  }
  rows.columns.push_back(columnOfSize("fitted", "fitted", sd));
  rows.columns.push_back(columnOfSize("residual", "residual", sd));
  rows.columns.push_back({"standardised", "standardised", CellKind::Fixed, 2});
  rows.columns.push_back({"leverage", "leverage", CellKind::Number, 3});
  tables.push_back(std::move(rows));
  return tables;
}

std::vector<ReportEntry> ownCard(const Regression& result) {
  std::vector<ReportEntry> card;
  if (stepwise(result))
    card.push_back(
        {"Selection", fmt::format("F-to-enter {}, F-to-remove {}, correlation limit {}, at most {} steps; {}",
                                  brief(result.fEnter, 6), brief(result.fRemove, 6), brief(result.corrLimit, 6),
                                  result.maxSteps, result.stopReason)});
  card.push_back(
      {"Folds", foldText(result) + (result.plan.kind == Folds::Kind::Random ? fmt::format("; seed {}", result.plan.seed)
                                                                            : std::string())});
  card.push_back({"Fit", fmt::format("F({}, {}) = {}, s = {}, R = {}, adjusted R² = {}", result.fit.dfModel,
                                     result.fit.dfResidual, significant(result.fit.f, 3), significant(result.fit.s, 3),
                                     explainedText(result.fit.multipleR), explainedText(result.fit.adjustedR2))});
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
  reading.push_back({"effect per sd",
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

std::vector<double> r2OfSteps(const Regression& result) {
  // From the end backwards: after the last step stands the final model, and the degrees of freedom give each sum of
  // squares from its s.
  std::vector<double> r2(result.steps.size());
  int df = result.fit.dfResidual;
  for (std::size_t k = result.steps.size(); k-- > 0;) {
    const SelectionStep& step = result.steps[k];
    r2[k] = 1 - step.s * step.s * df / result.fit.sumSqTotal;
    df += step.entered ? 1 : -1;
  }
  return r2;
}

ReportPage reportPage(const Regression& result, const ReportContext& context) {
  ReportPage page;
  page.analysis = "mlr";
  page.title = fmt::format("{} of {}", stepwise(result) ? "Stepwise regression" : "Regression", result.response);
  page.subtitle = fmt::format("{}, {} {}", madeFrom(result.used), result.terms.size() - 1,
                              stepwise(result) ? "chosen" : "in the model");
  page.answer = answerOf(result);
  if (!result.validation) page.banner = "Not validated: " + result.validation.error();
  page.frame = frameOf(result);
  page.data = {rowsOf(result), coefficientsOf(result), selectionOf(result), stepsOf(result)};
  page.figures = regressionFigures(result, page.data);
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
