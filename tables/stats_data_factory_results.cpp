#include <studystats/tables.h>

#include <algorithm>
#include <iterator>

#include "frame/growth.h"
#include "tables/columns.h"
#include "tables/row_names.h"

using namespace studystats::core;

namespace {

using Names = std::vector<std::string>;

// The copies are made first: a vector may already have moved its own entries when it fails to copy others.
void append(Names& list, Names names) {
  reserveMore(list, names.size());
  std::move(names.begin(), names.end(), std::back_inserter(list));
}
void append(Names& list, std::string name) { list.push_back(std::move(name)); }
std::int32_t countOf(const Names& list) { return std::int32_t(list.size()); }

}  // namespace

StatsDataFactoryResults::StatsDataFactoryResults() = default;
StatsDataFactoryResults::StatsDataFactoryResults(const StatsDataFactoryResults&) = default;
StatsDataFactoryResults::StatsDataFactoryResults(StatsDataFactoryResults&&) noexcept = default;
StatsDataFactoryResults& StatsDataFactoryResults::operator=(const StatsDataFactoryResults& other) {
  return *this = StatsDataFactoryResults(other);
}
StatsDataFactoryResults& StatsDataFactoryResults::operator=(StatsDataFactoryResults&&) noexcept = default;
StatsDataFactoryResults::~StatsDataFactoryResults() = default;
StatsDataFactoryResults* StatsDataFactoryResults::Copy() const { return new StatsDataFactoryResults(*this); }

void StatsDataFactoryResults::SetStudyGUID(const std::string& guid) { studyGUID_ = guid; }
std::string StatsDataFactoryResults::GetStudyGUID() { return studyGUID_; }
void StatsDataFactoryResults::SetSheetUsed(const std::int32_t& sheet) { sheetUsed_ = sheet; }
std::int32_t StatsDataFactoryResults::GetSheetUsed() const { return sheetUsed_; }
void StatsDataFactoryResults::SetNumCellsEliminated(std::int32_t count) { numCellsEliminated_ = count; }
std::int32_t StatsDataFactoryResults::NumCellsEliminated() const { return numCellsEliminated_; }
void StatsDataFactoryResults::SetNumCellsDefaulted(std::int32_t count) { numCellsDefaulted_ = count; }
std::int32_t StatsDataFactoryResults::NumCellsDefaulted() const { return numCellsDefaulted_; }
void StatsDataFactoryResults::SetDerivationType(StatsDataInput::DataInputDerivation type) { derivationType_ = type; }
StatsDataInput::DataInputDerivation StatsDataFactoryResults::GetDerivationType() { return derivationType_; }
void StatsDataFactoryResults::SetComments(const std::string& comments) { comments_ = comments; }
std::string StatsDataFactoryResults::GetComments() { return comments_; }

void StatsDataFactoryResults::AddToRowsRequested(const Names& names) { append(rowsRequested_, names); }
void StatsDataFactoryResults::AddToRowsRequested(std::string name) { append(rowsRequested_, std::move(name)); }
void StatsDataFactoryResults::GetRowsRequested(Names* out) const { copyNames(rowsRequested_, out, "GetRowsRequested"); }
std::int32_t StatsDataFactoryResults::NumRowsRequested() const { return countOf(rowsRequested_); }

void StatsDataFactoryResults::AddToRowsExtracted(const Names& names) { append(rowsExtracted_, names); }
void StatsDataFactoryResults::AddToRowsExtracted(std::string name) { append(rowsExtracted_, std::move(name)); }
void StatsDataFactoryResults::GetRowsExtracted(Names* out) const { copyNames(rowsExtracted_, out, "GetRowsExtracted"); }
std::int32_t StatsDataFactoryResults::NumRowsExtracted() const { return countOf(rowsExtracted_); }

void StatsDataFactoryResults::AddToRowsMissing(const Names& names) { append(rowsMissing_, names); }
void StatsDataFactoryResults::AddToRowsMissing(std::string name) { append(rowsMissing_, std::move(name)); }
void StatsDataFactoryResults::GetRowsMissing(Names* out) const { copyNames(rowsMissing_, out, "GetRowsMissing"); }
std::int32_t StatsDataFactoryResults::NumRowsMissing() const { return countOf(rowsMissing_); }

