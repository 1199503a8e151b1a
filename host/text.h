// Numbers and tables as text for people, and as text for programs.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace studystats {

constexpr std::size_t kTextWidth = 100;  // columns of the terminal that a summary may take

// `digits` significant digits without exponent where that stays short: "42.1293", "0.00480769", "1.5e-12", "-".
std::string significant(double value, int digits);
std::string significant(const std::optional<double>& value, int digits);  // "-" when absent
std::string fixed(double value, int decimals);
std::string percent(double fraction, int decimals = 1);  // "36.2 %"
std::string exact(double value);                         // shortest text that reads back the same; "" for NaN
std::string counted(std::size_t n, std::string_view one, std::string_view many = {});  // "1 row", "3 rows", "1 of ..."

// "a, b, c, 4 more": names until about `most` of them are listed.
std::string listed(const std::vector<std::string>& names, std::size_t most = 6);

// Text broken at blanks to kTextWidth; the first line follows `label`, later ones are indented as far as the label is
// long.
std::string wrapped(std::string_view label, std::string_view text);

enum class Align { Left, Right, Point };  // Point: on the decimal point

// A table of text whose columns are as wide as their widest cell; two blanks between columns, no blanks at line ends.
class TextTable {
 public:
  void column(std::string heading, Align align = Align::Right);
  void row(std::vector<std::string> cells);  // missing cells at the end are empty
  std::string text(std::size_t indent = 0) const;

 private:
  struct Column {
    std::string heading;
    Align align;
  };
  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

// RFC 4180 rows, quoted where a cell needs it.
class CsvText {
 public:
  void row(const std::vector<std::string>& cells);
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

}  // namespace studystats
