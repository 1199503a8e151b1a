#include <studystats/tables.h>

#include <algorithm>
#include <iterator>
#include <limits>

#include "frame/argument_check.h"
#include "frame/growth.h"
#include "tables/columns.h"
#include "tables/row_names.h"

using namespace studystats::core;

namespace {

constexpr std::size_t kMostColumns = std::numeric_limits<std::int32_t>::max();

// Sizes are checked before the base class allocates its lists.
std::size_t checkedColumns(std::int32_t nRows, std::int32_t nColumns) {
  require(nRows >= 0 && nColumns >= 0, "CompleteDataArray");
  return std::size_t(nColumns);
}

// Room is there already, so that nothing below can fail.
void insertEmpty(std::vector<std::string>& names, std::size_t count, std::size_t position) {
  names.insert(names.begin() + std::ptrdiff_t(position), count, std::string());
}

}  // namespace

CompleteDataArray::CompleteDataArray(std::int32_t nRows, std::int32_t nColumns)
    : StatsDataArray(checkedColumns(nRows, nColumns)),
      columns_(makeColumns<double>(nRows, nColumns, "CompleteDataArray")),
      rowCount_(nRows) {}

CompleteDataArray::CompleteDataArray(const CompleteDataArray&) = default;
CompleteDataArray::CompleteDataArray(CompleteDataArray&&) noexcept = default;
CompleteDataArray& CompleteDataArray::operator=(const CompleteDataArray& other) {
  return *this = CompleteDataArray(other);
}
CompleteDataArray& CompleteDataArray::operator=(CompleteDataArray&&) noexcept = default;
CompleteDataArray::~CompleteDataArray() = default;

std::int32_t CompleteDataArray::RowCount() const { return rowCount_; }
std::int32_t CompleteDataArray::ColumnCount() const { return std::int32_t(columns_.size()); }
const std::vector<std::vector<double>>& CompleteDataArray::GetData() const { return columns_; }

double CompleteDataArray::GetDataItem(std::int32_t row, std::int32_t column) const {
  const std::vector<double>& cells = columnAt(columns_, column, "GetDataItem");
  require(isIndex(row, cells.size()), "GetDataItem");
  return cells[std::size_t(row)];
}

void CompleteDataArray::SetDataItem(std::int32_t row, std::int32_t column, double value) {
  std::vector<double>& cells = columnAt(columns_, column, "SetDataItem");
  require(isIndex(row, cells.size()), "SetDataItem");
  cells[std::size_t(row)] = value;
}

void CompleteDataArray::GetColumnData(std::int32_t column, std::vector<double>* out) const {
  require(out != nullptr, "GetColumnData");
  *out = columnAt(columns_, column, "GetColumnData");
}

void CompleteDataArray::SetColumnData(std::int32_t column, std::vector<double>* values) {
  require(values != nullptr, "SetColumnData");
  columnAt(columns_, column, "SetColumnData") = *values;
}

void CompleteDataArray::GetRowData(std::int32_t row, std::vector<double>* out) const {
  require(out != nullptr, "GetRowData");
  require(!columns_.empty() || isIndex(row, std::size_t(rowCount_)), "GetRowData");
  for (const auto& column : columns_) require(isIndex(row, column.size()), "GetRowData");
  std::vector<double> cells;
  cells.reserve(columns_.size());
  for (const auto& column : columns_) cells.push_back(column[std::size_t(row)]);
  out->swap(cells);
}

void CompleteDataArray::GetDataColumnMajor(std::vector<double>* out) const {
  flatten(columns_, std::size_t(rowCount_), out, "GetDataColumnMajor");
}

void CompleteDataArray::GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<double>* out) const {
  flatten(columns_, columns, std::size_t(rowCount_), out, "GetDataColumnMajor");
}

void CompleteDataArray::GetDataColumnMajor(std::vector<std::vector<double>>* out) const {
  require(out != nullptr, "GetDataColumnMajor");
  std::vector<std::vector<double>> copy = columns_;
  out->swap(copy);
}

void CompleteDataArray::GetDataColumnMajor(const std::vector<std::int32_t>& columns,
                                           std::vector<std::vector<double>>* out) const {
  require(out != nullptr, "GetDataColumnMajor");
  for (const std::int32_t c : columns) columnAt(columns_, c, "GetDataColumnMajor");
  std::vector<std::vector<double>> copies;
  copies.reserve(columns.size());
  for (const std::int32_t c : columns) copies.push_back(columns_[std::size_t(c)]);
  out->swap(copies);
}

void CompleteDataArray::GetDataRowMajor(std::vector<double>* out) const {
  require(out != nullptr, "GetDataRowMajor");
  const auto nRows = std::size_t(rowCount_);
  for (const auto& column : columns_) require(column.size() >= nRows, "GetDataRowMajor");
  std::vector<double> cells;
  cells.reserve(cellCount(nRows, columns_.size()));
  for (std::size_t r = 0; r < nRows; ++r)
    for (const auto& column : columns_) cells.push_back(column[r]);
  out->swap(cells);
}

void CompleteDataArray::InsertColumns(std::int32_t count, std::int32_t position) {
  const auto at = std::size_t(position), n = std::size_t(count);
  require(count >= 0 && position >= 0 && at <= columns_.size(), "InsertColumns");
  require(n <= kMostColumns - columns_.size(), "InsertColumns");
  const auto lists = {&columnsUsed_, &columnHeadings_, &columnFormulas_};
  for (const auto* names : lists) require(at <= names->size(), "InsertColumns");

  // All memory is obtained first; after that the table can only become the wanted one.
  auto zeros = makeColumns<double>(rowCount_, count, "InsertColumns");
  reserveMore(columns_, n);
  for (auto* names : lists) reserveMore(*names, n);

  columns_.insert(columns_.begin() + position, std::make_move_iterator(zeros.begin()),
                  std::make_move_iterator(zeros.end()));
  for (auto* names : lists) insertEmpty(*names, n, at);
}

std::int32_t CompleteDataArray::NumRealColumns() const {
  return std::int32_t(columnsUsed_.size()) -
         std::int32_t(std::count(columnsUsed_.begin(), columnsUsed_.end(), "Derived"));
}

void CompleteDataArray::SetRowsUsed(std::vector<std::string>* rows) { setRowsUsed(rows, rowsUsed_); }
void CompleteDataArray::GetRowsUsed(std::vector<std::string>* out) const { getRowsUsed(rowsUsed_, out); }
void CompleteDataArray::GetRowsUsed(
    kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>* out) const {
  getRowsUsed(rowsUsed_, out);
}
