// The options of partial least squares checked; its descriptors and responses taken from the table, with means of 0.
#include "host/pls/preparation.h"

#include "host/mlr/preparation.h"
#include "host/preparation/same_information.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <string>

namespace studystats {
namespace {

constexpr int kDefaultComponents = 10;

void checkOptions(const PartialLeastSquaresOptions& options) {
  const auto refuse = [](const std::string& option, const std::string& text) {
    throw BadOptions(text, {.option = option});
  };
  if (options.responses.empty()) refuse("--response", "--response NAME is missing: which columns are to be modelled?");
  std::set<std::string> seen;
  for (const std::string& name : options.responses)
    if (!seen.insert(name).second) refuse("--response", fmt::format("--response names {} twice.", name));
  if (options.components < 0)
    refuse("--components",
           fmt::format("--components {} is not a number of components; it counts from 1.", options.components));
  if (options.choice.kind == ComponentChoice::Kind::Ratio && !(options.choice.limit > 0))
    refuse("--choose", fmt::format("--choose ratio={} is not a ratio above 0, such as 0.95.", options.choice.limit));
  if (options.choice.kind == ComponentChoice::Kind::Number && options.choice.number < 1)
    refuse("--choose", fmt::format("--choose {} keeps nothing; it counts from 1.", options.choice.number));
  if (!(options.level > 0 && options.level < 1))
    refuse("--level", fmt::format("--level {} is not a probability between 0 and 1, such as 0.95.", options.level));
  checkFolds(options.folds);
}

double meanOf(std::span<const double> values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// Appends a column to the block with mean 0; `shift` and `scale` are what it was prepared with before.
void addCentred(PreparedPls& prepared, std::span<const double> column, double shift, double scale) {
  const double mean = meanOf(column);
  for (const double value : column) prepared.block.values.push_back(value - mean);
  ++prepared.block.columns;
  prepared.means.push_back(shift + scale * mean);
  prepared.scales.push_back(scale);
}

bool leavesAMean(Scaling scaling) { return scaling == Scaling::Range || scaling == Scaling::None; }

// Descriptors as prepared, but with mean 0 whatever the scaling; responses centred, and autoscaled when the descriptors
// are.
void fillBlock(PreparedPls& prepared, Scaling scaling) {
  const Prepared& data = prepared.data;
  prepared.block.rows = data.model.rows;
  for (std::size_t j = 0; j < data.model.columns; ++j) {
    const std::span<const double> column = data.model.column(j);
    if (leavesAMean(scaling)) {
      addCentred(prepared, column, data.used.shift[j], data.used.scale[j]);
      continue;
    }
    prepared.block.values.insert(prepared.block.values.end(), column.begin(), column.end());
    ++prepared.block.columns;
    prepared.means.push_back(data.used.shift[j]);
    prepared.scales.push_back(data.used.scale[j]);
  }
  for (const std::vector<double>& response : prepared.responses) {
    const double scale = scaling == Scaling::Autoscale ? sampleSd(response) : 1;
    const double mean = meanOf(response);
    for (const double value : response) prepared.block.values.push_back((value - mean) / scale);
    ++prepared.block.columns;
    prepared.means.push_back(mean);
    prepared.scales.push_back(scale);
  }
}

void requireEnough(const PreparedPls& prepared, const TableView& table, const PartialLeastSquaresOptions& options) {
  const std::size_t n = prepared.data.modelRows.size();
  if (n < 3)
    throw NotComputed(fmt::format("too few rows: partial least squares needs at least 3 with {}, and {} of {} {} left.",
                                  options.responses.size() == 1 ? "a response" : "every response", n, table.rows(),
                                  n == 1 ? "is" : "are"));
  requireDescriptors(prepared.data, table, "over the rows");
  for (std::size_t k = 0; k < prepared.responses.size(); ++k)
    if (isConstant(prepared.responses[k]))
      throw NotComputed(fmt::format("{} is {} in every row of the model: there is nothing to explain.",
                                    options.responses[k], exact(prepared.responses[k].front())));
}

// Rows and columns support min(p, n - 1) components, and a fold no more than its training rows.
void setComponents(PreparedPls& prepared, const PartialLeastSquaresOptions& options) {
  const std::size_t n = prepared.data.modelRows.size();
  const std::size_t held = prepared.folds.kind == Folds::Kind::LeaveOneOut ? 1
                           : prepared.folds.kind == Folds::Kind::Systematic
                               ? (n - 1) / static_cast<std::size_t>(prepared.folds.groups) + 1
                               : planOf(1, prepared.folds, n).largest;
  const auto most = static_cast<int>(std::min({prepared.descriptors(), n - 1, n - held}));
  int wanted = options.components;
  if (options.choice.kind == ComponentChoice::Kind::Number) wanted = std::max(wanted, options.choice.number);
  prepared.components = std::min(wanted == 0 ? kDefaultComponents : wanted, most);
  if (prepared.components < wanted)
    prepared.data.remarks.push_back(
        {Severity::Note,
         "components-lowered",
         fmt::format("{} components were lowered to {}, the most that {} and {} can support in every fold.", wanted,
                     most, counted(n, "row", "rows"), counted(prepared.descriptors(), "descriptor", "descriptors")),
         {}});
}

}  // namespace

PreparedPls preparePls(const TableView& table, const PartialLeastSquaresOptions& options, Watch& watch) {
  checkOptions(options);
  for (const std::string& response : options.responses) requireNumeric(table, response, "--response");
  PreparedPls prepared;
  prepared.data = prepare(
      table, {.responses = options.responses, .foldColumn = options.folds.column, .predictWithoutResponse = true},
      options.data, watch);
  for (const std::string& response : options.responses)
    prepared.responses.push_back(responsesOf(prepared.data, response));
  requireEnough(prepared, table, options);
  prepared.folds = foldsThatCanRun(options.folds, labelsOf(prepared.data.modelRows, options.folds.column),
                                   prepared.data.used.rows, prepared.data.remarks);
  fillBlock(prepared, options.data.scaling);
  setComponents(prepared, options);
  return prepared;
}

}  // namespace studystats
