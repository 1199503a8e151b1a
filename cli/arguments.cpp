#include "cli/arguments.h"

#include <fmt/format.h>

#include <limits>
#include <stdexcept>
#include <tuple>

namespace studystats::cli {
namespace {

void readName(const CommandLine& line, std::string_view option, std::string& name) {
  if (const std::string* text = line.value(option)) name = singleName(option, *text);
}

// A column whose cells are wanted as written though they may be numbers.
void readTextColumn(const CommandLine& line, std::string_view option, std::string& name, InputOptions& input) {
  readName(line, option, name);
  if (!name.empty()) input.read.asText.push_back(name);
}

void readDialect(const CommandLine& line, ReadOptions& read) {
  if (const auto* text = line.value("--delimiter")) read.delimiter = delimiter("--delimiter", *text);
  if (const auto* text = line.value("--decimal")) read.decimal = choice("--decimal", *text, kDecimals);
  if (read.delimiter != '\0' && read.delimiter == read.decimal)
    refuse("--decimal", fmt::format("--delimiter and --decimal cannot both be {}.", inQuotes({&read.decimal, 1})));
  read.missingAs = nameList("--missing-as", line.values("--missing-as"));
}

InputOptions readInput(const CommandLine& line) {
  InputOptions input;
  input.table = line.operand(0);
  readDialect(line, input.read);
  return input;
}

OutputOptions readOutput(const CommandLine& line) {
  OutputOptions output;
  if (const auto* text = line.value("--json")) output.json = *text;
  if (const auto* text = line.value("--tables")) output.tables = *text;
  if (const auto* text = line.value("--output")) output.rows = *text;
  if (const auto* text = line.value("--model")) output.model = *text;
  if (const auto* text = line.value("--report")) output.page = *text;
  output.command = line.typed();
  if (const auto* text = line.value("--digits")) output.text.digits = wholeNumber("--digits", *text, 1, 17);
  output.text.all = line.given("--all");
  output.explain = line.given("--explain");
  output.strict = line.given("--strict");
  output.quiet = line.given("--quiet");
  if (const auto* text = line.value("--progress")) output.progress = choice("--progress", *text, kProgressChoices);
  if (const auto* text = line.value("--color")) output.color = choice("--color", *text, kColorChoices);
  return output;
}

// Rows kept out: by one of three options.
void readTest(const CommandLine& line, TestRows& test, InputOptions& input) {
  std::vector<std::string> given;
  for (const char* option : {"--test", "--test-rows", "--test-column"})
    if (line.given(option)) given.emplace_back(option);
  if (given.size() > 1)
    refuse(given[1],
           fmt::format("{} and {} exclude each other: the rows kept out are named in one way.", given[0], given[1]));
  if (const auto* text = line.value("--test")) input.testTable = *text;
  if (input.testTable == "-" && input.table == "-") refuse("--test", "only one table can come from standard input.");
  input.testRows = rowRanges("--test-rows", line.values("--test-rows"));
  if (const auto* text = line.value("--test-column")) {
    std::tie(test.column, test.value) = nameAndValue("--test-column", *text);
    input.read.asText.push_back(test.column);
  }
}

DataOptions readData(const CommandLine& line, InputOptions& input) {
  DataOptions data;
  data.columns = nameList("--columns", line.values("--columns"));
  data.exclude = nameList("--exclude", line.values("--exclude"));
  readTextColumn(line, "--id", data.id, input);
  if (const auto* text = line.value("--missing")) data.missing = missingRule("--missing", *text);
  if (const auto* text = line.value("--scale")) data.scaling = choice("--scale", *text, kScalings);
  for (const auto& text : line.values("--transform")) data.transforms.push_back(transform("--transform", text));
  for (const auto& text : line.values("--derive")) data.derivations.push_back(derivation("--derive", text));
  readTest(line, data.test, input);
  return data;
}

// What every validated analysis has: its folds, and the level of its limits.
template <class Analysis>
void readValidation(const CommandLine& line, Analysis& analysis, InputOptions& input) {
  if (const auto* text = line.value("--folds")) analysis.folds = folds("--folds", *text);
  if (!analysis.folds.column.empty()) input.read.asText.push_back(analysis.folds.column);
  if (const auto* text = line.value("--seed")) analysis.folds.seed = wholeNumber("--seed", *text, 0, 161803398);
  if (const auto* text = line.value("--level")) analysis.level = level("--level", *text);
}

// An option of the table that no reader knows is a mistake in this program, and must not pass for one that works.
void checkAllRead(const CommandLine& line) {
  const auto unread = line.unread();
  if (!unread.empty()) throw std::logic_error(fmt::format("{} is declared but never read", unread.front()));
}

}  // namespace

DescribeArguments readDescribe(const CommandLine& line) {
  DescribeArguments arguments;
  arguments.input = readInput(line);
  arguments.analysis.columns = nameList("--columns", line.values("--columns"));
  arguments.analysis.exclude = nameList("--exclude", line.values("--exclude"));
  arguments.responses = nameList("--response", line.values("--response"));
  readTextColumn(line, "--class", arguments.classColumn, arguments.input);
  readTextColumn(line, "--id", arguments.analysis.id, arguments.input);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

PcaArguments readPca(const CommandLine& line) {
  PcaArguments arguments;
  arguments.input = readInput(line);
  arguments.analysis.data = readData(line, arguments.input);
  arguments.analysis.responses = nameList("--response", line.values("--response"));
  readTextColumn(line, "--class", arguments.analysis.classColumn, arguments.input);
  if (const auto* text = line.value("--components"))
    arguments.analysis.components = wholeNumber("--components", *text, 1, std::numeric_limits<int>::max());
  if (const auto* text = line.value("--level")) arguments.analysis.level = level("--level", *text);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

MlrArguments readMlr(const CommandLine& line) {
  MlrArguments arguments;
  RegressionOptions& analysis = arguments.analysis;
  arguments.input = readInput(line);
  analysis.data = readData(line, arguments.input);
  readName(line, "--response", analysis.response);
  if (const auto* text = line.value("--select")) analysis.selection = choice("--select", *text, kSelections);
  if (const auto* text = line.value("--f-enter")) analysis.fEnter = realNumber("--f-enter", *text);
  if (const auto* text = line.value("--f-remove")) analysis.fRemove = realNumber("--f-remove", *text);
  if (const auto* text = line.value("--corr-limit")) analysis.corrLimit = realNumber("--corr-limit", *text);
  if (const auto* text = line.value("--max-steps"))
    analysis.maxSteps = wholeNumber("--max-steps", *text, 1, std::numeric_limits<int>::max());
  analysis.start = nameList("--start", line.values("--start"));
  readValidation(line, analysis, arguments.input);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

PlsArguments readPls(const CommandLine& line) {
  PlsArguments arguments;
  PartialLeastSquaresOptions& analysis = arguments.analysis;
  arguments.input = readInput(line);
  analysis.data = readData(line, arguments.input);
  analysis.responses = nameList("--response", line.values("--response"));
  if (const auto* text = line.value("--components"))
    analysis.components = wholeNumber("--components", *text, 1, std::numeric_limits<int>::max());
  if (const auto* text = line.value("--choose")) analysis.choice = componentChoice("--choose", *text);
  readValidation(line, analysis, arguments.input);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

DaArguments readDa(const CommandLine& line) {
  DaArguments arguments;
  DiscriminantOptions& analysis = arguments.analysis;
  arguments.input = readInput(line);
  analysis.data = readData(line, arguments.input);
  readTextColumn(line, "--class", analysis.classColumn, arguments.input);
  if (const auto* text = line.value("--select")) analysis.selection = classSelection("--select", *text);
  if (const auto* text = line.value("--prior")) analysis.priors = priors("--prior", *text);
  analysis.classOrder = nameList("--class-order", line.values("--class-order"));
  readValidation(line, analysis, arguments.input);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

PredictArguments readPredict(const CommandLine& line) {
  PredictArguments arguments;
  PredictOptions& prediction = arguments.prediction;
  arguments.model = line.operand(0);
  arguments.table = line.operand(1);
  if (arguments.model == "-" && arguments.table == "-")
    refuse("", "only one of model and table can come from standard input.");
  readDialect(line, prediction.read);
  readName(line, "--id", prediction.id);
  readName(line, "--observed", prediction.observed);
  if (const auto* text = line.value("--components"))
    arguments.components = wholeNumber("--components", *text, 1, std::numeric_limits<int>::max());
  if (const auto* text = line.value("--level")) arguments.level = level("--level", *text);
  arguments.output = readOutput(line);
  if (arguments.output.text.all) prediction.shown = std::numeric_limits<std::size_t>::max();
  checkAllRead(line);
  return arguments;
}

ClusterArguments readCluster(const CommandLine& line) {
  ClusterArguments arguments;
  ClusterOptions& analysis = arguments.analysis;
  arguments.input = readInput(line);
  analysis.data = readData(line, arguments.input);
  analysis.responses = nameList("--response", line.values("--response"));
  readTextColumn(line, "--class", analysis.classColumn, arguments.input);
  if (const auto* text = line.value("--method")) analysis.method = choice("--method", *text, kClusterMethods);
  if (const auto* text = line.value("--distance")) analysis.distance = choice("--distance", *text, kDistances);
  // The library takes the default of --scale for none; here it can be told from what was asked for.
  if (analysis.distance == Distance::Tanimoto && line.given("--scale") && analysis.data.scaling != Scaling::None)
    refuse("--scale", "--distance tanimoto compares the table's own numbers: say --scale none, or leave it out.");
  if (const auto* text = line.value("--linkage")) analysis.linkage = choice("--linkage", *text, kLinkages);
  if (const auto* text = line.value("--clusters"))
    analysis.clusters = wholeNumber("--clusters", *text, 2, std::numeric_limits<int>::max());
  if (const auto* text = line.value("--threshold")) analysis.threshold = realNumber("--threshold", *text);
  if (const auto* text = line.value("--neighbours"))
    analysis.neighbours = wholeNumber("--neighbours", *text, 1, std::numeric_limits<int>::max());
  analysis.fixed = line.given("--fixed");
  if (const auto* text = line.value("--restarts")) analysis.restarts = wholeNumber("--restarts", *text, 1, 1000000);
  if (const auto* text = line.value("--seed")) analysis.seed = wholeNumber("--seed", *text, 0, 161803398);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

}  // namespace studystats::cli
