// The block of a table that an analysis is about, on its way from named cells to prepared numbers.
#pragma once

#include <studystats/host/data.h>

#include "host/preparation/magnitude.h"

#include <cstddef>
#include <string>
#include <vector>

namespace studystats {

// Columns with a part in the analysis other than being a descriptor.
struct Roles {
  std::vector<std::string> responses{};
  std::string classColumn{};
  std::string foldColumn{};  // says which rows are held out together
  bool predictWithoutResponse =
      false;                    // a row whose response or class is missing is kept out of the model and predicted
  bool keepRepeats = false;     // constant columns, and those that repeat another, stay: each counts in the analysis
  double mostSize = kMostSize;  // of prepared numbers that the analysis can take
};

// A descriptor on its way: its cells over all rows of the block, not-a-number where missing.
struct BlockColumn {
  std::string name;     // as shown; rewritten by a transform
  std::string source;   // the table's column, or "Derived"
  std::string formula;  // how a transformed or derived column was made; empty otherwise
  std::vector<double> cells;
  DescriptorRecipe recipe{};
};

struct BlockRow {
  std::string name;
  Role role = Role::Model;
  const TableView* table = nullptr;  // the table, or the one with the rows only predicted
  std::size_t tableRow = 0;
};

// Rows of the table first, then those of the table given for prediction.
struct Block {
  std::vector<BlockColumn> columns;
  std::vector<BlockRow> rows;

  std::size_t modelRows() const;
};

// Throws BadOptions unless the column is there and numeric; names the cell that makes it text.
void requireNumeric(const TableView& table, const std::string& column, const std::string& option);

// The text of a cell: as written, or the shortest text of a number; empty when missing.
std::string cellText(const TableView::Column& column, std::size_t row);

// The column that names the rows: the one asked for, else the first text column without repeats or missing cells and
// without another use; null when rows are numbered or the view brings names of its own.
const TableView::Column* idColumn(const TableView& table, const std::string& asked, const Roles& roles);

// Names of all rows of a table, each once; a remark says when repeats or gaps had to be mended.
std::vector<std::string> rowNames(const TableView& table, const TableView::Column* id, std::vector<Remark>& remarks);

// The descriptor columns that the options ask for, in table order, numeric ones only. What was asked for and is not
// used is added to `dropped`; remarks tell of columns that are almost numeric or only count the rows.
std::vector<std::size_t> descriptorColumns(const TableView& table, const Roles& roles, const DataOptions& options,
                                           const TableView::Column* id, std::vector<Dropped>& dropped,
                                           std::vector<Remark>& remarks);

// value + shift under the transform; false where it is outside the transform's domain, or not a finite number.
bool transformed(double value, const Transform& transform, double& result);

// Columns replaced by functions of themselves; a value outside a function's domain becomes missing and is told of.
void applyTransforms(Block& block, const std::vector<Transform>& transforms, std::vector<Remark>& remarks);

void eraseColumns(Block& block, const std::vector<bool>& gone);

// Rows and columns dropped, or cells filled, until no descriptor cell is missing. The model's rows alone decide.
void settleMissing(Block& block, const Missing& missing, UsedData& used, std::vector<Remark>& remarks);

// Squares, products and cubes of descriptors, appended.
void deriveColumns(Block& block, const std::vector<Derivation>& derivations, std::vector<Remark>& remarks);

// Columns without spread over the model's rows, and columns that repeat an earlier one, set aside.
void setAsideRepeats(Block& block, UsedData& used, std::vector<Remark>& remarks);

}  // namespace studystats
