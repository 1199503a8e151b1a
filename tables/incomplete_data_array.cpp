#include <studystats/tables.h>

#include <numeric>

#include "frame/argument_check.h"
#include "tables/columns.h"

using namespace studystats::core;

namespace {

// The size is checked before the base class allocates its lists.
std::size_t checkedColumns(std::int32_t nColumns) {
  require(nColumns >= 0, "IncompleteDataArray");
  return std::size_t(nColumns);
}

}  // namespace

IncompleteDataArray::IncompleteDataArray(std::int32_t nColumns)
    : StatsDataArray(checkedColumns(nColumns)), columns_(std::size_t(nColumns)) {}

IncompleteDataArray::IncompleteDataArray(const IncompleteDataArray&) = default;
IncompleteDataArray::IncompleteDataArray(IncompleteDataArray&&) noexcept = default;
IncompleteDataArray& IncompleteDataArray::operator=(const IncompleteDataArray& other) {
  return *this = IncompleteDataArray(other);
}
IncompleteDataArray& IncompleteDataArray::operator=(IncompleteDataArray&&) noexcept = default;
IncompleteDataArray::~IncompleteDataArray() = default;

std::int32_t IncompleteDataArray::ColumnCount() const { return std::int32_t(columns_.size()); }

void IncompleteDataArray::GetColumnData(std::int32_t column, std::vector<double>* out) const {
  require(out != nullptr, "GetColumnData");
  *out = columnAt(columns_, column, "GetColumnData");
}

void IncompleteDataArray::SetColumnData(std::int32_t column, std::vector<double>* values) {
  require(values != nullptr, "SetColumnData");
  columnAt(columns_, column, "SetColumnData") = *values;
}

void IncompleteDataArray::GetDataColumnMajor(std::vector<double>* out) const {
  require(out != nullptr, "GetDataColumnMajor");
  std::vector<std::int32_t> all(columns_.size());
  std::iota(all.begin(), all.end(), 0);
  GetDataColumnMajor(all, out);
}

void IncompleteDataArray::GetDataColumnMajor(const std::vector<std::int32_t>& columns, std::vector<double>* out) const {
  require(out != nullptr, "GetDataColumnMajor");
  std::size_t nValues = 0;
  for (const std::int32_t c : columns) nValues += columnAt(columns_, c, "GetDataColumnMajor").size();
  std::vector<double> values;
  values.reserve(nValues);
  for (const std::int32_t c : columns) {
    const std::vector<double>& column = columns_[std::size_t(c)];
    values.insert(values.end(), column.begin(), column.end());
  }
  out->swap(values);
}
