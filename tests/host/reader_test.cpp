// The reader on hostile files. What is expected follows from RFC 4180 and from the rules that host.h states; each row
// of a table of cases is one file.
#include <gtest/gtest.h>
#include <studystats/host.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>
#include <sstream>
#include <stop_token>
#include <vector>

namespace studystats {
namespace {

using Strings = std::vector<std::string>;

// "x#1|2|~ & name$a|b": numeric columns with #, text columns with $, missing cells as ~.
std::string shown(const Table& table) {
  std::ostringstream out;
  out.precision(17);
  for (const TableColumn& column : table.columns) {
    const bool numeric = column.kind == ColumnKind::Numeric;
    out << (&column == &table.columns.front() ? "" : " & ") << column.name << (numeric ? '#' : '$');
    for (std::size_t i = 0; i < table.rows(); ++i) {
      out << (i > 0 ? "|" : "");
      if (numeric && !std::isnan(column.numbers[i]))
        out << column.numbers[i];
      else if (!numeric && !column.texts[i].empty())
        out << column.texts[i];
      else
        out << '~';
    }
  }
  return out.str();
}

std::string outcome(std::string_view text, const ReadOptions& options) try {
  return shown(parseTable(text, "table.csv", options));
} catch (const Error& error) {
  return error.what();
}

struct Case {
  std::string text;
  ReadOptions options;
  std::string expected;  // the cells, or the sentence
};

TEST(Reader, ReadsOrRefusesEveryHostileTable) {
  using namespace std::string_literals;
  const Case cases[] = {
      // Shape.
      {"", {}, "table.csv is empty."},
      {"\xEF\xBB\xBF", {}, "table.csv is empty."},
      {" \n\t\r\n\n", {}, "table.csv is empty but for blank lines."},
      {"a,b", {}, "table.csv has a heading but no rows."},
      {"a,b\n\n", {}, "table.csv has a heading but no rows."},
      {"x\n1", {}, "x#1"},
      {"x\n1\n2\n", {}, "x#1|2"},
      {"\xEF\xBB\xBF\"a\",b\n1,2\n", {}, "a#1 & b#2"},
      {"\n \na,b\n\n1,2\n  \n\n3,4\n\n", {}, "a#1|3 & b#2|4"},
      {"a,b\n,\n1,2\n", {}, "a#~|1 & b#~|2"},
      {"x\n\"\"\n1\n", {}, "x#~|1"},
      {"a\tb\n\t2\n1\t\n", {}, "a#~|1 & b#2|~"},
      {"a,b,c\n1,2,3\n\n4,5\n", {}, "table.csv, line 4: 2 cells where the heading has 3."},
      {"a,b\n1,2\n\"x\ny\",4,5\n", {}, "table.csv, line 3: 3 cells where the heading has 2."},
      {"\n\na,b\n1\n", {}, "table.csv, line 4: 1 cell where the heading has 2."},
      {"a,b\r1,2\r1\r", {}, "table.csv, line 3: 1 cell where the heading has 2."},
      {"a,b\nr1,1,2\n",
       {},
       "table.csv, line 2: 3 cells where the heading has 2.\n"
       "Does the column of row names lack its heading?"},
      // Quotes.
      {"a,b\n\"x, \"\"y\"\"\",1\n", {}, "a$x, \"y\" & b#1"},
      {"a,b\n\"x\ny\r\nz\",1\nw,2\n", {}, "a$x\ny\r\nz|w & b#1|2"},
      {"a,b\n \"x\" ,1\n", {}, "a$x & b#1"},
      {"a,b\n5\" pipe,\"1\"\n", {}, "a$5\" pipe & b#1"},
      {"a,b\n1,\"x\"y\nz,2\n",
       {},
       "table.csv, line 2: text behind a closing quote. Within quotes, a quote is written twice."},
      {"a,b\n5\" pipe,\"x\"y\n",
       {},
       "table.csv, line 2: text behind a closing quote. Within quotes, a quote is written twice."},
      {"a,b\n1,2\n\"x\ny\",\"z\n3,4\n5,6\n", {}, "table.csv, line 4: a quote opens here and never closes."},
      {"a,b\n1,\"", {}, "table.csv, line 2: a quote opens here and never closes."},
      {"\"a,b\n1,2\n", {}, "table.csv, line 1: a quote opens here and never closes."},
      // Headings.
      {" a , a,b\n1,2,3\n", {}, "a#1 & a (2)#2 & b#3"},
      {"a,a,a (2)\n1,2,3\n", {}, "a#1 & a (3)#2 & a (2)#3"},
      {"a,,b,\n1,2,3,4\n", {}, "a#1 & column 2#2 & b#3 & column 4#4"},
      {",column 1\n1,2\n", {}, "column 1 (2)#1 & column 1#2"},
      {"900  nm,B\n1,2\n", {}, "900  nm#1 & B#2"},
      // No text.
      {"\xFF\xFE"
       "a\0,\0"s,
       {},
       "table.csv is UTF-16 text. Save it as UTF-8."},
      {"a,b\n1,\0002\n"s,
       {},
       "table.csv, line 2: a byte of 0. This is no table of text (UTF-16, perhaps, or a binary file)."},
      {"PK\x03\x04\x14", {}, "table.csv is a workbook or another archive, not a text file. Export the sheet as CSV."},
      {"\x1F\x8B\x08", {}, "table.csv is compressed. Unpack it first (gunzip)."},
      // Delimiter and decimal sign.
      {"a;b\n1,5;2,5\n", {}, "a#1.5 & b#2.5"},
      {"a\tb\n1,5\t-2\n", {}, "a#1.5 & b#-2"},
      {"a|b\n1.5|x,y\n", {}, "a#1.5 & b$x,y"},
      {"\"a;b\",\"c;d\"\n\"1;2\",\"3;4\"\n", {}, "a;b$1;2 & c;d$3;4"},
      {"a,b|c\n1,2\n3,4\n", {}, "a#1|3 & b|c#2|4"},
      {"name;x, unit;y, unit\nq;1,5;2,5\nr;2,5;3\n", {}, "name$q|r & x, unit#1.5|2.5 & y, unit#2.5|3"},
      {"a;b\n1.5;x,y\n2.5;1,5\n", {}, "a#1.5|2.5 & b$x,y|1,5"},
      {"a;b\n1.234,5;1\n2,5;1\n", {}, "a$1.234,5|2,5 & b#1|1"},
      {"a,b;c\n1,2;3\n", {.delimiter = ';'}, "a,b#1.2 & c#3"},
      {"a,b\n1,2\n", {.delimiter = ','}, "a#1 & b#2"},
      {"a;b\n1,5;2\n", {.decimal = ','}, "a#1.5 & b#2"},
      {"a;b\n1.5;2,5\n", {.decimal = ','}, "a$1.5 & b#2.5"},
      {"a;b\n1,5;2\n", {.decimal = '.'}, "a$1,5 & b#2"},
      {"a,b\n1,2\n", {.delimiter = ',', .decimal = ','}, "--delimiter and --decimal cannot both be \",\"."},
      {"a,b\n1,2\n", {.delimiter = 'x'}, "--delimiter: \"x\" cannot divide cells."},
      {"a,b\n1,2\n", {.decimal = ';'}, "--decimal: \";\" is neither a point nor a comma."},
      // Missing cells.
      {"a,b\nNA,n/a\nnan,?\n.,NULL\n,7\n", {}, "a#~|~|~|~ & b#~|~|~|7"},
      {"a,b\ninf,-INF\n1,NaN(7)\n+Infinity,2\n", {}, "a#~|1|~ & b#~|~|2"},
      {"a,b\n-999,x\n1,nd\n-999.0,ND\n", {.missingAs = {"-999", "nd"}}, "a#~|1|-999 & b$x|~|ND"},
      // Text where numbers were: what stood above comes back as it was written.
      {"a,b\n01,1\nNA,2\ninf,3\n 2.50 ,4\nx,5\n3,6\n", {}, "a$01|~|inf|2.50|x|3 & b#1|2|3|4|5|6"},
      {"a,b\ninf,1\nx,2\n", {}, "a$inf|x & b#1|2"},
      {"a,b\n1,1\nx,2\n3,y\n1.0,4\n", {}, "a$1|x|3|1.0 & b$1|2|y|4"},
      {"class,x\n 1 ,1\n1.0,2\nNA,3\n", {.asText = {"class", "nosuch"}}, "class$1|1.0|~ & x#1|2|3"},
  };
  for (const Case& c : cases) EXPECT_EQ(outcome(c.text, c.options), c.expected) << "from:\n" << c.text;
}

TEST(Reader, TakesNumbersAsFromCharsDoesAndNothingElse) {
  constexpr double kTiny = 5e-324;  // the smallest double
  struct {
    std::string cell;
    double value;
  } const numbers[] = {{" 7 ", 7},
                       {"+1.5", 1.5},
                       {"-0", -0.0},
                       {".5", 0.5},
                       {"5.", 5},
                       {"1E+3", 1e3},
                       {"007", 7},
                       {"0.1", 0.1},
                       {"4.9e-324", kTiny},
                       {"0e999999999", 0},
                       {"\"8\"", 8},
                       {"-1e-2", -0.01},
                       {"1.7976931348623157e308", std::numeric_limits<double>::max()}};
  for (const auto& [cell, value] : numbers) {
    const Table table = parseTable("x,y\n" + cell + ",0\n", "table.csv");
    ASSERT_EQ(table.columns[0].kind, ColumnKind::Numeric) << cell;
    EXPECT_EQ(table.columns[0].numbers[0], value) << cell;
    EXPECT_EQ(std::signbit(table.columns[0].numbers[0]), std::signbit(value)) << cell;
  }
  for (const std::string cell : {"0x10", "1_000", "+-1", "++1", "-+1", "1.5.2", "\"1,5\"", "1e", "e5", "-", "+", "1 2",
                                 "1d5", "--1", "12%", "1;5"})
    EXPECT_EQ(parseTable("x,y\n" + cell + ",0\n", "table.csv").columns[0].kind, ColumnKind::Text) << cell;
}

TEST(Reader, NamesTheCellThatIsOutOfRangeUnlessTheColumnIsText) {
  for (const std::string cell : {"1e400", "-1e400", "1e-400"}) try {
      parseTable("name,x\na,1\n\nb," + cell + "\n", "table.csv");
      ADD_FAILURE() << cell;
    } catch (const BadTable& error) {
      EXPECT_EQ(error.what(), "table.csv, line 4, column 2: \"" + cell +
                                  "\" is beyond the range of numbers.\nCorrect the cell, or --missing-as \"" + cell +
                                  "\" to treat it as missing.");
      EXPECT_EQ(error.where().file, "table.csv");
      EXPECT_EQ(error.where().line, 4);
      EXPECT_EQ(error.where().column, 2);
      EXPECT_EQ(error.where().cell, cell);
      EXPECT_EQ(error.exitStatus(), 2);
    }
  EXPECT_EQ(outcome("code\n1E400\n2F300\n", {}), "code$1E400|2F300");
  EXPECT_EQ(outcome("x\n1e400\n2\n", {.missingAs = {"1e400"}}), "x#~|2");
}

// `n` rows of two columns; the first holds `stray` in the rows given, numbers elsewhere.
std::string columnWithStrays(std::size_t n, const std::vector<std::size_t>& rows, const std::string& stray) {
  std::string text = "pIC50,y\n";
  for (std::size_t i = 0; i < n; ++i)
    text += (std::count(rows.begin(), rows.end(), i) > 0 ? stray : std::to_string(i)) + ",1\n";
  return text;
}

TEST(Reader, WarnsOfColumnsThatAreAlmostNumeric) {
  const Table one = parseTable(columnWithStrays(40, {35}, "<4.0"), "assay.csv");
  ASSERT_EQ(one.remarks.size(), 1u);
  std::ostringstream warning;
  warning << one.remarks[0];
  EXPECT_EQ(warning.str(),
            "warning: column \"pIC50\" is text because of 1 cell: line 37, column 1, \"<4.0\". "
            "Correct the cell, or --missing-as \"<4.0\" to treat it as missing.");
  EXPECT_EQ(one.remarks[0].code, "almost-numeric");
  EXPECT_EQ(one.columns[0].strayCount, 1u);
  EXPECT_EQ(one.columns[0].strays[0].row, 35u);
  EXPECT_EQ(one.columns[0].strays[0].line, 37);
  EXPECT_EQ(one.columns[0].strays[0].text, "<4.0");
  EXPECT_EQ(one.columns[0].texts[34], "34");

  const Table four = parseTable(columnWithStrays(40, {0, 7, 8, 39}, "\"a\nb\""), "assay.csv");  // exactly 90 % numbers
  EXPECT_EQ(four.columns[0].strayCount, 4u);
  ASSERT_EQ(four.columns[0].strays.size(), 3u);
  EXPECT_EQ(four.columns[0].strays[2].line, 12);  // two of the records above take two lines
  EXPECT_NE(four.remarks[0].text.find("4 cells: line 2, column 1, \"a b\"; line 10, "), std::string::npos);
  EXPECT_NE(four.remarks[0].text.find("; 1 more."), std::string::npos);

  EXPECT_TRUE(parseTable(columnWithStrays(39, {0, 7, 8, 38}, "x"), "assay.csv").remarks.empty());
  const Table asked = parseTable(columnWithStrays(40, {35}, "<4.0"), "assay.csv", {.asText = {"pIC50"}});
  EXPECT_TRUE(asked.remarks.empty());
  EXPECT_EQ(asked.columns[0].strayCount, 0u);
  EXPECT_TRUE(asked.columns[0].askedAsText);
}

TEST(Reader, RemarksHeadingsThatItRenamedAndHeadingsThatAreNumbers) {
  const auto codes = [](std::string_view text) {
    Strings result;
    for (const Remark& remark : parseTable(text, "table.csv").remarks) result.push_back(remark.code);
    return result;
  };
  EXPECT_EQ(codes("a,a,\n1,2,3\n"), (Strings{"duplicate-headings", "empty-headings"}));
  EXPECT_EQ(codes("1,2.5\n1,2\n"), (Strings{"numeric-headings"}));
  EXPECT_EQ(codes("sample,2.5\n1,2\n"), Strings{});
  EXPECT_EQ(parseTable("a,a,a\n1,2,3\n", "table.csv").remarks[0].text,
            "2 headings repeat earlier ones; their columns are called: \"a (2)\", \"a (3)\".");
}

std::string withLineEnds(std::string text, const std::string& lineEnd) {
  for (std::size_t at = 0; (at = text.find('\n', at)) != text.npos; at += lineEnd.size()) text.replace(at, 1, lineEnd);
  return text;
}

TEST(Reader, TreatsAllLineEndsAlike) {
  const std::string tables[] = {"a,b\n1,x\n\n2,\"y\"\n", "a,b\n1,2\n\n3\n", "a;b\n1,5;\"x\n", "a\n\n\"1\"\n2x"};
  for (const std::string& text : tables)
    for (const std::string lineEnd : {"\r\n", "\r"})
      EXPECT_EQ(outcome(withLineEnds(text, lineEnd), {}), outcome(text, {})) << text;
  EXPECT_EQ(outcome("a,b\r1,2\n3,4\r\n\n\r5,6", {}), "a#1|3|5 & b#2|4|6");
  EXPECT_EQ(outcome("a,b\r1,2\n3,4\r\n\n\r5", {}), "table.csv, line 6: 1 cell where the heading has 2.");
}

// A cell by the letter of RFC 4180.
std::string written(const std::string& cell, char delimiter, bool quoteAlways) {
  if (!quoteAlways && cell.find_first_of(std::string("\"\r\n") + delimiter) == cell.npos) return cell;
  std::string text = "\"";
  for (const char c : cell) text += c == '"' ? std::string("\"\"") : std::string(1, c);
  return text + '"';
}

TEST(Reader, GivesBackRandomTablesWhateverTheirDelimiterQuotesAndLineEnds) {
  std::mt19937 random(20240229);
  const auto upTo = [&](std::size_t n) { return static_cast<std::size_t>(random()) % (n + 1); };
  const Strings pieces = {"a", "\"", ",", ";", "\t", "|", "\n", "\r\n", "\r", " ", "7", ".", "\xC3\xA9"};
  const Strings lineEnds = {"\n", "\r\n", "\r"};
  for (int round = 0; round < 400; ++round) {
    const std::size_t nRows = 1 + upTo(6), nColumns = 1 + upTo(4);
    const char delimiter = ",;\t|"[upTo(3)];
    const bool quoteAlways = upTo(1) == 1;
    const std::string& lineEnd = lineEnds[upTo(2)];
    std::vector<Strings> rows(nRows + 1, Strings(nColumns));
    for (std::size_t i = 0; i <= nRows; ++i)
      for (std::size_t j = 0; j < nColumns; ++j) {
        std::string& cell = rows[i][j] = "<" + std::to_string(j);  // neither missing nor trimmed, headings unique
        for (std::size_t k = upTo(5); k > 0; --k) cell += pieces[upTo(pieces.size() - 1)];
        cell += ">";
      }
    std::string text;
    for (const Strings& row : rows) {
      for (std::size_t j = 0; j < nColumns; ++j)
        text += (j > 0 ? std::string(1, delimiter) : "") + written(row[j], delimiter, quoteAlways);
      text += lineEnd;
    }
    SCOPED_TRACE("round " + std::to_string(round) + ":\n" + text);
    const Table table = parseTable(text, "random.csv", {.delimiter = delimiter});
    ASSERT_EQ(table.columns.size(), nColumns);
    ASSERT_EQ(table.rows(), nRows);
    for (std::size_t j = 0; j < nColumns; ++j) {
      EXPECT_EQ(table.columns[j].name, rows[0][j]);
      for (std::size_t i = 0; i < nRows; ++i) EXPECT_EQ(table.columns[j].texts[i], rows[i + 1][j]);
    }
  }
}

// Longer than what is read between two reports, one cell longer than that.
std::string longTable() {
  std::string text = "x,y\n";
  for (int i = 0; i < 400000; ++i) text += std::to_string(i) + ",\"0.25\"\n";
  return text + "-1,\"" + std::string(5000000, 'z') + "\n\n\"\n1,2\n\"";
}

TEST(Reader, ReportsProgressAndStopsWhenAsked) {
  std::string text = longTable();
  EXPECT_EQ(outcome(text, {}), "table.csv, line 400006: a quote opens here and never closes.");
  text.pop_back();

  std::vector<double> percents;
  const Table table = parseTable(text, "table.csv", {.progress = [&](const Progress& progress) {
                                   percents.push_back(progress.percent);
                                   return true;
                                 }});
  EXPECT_EQ(table.rows(), 400002u);
  EXPECT_EQ(table.columns[0].numbers[399999], 399999);
  EXPECT_EQ(table.columns[1].texts[399999], "0.25");
  EXPECT_EQ(table.columns[1].texts[400000].size(), 5000002u);
  EXPECT_GE(percents.size(), 3u);
  EXPECT_EQ(percents.front(), 0);
  EXPECT_EQ(percents.back(), 100);
  EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));

