// studystats da TABLE --class NAME
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

int runDa(const CommandLine& line) { return runAnalysis("da", readDa(line), discriminate); }

}  // namespace

Command daCommand() {
  return {
      kDa,
      "da",
      {"TABLE"},
      "discriminant analysis: which class a row belongs to",
      "A classifier by the distance to each class mean, its descriptors chosen step by step. Every fold repeats the "
      "whole selection on its own training rows; the fraction of left-out rows that it classifies correctly comes "
      "first. Canonical functions show how the classes lie to each other. --scale changes nothing but prepared units.",
      "studystats da wine.csv --class cultivar --folds loo --output rows.csv",
      "Leaves out one wine at a time; rows.csv has the class of each wine, fitted and left out.",
      runDa};
}

}  // namespace studystats::cli
