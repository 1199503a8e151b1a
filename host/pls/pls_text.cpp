// A partial least squares model as a page of plain text, and what would be analysed.
#include "host/folds.h"
#include "host/pls/pls.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

constexpr std::size_t kShownDescriptors = 12;
constexpr std::size_t kShownRows = 12;

constexpr int kFigures = 4;  // of errors, at the size of the response's spread

std::string title(const PartialLeastSquares& result) {
  std::vector<std::string> names;
  for (const PlsResponse& response : result.responses) names.push_back(response.name);
  const std::vector<std::string>& descriptors = result.used.descriptors;
  const std::string range = descriptors.size() > 2
                                ? fmt::format(" ({} ... {})", descriptors.front(), descriptors.back())
                                : fmt::format(" ({})", fmt::join(descriptors, ", "));
  std::string text = wrapped("", fmt::format("Partial least squares of {}: {}, {}{}, {}", listed(names, 8),
                                             counted(result.used.rows.size(), "row", "rows"),
                                             counted(descriptors.size(), "descriptor", "descriptors"), range,
                                             describedScaling(result.used.scaling)));
  const std::size_t out = result.used.predictedRows.size();
  if (out > 0) text += fmt::format("{} kept out and only predicted\n", counted(out, "row", "rows"));
  return text;
}

std::string markOf(const PartialLeastSquares& result, const PlsResponse& response, std::size_t a) {
  const auto kept = static_cast<std::size_t>(result.kept);
  if (a + 1 == kept) return "<- chosen";
  if (result.choice.kind == ComponentChoice::Kind::Ratio && a == kept &&
      response.components[a].ratio > result.choice.limit)
    return "above " + brief(result.choice.limit, 4);
  return {};
}

std::string componentTable(const PartialLeastSquares& result, const PlsResponse& response) {
  TextTable table;
  table.column("components");
  for (const char* heading : {"X explained", "R2", "q2", "RMSE fit", "RMSE cv", "PRESS", "ratio"})
    table.column(heading);
  table.column("", Align::Left);
  const double sd = response.sd;
  for (std::size_t a = 0; a < response.components.size(); ++a) {
    const PlsFigures& figures = response.components[a];
    table.row({std::to_string(a + 1), a < result.explained.size() ? percent(result.explained[a]) : "-",
               fixed(figures.r2, 4), fixed(figures.q2, 4), sized(figures.rmse, sd, kFigures),
               sized(figures.crossValidatedRmse, sd, kFigures), sized(figures.press, sd * sd, kFigures),
               fixed(figures.ratio, 3), markOf(result, response, a)});
  }
  return table.text();
}

std::string componentTables(const PartialLeastSquares& result) {
  std::string text;
  for (const PlsResponse& response : result.responses) {
    if (result.responses.size() > 1) text += (text.empty() ? "" : "\n") + response.name + "\n";
    text += componentTable(result, response);
  }
  return text;
}

std::string chosenText(const PartialLeastSquares& result) {
  const std::string kept = counted(static_cast<std::size_t>(result.kept), "component", "components");
  if (result.choice.kind == ComponentChoice::Kind::Minimum)
    return wrapped("", fmt::format("Chosen: {}, where PRESS is least (--choose min).", kept));
  if (result.choice.kind == ComponentChoice::Kind::Number)
    return wrapped("", fmt::format("Chosen: {}, as asked (--choose {}).", kept, result.choice.number));
  const std::string limit = brief(result.choice.limit, 4);
  const std::string every = result.responses.size() > 1 ? " for every response" : "";
  const auto last = static_cast<std::size_t>(result.kept - 1);
  const bool failed = std::all_of(result.responses.begin(), result.responses.end(), [&](const PlsResponse& response) {
    return response.components[last].ratio > result.choice.limit;
  });
  if (failed)
    return wrapped(
        "", fmt::format("Chosen: {}, although its PRESS(1)/RSS(0) (square root) exceeds {}{} (--choose ratio={}).",
                        kept, limit, every, limit));
  if (result.kept == result.computed)
    return wrapped("",
                   fmt::format("Chosen: {}, all that were computed: PRESS(a)/RSS(a-1) (square root) stays within {} "
                               "(--choose ratio={}; more with --components).",
                               kept, limit, limit));
  return wrapped("", fmt::format("Chosen: {}, the last before PRESS(a)/RSS(a-1) (square root) exceeds {}{} (--choose "
                                 "ratio={}).",
                                 kept, limit, every, limit));
}

// Fitted, cross-validated and kept out beside each other.
std::string frame(const PartialLeastSquares& result) {
  const std::string kept = counted(static_cast<std::size_t>(result.kept), "component", "components");
  const bool known = std::any_of(result.responses.begin(), result.responses.end(),
                                 [](const PlsResponse& response) { return response.predicted.has_value(); });
  TextTable table;
  table.column(result.responses.size() == 1 ? result.responses.front().name + ", " + kept : kept, Align::Left);
  table.column("RMSE fitted");
  table.column("cross-validated");
  if (known) {
    table.column("kept-out rows");
    table.column("bias");
  }
  table.column("sd");
  for (const PlsResponse& response : result.responses) {
    const PlsFigures& figures = response.components[static_cast<std::size_t>(result.kept - 1)];
    const double sd = response.sd;
    std::vector<std::string> cells{response.name, sized(figures.rmse, sd, kFigures),
                                   sized(figures.crossValidatedRmse, sd, kFigures)};
    if (known) {
      cells.push_back(response.predicted ? sized(response.predicted->rmse, sd, kFigures) : "-");
      cells.push_back(response.predicted ? sized(response.predicted->bias, sd, kFigures) : "-");
    }
    cells.push_back(sized(sd, sd, kFigures));
    table.row(std::move(cells));
  }
  return table.text();
}

