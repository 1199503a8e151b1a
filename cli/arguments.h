// From the command line to the option structs of the library. A command's reader is one function; what several
// commands share is read by the functions below.
#pragma once

#include <studystats/host.h>

#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/outputs.h"
#include "cli/values.h"

namespace studystats::cli {

// The tables of a run, the rows kept out among them.
struct InputOptions {
  std::string table;
  ReadOptions read;
  std::string testTable;           // --test
  std::vector<RowRange> testRows;  // --test-rows: checked once the table is there
};

struct DescribeArguments {
  InputOptions input;
  DescribeOptions analysis;
  std::vector<std::string> responses;  // must exist; described although --columns may not name them
  std::string classColumn;
  OutputOptions output;
};

struct PcaArguments {
  InputOptions input;
  PrincipalComponentsOptions analysis;
  OutputOptions output;
};

struct MlrArguments {
  InputOptions input;
  RegressionOptions analysis;
  OutputOptions output;
};

struct PlsArguments {
  InputOptions input;
  PartialLeastSquaresOptions analysis;
  OutputOptions output;
};

struct DaArguments {
  InputOptions input;
  DiscriminantOptions analysis;
  OutputOptions output;
};

struct ClusterArguments {
  InputOptions input;
  ClusterOptions analysis;
  OutputOptions output;
};

struct PredictArguments {
  std::string model, table;
  PredictOptions prediction;
  int components = 0;  // 0: the model's
  double level = 0;    // 0: the model's
  OutputOptions output;
};

DescribeArguments readDescribe(const CommandLine& line);
PcaArguments readPca(const CommandLine& line);
MlrArguments readMlr(const CommandLine& line);
PlsArguments readPls(const CommandLine& line);
DaArguments readDa(const CommandLine& line);
ClusterArguments readCluster(const CommandLine& line);
PredictArguments readPredict(const CommandLine& line);

}  // namespace studystats::cli
