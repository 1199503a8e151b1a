// The one table of commands and of their options. The parser, --help, the man page and the completions are all made
// from it, and the defaults that it shows are read from the option structs of the library, so that each stands once.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace studystats::cli {

class CommandLine;

// Which commands an option belongs to: a sum of these.
enum CommandSet : unsigned {
  kDescribe = 1u << 0,
  kPca = 1u << 1,
  kMlr = 1u << 2,
  kDa = 1u << 3,
  kPls = 1u << 4,
  kCluster = 1u << 5,
  kPredict = 1u << 6,
};
constexpr unsigned kValidated = kMlr | kPls | kDa;
constexpr unsigned kAnalyses = kPca | kValidated | kCluster;
constexpr unsigned kModels = kPca | kValidated;  // whose results predict new rows
constexpr unsigned kEveryAnalysis = kDescribe | kAnalyses;
constexpr unsigned kEveryCommand = kEveryAnalysis | kPredict;

struct Command {
  CommandSet bit;
  std::string name;
  std::vector<std::string> operands;  // "TABLE"
  std::string purpose;                // in half a line
  std::string text;                   // a paragraph
  std::string example;
  std::string exampleText;  // what the example does
  int (*run)(const CommandLine& line) = nullptr;

  std::string usage() const;  // "studystats pca TABLE [options]"
};

enum class Group { Table, Columns, Preparation, KeptOut, Analysis, Output, Running };
constexpr Group kGroups[] = {Group::Columns,  Group::Table,  Group::Preparation, Group::KeptOut,
                             Group::Analysis, Group::Output, Group::Running};
std::string_view headingOf(Group group);

// What a shell completes after the option.
enum class Completes { Nothing, Files, Folders };

struct Option {
  std::string name;         // "--scale"
  std::string placeholder;  // "NAME"; empty: a switch without a value
  unsigned commands = 0;    // a sum of CommandSet
  Group group = Group::Running;
  std::string help;
  std::string fallback;              // what holds without the option: a value of it, or words in parentheses
  std::vector<std::string> choices;  // its values, when they are words
  bool repeatable = false;
  Completes completes = Completes::Nothing;

  bool takesValue() const { return !placeholder.empty(); }
  std::string spelled() const;   // "--scale NAME"
  std::string sentence() const;  // the help with its choices and its default
  std::string gist() const;      // its beginning, for completions
};

const std::vector<Command>& commands();
const std::vector<Option>& options();  // a name can stand twice, for different commands

const Command* findCommand(std::string_view name);
const Option* findOption(std::string_view name, unsigned commands = kEveryCommand);
std::vector<const Option*> optionsOf(unsigned commands, Group group);
std::vector<std::string> optionNames(unsigned commands);

}  // namespace studystats::cli
