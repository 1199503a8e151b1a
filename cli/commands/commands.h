// What each command does; the option table names these functions. They return the exit status.
#pragma once

#include "cli/command_line.h"

namespace studystats::cli {

int runDescribe(const CommandLine& line);
int runPca(const CommandLine& line);
int runMlr(const CommandLine& line);

}  // namespace studystats::cli
