#include <studystats/tables.h>

#include <algorithm>

#include "frame/argument_check.h"
#include "tables/columns.h"
#include "tables/row_names.h"

using namespace studystats::core;

namespace {

// Sizes are checked before the base class allocates its lists.
std::size_t checkedColumns(std::int32_t nRows, std::int32_t nColumns) {
  require(nRows >= 0 && nColumns >= 0, "CompleteStringArray");
  return std::size_t(nColumns);
}

}  // namespace

CompleteStringArray::CompleteStringArray(std::int32_t nRows, std::int32_t nColumns)
    : StatsDataArray(checkedColumns(nRows, nColumns)),
      columns_(makeColumns<std::string>(nRows, nColumns, "CompleteStringArray")) {}

CompleteStringArray::CompleteStringArray(const CompleteStringArray&) = default;
CompleteStringArray::CompleteStringArray(CompleteStringArray&&) noexcept = default;
CompleteStringArray& CompleteStringArray::operator=(const CompleteStringArray& other) {
  return *this = CompleteStringArray(other);
}
CompleteStringArray& CompleteStringArray::operator=(CompleteStringArray&&) noexcept = default;
CompleteStringArray::~CompleteStringArray() = default;

std::int32_t CompleteStringArray::RowCount() const {
  return columns_.empty() ? 0 : std::int32_t(columns_.front().size());
}

std::int32_t CompleteStringArray::ColumnCount() const { return std::int32_t(columns_.size()); }

void CompleteStringArray::SetColumnData(std::int32_t column, std::vector<std::string>* values) {
  require(values != nullptr, "SetColumnData");
  std::vector<std::string>& cells = columnAt(columns_, column, "SetColumnData");
  require(values->size() <= cells.size(), "SetColumnData");
  std::vector<std::string> copies = *values;  // what can fail comes first
  std::move(copies.begin(), copies.end(), cells.begin());
}

void CompleteStringArray::GetDataColumnMajor(std::vector<std::string>* out) const {
  flatten(columns_, std::size_t(RowCount()), out, "GetDataColumnMajor");
}

void CompleteStringArray::GetColumnData(std::int32_t, std::vector<double>*) const {}
void CompleteStringArray::SetColumnData(std::int32_t, std::vector<double>*) {}
void CompleteStringArray::GetDataColumnMajor(std::vector<double>*) const {}
void CompleteStringArray::GetDataColumnMajor(const std::vector<std::int32_t>&, std::vector<double>*) const {}

void CompleteStringArray::SetRowsUsed(std::vector<std::string>* rows) { setRowsUsed(rows, rowsUsed_); }
void CompleteStringArray::GetRowsUsed(std::vector<std::string>* out) const { getRowsUsed(rowsUsed_, out); }
void CompleteStringArray::GetRowsUsed(
    kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>* out) const {
  getRowsUsed(rowsUsed_, out);
}
