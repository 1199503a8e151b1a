// A regression as a page of plain text, and what would be analysed.
#include "host/distributions.h"
#include "host/folds.h"
#include "host/mlr/preparation.h"
#include "host/mlr/regression.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr int kPlainFigures = 4;  // decimals of R2 and q2 where three do not tell them from 1

std::string pText(const std::optional<double>& p) {
  if (!p) return "-";
  return *p < 0.0001 ? "<0.0001" : fixed(*p, 4);
}

std::string pEquals(const std::optional<double>& p) {
  if (!p) return "not computed";
  return *p < 0.0001 ? "< 0.0001" : "= " + fixed(*p, 4);
}

std::string r2Text(double r2) { return fixed(r2, r2 > 0.9995 && r2 < 1 ? kPlainFigures + 2 : 3); }

std::string title(const Regression& result) {
  const std::size_t chosen = result.terms.size() - 1;
  const std::vector<std::string>& names = result.used.descriptors;
  const std::string range = names.size() > 2 ? fmt::format(" ({} ... {})", names.front(), names.back())
                                             : fmt::format(" ({})", fmt::join(names, ", "));
  const bool stepwise = result.selection == Selection::Stepwise;
  std::string text =
      wrapped("", fmt::format("{} of {}: {}, {}{}, {} {}", stepwise ? "Stepwise regression" : "Regression",
                              result.response, counted(result.used.rows.size(), "row", "rows"),
                              counted(names.size(), "descriptor", "descriptors"), range, chosen,
                              stepwise ? "chosen" : "in the model"));
  if (stepwise)
    text += fmt::format("F-to-enter {}, F-to-remove {}, correlation limit {}, at most {}\n", brief(result.fEnter, 6),
                        brief(result.fRemove, 6), brief(result.corrLimit, 6),
                        counted(static_cast<std::size_t>(result.maxSteps), "step", "steps"));
  return text;
}

std::string foldPhrase(const Regression& result) {
  return describedFolds(result.plan) +
         (result.selection == Selection::Stepwise ? ", selection repeated in each" : ", refitted in each");
}

// "fitted | cross-validated", the honest figures beside; an abandoned validation shows no figure at all.
std::string frame(const Regression& result) {
  TextTable table;
  table.column("", Align::Left);
  table.column("fitted");
  table.column(result.validation ? fmt::format("cross-validated ({})", foldPhrase(result)) : "cross-validated",
               Align::Left);
  const RegressionFit& fit = result.fit;
  if (result.validation) {
    const RegressionValidation& v = *result.validation;
    const std::string fixedSet = v.fixedSetQ2 ? fmt::format("          {} with these {} kept in every fold",
                                                            r2Text(*v.fixedSetQ2), result.terms.size() - 1)
                                              : std::string();
    table.row({"R2 | q2", r2Text(fit.r2), r2Text(v.q2) + fixedSet});
    table.row({fmt::format("RMSE ({})", result.response), significant(fit.rmse, 3),
               fmt::format("{}           sd of {}  {}", significant(v.rmse, 3), result.response,
                           significant(result.responseSd, 3))});
  } else {
    table.row({"R2 | q2", r2Text(fit.r2), "not validated: " + result.validation.error()});
    table.row({fmt::format("RMSE ({})", result.response), significant(fit.rmse, 3), "-"});
  }
  std::string text = table.text();
  std::vector<std::string> figures{fmt::format("F({}, {}) = {}  p {}", fit.dfModel, fit.dfResidual,
                                               significant(fit.f, 3), pEquals(fit.fProbability)),
                                   fmt::format("s = {}", significant(fit.s, 3)),
                                   fmt::format("R = {}", r2Text(fit.multipleR)),
                                   fmt::format("adjusted R2 = {}", r2Text(fit.adjustedR2))};
  if (result.validation) figures.push_back(fmt::format("PRESS = {}", significant(result.validation->press, 3)));
  return text + wrappedItems("", figures, "   ");
}

std::string termTable(const Regression& result, const TextOptions& options) {
  TextTable table;
  table.column("term", Align::Left);
  table.column("coefficient", Align::Point);
  table.column("std error", Align::Point);
  table.column("t", Align::Point);
  table.column("p");
  table.column("fold spread", Align::Point);
  table.column("per sd", Align::Point);
  table.column("VIF", Align::Point);
  const bool stepwise = result.selection == Selection::Stepwise;
  if (stepwise) table.column("chosen", Align::Left);
  const bool decimals = result.responseSd >= 0.01;  // three of them say enough of a change in the response's unit
  for (std::size_t a = 0; a < result.terms.size(); ++a) {
    const RegressionTerm& term = result.terms[a];
    std::vector<std::string> cells{term.name,
                                   significant(term.coefficient, options.digits),
                                   significant(term.standardError, 4),
                                   term.t ? fixed(*term.t, 2) : "-",
                                   pText(term.p),
                                   significant(term.foldSpread, 3),
                                   !term.perSd ? std::string()
                                   : decimals  ? fixed(*term.perSd, 3)
                                               : significant(*term.perSd, 3),
                                   term.vif ? fixed(*term.vif, 2) : std::string()};
    if (stepwise)
      cells.push_back(a == 0              ? std::string()
                      : result.validation ? fmt::format("{} of {}", term.foldsChosen, result.plan.folds)
                                          : "-");
    table.row(std::move(cells));
  }
  return table.text();
}