  const auto stopsInside = [](const Progress& progress) { return progress.percent == 0; };
  EXPECT_THROW(parseTable(text, "table.csv", {.progress = stopsInside}), Stopped);
  const auto fails = [](const Progress& progress) -> bool {
    if (progress.percent > 0) throw std::out_of_range("the caller's own");
    return true;
  };
  EXPECT_THROW(parseTable(text, "table.csv", {.progress = fails}), std::out_of_range);
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(parseTable(text, "table.csv", {.stop = source.get_token()}), Stopped);
}

TEST(Reader, SaysWhyAFileCannotBeRead) {
  const std::string folder = std::filesystem::path(::testing::TempDir()) / "studystats_reader";
  std::filesystem::create_directories(folder);
  const auto refusal = [](const std::string& path) -> std::string {
    try {
      readTable(path);
    } catch (const BadTable& error) {
      EXPECT_EQ(error.where().file, path);
      return error.what();
    }
    return "read";
  };
  EXPECT_EQ(refusal(folder + "/nosuch.csv"), "cannot read " + folder + "/nosuch.csv: there is no such file or folder.");
  EXPECT_EQ(refusal(folder), "cannot read " + folder + ": it is a folder.");
  const std::string locked = folder + "/locked.csv";
  writeFile(locked, "x\n1\n");
  ASSERT_EQ(::chmod(locked.c_str(), 0), 0);
  if (::geteuid() != 0) {
    EXPECT_EQ(refusal(locked), "cannot read " + locked + ": permission is denied.");
  }
  std::filesystem::remove_all(folder);
}

