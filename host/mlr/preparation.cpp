// From a table and what is asked of it to the descriptors and the response of a regression.
#include "host/mlr/preparation.h"
#include "host/names.h"
#include "host/preparation/magnitude.h"
#include "host/preparation/same_information.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

void checkOptions(const RegressionOptions& options) {
  const auto refuse = [](const std::string& option, const std::string& text) {
    throw BadOptions(text, {.option = option});
  };
  if (options.response.empty()) refuse("--response", "--response NAME is missing: which column is to be modelled?");
  if (!(options.fEnter > 1e-6))
    refuse("--f-enter", fmt::format("--f-enter {} lets everything in; use --select all for that.", options.fEnter));
  if (!(options.fRemove >= 0))
    refuse("--f-remove", fmt::format("--f-remove {} is not an F value; it is 0 or more.", options.fRemove));
  if (!(options.corrLimit > 0 && options.corrLimit <= 1))
    refuse("--corr-limit", fmt::format("--corr-limit {} is not a correlation above 0 and up to 1; 1 switches it off.",
                                       options.corrLimit));
  if (options.maxSteps == 0 || options.maxSteps < -1)
    refuse("--max-steps",
           fmt::format("--max-steps {} leaves no step; use --select all for all descriptors.", options.maxSteps));
  if (!(options.level > 0 && options.level < 1))
    refuse("--level", fmt::format("--level {} is not a probability between 0 and 1, such as 0.95.", options.level));
}

std::vector<std::size_t> startOf(const UsedData& used, const std::vector<std::string>& patterns) {
  if (patterns.empty()) return {};
  TableView headings;
  headings.setName("the descriptors");
  for (const std::string& name : used.descriptors) headings.add(name, std::span<const double>());
  return matchingColumns(headings, patterns, "--start");
}

}  // namespace

std::optional<double> responseOf(const BlockRow& row, const std::string& response) {
  const TableView::Column* column = row.table->find(response);
  if (!column || column->kind != ColumnKind::Numeric || !std::isfinite(column->numbers[row.tableRow])) return {};
  return column->numbers[row.tableRow];
}

std::vector<double> responsesOf(const Prepared& data, const std::string& response) {
  const char* remedy = "Multiply the column by a power of ten.";
  std::vector<double> values;
  for (const BlockRow& row : data.modelRows) values.push_back(*responseOf(row, response));
  requireSize(values, kMostSize, response, values, remedy);
  std::vector<double> all = values;
  for (const BlockRow& row : data.predictedRows) all.push_back(responseOf(row, response).value_or(0));
  requireSize(all, kMostSize, response, all, remedy);
  return values;
}

double sampleSd(std::span<const double> values) {
  const auto n = static_cast<double>(values.size());
  const double mean = std::accumulate(values.begin(), values.end(), 0.0) / n;
  double squares = 0;
  for (const double x : values) squares += (x - mean) * (x - mean);
  return n > 1 ? std::sqrt(squares / (n - 1)) : 0;
}

PreparedRegression prepareRegression(const TableView& table, const RegressionOptions& options, Watch& watch) {
  checkOptions(options);
  checkFolds(options.folds);
  requireNumeric(table, options.response, "--response");
  PreparedRegression prepared;
  prepared.data = prepare(
      table, {.responses = {options.response}, .foldColumn = options.folds.column, .predictWithoutResponse = true},
      options.data, watch);
  const UsedData& used = prepared.data.used;
  prepared.response = responsesOf(prepared.data, options.response);
  const std::size_t n = prepared.response.size();
  if (n < 3)
    throw NotComputed(fmt::format("too few rows: a regression needs at least 3 with a response, and {} of {} {} left.",
                                  n, table.rows(), n == 1 ? "is" : "are"));
  requireDescriptors(prepared.data, table, "over the rows");
  if (isConstant(prepared.response))
    throw NotComputed(fmt::format("{} is {} in every row of the model: there is nothing to explain.", options.response,
                                  exact(prepared.response.front())));
  prepared.start = startOf(used, options.start);
  prepared.maxSteps = options.selection == Selection::All ? 0
                      : options.maxSteps > 0              ? options.maxSteps
                                                          : std::max(10, static_cast<int>(n / 5));
  prepared.folds = foldsThatCanRun(options.folds, labelsOf(prepared.data.modelRows, options.folds.column), used.rows,
                                   prepared.data.remarks);
  return prepared;
}

}  // namespace studystats
