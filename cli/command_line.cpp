#include "cli/command_line.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/messages.h"

namespace studystats::cli {
namespace {

// One line of the parser a row of the option table; the parser's own sentences are never seen.
void declare(CLI::App& parser, const Command& command) {
  parser.set_help_flag();
  parser.allow_extras();
  for (const Option& option : options()) {
    if ((option.commands & command.bit) == 0) continue;
    const std::string names = option.name == "--help" ? "-h,--help" : option.name;
    CLI::Option* declared = option.takesValue() ? parser.add_option(names) : parser.add_flag(names);
    declared->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  }
  for (const std::string& operand : command.operands) parser.add_option(operand);
}

[[noreturn]] void refuseMissingValue(const Option& option) {
  refuse(option.name, fmt::format("{} needs a value: {}.", option.name, option.spelled()));
}

// The parser would take the next argument for the value of "--columns=".
void checkEmptyValues(const Command& command, const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    if (argument == "--") return;
    if (!argument.ends_with('=')) continue;
    const Option* option = findOption(argument.substr(0, argument.size() - 1), command.bit);
    if (option != nullptr && option->takesValue()) refuseMissingValue(*option);
  }
}

// In quotation marks where a shell would read anything but the text itself.
std::string forShell(const std::string& argument) {
  constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./,:%@";
  if (!argument.empty() && argument.find_first_not_of(kPlain) == std::string::npos) return argument;
  std::string text = "'";
  for (const char c : argument) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

}  // namespace

CommandLine::CommandLine(const Command& command, const std::vector<std::string>& arguments)
    : command_(command), arguments_(arguments) {
  checkEmptyValues(command, arguments);
  CLI::App parser;
  declare(parser, command);
  try {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    parser.parse(reversed);
  } catch (const CLI::ParseError&) {
    // Whatever is unknown was let through, so that only a value can be missing, at the very end.
    const Option* last = arguments.empty() ? nullptr : findOption(arguments.back(), command.bit);
    if (last != nullptr) refuseMissingValue(*last);
    refuse("", fmt::format("the options after \"{}\" cannot be read; see studystats {} --help.", command.name,
                           command.name));
  }
  for (const Option& option : options())
    if ((option.commands & command.bit) != 0) takeOption(option, parser.get_option(option.name)->results());
  if (given("--help")) return;
  for (const std::string& extra : parser.remaining())
    if (extra != "--") refuseExtra(extra);
  for (const std::string& operand : command.operands) {
    const auto& texts = parser.get_option(operand)->results();
    if (!texts.empty()) operands_.push_back(texts.front());
  }
}

void CommandLine::takeOption(const Option& option, const std::vector<std::string>& texts) {
  if (texts.empty()) return;
  if (!option.takesValue()) {
    if (std::any_of(texts.begin(), texts.end(), [](const std::string& text) { return text != "true"; }))
      refuse(option.name, fmt::format("{} takes no value.", option.name));
  } else if (texts.size() > 1 && !option.repeatable) {
    refuse(option.name,
           fmt::format("{} is given twice: {}, then {}.", option.name, inQuotes(texts[0]), inQuotes(texts[1])));
  }
  for (const std::string& text : texts) {
    const std::string name = text.substr(0, text.find('='));
    if (option.takesValue() && (text.empty() || (text.starts_with("--") && findOption(name) != nullptr)))
      refuseMissingValue(option);
  }
  given_[option.name] = texts;
}

void CommandLine::refuseExtra(const std::string& extra) const {
  if (!extra.starts_with('-')) {
    refuse("",
           fmt::format("{} takes {} {}; {} is one too many. A name with blanks goes in quotation marks.", command_.name,
                       command_.operands.size(), command_.operands.size() == 1 ? "table" : "files", inQuotes(extra)));
  }
  const std::string name = extra.substr(0, extra.find('='));
  if (findOption(name) != nullptr) {
    std::vector<std::string> owners;
    for (const Command& other : commands())
      if (findOption(name, other.bit) != nullptr) owners.push_back(other.name);
    refuse(name, fmt::format("{} has no option {}; it belongs to {}.", command_.name, name, anyOf(owners)));
  }
  const std::string near = nearest(name, optionNames(command_.bit));
  refuse(name,
         fmt::format("{} has no option {}.{}", command_.name, inQuotes(name),
                     near.empty() ? fmt::format(" See studystats {} --help.", command_.name)
                                  : fmt::format(" Did you mean {}?", near)),
         near);
}

std::string CommandLine::typed() const {
  std::string text = "studystats " + command_.name;
  for (const std::string& argument : arguments_) text += ' ' + forShell(argument);
  return text;
}

const std::string& CommandLine::operand(std::size_t i) const {
  if (i < operands_.size() && !operands_[i].empty()) return operands_[i];
  refuse("", fmt::format("{} needs {}: {}.", command_.name,
                         i < operands_.size()              ? "a file name"
                         : command_.operands[i] == "TABLE" ? "a table"
                                                           : "a file",
                         command_.usage()));
}

bool CommandLine::given(std::string_view option) const {
  read_.emplace(option);
  return given_.find(option) != given_.end();
}

const std::vector<std::string>& CommandLine::values(std::string_view option) const {
  static const std::vector<std::string> none;
  return given(option) ? given_.find(option)->second : none;
}

const std::string* CommandLine::value(std::string_view option) const {
  const auto& all = values(option);
  return all.empty() ? nullptr : &all.front();
}

std::vector<std::string> CommandLine::unread() const {
  std::vector<std::string> names;
  for (const auto& [name, texts] : given_)
    if (!read_.contains(name)) names.push_back(name);
  return names;
}

}  // namespace studystats::cli
