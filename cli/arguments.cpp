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

InputOptions readInput(const CommandLine& line) {
  InputOptions input;
  input.table = line.operand(0);
  if (const auto* text = line.value("--delimiter")) input.read.delimiter = delimiter("--delimiter", *text);
  if (const auto* text = line.value("--decimal")) input.read.decimal = choice("--decimal", *text, kDecimals);
  if (input.read.delimiter != '\0' && input.read.delimiter == input.read.decimal)
    refuse("--decimal",
           fmt::format("--delimiter and --decimal cannot both be {}.", inQuotes({&input.read.decimal, 1})));
  input.read.missingAs = nameList("--missing-as", line.values("--missing-as"));
  return input;
}

OutputOptions readOutput(const CommandLine& line) {
  OutputOptions output;
  if (const auto* text = line.value("--json")) output.json = *text;
  if (const auto* text = line.value("--tables")) output.tables = *text;
  if (const auto* text = line.value("--output")) output.rows = *text;
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
  if (const auto* text = line.value("--folds")) analysis.folds = folds("--folds", *text);
  if (const auto* text = line.value("--seed")) analysis.folds.seed = wholeNumber("--seed", *text, 0, 161803398);
  if (const auto* text = line.value("--level")) analysis.level = level("--level", *text);
  arguments.output = readOutput(line);
  checkAllRead(line);
  return arguments;
}

}  // namespace studystats::cli
