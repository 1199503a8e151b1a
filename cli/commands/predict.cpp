// studystats predict MODEL TABLE
#include <studystats/host.h>

#include <optional>

#include "cli/arguments.h"
#include "cli/commands/commands.h"
#include "cli/interrupt.h"
#include "cli/run.h"

namespace studystats::cli {
namespace {

Model modelOf(const PredictArguments& arguments) {
  Model model = Model::load(arguments.model);
  if (arguments.components > 0) model = model.withComponents(arguments.components);
  if (arguments.level > 0) model = model.withLevel(arguments.level);
  return model;
}

// Rows go to the file in blocks.
class RowWriter {
 public:
  RowWriter(OutputFiles& files, const std::string& path, const Model& model)
      : files_(files), model_(model), file_(files.begin("--output", path)), block_(predictionHeading(model)) {}
  void add(const PredictedRow& row) {
    appendPrediction(model_, row, block_);
    if (block_.size() >= kBlock) flush();
  }
  void flush() {
    files_.append(file_, block_);
    block_.clear();
  }

 private:
  static constexpr std::size_t kBlock = std::size_t{1} << 20;
  OutputFiles& files_;
  const Model& model_;
  std::size_t file_;
  std::string block_;
};

int runPredict(const CommandLine& line) {
  PredictArguments arguments = readPredict(line);
  const OutputOptions& output = arguments.output;
  const std::vector<std::string> inputs{arguments.model, arguments.table};
  checkTargets(output, inputs);
  const Model model = modelOf(arguments);
  ProgressBar bar("predict", output.progress, output.quiet);
  arguments.prediction.read.progress = [&](const Progress& progress) {
    bar.show(progress);
    return !interrupt::requested();
  };
  arguments.prediction.read.stop = interrupt::Token();

  Report report;
  {
    const interrupt::Deferred cleanUpFirst;
    OutputFiles files(inputs);
    std::optional<RowWriter> rows;
    if (!output.rows.empty()) rows.emplace(files, output.rows, model);
    const Predictions result =
        predictFile(model, arguments.model, arguments.table, arguments.prediction, [&](const PredictedRow& row) {
          if (rows) rows->add(row);
        });
    if (rows) rows->flush();
    report.remarks = result.remarks;
    if (!output.json.empty()) report.json = toJson(result);
    if (!output.json.empty() && !output.jsonOnStandardOutput()) files.add("--json", output.json, report.json);
    if (!output.quiet) report.summary = summary(result, output.text);
    files.write(interrupt::requested);
  }
  bar.erase();
  return say(report, output);
}

}  // namespace

Command predictCommand() {
  return {
      kPredict,
      "predict",
      {"MODEL", "TABLE"},
      "apply a saved model to new rows",
      "Predictions of a model that was saved with --model, for a table whose columns stand in any order: with "
      "intervals "
      "from the cross-validated error, and for every row whether it lies in the domain of the model and which "
      "descriptor carries it out. Where the table knows the response, the errors too. Rows are read and written one by "
      "one.",
      "studystats predict logbbb.model.json new.csv --output predicted.csv",
      "Predicts every row of new.csv; the first twelve are shown.",
      runPredict};
}

}  // namespace studystats::cli
