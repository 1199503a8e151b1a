#include <studystats/tables.h>

#include "frame/argument_check.h"
#include "tables/columns.h"
#include "tables/row_names.h"

using namespace studystats::core;

StatsDataArray::StatsDataArray() = default;
StatsDataArray::StatsDataArray(std::size_t nColumns)
    : columnsUsed_(nColumns), columnHeadings_(nColumns), columnFormulas_(nColumns) {}
StatsDataArray::StatsDataArray(const StatsDataArray&) = default;
StatsDataArray::StatsDataArray(StatsDataArray&&) noexcept = default;
StatsDataArray& StatsDataArray::operator=(StatsDataArray&&) noexcept = default;
StatsDataArray::~StatsDataArray() = default;

StatsDataArray& StatsDataArray::operator=(const StatsDataArray& other) {
  auto used = other.columnsUsed_, headings = other.columnHeadings_, formulas = other.columnFormulas_;
  columnsUsed_.swap(used);  // what can fail is done
  columnHeadings_.swap(headings);
  columnFormulas_.swap(formulas);
  return *this;
}

void StatsDataArray::SetColumnHeading(std::int32_t column, std::string& heading) {
  columnAt(columnHeadings_, column, "SetColumnHeading") = heading;
}

std::string StatsDataArray::GetColumnHeading(std::int32_t column) {
  return columnAt(columnHeadings_, column, "GetColumnHeading");
}

void StatsDataArray::SetColumnFormula(std::int32_t column, std::string& formula) {
  columnAt(columnFormulas_, column, "SetColumnFormula") = formula;
}

std::string StatsDataArray::GetColumnFormula(std::int32_t column) {
  return columnAt(columnFormulas_, column, "GetColumnFormula");
}

void StatsDataArray::SetColumnsUsed(std::vector<std::string>* names) {
  copyNames(names, columnsUsed_, "SetColumnsUsed");
}

void StatsDataArray::GetColumnsUsed(std::vector<std::string>* out) const {
  copyNames(columnsUsed_, out, "GetColumnsUsed");
}
