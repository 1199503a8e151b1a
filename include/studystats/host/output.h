// What every result can be turned into: text, files.
#pragma once

#include <studystats/host/errors.h>

#include <string>
#include <string_view>

namespace studystats {

struct TextOptions {
  int digits = 6;    // significant
  bool all = false;  // long tables in full
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
