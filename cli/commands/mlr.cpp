// studystats mlr TABLE --response NAME
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {

int runMlr(const CommandLine& line) {
  MlrArguments arguments = readMlr(line);
  Run run("mlr", arguments.input, arguments.output);
  run.readTables();
  run.placeTestRows(arguments.analysis.data.test);
  if (arguments.output.explain) return run.show(explain(run.table(), arguments.analysis));
  arguments.analysis.progress = run.progress();
  arguments.analysis.stop = run.stop();
  return run.finish(regress(run.table(), arguments.analysis));
}

}  // namespace studystats::cli
