// studystats describe TABLE
#include <fmt/format.h>

#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/messages.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

// Columns that --response and --class name are described too, whatever --columns says.
void keep(const std::string& name, std::string_view option, const Table& table, DescribeOptions& analysis) {
  if (name.empty()) return;
  if (table.find(name) == nullptr) {
    std::vector<std::string> names;
    for (const TableColumn& column : table.columns) names.push_back(column.name);
    refuse(option, fmt::format("{} has no column {}.{}", table.name, inQuotes(name), suggestionFor(name, names)),
           nearest(name, names));
  }
  if (!analysis.columns.empty()) analysis.columns.push_back(name);
}

int runDescribe(const CommandLine& line) {
  DescribeArguments arguments = readDescribe(line);
  Run run("describe", arguments.input, arguments.output);
  run.readTables();
  for (const std::string& name : arguments.responses) keep(name, "--response", run.table(), arguments.analysis);
  keep(arguments.classColumn, "--class", run.table(), arguments.analysis);
  arguments.analysis.progress = run.progress();
  arguments.analysis.stop = run.stop();
  return run.finish(describe(run.table(), arguments.analysis));
}

}  // namespace

Command describeCommand() {
  return {
      kDescribe,
      "describe",
      {"TABLE"},
      "what is in a table, and what to look at before modelling",
      "Counts, missing cells, means, spreads and shapes of every column; then what deserves a look before modelling: "
      "constant columns, columns that say the same, related columns, numbers that are only labels.",
      "studystats describe airquality.csv --exclude Month,Day",
      "Describes every column but two that label the rows.",
      runDescribe};
}

}  // namespace studystats::cli
