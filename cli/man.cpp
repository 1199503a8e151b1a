// The manual page, in the roff of man(7).
#include <studystats/host.h>

#include <fmt/format.h>

#include "cli/documents.h"
#include "cli/messages.h"

namespace studystats::cli {
namespace {

// Text as roff shows it: hyphens as typed, no line that looks like a request.
std::string roff(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\')
      escaped += "\\e";
    else if (c == '-')
      escaped += "\\-";
    else
      escaped += c;
  }
  if (!escaped.empty() && (escaped[0] == '.' || escaped[0] == '\'')) escaped.insert(0, "\\&");
  return escaped;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

std::string section(std::string_view heading) { return fmt::format(".SH {}\n", heading); }
std::string entry(const std::string& label, const std::string& text) {
  return fmt::format(".TP\n{}\n{}\n", label, text);
}

std::string synopsis() {
  std::string text = section("SYNOPSIS");
  bool first = true;
  for (const Command& command : commands()) {
    if (!first) text += ".br\n";
    first = false;
    text += bold("studystats " + command.name);
    for (const std::string& operand : command.operands) text += ' ' + italic(operand);
    text += " [options]\n";
  }
  return text;
}

std::string commandEntries() {
  std::string text = section("COMMANDS");
  for (const Command& command : commands())
    text += entry(bold(command.name),
                  roff(command.text) + "\n.IP\n" + bold(command.example) + "\n.br\n" + roff(command.exampleText));
  return text;
}

// "(pca)" after what not every command has.
std::string owners(const Option& option) {
  if (option.commands == kEveryCommand) return {};
  std::vector<std::string> names;
  for (const Command& command : commands())
    if ((option.commands & command.bit) != 0) names.push_back(command.name);
  return names.empty() ? std::string() : " (" + anyOf(names) + ')';
}

std::string optionEntries() {
  std::string text = section("OPTIONS");
  text += roff(
              "An option can be written as --name value or --name=value, before or after the table; -- ends the "
              "options. In a LIST a name in quotation marks is taken literally, commas included.") +
          '\n';
  for (const Group group : kGroups) {
    const auto rows = optionsOf(kEveryCommand, group);
    if (rows.empty()) continue;
    text += fmt::format(".SS {}\n", headingOf(group));
    for (const Option* option : rows) {
      std::string label = bold(option->name);
      if (option->takesValue()) label += ' ' + italic(option->placeholder);
      text += entry(label, roff(option->sentence() + owners(*option)));
    }
  }
  return text;
}

}  // namespace

std::string manPage() {
  std::string text = fmt::format(".TH STUDYSTATS 1 \"\" \"studystats {}\" \"User Commands\"\n", version());
  text += section("NAME") + "studystats \\- statistical analysis of tables\n" + synopsis();
  text += section("DESCRIPTION") +
          roff(
              "Reads a table, analyses it and prints a summary; warnings, notes and progress go to standard error. "
              "TABLE is a delimited text file, or - for standard input: headings in the first row; comma, semicolon, "
              "tab or | between cells. A column whose present cells are all numbers is numeric, any other is text. "
              "Output files are written whole or not at all.") +
          '\n';
  text += commandEntries() + optionEntries();
  text += section("EXIT STATUS") + entry("0", "done") +
          entry("1", roff("the analysis could not be done; with --strict, also a warning")) +
          entry("2", "wrong options, unreadable input, or an output that cannot be written") +
          entry("130", "stopped by a signal: nothing was written");
  text += section("ENVIRONMENT") + entry(bold("NO_COLOR"), "when set and not empty, no colours") +
          entry(bold("TERM"), roff("\"dumb\": no progress bar and no colours"));
  return text;
}

}  // namespace studystats::cli
