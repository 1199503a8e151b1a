// studystats mlr TABLE --response NAME
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {

int runMlr(const CommandLine& line) { return runAnalysis("mlr", readMlr(line), regress); }

}  // namespace studystats::cli
