// What every result can be turned into: text, files.
#pragma once

#include <studystats/host/errors.h>

#include <string>
#include <string_view>
#include <vector>

namespace studystats {

struct TextOptions {
  int digits = 6;    // significant
  bool all = false;  // long tables in full
};

// How a figure is shown.
enum class CellKind {
  Text,
  Flag,         // yes or no
  Whole,        // a whole number
  Value,        // as many of `digits` significant digits as it has
  Number,       // `digits` significant digits, zeros at the end included
  Fixed,        // `digits` decimals
  Explained,    // R2 and the like: three decimals, more close to 1
  Probability,  // four decimals, or <0.0001
  Share,        // of 1, as percent; on a page with a bar
  Bar,          // `digits` decimals; on a page with a bar to both sides of zero
  Count,        // a whole number out of `digits`, "5 of 7"; on a page with a bar
};

// "fitted | cross-validated" in one frame: a heading a column, the first column says what is measured.
struct ReportFrame {
  std::vector<std::string> headings;
  std::vector<std::vector<std::string>> rows;
};

struct CsvFile {
  std::string name;     // "loadings.csv"
  std::string content;  // RFC 4180, full precision
};

// Writes a file whole or not at all: a temporary file beside it, then a rename. Throws BadOptions naming the file.
STUDYSTATS_API void writeFile(const std::string& path, std::string_view content);

STUDYSTATS_API std::string version();    // "0.1.0"
STUDYSTATS_API std::string buildInfo();  // compiler, build type, instruction sets of the kernels

}  // namespace studystats
