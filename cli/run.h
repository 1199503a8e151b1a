// One run of a command: reads the tables with a progress bar, and at the end shows and writes what was found.
#pragma once

#include <studystats/host.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/arguments.h"
#include "cli/outputs.h"
#include "cli/progress_bar.h"
#include "report/report_scripts.h"

namespace studystats::cli {

// Everything that a run shows and writes, computed before any of it appears.
struct Report {
  std::string summary;
  std::string json;             // when asked for
  std::vector<CsvFile> tables;  // when asked for
  std::string rows;             // when asked for
  std::string model;            // when asked for
  std::string page;             // when asked for
  std::vector<Remark> remarks;
};

class Run {
 public:
  // Throws BadOptions when an output could not be written.
  Run(const std::string& command, const InputOptions& input, const OutputOptions& output);

  void readTables();
  const Table& table() const { return table_; }
  void placeTestRows(TestRows& test);  // what --test and --test-rows named; `test` points into this object

  // For the options of the analysis.
  ProgressCallback progress();
  static StopSignal stop();

  int show(const std::string& text);  // --explain
  template <class Result>
  int finish(Result result, const DataOptions* preparation = nullptr);

 private:
  Table read(const std::string& path);
  template <class Result>
  void addPage(const Result& result, const DataOptions* preparation, Report& report) const;
  ReportContext context() const;
  int deliver(const Report& report);

  const InputOptions& input_;
  const OutputOptions& output_;
  std::vector<std::string> paths_;  // of the tables
  ProgressBar bar_;
  Table table_;
  Table testTable_;
  std::optional<TableView> testView_;
};

// The end of every run: the summary or the JSON, then the remarks. Returns the exit status.
int say(const Report& report, const OutputOptions& output);

void print(std::string_view text);  // to standard output; a closed pipe ends it quietly

template <class Result>
int Run::finish(Result result, const DataOptions* preparation) {
  for (const Table* table : {&testTable_, &table_})
    result.remarks.insert(result.remarks.begin(), table->remarks.begin(), table->remarks.end());
  Report report;
  if (!output_.jsonOnStandardOutput() && !output_.quiet) report.summary = summary(result, output_.text);
  if (!output_.json.empty()) report.json = toJson(result);
  if (!output_.tables.empty()) report.tables = toTables(result);
  if constexpr (requires { rowsAsCsv(result); })
    if (!output_.rows.empty()) report.rows = rowsAsCsv(result);
  if constexpr (requires { result.model.json(); })
    if (!output_.model.empty()) report.model = result.model.json();
  if constexpr (requires { reportPage(result, ReportContext()); }) addPage(result, preparation, report);
  report.remarks = std::move(result.remarks);
  return deliver(report);
}

template <class Result>
void Run::addPage(const Result& result, const DataOptions* preparation, Report& report) const {
  if (output_.page.empty() && output_.tables.empty()) return;
  const TableView view(table_);
  ReportContext about = context();
  about.table = &view;
  about.preparation = preparation;
  const ReportPage page = reportPage(result, about);
  if (!output_.page.empty()) report.page = reportHtml(page, reportScripts());
  if (output_.tables.empty()) return;
  std::vector<CsvFile> charts = chartFiles(page);
  std::move(charts.begin(), charts.end(), std::back_inserter(report.tables));
}

// The course of every analysis: tables, then --explain, or the analysis and what it shows and writes.
template <class Arguments, class Analysis>
int runAnalysis(const std::string& command, Arguments arguments, Analysis analyse) {
  Run run(command, arguments.input, arguments.output);
  run.readTables();
  run.placeTestRows(arguments.analysis.data.test);
  if (arguments.output.explain) return run.show(explain(run.table(), arguments.analysis));
  arguments.analysis.progress = run.progress();
  arguments.analysis.stop = run.stop();
  return run.finish(analyse(run.table(), arguments.analysis), &arguments.analysis.data);
}

}  // namespace studystats::cli
