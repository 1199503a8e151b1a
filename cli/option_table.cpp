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
const PartialLeastSquaresOptions kPlsOptions;
const DiscriminantOptions kDaOptions;
const ClusterOptions kClusterOptions;
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
      repeated(row("--exclude LIST", kEveryAnalysis, "columns to leave out, written as for --columns", "(none)")),
      repeated(row("--response NAME[,NAME]", kPca, "columns to keep out of the analysis and carry along with the rows",
                   "(none)")),
      repeated(row("--response NAME[,NAME]", kCluster,
                   "columns to keep out of the analysis; their means in each cluster are shown", "(none)")),
      repeated(row("--response NAME[,NAME]", kDescribe, "columns to describe beside those of --columns", "(none)")),
      row("--response NAME", kMlr, "the column to be modelled; rows without a value in it are predicted", "(required)"),
      repeated(row("--response NAME[,NAME]", kPls,
                   "the columns to be modelled; rows that miss a value in one are predicted", "(required)")),
      row("--class NAME", kDa,
          "the column of classes (numbers are read as text); rows without a value in it are classified", "(required)"),
      row("--class NAME", kPca,
          "the column of classes (numbers are read as text): kept out of the analysis, carried along with the rows",
          "(none)"),
      row("--class NAME", kCluster,
          "the column of classes (numbers are read as text): kept out of the analysis, counted in each cluster",
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
      row("--components A", kPls, "how many components are computed",
          unless(kPlsOptions.components == 0, "10, or what rows and columns allow",
                 fmt::to_string(kPlsOptions.components))),
      row("--choose RULE", kPls,
          "how many of them are kept: ratio=L (as long as the root of PRESS(a) / RSS(a - 1) is at most L for some "
          "response), min (where PRESS is least), or a number",
          fmt::format("ratio={}", kPlsOptions.choice.limit)),
      row("--select HOW", kMlr,
          "how descriptors come into the model; all: every one that the correlation limit leaves:",
          nameOf(kSelections, kMlrOptions.selection), namesOf(kSelections)),
      row("--select HOW", kDa,
          "how descriptors come into the classifier: auto (step by step, as long as it gains), all, or N steps",
          nameOf(kClassSelections, kDaOptions.selection.kind)),
      row("--prior PRIOR", kDa,
          "prior probabilities, for posteriors alone: equal, size (as the classes are), or one number a class, in "
          "their "
          "order, as in 0.5,0.3,0.2",
          nameOf(kPriors, kDaOptions.priors.kind)),
      repeated(row("--class-order LIST", kDa, "classes that come first, in this order", "(as they appear)")),
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
      row("--method NAME", kCluster,
          "a history of merges that can be cut, clusters around means, or lists of each row's nearest rows:",
          nameOf(kClusterMethods, kClusterOptions.method), namesOf(kClusterMethods)),
      row("--distance NAME", kCluster,
          "between two rows; tanimoto: of fingerprints and counts, as they stand in the table (--scale none):",
          nameOf(kDistances, kClusterOptions.distance), namesOf(kDistances)),
      row("--linkage NAME", kCluster, "hierarchical: the distance between two groups of rows:",
          "(ward; with --distance tanimoto average)", namesOf(kLinkages)),
      row("--clusters K", kCluster, "hierarchical and kmeans: how many clusters",
          unless(kClusterOptions.clusters == 0, "no clusters, only the silhouettes of 2 ... 12",
                 fmt::to_string(kClusterOptions.clusters))),
      row("--threshold D", kCluster, "hierarchical: groups farther apart than D stay apart, in place of --clusters",
          "(none)"),
      row("--neighbours K", kCluster, "neighbours: how many a row", fmt::to_string(kClusterOptions.neighbours)),
      row("--fixed", kCluster, "neighbours: exactly as many, where ties for the last place would lengthen a list"),
      row("--restarts N", kCluster, "kmeans: how many starts, of which the best is taken",
          fmt::to_string(kClusterOptions.restarts)),
      row("--folds FOLDS", kValidated,
          "how rows are held out: loo (leave-one-out), K groups dealt in the order of the response or class, "
          "random:N:P% (N draws that each hold out P % of the rows), or column:NAME (rows with the same text in a "
          "column)",
          fmt::to_string(kMlrOptions.folds.groups)),
      row("--seed N", kValidated, "0 ... 161803398: the same seed draws the same random folds",
          fmt::to_string(kMlrOptions.folds.seed)),
      row("--seed N", kCluster, "kmeans: 0 ... 161803398: the same seed draws the same starts",
          fmt::to_string(kClusterOptions.seed)),
      row("--components A", kPredict, "how many components predict (partial least squares)", "(the model's)"),
      row("--observed NAME", kPredict, "the column with the known response or class",
          "(the model's response, where the table has it)"),
      row("--level P", kPredict, "the level of intervals and limits, between 0 and 1", "(the model's)"),
      row("--level P", kPca | kValidated, "the level of limits and intervals, between 0 and 1",
          fmt::to_string(kPcaOptions.level)),
  };
}

std::vector<Option> outputRows() {
  return {
      completing(Completes::Files, row("--output FILE.csv", kAnalyses | kPredict,
                                       "writes one line a row: name, role, and what the analysis says of it", "(off)")),
      completing(Completes::Files,
                 row("--json FILE", kEveryCommand,
                     "writes everything at full precision; - is standard output, in place of the summary", "(off)")),
      completing(
          Completes::Folders,
          row("--tables DIR", kEveryAnalysis,
              "writes the same as CSV files into a folder, and the figures of the report as Vega-Lite", "(off)")),
      completing(Completes::Files, row("--model FILE", kModels, "writes the model, for studystats predict", "(off)")),
      completing(Completes::Files,
                 row("--report FILE.html", kEveryAnalysis,
                     "writes one page to look at: the answer, figures and tables, opened from disk in "
                     "any browser",
                     "(off)")),
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
  static const std::vector<Command> table = {describeCommand(), pcaCommand(),     mlrCommand(),    plsCommand(),
                                             daCommand(),       clusterCommand(), predictCommand()};
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