std::string path(const Regression& result) {
  if (result.selection == Selection::All) return {};
  std::vector<std::string> steps;
  for (const SelectionStep& step : result.steps) steps.push_back((step.entered ? "+" : "-") + step.descriptor);
  std::string last = "stopped: " + result.stopReason;
  if (result.stopReason.starts_with("stopped")) last = result.stopReason;
  return wrappedItems("Steps   ", steps.empty() ? std::vector<std::string>{"none"} : steps, " ") +
         wrapped("        ", last);
}

std::string stepTable(const Regression& result) {
  TextTable table;
  table.column("step");
  table.column("descriptor", Align::Left);
  table.column("partial F", Align::Point);
  table.column("F", Align::Point);
  table.column("s", Align::Point);
  for (std::size_t k = 0; k < result.steps.size(); ++k) {
    const SelectionStep& step = result.steps[k];
    table.row({std::to_string(k + 1), (step.entered ? "+" : "-") + step.descriptor, significant(step.partialF, 4),
               significant(step.f, 4), significant(step.s, 4)});
  }
  return "\n" + table.text();
}

// The equation broken between its terms, continuation lines indented.
std::string equationLines(const Regression& result) {
  const std::string text = result.equation.text();
  std::vector<std::string> terms;
  for (std::size_t from = 0, at = 0; from < text.size(); from = at) {
    at = std::min(text.find(" + ", from + 1), text.find(" - ", from + 1));
    if (at == std::string::npos) at = text.size();
    terms.push_back(text.substr(from == 0 ? 0 : from + 1, at - from - (from == 0 ? 0 : 1)));
  }
  std::string lines, line;
  for (const std::string& term : terms) {
    if (!line.empty() && line.size() + 1 + term.size() > kTextWidth) {
      lines += line + "\n";
      line = "       ";
    }
    line += (line.empty() ? "" : " ") + term;
  }
  return lines + line + "\n";
}

std::string predictedTable(const Regression& result, const TextOptions& options) {
  if (result.used.predictedRows.empty()) return {};
  constexpr std::size_t kShown = 12;
  TextTable table;
  table.column("predicted only", Align::Left);
  table.column(result.response, Align::Point);
  table.column("leverage", Align::Point);
  table.column("observed", Align::Point);
  table.column("error", Align::Point);
  std::size_t seen = 0;
  for (const RegressionRow& row : result.rows) {
    if (row.role != Role::Predicted) continue;
    if (++seen > kShown && !options.all) continue;
    table.row({shownRow(result.used, row.name), significant(row.fitted, options.digits), significant(row.leverage, 3),
               row.observed ? brief(*row.observed, options.digits) : "-",
               row.observed ? significant(row.fitted - *row.observed, 3) : "-"});
  }
  if (seen > kShown && !options.all) table.line(fmt::format("... {} more", seen - kShown));
  return "\n" + table.text();
}

}  // namespace

std::string summary(const Regression& result, const TextOptions& options) {
  std::string steps = path(result);
  if (!steps.empty()) steps += (options.all && !result.steps.empty() ? stepTable(result) : std::string()) + "\n";
  return title(result) + leftOutText(result.used) + "\n" + frame(result) + "\n" + termTable(result, options) + "\n" +
         steps + equationLines(result) + predictedTable(result, options);
}

std::string explain(const TableView& table, const RegressionOptions& options) {
  Watch watch(options.progress, options.stop);
  const PreparedRegression prepared = prepareRegression(table, options, watch);
  const auto [low, high] = std::minmax_element(prepared.response.begin(), prepared.response.end());
  const std::size_t n = prepared.response.size();
  std::string text = explainedData(prepared.data.used);
  text += wrapped("response      ",
                  fmt::format("{} ({} values, {} to {})", options.response, n, brief(*low, 6), brief(*high, 6)));
  if (options.selection == Selection::Stepwise)
    text += wrapped("selection     ",
                    fmt::format("F-to-enter {} (about p {}), F-to-remove {}, correlation limit {}, at most {} steps",
                                brief(options.fEnter, 6),
                                significant(1 - fProbability(options.fEnter, 1, static_cast<double>(n) - 2), 2),
                                brief(options.fRemove, 6), brief(options.corrLimit, 6), prepared.maxSteps));
  else
    text += wrapped("selection     ",
                    fmt::format("every descriptor within the correlation limit {}", brief(options.corrLimit, 6)));
  text += wrapped("validation    ", explainedFolds(prepared.folds, n, options.response) +
                                        (options.selection == Selection::Stepwise ? "; selection repeated in each"
                                                                                  : "; refitted in each"));
  text += explainedRemarks(prepared.data.remarks);
  return text + "nothing was analysed (--explain)\n";
}

}  // namespace studystats
