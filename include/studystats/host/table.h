// Tables: read from a file, parsed from text, or viewed where the caller keeps them.
#pragma once

#include <studystats/host/errors.h>
#include <studystats/host/progress.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace studystats {

enum class ColumnKind { Numeric, Text };

// A cell that kept a column from being numeric.
struct StrayCell {
  std::size_t row = 0;    // from 0
  std::int64_t line = 0;  // in the file, from 1
  std::string text{};
};

// A column of a table that was read. Missing cells are not-a-number, or empty text.
struct TableColumn {
  std::string name{};
  ColumnKind kind = ColumnKind::Numeric;
  std::vector<double> numbers{};     // when numeric
  std::vector<std::string> texts{};  // when text: blanks at both ends trimmed, otherwise as written
  std::size_t strayCount = 0;        // text, but at least 90 % of its cells are numbers: how many are not ...
  std::vector<StrayCell> strays{};   // ... and the first few of them
  bool askedAsText = false;          // text because ReadOptions::asText named it
};

// A table in memory: named columns of one length.
class STUDYSTATS_API Table {
 public:
  std::string name{};                  // the file as the caller named it, or whatever messages should call the table
  std::vector<TableColumn> columns{};  // in the file's order, names unique
  char delimiter = ',';                // as found
  char decimal = '.';
  std::string digest{};           // of the bytes read, SHA-256 in hexadecimal digits; only when asked for
  std::vector<Remark> remarks{};  // what the reader noticed

  std::size_t rows() const;
  const TableColumn* find(std::string_view columnName) const;  // null when there is none
};

struct ReadOptions {
  char delimiter = '\0';                 // '\0': detected among comma, semicolon, tab and |
  char decimal = '\0';                   // '\0': detected, point or comma
  std::vector<std::string> missingAs{};  // further texts that mean missing
  bool digest = false;                   // also takes the digest of the bytes
  std::vector<std::string> asText{};     // columns whose cells are kept as written even if numbers (classes, row names)
  ProgressCallback progress{};
  StopSignal stop{};
};

// Reads a delimited text file; "-" is standard input. First row headings, RFC 4180 quoting, any line ends, a UTF-8
// byte-order mark. Empty cells and NA, N/A, NaN, ?, ., null (in any case) are missing. A column whose present cells are
// all numbers is numeric. Throws BadTable with file, line, column and cell; Stopped.
STUDYSTATS_API Table readTable(const std::string& path, const ReadOptions& options = {});

// The same from text that is already in memory; `name` is what messages call it.
STUDYSTATS_API Table parseTable(std::string_view text, const std::string& name, const ReadOptions& options = {});

// A table whose cells stay where they are: the view must not outlive them.
class STUDYSTATS_API TableView {
 public:
  struct Column {
    std::string name{};
    ColumnKind kind = ColumnKind::Numeric;
    std::span<const double> numbers{};
    std::span<const std::string> texts{};
    std::size_t strayCount = 0;
    std::span<const StrayCell> strays{};
    bool askedAsText = false;

    bool missing(std::size_t row) const;
  };

  TableView() = default;
  TableView(const Table& table);  // NOLINT(google-explicit-constructor): a table is viewed wherever a view is wanted
  void add(std::string name, std::span<const double> numbers);     // not-a-number: missing
  void add(std::string name, std::span<const std::string> texts);  // empty: missing
  void setRowNames(std::vector<std::string> names) { rowNames_ = std::move(names); }
  void setName(std::string name) { name_ = std::move(name); }

  const std::string& name() const { return name_; }  // "table" unless set
  std::size_t rows() const { return rows_; }
  const std::vector<Column>& columns() const { return columns_; }
  const Column* find(std::string_view columnName) const;
  const std::vector<std::string>& rowNames() const { return rowNames_; }  // empty: taken from a column
  char delimiter() const { return delimiter_; }                           // '\0' when the table came from no file
  char decimal() const { return decimal_; }

 private:
  void add(Column column, std::size_t length);

  std::string name_ = "table";
  std::vector<Column> columns_;
  std::vector<std::string> rowNames_;
  std::size_t rows_ = 0;
  char delimiter_ = '\0';
  char decimal_ = '.';
};

}  // namespace studystats
