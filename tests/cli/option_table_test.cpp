// The option table against everything made from it, and its defaults against the option structs.
#include "cli/option_table.h"

#include <studystats/host.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <sstream>

#include "cli/arguments.h"
#include "tests/cli/child.h"

namespace studystats::cli::test {
namespace {

// A value that the option takes; a placeholder that is not known here fails the test.
std::string sample(const Option& option) {
  if (!option.choices.empty()) return option.choices.front();
  const std::pair<const char*, const char*> values[] = {
      {"LIST", "1"},
      {"NAME", "a"},
      {"NAME[,NAME]", "a"},
      {"NAME=KIND[+SHIFT]", "a=ln"},
      {"FILE", "f"},
      {"FILE.csv", "f.csv"},
      {"FILE.html", "f.html"},
      {"DIR", "d"},
      {"KIND[:LIST]", "squares"},
      {"N", "4"},
      {"K", "2"},
      {"P", "0.9"},
      {"NAME=VALUE", "a=1"},
      {"F", "3.5"},
      {"R", "0.9"},
      {"FOLDS", "loo"},
      {"A", "4"},
      {"RULE", "ratio=0.9"},
      {"HOW", "all"},
      {"PRIOR", "0.3,0.7"},
      {"D", "2.5"},
  };
  for (const auto& [placeholder, value] : values)
    if (option.placeholder == placeholder) return value;
  ADD_FAILURE() << "no sample value for " << option.spelled();
  return {};
}

// Every field that an option with a default sets.
std::string fieldsOf(const PcaArguments& one) {
  return fmt::format("{} {} {} {} {} {} {} {} {}", static_cast<int>(one.analysis.data.scaling),
                     static_cast<int>(one.analysis.data.missing.rule), one.analysis.data.missing.value,
                     one.analysis.level, one.analysis.components, one.output.text.digits,
                     static_cast<int>(one.output.progress), static_cast<int>(one.output.color),
                     static_cast<int>(one.input.read.delimiter));
}

void readAs(const std::string& command, const CommandLine& line) {
  if (command == "describe") readDescribe(line);
  if (command == "pca") readPca(line);
  if (command == "mlr") readMlr(line);
  if (command == "pls") readPls(line);
  if (command == "da") readDa(line);
  if (command == "predict") readPredict(line);
  if (command == "cluster") readCluster(line);
}

TEST(OptionTable, EveryOptionIsReadByItsCommand) {
  for (const Command& command : commands()) {
    for (const Option& option : options()) {
      if ((option.commands & command.bit) == 0 || option.name == "--help") continue;
      Arguments arguments = command.operands.size() == 2 ? Arguments{"m.json", "t.csv"} : Arguments{"t.csv"};
      arguments.push_back(option.name);
      if (option.takesValue()) arguments.push_back(sample(option));
      const CommandLine line(command, arguments);
      // A declared option that no reader asks for throws.
      EXPECT_NO_THROW(readAs(command.name, line)) << command.name << ' ' << option.name;
    }
  }
}

TEST(OptionTable, EveryOptionStandsInHelpManPageAndCompletions) {
  const std::string man = run({"--man"}).out, bash = run({"completions", "bash"}).out;
  const std::string zsh = run({"completions", "zsh"}).out, fish = run({"completions", "fish"}).out;
  for (const Command& command : commands()) {
    const std::string help = run({command.name, "--help"}).out;
    EXPECT_NE(help.find("Example\n  studystats " + command.name), std::string::npos);
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 100u) << line;
    for (const Option& option : options()) {
      if ((option.commands & command.bit) == 0) continue;
      std::string roff = "\\fB";
      for (const char c : option.name) roff += c == '-' ? std::string("\\-") : std::string(1, c);
      EXPECT_NE(help.find(' ' + option.spelled()), std::string::npos) << option.name;
      EXPECT_NE(man.find(roff + "\\fR"), std::string::npos) << option.name;
      const std::size_t words = bash.find(' ' + command.name + ") COMPREPLY");
      const std::string row = bash.substr(words, bash.find('\n', words) - words);
      EXPECT_TRUE(row.find(option.name + ' ') != std::string::npos || row.find(option.name + '"') != std::string::npos)
          << option.name;
      EXPECT_NE(zsh.find(option.name + '['), std::string::npos) << option.name;
      EXPECT_NE(fish.find("__fish_seen_subcommand_from " + command.name + "' -l " + option.name.substr(2) + ' '),
                std::string::npos)
          << option.name;
    }
  }
}

TEST(OptionTable, ShowsTheDefaultsOfTheOptionStructs) {
  const CommandLine bare(*findCommand("pca"), {"t.csv"});
  EXPECT_EQ(fieldsOf(readPca(bare)), fieldsOf(PcaArguments()));
  int values = 0;
  for (const Option& option : options()) {
    if ((option.commands & kPca) == 0 || option.fallback.empty() || option.fallback.front() == '(') continue;
    ++values;
    const CommandLine line(*findCommand("pca"), {"t.csv", option.name, option.fallback});
    EXPECT_EQ(fieldsOf(readPca(line)), fieldsOf(PcaArguments())) << option.name << ' ' << option.fallback;
  }
  EXPECT_GE(values, 6);  // --missing --scale --level --digits --progress --color
}

}  // namespace
}  // namespace studystats::cli::test
