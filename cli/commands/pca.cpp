// studystats pca TABLE
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {

int runPca(const CommandLine& line) { return runAnalysis("pca", readPca(line), principalComponents); }

}  // namespace studystats::cli
