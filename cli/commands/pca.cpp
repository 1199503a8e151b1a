// studystats pca TABLE
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {

int runPca(const CommandLine& line) {
  PcaArguments arguments = readPca(line);
  Run run("pca", arguments.input, arguments.output);
  run.readTables();
  run.placeTestRows(arguments.analysis.data.test);
  if (arguments.output.explain) return run.show(explain(run.table(), arguments.analysis));
  arguments.analysis.progress = run.progress();
  arguments.analysis.stop = run.stop();
  return run.finish(principalComponents(run.table(), arguments.analysis));
}

}  // namespace studystats::cli
