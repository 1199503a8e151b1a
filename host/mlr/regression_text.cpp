// A regression as a page of plain text, and what would be analysed.
#include "host/distributions.h"
#include "host/folds.h"
#include "host/mlr/preparation.h"
#include "host/mlr/regression.h"
#include "host/mlr/regression_parts.h"
#include "host/preparation/used_text.h"
#include "host/result/write.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

std::string title(const Regression& result) {
  const std::size_t chosen = result.terms.size() - 1;
  const std::vector<std::string>& names = result.used.descriptors;
  const std::string range = names.size() > 2 ? fmt::format(" ({} ... {})", names.front(), names.back())
                                             : fmt::format(" ({})", fmt::join(names, ", "));
  const std::string text = wrapped(
      "", fmt::format("{} of {}: {}, {}{}, {} {}", stepwise(result) ? "Stepwise regression" : "Regression",
                      result.response, counted(result.used.rows.size(), "row"), counted(names.size(), "descriptor"),
                      range, chosen, stepwise(result) ? "chosen" : "in the model"));
  return stepwise(result) ? text + selectionText(result) + "\n" : text;
}

// "fitted | cross-validated", the honest figures beside; an abandoned validation shows its reason above.
std::string frame(const Regression& result) {
  const std::string why =
      result.validation ? std::string() : wrapped("not validated: ", result.validation.error()) + "\n";
  std::vector<std::string> figures = fitFigures(result);
  for (std::string& figure : figures) figure = plain(figure);
  return why + textFrame(regressionFrame(result), result.validation ? foldsText(result) : std::string()) +
         wrappedItems("", figures, "   ");
}

std::string termTable(const Regression& result, const TextOptions& options) {
  std::vector<std::string> fields{"term", "coefficient", "standard_error", "t", "p", "fold_spread", "per_sd", "vif"};
  if (stepwise(result)) fields.emplace_back("folds_chosen");
  return textTable(coefficientsPart(result), fields, options);
}

std::string path(const Regression& result) {
  if (!stepwise(result)) return {};
  std::vector<std::string> steps;
  for (const SelectionStep& step : result.steps) steps.push_back((step.entered ? "+" : "-") + step.descriptor);
  std::string last = "stopped: " + result.stopReason;
  if (result.stopReason.starts_with("stopped")) last = result.stopReason;
  return wrappedItems("Steps   ", steps.empty() ? std::vector<std::string>{"none"} : steps, " ") +
         wrapped("        ", last);
}

std::string stepTable(const Regression& result, const TextOptions& options) {
  return "\n" + textTable(stepsPart(result), {"step", "action", "descriptor", "partial_f", "f", "s"}, options);
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
  constexpr std::size_t kShown = 12;
  std::vector<std::size_t> predicted;
  for (std::size_t i = 0; i < result.rows.size(); ++i)
    if (result.rows[i].role == Role::Predicted) predicted.push_back(i);
  if (predicted.empty()) return {};
  ResultPart rows = regressionRowsPart(result);
  Field &name = fieldOf(rows, "name"), &fitted = fieldOf(rows, "fitted"), &error = fieldOf(rows, "residual");
  name.heading = "predicted only";
  name.value = [&](std::size_t i) { return shownRow(result.used, result.rows[i].name); };
  fitted.heading = result.response;
  fitted.format = figures(kAllFigures);
  error.heading = "error";
  error.format = figures(3);
  error.value = [&](std::size_t i) {  // of the prediction: the other sign
    const RegressionRow& row = result.rows[i];
    return row.observed ? Cell(row.fitted - *row.observed) : Cell();
  };
  return "\n" + textTable(rows, {"name", "fitted", "leverage", "observed", "residual"}, options, predicted, kShown);
}

}  // namespace

std::string summary(const Regression& result, const TextOptions& options) {
  std::string steps = path(result);
  if (!steps.empty())
    steps += (options.all && !result.steps.empty() ? stepTable(result, options) : std::string()) + "\n";
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
