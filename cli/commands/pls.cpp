// studystats pls TABLE --response NAME[,NAME]
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

int runPls(const CommandLine& line) { return runAnalysis("pls", readPls(line), partialLeastSquares); }

}  // namespace

Command plsCommand() {
  return {
      kPls,
      "pls",
      {"TABLE"},
      "partial least squares, one or several responses",
      "Responses on a few components of many descriptors, spectra for example. The table over components shows what "
      "each adds, fitted and cross-validated; a rule says how many are kept. Rows kept out are predicted and placed in "
      "the model's domain.",
      "studystats pls gasoline.csv --response octane --scale centre --components 8 --folds loo",
      "Eight components of the spectra, leaving out one gasoline at a time.",
      runPls};
}

}  // namespace studystats::cli
