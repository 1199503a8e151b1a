// libcsv knows the syntax; it is fed one line of the file at a time, so that every record has its exact line number.
//
// It runs in its strict mode, which stops at a stray quote and can be resumed. A quote within an unquoted cell (5"
// pipe) is then taken as it stands, while text behind a closing quote ("a"b) is refused: the lenient mode would swallow
// the delimiter behind it and read on to the next quote, wherever that is.
#include "host/reading/reader_records.h"

#include <csv.h>
#include <fmt/format.h>
#include <studystats/host/table.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace studystats {
namespace {

constexpr unsigned char kStrict = CSV_STRICT | CSV_STRICT_FINI;
constexpr std::size_t kBlock = std::size_t{4} << 20;       // between two calls of `reached`
constexpr std::size_t kCellGrowth = std::size_t{1} << 16;  // of libcsv's buffer for one cell

// The lines of a text, each with its line end: LF, CR LF or CR. The next LF and the next CR are each looked for once.
class Lines {
 public:
  explicit Lines(std::string_view text) : text_(text) {}
  bool atEnd() const { return position_ >= text_.size(); }
  std::size_t position() const { return position_; }

  std::string_view next() {
    if (lf_ < position_ || position_ == 0) lf_ = text_.find('\n', position_);
    if (cr_ < position_ || position_ == 0) cr_ = text_.find('\r', position_);
    std::size_t end = std::min(lf_, cr_);
    end = end == text_.npos ? text_.size() : end + (cr_ < lf_ && cr_ + 1 == lf_ ? 2 : 1);
    const std::string_view line = text_.substr(position_, end - position_);
    position_ = end;
    return line;
  }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t lf_ = 0;
  std::size_t cr_ = 0;
};

class Parser {
 public:
  Parser(const std::string& file, char delimiter, RecordSink& sink) : file_(file), sink_(sink) {
    csv_init(&parser_, kStrict);
    csv_set_delim(&parser_, static_cast<unsigned char>(delimiter));
    csv_set_blk_size(&parser_, kCellGrowth);
  }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  ~Parser() { csv_free(&parser_); }

  // False when the sink wants no more.
  bool line(std::string_view text) {
    ++lineNumber_;
    if (betweenRecords_) sink_.line = lineNumber_;
    const std::size_t cellsBefore = betweenRecords_ ? 0 : cells_;
    const bool continues = !betweenRecords_;
    feed(text);
    // A line's end that is no record's end stands within quotes; they opened here unless no cell has ended since.
    if (!betweenRecords_ && !(continues && cells_ == cellsBefore)) openedIn_ = lineNumber_;
    return wanted_;
  }

  void end() {
    if (csv_fini(&parser_, &Parser::takeCell, &Parser::takeRecord, this) != 0) {
      if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
      throw BadTable(fmt::format("{}, line {}: a quote opens here and never closes.", file_, openedIn_),
                     {.file = file_, .line = openedIn_});
    }
    rethrow();
  }

 private:
  void feed(std::string_view text) {
    betweenRecords_ = betweenRecords_ && text.find_first_not_of(" \t\r\n") == text.npos;
    while (!text.empty()) {
      const std::size_t n = csv_parse(&parser_, text.data(), text.size(), &Parser::takeCell, &Parser::takeRecord, this);
      rethrow();
      if (n == text.size()) return;
      if (csv_error(&parser_) != CSV_EPARSE) throw std::bad_alloc();
      text.remove_prefix(n);
      takeStrayQuote(text.front());
      text.remove_prefix(1);
    }
  }

  void takeStrayQuote(char stray) {
    if (parser_.quoted)
      throw BadTable(fmt::format("{}, line {}: text behind a closing quote. Within quotes, a quote is written twice.",
                                 file_, lineNumber_),
                     {.file = file_, .line = lineNumber_});
    csv_set_opts(&parser_, 0);
    csv_parse(&parser_, &stray, 1, &Parser::takeCell, &Parser::takeRecord, this);
    csv_set_opts(&parser_, kStrict);
  }

  // No exception may pass through C: it waits here until libcsv has returned.
  template <class Call>
  void guarded(const Call& call) {
    if (failure_) return;
    try {
      call();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }
  void rethrow() {
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  }

  static void takeCell(void* text, std::size_t size, void* self) {
    Parser& parser = *static_cast<Parser*>(self);
    parser.guarded([&] { parser.sink_.cell({static_cast<const char*>(text), size}); });
    ++parser.cells_;
  }

  static void takeRecord(int, void* self) {
    Parser& parser = *static_cast<Parser*>(self);
    parser.guarded([&] { parser.wanted_ = parser.sink_.record(); });
    parser.cells_ = 0;
    parser.betweenRecords_ = true;
  }

  const std::string& file_;
  RecordSink& sink_;
  csv_parser parser_{};
  std::exception_ptr failure_;
  std::int64_t lineNumber_ = 0;
  std::int64_t openedIn_ = 0;   // the line in which the quote opened that is still open
  std::size_t cells_ = 0;       // of the current record
  bool betweenRecords_ = true;  // no record is open
  bool wanted_ = true;
};

}  // namespace

void readRecords(std::string_view text, const std::string& file, char delimiter, RecordSink& sink,
                 const std::function<void(std::size_t)>& reached) {
  Parser parser(file, delimiter, sink);
  Lines lines(text);
  std::size_t told = 0;
  while (!lines.atEnd()) {
    if (!parser.line(lines.next())) return;
    if (reached && lines.position() - told >= kBlock) reached(told = lines.position());
  }
  parser.end();
}

void readRecordsInPieces(const std::function<std::string_view()>& next, const std::string& file, char delimiter,
                         RecordSink& sink) {
  Parser parser(file, delimiter, sink);
  const auto parse = [&](std::string_view text) {
    Lines lines(text);
    while (!lines.atEnd())
      if (!parser.line(lines.next())) return false;
    return true;
  };
  std::string held;  // lines, the last of which may go on in the next piece
  for (std::string_view piece = next(); !piece.empty(); piece = next()) {
    // A CR at the end may be half of a CR LF.
    const std::string_view whole = piece.substr(0, piece.size() - (piece.back() == '\r' ? 1 : 0));
    const std::size_t lastEnd = whole.find_last_of("\r\n");
    const std::size_t upTo = lastEnd == whole.npos ? 0 : held.size() + lastEnd + 1;
    held += piece;
    if (!parse(std::string_view(held).substr(0, upTo))) return;
    held.erase(0, upTo);
  }
  if (!parse(held)) return;
  parser.end();
}

}  // namespace studystats