// Shapes and missing cells as the tables' own descriptions state them.
TEST(Reader, ReadsTheExampleTables) {
  const std::string folder = std::string(STUDYSTATS_SOURCE_DIR) + "/examples/";
  struct {
    const char* file;
    std::size_t rows, columns, texts, missing;
  } const examples[] = {
      {"airquality.csv", 153, 6, 0, 44}, {"bloodbrain.csv", 208, 136, 1, 0}, {"cement.csv", 13, 6, 1, 0},
      {"gasoline.csv", 60, 403, 1, 0},   {"iris.csv", 150, 6, 2, 0},         {"linnerud.csv", 20, 7, 1, 0},
      {"longley.csv", 16, 7, 0, 0},      {"oliveoil.csv", 16, 12, 1, 0},     {"wine.csv", 178, 15, 2, 0}};
  for (const auto& example : examples) {
    const Table table = readTable(folder + example.file);
    std::size_t texts = 0, missing = 0;
    for (const TableColumn& column : table.columns) {
      texts += column.kind == ColumnKind::Text;
      missing += static_cast<std::size_t>(
          std::count_if(column.numbers.begin(), column.numbers.end(), [](double x) { return std::isnan(x); }));
    }
    EXPECT_EQ(table.rows(), example.rows) << example.file;
    EXPECT_EQ(table.columns.size(), example.columns) << example.file;
    EXPECT_EQ(texts, example.texts) << example.file;
    EXPECT_EQ(missing, example.missing) << example.file;
    EXPECT_TRUE(table.remarks.empty()) << example.file;
  }
}

}  // namespace
}  // namespace studystats
