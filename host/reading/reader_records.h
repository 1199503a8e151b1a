// Records of a delimited text, cell by cell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace studystats {

// Receives the cells of one record after another.
class RecordSink {
 public:
  virtual ~RecordSink() = default;
  virtual void cell(std::string_view text) = 0;  // unquoted, blanks outside the quotes trimmed; valid during the call
  virtual bool record() = 0;                     // a record ended; false: no more are wanted

  std::int64_t line = 0;  // of the file, from 1, in which the current record starts
};

// Hands every record of `text` to the sink; blank lines are passed over. `reached` is told the position in the text
// every few megabytes. Throws BadTable for a quote that never closes and for text behind a closing quote, OutOfMemory,
// and what the sink throws.
void readRecords(std::string_view text, const std::string& file, char delimiter, RecordSink& sink,
                 const std::function<void(std::size_t)>& reached = {});

// The same for a text that comes in pieces, of which only the present one is held: `next` gives one after the other, an
// empty one at the end.
void readRecordsInPieces(const std::function<std::string_view()>& next, const std::string& file, char delimiter,
                         RecordSink& sink);

}  // namespace studystats
