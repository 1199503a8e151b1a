// Texts made from the option table: help, man page, completions.
#pragma once

#include <string>
#include <string_view>

#include "cli/option_table.h"

namespace studystats::cli {

std::string shortUsage();                     // of the command without arguments
std::string generalHelp();                    // studystats --help
std::string commandHelp(const Command& one);  // studystats pca --help
std::string manPage();                        // roff, section 1, all commands

// For "bash", "zsh" or "fish"; throws BadOptions for another shell.
std::string completions(std::string_view shell);

}  // namespace studystats::cli
