#include "cli/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "cli/exit_status.h"
#include "cli/interrupt.h"
#include "cli/messages.h"
#include "cli/terminal.h"

namespace studystats::cli {
namespace {

constexpr double kReadingShare = 40;  // percent of the bar

// The first wish to stop ends the run here, whatever the library made of it.
void checkStop() {
  if (interrupt::requested()) throw Stopped();
}

// Warnings, then notes; what two readers noticed is said once.
void sayRemarks(const std::vector<Remark>& remarks, const OutputOptions& output) {
  const bool color = useColor(output.color);
  std::vector<std::string> said;
  for (const Severity severity : {Severity::Warning, Severity::Note}) {
    if (severity == Severity::Note && output.quiet) continue;
    for (const Remark& remark : remarks) {
      if (remark.severity != severity || std::find(said.begin(), said.end(), remark.text) != said.end()) continue;
      said.push_back(remark.text);
      const std::string_view label = severity == Severity::Warning ? "warning: " : "note: ";
      std::string text = hanging(label, printable(remark.text));
      if (color) {
        const std::string_view paint = severity == Severity::Warning ? "\x1b[1;33m" : "\x1b[36m";
        text = fmt::format("{}{}\x1b[0m{}", paint, label, text.substr(label.size()));
      }
      writeAll(STDERR_FILENO, text);
    }
  }
}

}  // namespace

Run::Run(const std::string& command, const InputOptions& input, const OutputOptions& output)
    : input_(input), output_(output), paths_{input.table}, bar_(command, output.progress, output.quiet) {
  if (!input.testTable.empty()) paths_.push_back(input.testTable);
  if (!output.page.empty() && !whyNoReport().empty())
    refuse("--report",
           fmt::format("this build of studystats has no report page, because {}. Install npm, then configure "
                       "and build once more.",
                       whyNoReport()));
  checkTargets(output, paths_);
}

Table Run::read(const std::string& path) {
  ReadOptions options = input_.read;
  options.progress = progress();
  options.stop = stop();
  options.digest = !output_.page.empty();
  Table table = readTable(path, options);
  checkStop();  // the end of a file may be the wish's own doing
  return table;
}

void Run::readTables() {
  const double share = kReadingShare / static_cast<double>(paths_.size());
  bar_.part(0, share);
  table_ = read(input_.table);
  if (!input_.testTable.empty()) {
    bar_.part(share, kReadingShare);
    testTable_ = read(input_.testTable);
  }
  bar_.part(kReadingShare, 100);
}

void Run::placeTestRows(TestRows& test) {
  test.rows = rowsOf("--test-rows", input_.testRows, table_);
  if (input_.testTable.empty()) return;
  testView_.emplace(testTable_);
  test.table = &*testView_;
}

ProgressCallback Run::progress() {
  return [this](const Progress& report) {
    bar_.show(report);
    return !interrupt::requested();
  };
}

StopSignal Run::stop() { return interrupt::Token(); }

ReportContext Run::context() const {
  std::string digest = table_.digest.empty() ? std::string() : "SHA-256 " + table_.digest;
  if (!testTable_.digest.empty()) digest += fmt::format("\n{}: SHA-256 {}", testTable_.name, testTable_.digest);
  return {.command = output_.command, .digest = digest, .date = reportDate()};
}

int Run::show(const std::string& text) {
  bar_.erase();
  checkStop();
  interrupt::release();
  print(text);
  return kDone;
}

int Run::deliver(const Report& report) {
  {
    const interrupt::Deferred cleanUpFirst;
    OutputFiles files(paths_);
    if (!output_.json.empty() && !output_.jsonOnStandardOutput()) files.add("--json", output_.json, report.json);
    if (!output_.tables.empty()) files.addFolder(output_.tables, report.tables);
    if (!output_.rows.empty()) files.add("--output", output_.rows, report.rows);
    if (!output_.model.empty()) files.add("--model", output_.model, report.model);
    if (!output_.page.empty()) files.add("--report", output_.page, report.page);
    files.write(interrupt::requested);
  }
  bar_.erase();
  return say(report, output_);
}

int say(const Report& report, const OutputOptions& output) {
  interrupt::release();
  print(output.jsonOnStandardOutput() ? report.json : report.summary);
  sayRemarks(report.remarks, output);
  const bool warned = std::any_of(report.remarks.begin(), report.remarks.end(),
                                  [](const Remark& remark) { return remark.severity == Severity::Warning; });
  return output.strict && warned ? kNotComputed : kDone;
}

void print(std::string_view text) {
  const bool terminal = isatty(STDOUT_FILENO) == 1;
  if (writeAll(STDOUT_FILENO, terminal ? printable(text) : std::string(text)) || errno == EPIPE) return;
  refuse("", "cannot write to standard output: " + std::generic_category().message(errno) + '.');
}

}  // namespace studystats::cli
