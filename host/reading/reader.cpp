// Reading a delimited text file into a table.
//
// 1. The whole file comes into one buffer, and its line ends are counted, which bounds the number of rows.
// 2. The delimiter and the decimal sign are taken from a sample.
// 3. Cells become numbers as the parser delivers them; a column's numbers lie in memory that was reserved once.
// 4. Columns that turned out to be text below their first row get the texts above that row by a second reading.
#include <fmt/format.h>
#include <studystats/host/table.h>

#include <algorithm>
#include <new>

#include "host/reading/reader_cells.h"
#include "host/reading/reader_columns.h"
#include "host/reading/reader_dialect.h"
#include "host/reading/reader_records.h"
#include "host/reading/reader_source.h"
#include "host/reading/sha256.h"
#include "host/text.h"
#include "host/watch.h"

namespace studystats {
namespace {

// No text can hold more records than it has line ends, nor more than one for each byte and delimiter of the shortest
// record.
std::size_t mostRows(std::string_view text, std::size_t columns) {
  const auto lf = std::count(text.begin(), text.end(), '\n');
  const auto ends = lf > 0 ? lf : std::count(text.begin(), text.end(), '\r');
  return std::min(static_cast<std::size_t>(ends) + 1, text.size() / columns + 1);
}

// The first record makes the columns, the others fill them.
class TableSink : public RecordSink {
 public:
  TableSink(std::string_view text, const std::string& file, char decimal, const ReadOptions& options)
      : text_(text), file_(file), options_(options), reader_(decimal, options.missingAs) {}

  void cell(std::string_view text) override {
    if (!headed_)
      headings_.emplace_back(trimmed(text));
    else if (cells_ < columns_.size())
      columns_[cells_].add(trimmed(text), reader_, {rows_, line});
    ++cells_;
  }

  bool record() override {
    if (!headed_)
      makeColumns();
    else if (cells_ != columns_.size())
      refuseRagged();
    else
      ++rows_;
    headed_ = true;
    cells_ = 0;
    return true;
  }

  std::size_t rows() const { return rows_; }
  std::vector<ColumnBuilder>& columns() { return columns_; }
  const CellReader& reader() const { return reader_; }
  std::vector<Remark>& remarks() { return remarks_; }

 private:
  void makeColumns() {
    const std::vector<std::string> names = columnNames(headings_, remarks_);
    if (std::all_of(headings_.begin(), headings_.end(), [&](const std::string& h) { return isNumber(h); }))
      remarks_.push_back({Severity::Warning,
                          "numeric-headings",
                          fmt::format("line {} holds numbers only, and was read as the headings.", line),
                          {}});
    const std::size_t expected = mostRows(text_, names.size());
    columns_.reserve(names.size());
    for (const std::string& name : names) {
      const bool asText = std::find(options_.asText.begin(), options_.asText.end(), name) != options_.asText.end();
      columns_.emplace_back(name, asText, expected);
    }
  }

  bool isNumber(const std::string& text) const { return reader_.read(text).kind == CellMeaning::Number; }

  [[noreturn]] void refuseRagged() const {
    const bool rowNames = rows_ == 0 && cells_ == columns_.size() + 1;
    throw BadTable(fmt::format("{}, line {}: {} where the heading has {}.{}", file_, line, counted(cells_, "cell"),
                               columns_.size(), rowNames ? "\nDoes the column of row names lack its heading?" : ""),
                   {.file = file_, .line = line});
  }

  std::string_view text_;
  const std::string& file_;
  const ReadOptions& options_;
  CellReader reader_;
  std::vector<std::string> headings_;
  std::vector<ColumnBuilder> columns_;
  std::vector<Remark> remarks_;
  std::size_t rows_ = 0;
  std::size_t cells_ = 0;  // of the current record
  bool headed_ = false;
};

// The second reading: texts of the rows that held numbers when their column turned out to be text.
class TextSink : public RecordSink {
 public:
  TextSink(std::vector<ColumnBuilder>& columns, const CellReader& reader) : columns_(columns), reader_(reader) {
    for (const ColumnBuilder& column : columns) rowsToRead_ = std::max(rowsToRead_, column.rowsToReadAgain());
  }
  bool isNeeded() const { return rowsToRead_ > 0; }

  void cell(std::string_view text) override {
    if (headed_) columns_[cells_].setText(row_, trimmed(text), reader_);
    ++cells_;
  }
  bool record() override {
    if (headed_) ++row_;
    headed_ = true;
    cells_ = 0;
    return row_ < rowsToRead_;
  }

 private:
  std::vector<ColumnBuilder>& columns_;
  const CellReader& reader_;
  std::size_t rowsToRead_ = 0;
  std::size_t row_ = 0;
  std::size_t cells_ = 0;
  bool headed_ = false;
};

Table parsed(std::string_view whole, const std::string& name, const ReadOptions& options, Watch& watch) {
  const std::string_view text = tableText(whole, name);
  const Dialect dialect = dialectOf(text, name, options);
  const std::string what = fmt::format("reading {}", name);
  const auto total = static_cast<std::int64_t>(text.size());

  TableSink sink(text, name, dialect.decimal, options);
  readRecords(text, name, dialect.delimiter, sink, [&](std::size_t position) {
    watch.report("reading", what, 0, 99, static_cast<std::int64_t>(position), total);
  });
  if (sink.rows() == 0) throw BadTable(fmt::format("{} has a heading but no rows.", name), {.file = name, .line = 1});
  TextSink texts(sink.columns(), sink.reader());
  if (texts.isNeeded()) readRecords(text, name, dialect.delimiter, texts, [&](std::size_t) { watch.check(); });

  Table table;
  table.name = name;
  table.delimiter = dialect.delimiter;
  table.decimal = dialect.decimal;
  if (options.digest) table.digest = sha256(whole);
  table.remarks = std::move(sink.remarks());
  table.columns.reserve(sink.columns().size());
  for (ColumnBuilder& column : sink.columns())
    table.columns.push_back(
        std::move(column).finished(name, static_cast<int>(table.columns.size()) + 1, table.remarks));
  watch.report("reading", what, 0, 100, total, total);
  return table;
}

}  // namespace

Table readTable(const std::string& path, const ReadOptions& options) try {
  Watch watch(options.progress, options.stop);
  const std::string name = shownFile(path);
  watch.report("reading", fmt::format("reading {}", name), 0, 100, 0, 1);
  const FileText file(path, watch);
  return parsed(file.text(), name, options, watch);
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("{} does not fit into memory.", shownFile(path)));
}

Table parseTable(std::string_view text, const std::string& name, const ReadOptions& options) try {
  Watch watch(options.progress, options.stop);
  watch.report("reading", fmt::format("reading {}", name), 0, 100, 0, 1);
  return parsed(text, name, options, watch);
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("{} does not fit into memory.", name));
}

}  // namespace studystats
