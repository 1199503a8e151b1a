// Columns that grow cell by cell, and what there is to say about them.
#pragma once

#include <studystats/host/table.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/reading/reader_cells.h"

namespace studystats {

// Where a cell stands.
struct CellPlace {
  std::size_t row;    // from 0
  std::int64_t line;  // in the file, from 1
};

// One column while the table is read: numbers until the first cell that is none, texts from there on. The texts of the
// rows above that cell are filled in by a second reading of those rows, which a column without numbers there does not
// need.
class ColumnBuilder {
 public:
  ColumnBuilder(std::string name, bool askedAsText, std::size_t expectedRows);

  // `text` is trimmed and stands in the row behind the last one added.
  void add(std::string_view text, const CellReader& reader, CellPlace place) {
    const Cell cell = reader.read(text);
    if (!isText_ && cell.kind == CellMeaning::Number) {
      numbers_.push_back(cell.number);
      ++numberCount_;
    } else {
      addUnusual(text, cell, place);
    }
  }

  std::size_t rowsToReadAgain() const { return rowsToReadAgain_; }
  void setText(std::size_t row, std::string_view text, const CellReader& reader);

  // The column, its remark when it is text because of a few cells. Throws BadTable for a number that is out of range.
  TableColumn finished(const std::string& file, int position, std::vector<Remark>& remarks) &&;

 private:
  void addUnusual(std::string_view text, const Cell& cell, CellPlace place);
  void becomeText(std::size_t row);

  std::vector<double> numbers_;
  std::size_t numberCount_ = 0;
  bool isText_;
  bool askedAsText_;
  bool holdsOthers_ = false;  // "inf" or a number out of range stands among the numbers
  std::vector<std::string> texts_;
  std::string name_;
  std::size_t expectedRows_;
  std::size_t rowsToReadAgain_ = 0;
  std::size_t textCount_ = 0;
  std::vector<StrayCell> firstTexts_;
  std::optional<StrayCell> outOfRange_;
};

// Names for the columns: headings without blanks at their ends, repeats and empty ones made unique, which is remarked.
std::vector<std::string> columnNames(const std::vector<std::string>& headings, std::vector<Remark>& remarks);

// `column "pIC50" is text because of 1 cell: line 37, column 5, "<4.0".` `position` counts from 1.
std::string becauseOfStrays(const std::string& name, int position, std::size_t strayCount,
                            const std::vector<StrayCell>& strays);

}  // namespace studystats
