// studystats pca TABLE
#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

int runPca(const CommandLine& line) { return runAnalysis("pca", readPca(line), principalComponents); }

}  // namespace

Command pcaCommand() {
  return {
      kPca,
      "pca",
      {"TABLE"},
      "principal components",
      "Principal components of the numeric columns: explained variance, loadings, what each column contributes, and "
      "rows that are unusual within the model plane or far from it.",
      "studystats pca wine.csv --class cultivar --components 3 --json wine.json",
      "Three components of the numeric columns; the classes are carried along, everything is written as JSON.",
      runPca};
}

}  // namespace studystats::cli
