#include "cli/option_table.h"

#include <studystats/host.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "cli/commands/commands.h"
#include "cli/messages.h"
#include "cli/outputs.h"
#include "cli/value_names.h"

namespace studystats::cli {
namespace {

using Words = std::vector<std::string>;

// The defaults, as their owners state them.
const ReadOptions kRead;
const PrincipalComponentsOptions kPcaOptions;
const DataOptions& kData = kPcaOptions.data;
const OutputOptions kOutput;

// A row: "--name PLACEHOLDER", the commands that have it, what it does, what holds without it, its words.
Option row(std::string_view spelled, unsigned commands, std::string help, std::string fallback = {}, Words words = {}) {
  Option option;
  const std::size_t blank = std::min(spelled.find(' '), spelled.size());
  option.name = spelled.substr(0, blank);
  option.placeholder = spelled.substr(std::min(blank + 1, spelled.size()));
  option.commands = commands;
  option.help = std::move(help);
  option.fallback = std::move(fallback);
  option.choices = std::move(words);
  return option;
}

Option repeated(Option option) {
  option.repeatable = true;
  return option;
}

Option completing(Completes what, Option option) {
  option.completes = what;
  return option;
}

// The default as a value of the option, or in words where the struct's value means "decided later".
std::string unless(bool unset, std::string_view words, std::string value) {
  return unset ? '(' + std::string(words) + ')' : value;
}

std::vector<Option> columnRows() {
  const std::string list = ": names, globs (vsa_*), ranges in table order (A..B), @FILE with one name a line";
  return {
      repeated(row("--columns LIST", kAnalyses, "the descriptor columns" + list,
                   "(every numeric column with no other use)")),
      repeated(row("--columns LIST", kDescribe, "the columns to describe" + list, "(all)")),
      repeated(row("--exclude LIST", kEveryCommand, "columns to leave out, written as for --columns", "(none)")),
      repeated(row("--response NAME[,NAME]", kPca, "columns to keep out of the analysis and carry along with the rows",
                   "(none)")),
      repeated(row("--response NAME[,NAME]", kDescribe, "columns to describe beside those of --columns", "(none)")),
      row("--class NAME", kPca,
          "the column of classes (numbers are read as text): kept out of the analysis, carried along with the rows",
          "(none)"),
      row("--class NAME", kDescribe, "a column of classes, described as text though it may hold numbers", "(none)"),
      row("--id NAME", kEveryCommand, "the column that names the rows",
          "(the first text column without repeats, else row numbers)"),
  };
}

std::vector<Option> tableRows() {
  return {
      row("--delimiter C", kEveryCommand, "what stands between cells: one character, or",
          unless(kRead.delimiter == '\0', "detected", {kRead.delimiter}), namesOf(kDelimiters)),
      row("--decimal C", kEveryCommand, "the decimal sign:", unless(kRead.decimal == '\0', "detected", {kRead.decimal}),
          namesOf(kDecimals)),
      repeated(row("--missing-as LIST", kEveryCommand,
                   "further texts that mean missing, beside empty, NA, N/A, NaN, ?, . and null", "(none)")),
  };
}

std::vector<Option> preparationRows() {
  return {
      row("--missing RULE", kAnalyses, "what is done about missing descriptor cells:",
          nameOf(kMissingRules, kData.missing.rule), namesOf(kMissingRules)),
      row("--scale NAME", kAnalyses, "preparation of the descriptors:", nameOf(kScalings, kData.scaling),
          namesOf(kScalings)),
      repeated(row("--transform NAME=KIND[+SHIFT]", kAnalyses,
                   "replaces a column by a function of it, or of it + SHIFT (- SHIFT); can be repeated. KIND is " +
                       anyOf(namesOf(kTransforms)),
                   "(none)")),
      repeated(row("--derive KIND[:LIST]", kAnalyses,
                   "adds columns made from those of LIST, or from every descriptor; can be repeated. KIND is " +
                       anyOf(namesOf(kDerivations)),
                   "(none)")),
  };
}

std::vector<Option> keptOutRows() {
  return {
      completing(Completes::Files,
                 row("--test FILE", kAnalyses, "the rows of another table, its columns found by name", "(none)")),
      repeated(row("--test-rows LIST", kAnalyses, "row numbers from 1, as in 51-60,72", "(none)")),
      row("--test-column NAME=VALUE", kAnalyses, "the rows whose cell in column NAME is VALUE", "(none)"),
  };
}

std::vector<Option> analysisRows() {
  return {
      row("--components K", kPca, "how many components are kept in output and limits",
          unless(kPcaOptions.components == 0, "the smallest number with 80 % explained, 2 ... 10",
                 fmt::to_string(kPcaOptions.components))),
      row("--level P", kAnalyses, "the level of the limits, between 0 and 1", fmt::to_string(kPcaOptions.level)),
  };
}

std::vector<Option> outputRows() {
  return {
      completing(Completes::Files,
                 row("--output FILE.csv", kAnalyses, "writes one line a row: name, role, scores, distances", "(off)")),
      completing(Completes::Files,
                 row("--json FILE", kEveryCommand,
                     "writes everything at full precision; - is standard output, in place of the summary", "(off)")),
      completing(Completes::Folders,
                 row("--tables DIR", kEveryCommand, "writes the same as CSV files into a folder", "(off)")),
      row("--digits N", kEveryCommand, "significant digits of the summary, 1 ... 17",
          fmt::to_string(kOutput.text.digits)),
      row("--all", kEveryCommand, "shows long tables in full"),
      row("--explain", kAnalyses, "says what would be analysed, and stops"),
  };
}

std::vector<Option> runningRows() {
  return {
      row("--strict", kEveryCommand, "a warning gives exit status 1"),
      row("--progress WHEN", kEveryCommand, "a bar on standard error, or (json) one object a line:",
          nameOf(kProgressChoices, kOutput.progress), namesOf(kProgressChoices)),
      row("--color WHEN", kEveryCommand, "coloured warnings and errors:", nameOf(kColorChoices, kOutput.color),
          namesOf(kColorChoices)),
      row("--quiet", kEveryCommand, "no summary, bar or notes: files, warnings and errors only"),
      row("--help", kEveryCommand, "shows this help"),
  };
}

}  // namespace

const std::vector<Command>& commands() {
  static const std::vector<Command> table = {
      {kDescribe,
       "describe",
       {"TABLE"},
       "what is in a table, and what to look at before modelling",
       "Counts, missing cells, means, spreads and shapes of every column; then what deserves a look before modelling: "
       "constant columns, columns that say the same, related columns, numbers that are only labels.",
       "studystats describe airquality.csv --exclude Month,Day",
       "Describes every column but two that label the rows.",
       runDescribe},
      {kPca,
       "pca",
       {"TABLE"},
       "principal components",
       "Principal components of the numeric columns: explained variance, loadings, what each column contributes, and "
       "rows that are unusual within the model plane or far from it.",
       "studystats pca wine.csv --class cultivar --components 3 --json wine.json",
       "Three components of the numeric columns; the classes are carried along, everything is written as JSON.",
       runPca},
  };
  return table;
}

const std::vector<Option>& options() {
  static const std::vector<Option> table = [] {
    const std::pair<Group, std::vector<Option>> groups[] = {
        {Group::Columns, columnRows()},  {Group::Table, tableRows()},       {Group::Preparation, preparationRows()},
        {Group::KeptOut, keptOutRows()}, {Group::Analysis, analysisRows()}, {Group::Output, outputRows()},
        {Group::Running, runningRows()},
    };
    std::vector<Option> all;
    for (const auto& [group, rows] : groups)
      for (const Option& option : rows) {
        all.push_back(option);
        all.back().group = group;
      }
    return all;
  }();
  return table;
}

}  // namespace studystats::cli
