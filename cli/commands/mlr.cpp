// studystats mlr TABLE --response NAME
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

int runMlr(const CommandLine& line) { return runAnalysis("mlr", readMlr(line), regress); }

}  // namespace

Command mlrCommand() {
  return {kMlr,
          "mlr",
          {"TABLE"},
          "stepwise multiple linear regression, the selection cross-validated",
          "An equation for one response, its descriptors chosen by stepwise selection. Every fold repeats the whole "
          "selection on its own training rows, so that the cross-validated figures say what the equation predicts, and "
          "how often each descriptor was chosen says how much the choice can be trusted. --scale changes the prepared "
          "coefficients alone, not the equation.",
          "studystats mlr bloodbrain.csv --response logBBB --max-steps 12 --json model.json",
          "At most twelve steps; everything is written as JSON.",
          runMlr};
}

}  // namespace studystats::cli
