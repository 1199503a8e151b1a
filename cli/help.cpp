// --help, of the command and of each of its commands.
#include <fmt/format.h>

#include <algorithm>

#include "cli/documents.h"
#include "cli/messages.h"

namespace studystats::cli {
namespace {

constexpr std::size_t kTextColumn = 28;  // where the meaning of an option begins

// "  --scale NAME            preparation ..."; an option too long for its column gets a line of its own.
std::string optionLines(const Option& option) {
  std::string label = "  " + (option.name == "--help" ? "-h, --help" : option.spelled());
  std::string text;
  if (label.size() + 2 > kTextColumn) {
    text = label + '\n';
    label.clear();
  }
  label.resize(kTextColumn, ' ');
  return text + hanging(label, option.sentence());
}

std::string examples(const Command& command) {
  return fmt::format("Example\n  {}\n{}", command.example, hanging("      ", command.exampleText));
}

std::string commandList() {
  std::size_t width = 0;
  const auto head = [](const Command& command) {
    const std::string usage = command.usage();
    return usage.substr(0, usage.find(" [options]"));
  };
  for (const Command& command : commands()) width = std::max(width, head(command).size());
  std::string text;
  for (const Command& command : commands())
    text += fmt::format("  {:{}}   {}\n", head(command), width, command.purpose);
  return text;
}

}  // namespace

std::string shortUsage() {
  return "usage: studystats COMMAND TABLE [options]\n\n" + commandList() +
         "\nstudystats COMMAND --help lists the options of a command.\n";
}

std::string generalHelp() {
  std::string text = "studystats: statistical analysis of tables\n\nusage: studystats COMMAND TABLE [options]\n\n" +
                     commandList() + '\n';
  text += hanging("",
                  "TABLE is a delimited text file, or - for standard input: headings in the first row; comma, "
                  "semicolon, tab or | between cells. A column whose present cells are all numbers is numeric, any "
                  "other is text.");
  text +=
      "\n  studystats COMMAND --help   the options of a command\n"
      "  studystats --version        version and build\n\nExamples\n";
  for (const Command& command : commands()) text += fmt::format("  {}\n", command.example);
  return text + "\nExit status  0 done; 1 analysis not possible; 2 wrong options or unreadable input; 130 stopped.\n";
}

std::string commandHelp(const Command& command) {
  std::string text = fmt::format("usage: {}\n\n", command.usage()) + hanging("", command.text) + '\n';
  for (const Group group : kGroups) {
    const auto rows = optionsOf(command.bit, group);
    if (rows.empty()) continue;
    text += fmt::format("{}\n", headingOf(group));
    for (const Option* option : rows) text += optionLines(*option);
    text += '\n';
  }
  return text + examples(command);
}

}  // namespace studystats::cli
