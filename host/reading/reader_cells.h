// What one cell of a text table says.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace studystats {

enum class CellMeaning {
  Number,
  NotFinite,   // "inf" or "nan(...)": missing among numbers, a text among texts
  OutOfRange,  // written as a number that a double cannot hold
  Missing,
  Text,
};

struct Cell {
  CellMeaning kind;
  double number;  // not-a-number unless kind is Number
};

// Reads cells written with one decimal sign.
class CellReader {
 public:
  CellReader(char decimal, std::vector<std::string> missingAs) : decimal_(decimal), missingAs_(std::move(missingAs)) {}

  // `text` without blanks at its ends.
  Cell read(std::string_view text) const;

 private:
  bool isMissing(std::string_view text) const;

  char decimal_;
  std::vector<std::string> missingAs_;
};

std::string_view trimmed(std::string_view text);  // blanks and tabs at both ends

// A cell for a message: on one line, shortened when long, within quotes.
std::string quotedCell(std::string_view text);

}  // namespace studystats
