// What a run shows and writes: the options for it, and files that appear all together or not at all.
#pragma once

#include <studystats/host.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "cli/value_names.h"

namespace studystats::cli {

struct OutputOptions {
  std::string json;     // a file; "-": standard output, in place of the summary
  std::string tables;   // a folder
  std::string rows;     // a file: --output
  std::string model;    // a file: --model
  std::string page;     // a file: --report
  std::string command;  // as typed, for the page
  TextOptions text;
  bool explain = false;
  bool strict = false;
  bool quiet = false;
  When progress = When::Auto;
  When color = When::Auto;

  bool jsonOnStandardOutput() const { return json == "-"; }
  bool wantsRows() const {
    return !json.empty() || !tables.empty() || !rows.empty() || !page.empty();
  }  // what is said row by row
};

// Refuses, before anything is read, what could not be written at the end: a folder that does not exist or may not be
// written, a folder in a file's place, one file for two outputs, an output over one of the inputs.
void checkTargets(const OutputOptions& output, const std::vector<std::string>& inputs);

// Files of one run. write() puts every content into a temporary file beside its target, asks whether to stop, and only
// then renames them all; until then nothing but those temporary files was touched, and they are removed on failure.
// A target that is no regular file (a pipe, a device) is written to directly, last.
class OutputFiles {
 public:
  explicit OutputFiles(std::vector<std::string> inputs) : inputs_(std::move(inputs)) {}
  OutputFiles(const OutputFiles&) = delete;
  OutputFiles& operator=(const OutputFiles&) = delete;
  ~OutputFiles();

  void add(std::string option, const std::filesystem::path& path, std::string content);
  // A file that grows while the run goes on: begun in a temporary file at once, completed by write().
  std::size_t begin(std::string option, const std::filesystem::path& path);
  void append(std::size_t file, std::string_view text);
  void addFolder(const std::filesystem::path& folder, std::vector<CsvFile> files);

  // Throws BadOptions naming the file, and Stopped when `stop` says so before the first rename.
  void write(const std::function<bool()>& stop);

 private:
  struct File {
    std::string option;
    std::filesystem::path shown;   // as the user wrote it
    std::filesystem::path target;  // links followed
    std::filesystem::path temporary;
    std::string content;
    bool direct = false;
    int descriptor = -1;  // of a file that grows
  };
  void makeFolders();
  static void open(File& file);
  static void close(File& file, bool written, int error);
  static void stage(File& file, const std::function<bool()>& stop);
  void undo() noexcept;

  std::vector<std::string> inputs_;
  std::vector<File> files_;
  std::vector<std::filesystem::path> folders_;      // wanted
  std::vector<std::filesystem::path> madeFolders_;  // created here, outermost first
};

// Writes all of `text` to a file descriptor, whatever the interruptions. False when it could not; errno says why.
bool writeAll(int descriptor, std::string_view text);

}  // namespace studystats::cli
