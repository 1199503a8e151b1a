// Numbers, paragraphs and tables as text.
#include "host/text.h"

#include <gtest/gtest.h>
#include <studystats/host.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>

namespace studystats {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST(Numbers, KeepTheDigitsAskedFor) {
  const struct {
    double value;
    int digits;
    const char* all;
    const char* brief;
  } rows[] = {
      {42.12931, 6, "42.1293", "42.1293"},
      {3.523, 6, "3.52300", "3.523"},
      {0.0048076923, 6, "0.00480769", "0.00480769"},
      {999999.5, 6, "1000000", "1000000"},  // rounding adds a digit
      {9.999996, 6, "10.0000", "10"},
      {1234567.8, 6, "1234568", "1234568"},  // whole digits are never dropped
      {-0.0000123456, 4, "-0.00001235", "-0.00001235"},
      {1.5e-12, 6, "1.50000e-12", "1.5e-12"},
      {1e300, 3, "1.00e+300", "1e+300"},
      {100, 6, "100.000", "100"},
      {0, 6, "0", "0"},
      {-0.0, 6, "0", "0"},
      {kNan, 6, "-", "-"},
      {std::numeric_limits<double>::infinity(), 6, "inf", "inf"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(significant(row.value, row.digits), row.all);
    EXPECT_EQ(brief(row.value, row.digits), row.brief);
  }
  EXPECT_EQ(significant(std::optional<double>(), 6), "-");
  EXPECT_EQ(fixed(-0.0004, 3), "0.000");
  EXPECT_EQ(fixed(-0.0006, 3), "-0.001");
  EXPECT_EQ(sized(3.14159, 12.5, 4), "3.14");
  EXPECT_EQ(sized(3.14159e-21, 2.7e-20, 4), "3.142e-21");
  EXPECT_EQ(sized(-12345.6, 99999, 3), "-12346");
  EXPECT_EQ(explained(0.9944), "0.994");
  EXPECT_EQ(explained(0.9955), "0.9955");  // more where three decimals hide what is missing to 1
  EXPECT_EQ(explained(0.99998), "0.999980");
  EXPECT_EQ(explained(1), "1.000");
  EXPECT_EQ(explained(-0.25), "-0.250");
  EXPECT_EQ(percent(0.3619), "36.2 %");
  EXPECT_EQ(percent(0.95, 0), "95 %");
}

TEST(Numbers, ReadBackTheSameWhenExact) {
  for (const double value : {0.1, 1.0 / 3, 1e22, 5e-324, 1.7976931348623157e308, -2.5})
    EXPECT_EQ(std::strtod(exact(value).c_str(), nullptr), value) << exact(value);
  EXPECT_EQ(exact(kNan), "");
}

TEST(Lists, NeverEndInOneMore) {
  EXPECT_EQ(listed({"a", "b", "c"}, 2), "a, b, c");
  EXPECT_EQ(listed({"a", "b", "c", "d"}, 2), "a, b, 2 more");
  EXPECT_EQ(listed({}, 2), "");
  EXPECT_EQ(counted(1, "row"), "1 row");
  EXPECT_EQ(counted(0, "entry", "entries"), "0 entries");
}

TEST(Paragraphs, BreakAtSingleBlanksAndHangUnderTheirLabel) {
  const std::string word(30, 'x');
  const std::string text = wrapped("label  ", word + " " + word + " " + word + " 900  nm " + word);
  const auto lines = linesOf(text);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0], "label  " + word + " " + word + " " + word);  // 99 of 100 columns
  EXPECT_EQ(lines[1], "       900  nm " + word);
  EXPECT_EQ(wrapped("", "one\ntwo"), "one\ntwo\n");
  EXPECT_EQ(wrapped("x  ", ""), "x\n");
  EXPECT_EQ(wrapped("x  ", "a " + std::string(98, 'y') + " b"), "x  a\n  " + std::string(98, 'y') + "\n   b\n");
  EXPECT_EQ(wrapped("x  ", std::string(120, 'y')), "x\n" + std::string(120, 'y') + "\n");

  const auto items = linesOf(wrappedItems("  same  ", {"a = b", word + " = " + word, word}, ";  "));
  ASSERT_EQ(items.size(), 2U);
  EXPECT_EQ(items[0], "  same  a = b;  " + word + " = " + word + ";");
  EXPECT_EQ(items[1], "        " + word);
}

TEST(Tables, AlignNumbersOnThePoint) {
  TextTable table;
  table.column("name", Align::Left);
  table.column("p", Align::Point);
  table.column("long heading", Align::Point);
  table.column("note", Align::Left);
  table.row({"a", "0.0055", "-2", "x"});
  table.line("... between");
  table.row({"\xC3\xA4-long", "<0.0001", "12.25", "y"});  // a two-byte character takes one column
  table.row({"c", "12", "-"});
  EXPECT_EQ(table.text(1),
            " name          p  long heading  note\n"
            " a        0.0055         -2     x\n"
            " ... between\n"
            " \xC3\xA4-long  <0.0001         12.25  y\n"
            " c       12                  -\n");
}

TEST(Tables, StayWithinAHundredColumnsWhateverTheyHold) {
  for (const std::size_t nameLength : {1U, 8U, 30U, 70U, 99U})
    for (const std::size_t columns : {1U, 7U, 9U, 40U}) {
      TextTable table;
      table.column("column", Align::Left);
      for (std::size_t j = 0; j < columns; ++j) table.column("h" + std::to_string(j), Align::Point);
      std::vector<std::string> cells{std::string(nameLength, 'n')};
      for (std::size_t j = 0; j < columns; ++j) cells.push_back(j % 2 ? "1234.5" : "-0.001234");
      table.row(cells);
      const std::string text = table.text();
      std::size_t found = 0;
      for (const std::string& line : linesOf(text)) {
        EXPECT_LE(line.size(), kTextWidth) << nameLength << " " << columns;
        EXPECT_TRUE(line.empty() || line.back() != ' ') << text;
        for (std::size_t at = 0; (at = line.find("234", at)) != std::string::npos; ++at) ++found;
      }
      EXPECT_EQ(found, columns / 2 * 2 + columns % 2) << text;  // no figure is lost: each holds "234" once
    }
}

TEST(Csv, QuotesWhatNeedsIt) {
  CsvText csv;
  csv.row({"plain", "a,b", "say \"x\"", "two\nlines", " blank", ""});
  EXPECT_EQ(csv.text(), "plain,\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",\" blank\",\n");
}

}  // namespace
}  // namespace studystats
