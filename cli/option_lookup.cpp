// Finding rows of the option table, and how a row reads.
#include <string>

#include "cli/messages.h"
#include "cli/option_table.h"

namespace studystats::cli {

std::string_view headingOf(Group group) {
  switch (group) {
    case Group::Columns:
      return "Columns";
    case Group::Table:
      return "How the file is written";
    case Group::Preparation:
      return "Preparation";
    case Group::KeptOut:
      return "Rows kept out of the model and only predicted";
    case Group::Analysis:
      return "Analysis";
    case Group::Output:
      return "Output";
    case Group::Running:
      return "Running";
  }
  return "";
}

std::string Command::usage() const {
  std::string line = "studystats " + name;
  for (const std::string& operand : operands) line += ' ' + operand;
  return line + " [options]";
}

std::string Option::spelled() const { return takesValue() ? name + ' ' + placeholder : name; }

std::string Option::sentence() const {
  std::string text = help;
  if (!choices.empty()) text += ' ' + anyOf(choices);
  if (fallback.empty()) return text;
  const bool words = fallback.front() == '(';
  return text + (words ? " [" + fallback.substr(1, fallback.size() - 2) + ']' : " [default " + fallback + ']');
}

std::string Option::gist() const { return help.substr(0, help.find_first_of(":;")); }

const Command* findCommand(std::string_view name) {
  for (const Command& command : commands())
    if (command.name == name) return &command;
  return nullptr;
}

const Option* findOption(std::string_view name, unsigned commands) {
  for (const Option& option : options())
    if (option.name == name && (option.commands & commands) != 0) return &option;
  return nullptr;
}

std::vector<const Option*> optionsOf(unsigned commands, Group group) {
  std::vector<const Option*> found;
  for (const Option& option : options())
    if (option.group == group && (option.commands & commands) != 0) found.push_back(&option);
  return found;
}

std::vector<std::string> optionNames(unsigned commands) {
  std::vector<std::string> names;
  for (const Option& option : options())
    if ((option.commands & commands) != 0) names.push_back(option.name);
  return names;
}

}  // namespace studystats::cli
