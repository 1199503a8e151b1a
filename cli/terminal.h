// What standard error can show.
#pragma once

#include "cli/value_names.h"

namespace studystats::cli {

bool standardErrorIsTerminal();  // and not a dumb one
int terminalWidth();             // columns of standard error; 80 when unknown
bool useColor(When when);        // Auto: a terminal, and NO_COLOR is unset or empty

}  // namespace studystats::cli