void StatsDataFactoryResults::AddToRowsEliminated(const Names& names) { append(rowsEliminated_, names); }
void StatsDataFactoryResults::AddToRowsEliminated(std::string name) { append(rowsEliminated_, std::move(name)); }
void StatsDataFactoryResults::GetRowsEliminated(Names* out) const {
  copyNames(rowsEliminated_, out, "GetRowsEliminated");
}
std::int32_t StatsDataFactoryResults::NumRowsEliminated() const { return countOf(rowsEliminated_); }

void StatsDataFactoryResults::AddToColumnsRequested(const Names& names) { append(columnsRequested_, names); }
void StatsDataFactoryResults::AddToColumnsRequested(std::string name) { append(columnsRequested_, std::move(name)); }
void StatsDataFactoryResults::GetColumnsRequested(Names* out) const {
  copyNames(columnsRequested_, out, "GetColumnsRequested");
}
std::string StatsDataFactoryResults::GetColumnRequested(std::int32_t index) {
  return columnAt(columnsRequested_, index, "GetColumnRequested");
}
std::int32_t StatsDataFactoryResults::NumColumnsRequested() const { return countOf(columnsRequested_); }

void StatsDataFactoryResults::AddToColumnsExtracted(const Names& names) { append(columnsExtracted_, names); }
void StatsDataFactoryResults::AddToColumnsExtracted(std::string name) { append(columnsExtracted_, std::move(name)); }
void StatsDataFactoryResults::GetColumnsExtracted(Names* out) const {
  copyNames(columnsExtracted_, out, "GetColumnsExtracted");
}
std::string StatsDataFactoryResults::GetColumnExtracted(std::int32_t index) {
  return columnAt(columnsExtracted_, index, "GetColumnExtracted");
}
std::int32_t StatsDataFactoryResults::NumColumnsExtracted() const { return countOf(columnsExtracted_); }

void StatsDataFactoryResults::AddToColumnsMissing(const Names& names) { append(columnsMissing_, names); }
void StatsDataFactoryResults::AddToColumnsMissing(std::string name) { append(columnsMissing_, std::move(name)); }
void StatsDataFactoryResults::GetColumnsMissing(Names* out) const {
  copyNames(columnsMissing_, out, "GetColumnsMissing");
}
std::string StatsDataFactoryResults::GetColumnMissing(std::int32_t index) {
  return columnAt(columnsMissing_, index, "GetColumnMissing");
}
std::int32_t StatsDataFactoryResults::NumColumnsMissing() const { return countOf(columnsMissing_); }

void StatsDataFactoryResults::AddToColumnsEliminated(const Names& names) { append(columnsEliminated_, names); }
void StatsDataFactoryResults::AddToColumnsEliminated(std::string name) { append(columnsEliminated_, std::move(name)); }
void StatsDataFactoryResults::GetColumnsEliminated(Names* out) const {
  copyNames(columnsEliminated_, out, "GetColumnsEliminated");
}
std::string StatsDataFactoryResults::GetColumnEliminated(std::int32_t index) {
  return columnAt(columnsEliminated_, index, "GetColumnEliminated");
}
std::int32_t StatsDataFactoryResults::NumColumnsEliminated() const { return countOf(columnsEliminated_); }

void StatsDataFactoryResults::AddToColumnFormulae(const Names& formulae) { append(columnFormulae_, formulae); }
void StatsDataFactoryResults::AddToColumnFormulae(std::string formula) { append(columnFormulae_, std::move(formula)); }
void StatsDataFactoryResults::GetColumnFormulae(Names* out) const {
  copyNames(columnFormulae_, out, "GetColumnFormulae");
}
std::string StatsDataFactoryResults::GetColumnFormula(std::int32_t index) {
  return columnAt(columnFormulae_, index, "GetColumnFormula");
}
std::int32_t StatsDataFactoryResults::NumColumnsGenerated() const { return countOf(columnFormulae_); }

void StatsDataFactoryResults::AddToColumnHeadings(const Names& headings) { append(columnHeadings_, headings); }
void StatsDataFactoryResults::GetColumnHeadings(Names* out) const {
  copyNames(columnHeadings_, out, "GetColumnHeadings");
}
std::string StatsDataFactoryResults::GetColumnHeading(std::int32_t index) {
  return columnAt(columnHeadings_, index, "GetColumnHeading");
}
