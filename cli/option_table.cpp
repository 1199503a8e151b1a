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
const RegressionOptions kMlrOptions;
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
      row("--response NAME", kMlr, "the column to be modelled; rows without a value in it are predicted", "(required)"),
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
      row("--select HOW", kMlr,
          "how descriptors come into the model; all: every one that the correlation limit leaves:",
          nameOf(kSelections, kMlrOptions.selection), namesOf(kSelections)),
      row("--f-enter F", kMlr, "F-to-enter: the partial F that a descriptor needs to stay in",
          fmt::to_string(kMlrOptions.fEnter)),
      row("--f-remove F", kMlr, "F-to-remove: below it a descriptor leaves", fmt::to_string(kMlrOptions.fRemove)),
      row("--corr-limit R", kMlr, "largest absolute correlation between descriptors of the model; 1: no limit",
          fmt::to_string(kMlrOptions.corrLimit)),
      row("--max-steps N", kMlr, "most steps of the selection",
          unless(kMlrOptions.maxSteps == -1, "the larger of 10 and a fifth of the rows",
                 fmt::to_string(kMlrOptions.maxSteps))),
      repeated(row("--start LIST", kMlr, "descriptors that are in the model at the start, written as for --columns",
                   "(none)")),
      row("--folds FOLDS", kMlr,
          "how rows are held out: loo (leave-one-out), K groups dealt in the order of the response, or random:N:P% (N "
          "draws that each hold out P % of the rows)",
          fmt::to_string(kMlrOptions.folds.groups)),
      row("--seed N", kMlr, "0 ... 161803398: the same seed draws the same random folds",
          fmt::to_string(kMlrOptions.folds.seed)),
      row("--level P", kAnalyses, "the level of limits and intervals, between 0 and 1",
          fmt::to_string(kPcaOptions.level)),
  };
}

std::vector<Option> outputRows() {
  return {
      completing(Completes::Files, row("--output FILE.csv", kAnalyses,
                                       "writes one line a row: name, role, and what the analysis says of it", "(off)")),
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
      {kMlr,
       "mlr",
       {"TABLE"},
       "stepwise multiple linear regression, the selection cross-validated",
       "An equation for one response, its descriptors chosen by stepwise selection. Every fold repeats the whole "
       "selection on its own training rows, so that the cross-validated figures say what the equation predicts, and "
       "how "
       "often each descriptor was chosen says how much the choice can be trusted. --scale changes the prepared "
       "coefficients alone, not the equation.",
       "studystats mlr bloodbrain.csv --response logBBB --max-steps 12 --json model.json",
       "At most twelve steps; everything is written as JSON.",
       runMlr},
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
