// Numbers and tables as text for people, and as text for programs.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace studystats {

constexpr std::size_t kTextWidth = 100;  // columns of the terminal that a summary may take

// `digits` significant digits, zeros at the end included, without exponent from 1e-5 up to 1e9: "42.1293", "3.52300",
// "0.00480769", "1.50000e-12"; "0"; "-" for not-a-number.
std::string significant(double value, int digits);
std::string significant(const std::optional<double>& value, int digits);  // "-" when absent
std::string brief(double value, int digits);                              // the same without zeros at the end: "1.7"
std::string brief(const std::optional<double>& value, int digits);
std::string fixed(double value, int decimals);  // never "-0.00"; "-" for not-a-number
// With the decimals that show `digits` figures of a number as large as `size`; with an exponent where these are more
// than nine.
std::string sized(double value, double size, int digits);
std::string percent(double fraction, int decimals = 1);  // "36.2 %"
std::string explained(double value);  // R2 and the like: three decimals, and as many more as tell it from 1
std::string exact(double value);      // shortest text that reads back the same; "" for NaN
std::string counted(std::size_t n, std::string_view one, std::string_view many = {});  // "1 row", "3 rows", "1 of ..."

// "a, b, c, 4 more": the first `most` names and how many follow; one name more than that is listed too.
std::string listed(const std::vector<std::string>& names, std::size_t most = 6);

// Text broken at single blanks to kTextWidth; the first line follows `label`, later ones are indented as far as the
// label is long. A line end within the text stays, two blanks together are never broken; ends with a line end.
std::string wrapped(std::string_view label, std::string_view text);

// The same for items that hold together: lines are broken between them alone, "a = b;  c = 1 - d;" and so on.
std::string wrappedItems(std::string_view label, const std::vector<std::string>& items, std::string_view separator);

// The symbols R², q² and T² in plain ASCII.
std::string plain(std::string_view text);

// How many columns of the terminal a text takes: its characters in UTF-8.
std::size_t textWidth(std::string_view text);

enum class Align { Left, Right, Point };  // Point: on the decimal point

// A table of text whose columns are as wide as their widest cell; two blanks between columns (one where all fit then),
// no blanks at line ends. Nothing is wider than kTextWidth but a name in the first column that is longer itself: a long
// name takes a line of its own, with its figures below, and columns that have no room follow in further blocks that
// repeat the first column.
class TextTable {
 public:
  void column(std::string heading, Align align = Align::Right);
  void row(std::vector<std::string> cells);  // missing cells at the end are empty
  void line(std::string text);               // among the rows, as it stands: "... 7 more"
  std::string text(std::size_t indent = 0) const;

 private:
  struct Column {
    std::string heading;
    Align align;
    std::size_t width = 0;   // of the widest cell or the heading
    std::size_t before = 0;  // Align::Point: widest part before the decimal point ...
    std::size_t after = 0;   // ... and from it on
  };
  struct Row {
    std::vector<std::string> cells;
    bool isLine = false;
  };
  static std::string aligned(const Column& column, const std::string& cell, std::size_t width);
  struct Layout {
    std::size_t indent;
    std::size_t nameWidth;  // of the first column; longer names take a line of their own
    std::size_t gap;        // blanks between columns
  };
  Layout layout(std::size_t indent) const;
  std::string block(std::size_t from, std::size_t to, const Layout& layout) const;

  std::vector<Column> columns_;
  std::vector<Row> rows_;
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
