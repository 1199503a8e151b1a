// Delimiter: the candidate that stands in the heading and equally often in the most records of a sample; of equals, the
// one that stands there more often. Decimal sign: whichever more cells are numbers with.
#include "host/reading/reader_dialect.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "host/reading/reader_cells.h"
#include "host/reading/reader_records.h"

namespace studystats {
namespace {

constexpr std::array<char, 4> kCandidates{',', ';', '\t', '|'};
using Counts = std::array<std::size_t, kCandidates.size()>;

constexpr std::size_t kSampleBytes = std::size_t{1} << 20;
constexpr std::size_t kSampleRecords = 200;
constexpr std::size_t kDecided = 1000;  // cells with a decimal sign that settle the question

std::size_t candidateOf(char c) {
  return static_cast<std::size_t>(std::find(kCandidates.begin(), kCandidates.end(), c) - kCandidates.begin());
}

// How often each candidate stands outside quotes in the first records. A quote opens where a cell could begin.
std::vector<Counts> countedCandidates(std::string_view text) {
  std::vector<Counts> records;
  Counts counts{};
  bool quoted = false, atCellStart = true, blank = true;
  for (const char c : text.substr(0, kSampleBytes)) {
    if (quoted) {
      quoted = c != '"';
    } else if (c == '\n' || c == '\r') {
      if (!blank) records.push_back(counts);
      if (records.size() == kSampleRecords) return records;
      counts = {};
      blank = atCellStart = true;
    } else if (const std::size_t k = candidateOf(c); k < kCandidates.size()) {
      ++counts[k];
      atCellStart = true;
      blank = blank && c == '\t';
    } else if (c != ' ') {
      quoted = c == '"' && atCellStart;
      atCellStart = blank = false;
    }
  }
  const bool cut = text.size() > kSampleBytes;
  if (!blank && (!cut || records.empty())) records.push_back(counts);
  return records;
}

char detectedDelimiter(std::string_view text, char decimal) {
  const std::vector<Counts> records = countedCandidates(text);
  char best = decimal == ',' ? ';' : ',';
  std::size_t bestAgreeing = 0, bestCount = 0;
  for (std::size_t k = 0; k < kCandidates.size(); ++k) {
    const std::size_t count = records.empty() ? 0 : records.front()[k];
    if (count == 0 || kCandidates[k] == decimal) continue;
    const auto agreeing = static_cast<std::size_t>(
        std::count_if(records.begin(), records.end(), [&](const Counts& record) { return record[k] == count; }));
    if (agreeing < bestAgreeing || (agreeing == bestAgreeing && count <= bestCount)) continue;
    best = kCandidates[k], bestAgreeing = agreeing, bestCount = count;
  }
  return best;
}

// Counts the cells that are numbers with a decimal comma and those with a point.
class DecimalCount : public RecordSink {
 public:
  void cell(std::string_view text) override {
    if (heading_) return;
    const bool comma = text.find(',') != text.npos, point = text.find('.') != text.npos;
    if (comma == point) return;
    const CellReader& reader = comma ? withComma_ : withPoint_;
    if (reader.read(trimmed(text)).kind == CellMeaning::Number) ++(comma ? commas_ : points_);
  }
  bool record() override {
    heading_ = false;
    return commas_ + points_ < kDecided;
  }
  char decimal() const { return commas_ > points_ ? ',' : '.'; }

 private:
  CellReader withComma_{',', {}}, withPoint_{'.', {}};
  bool heading_ = true;
  std::size_t commas_ = 0, points_ = 0;
};

char detectedDecimal(std::string_view text, const std::string& file, char delimiter) {
  if (delimiter == ',' || text.find(',') == text.npos) return '.';
  DecimalCount count;
  readRecords(text, file, delimiter, count);
  return count.decimal();
}

bool canDelimit(char c) {
  const bool letterOrDigit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  return !letterOrDigit && c != '"' && c != '\n' && c != '\r' && c != '+' && c != '-';
}

void check(const ReadOptions& options) {
  if (options.delimiter != '\0' && !canDelimit(options.delimiter))
    throw BadOptions(fmt::format("--delimiter: {} cannot divide cells.", quotedCell({&options.delimiter, 1})),
                     {.option = "--delimiter"});
  if (options.decimal != '\0' && options.decimal != '.' && options.decimal != ',')
    throw BadOptions(fmt::format("--decimal: {} is neither a point nor a comma.", quotedCell({&options.decimal, 1})),
                     {.option = "--decimal"});
  if (options.delimiter != '\0' && options.delimiter == options.decimal)
    throw BadOptions(fmt::format("--delimiter and --decimal cannot both be \"{}\".", options.decimal),
                     {.option = "--decimal"});
}

}  // namespace

Dialect dialectOf(std::string_view text, const std::string& file, const ReadOptions& options) {
  check(options);
  const char delimiter = options.delimiter != '\0' ? options.delimiter : detectedDelimiter(text, options.decimal);
  if (options.decimal != '\0') return {delimiter, options.decimal};
  if (delimiter == '.') return {delimiter, ','};
  return {delimiter, detectedDecimal(text, file, delimiter)};
}

}  // namespace studystats