std::vector<std::size_t> byVip(const PartialLeastSquares& result, bool all) {
  std::vector<std::size_t> order(result.vip.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return result.vip[a] > result.vip[b]; });
  if (!all) order.resize(std::min(order.size(), kShownDescriptors));
  return order;
}

std::string coefficientTable(const PartialLeastSquares& result, const TextOptions& options) {
  const bool one = result.responses.size() == 1;
  TextTable table;
  table.column("largest VIP", Align::Left);
  if (one) {
    table.column("coefficient", Align::Point);
    table.column("jackknife error", Align::Point);
    table.column("ratio");
  }
  table.column("VIP");
  if (!one)
    for (const PlsResponse& response : result.responses) table.column(response.name, Align::Point);
  for (const std::size_t j : byVip(result, options.all)) {
    std::vector<std::string> cells{result.used.descriptors[j]};
    if (one) {
      const double coefficient = result.responses[0].coefficients[j], error = result.responses[0].coefficientErrors[j];
      cells.push_back(significant(coefficient, options.digits));
      cells.push_back(significant(error, 4));
      cells.push_back(error > 0 ? fixed(coefficient / error, 1) : "-");
    }
    cells.push_back(fixed(result.vip[j], 2));
    if (!one)
      for (const PlsResponse& response : result.responses)
        cells.push_back(significant(response.coefficients[j], options.digits));
    table.row(std::move(cells));
  }
  std::vector<std::string> constants;
  for (const PlsResponse& response : result.responses)
    constants.push_back((one ? "" : response.name + " ") + significant(response.constant, options.digits));
  const auto above = std::count_if(result.vip.begin(), result.vip.end(), [](double vip) { return vip > 1; });
  return table.text() + wrapped("", fmt::format("{} of {} descriptors have VIP > 1; {} {}", above, result.vip.size(),
                                                one ? "constant" : "constants", listed(constants, 12)));
}

std::string predictedTable(const PartialLeastSquares& result, const TextOptions& options) {
  if (result.used.predictedRows.empty()) return {};
  const bool one = result.responses.size() == 1;
  TextTable table;
  table.column("predicted only", Align::Left);
  for (const PlsResponse& response : result.responses) table.column(response.name, Align::Point);
  if (one) {
    table.column("observed", Align::Point);
    table.column("error", Align::Point);
  }
  table.column("T2");
  table.column("Q / limit");
  table.column("domain", Align::Left);
  std::size_t seen = 0;
  for (const PlsRow& row : result.rows) {
    if (row.role != Role::Predicted) continue;
    if (++seen > kShownRows && !options.all) continue;
    std::vector<std::string> cells{shownRow(result.used, row.name)};
    for (const double fitted : row.fitted) cells.push_back(significant(fitted, options.digits));
    if (one) {
      cells.push_back(brief(row.observed[0], options.digits));
      cells.push_back(row.observed[0] ? significant(row.fitted[0] - *row.observed[0], 3) : "-");
    }
    cells.push_back(significant(row.t2, 3));
    cells.push_back(result.qLimit ? significant(row.q / *result.qLimit, 3) : "-");
    cells.push_back(outsideDomain(result, row) ? "outside" : "inside");
    table.row(std::move(cells));
  }
  if (seen > kShownRows && !options.all) table.line(fmt::format("... {} more", seen - kShownRows));
  return "\n" + table.text();
}

std::string choiceText(const ComponentChoice& choice) {
  switch (choice.kind) {
    case ComponentChoice::Kind::Ratio:
      return fmt::format("as long as the root of PRESS(a)/RSS(a-1) is at most {}", brief(choice.limit, 4));
    case ComponentChoice::Kind::Minimum:
      return "where PRESS is least";
    case ComponentChoice::Kind::Number:
      break;
  }
  return fmt::format("{} kept", choice.number);
}

}  // namespace

std::string summary(const PartialLeastSquares& result, const TextOptions& options) {
  return title(result) + leftOutText(result.used) + "Validation: " + describedFolds(result.plan) + "\n\n" +
         componentTables(result) + "\n" + chosenText(result) + "\n" + frame(result) + "\n" +
         coefficientTable(result, options) + predictedTable(result, options);
}

std::string explain(const TableView& table, const PartialLeastSquaresOptions& options) {
  Watch watch(options.progress, options.stop);
  const PreparedPls prepared = preparePls(table, options, watch);
  std::string text = explainedData(prepared.data.used);
  for (std::size_t k = 0; k < options.responses.size(); ++k) {
    const std::vector<double>& values = prepared.responses[k];
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    text += wrapped("response      ", fmt::format("{} ({} values, {} to {})", options.responses[k], values.size(),
                                                  brief(*low, 6), brief(*high, 6)));
  }
  text += wrapped("components    ", fmt::format("{} computed; {}", prepared.components, choiceText(options.choice)));
  text += wrapped("validation    ", explainedFolds(prepared.folds, prepared.block.rows, options.responses.front()) +
                                        "; refitted in each");
  text += explainedRemarks(prepared.data.remarks);
  return text + "nothing was analysed (--explain)\n";
}

}  // namespace studystats
