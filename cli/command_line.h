// The command line as typed: which options were given with which texts, before any value is looked at.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/option_table.h"

namespace studystats::cli {

class CommandLine {
 public:
  // `arguments` are those after the command's name. Throws BadOptions with the nearest option: unknown options, missing
  // values, options given twice that cannot be repeated.
  CommandLine(const Command& command, const std::vector<std::string>& arguments);

  const Command& command() const { return command_; }
  std::string typed() const;  // the whole line, as a shell would take it again
  bool wantsHelp() const { return given("--help"); }

  // What stands for "TABLE" and the like, in the order of Command::operands; throws when one is missing.
  const std::string& operand(std::size_t i) const;

  bool given(std::string_view option) const;
  const std::vector<std::string>& values(std::string_view option) const;  // empty when not given
  const std::string* value(std::string_view option) const;                // null when not given

  // Given options that nobody has asked for: they would have been ignored in silence.
  std::vector<std::string> unread() const;

 private:
  void takeOption(const Option& option, const std::vector<std::string>& texts);
  [[noreturn]] void refuseExtra(const std::string& extra) const;

  const Command& command_;
  std::vector<std::string> arguments_;
  std::vector<std::string> operands_;
  std::map<std::string, std::vector<std::string>, std::less<>> given_;
  mutable std::set<std::string, std::less<>> read_;
};

}  // namespace studystats::cli
