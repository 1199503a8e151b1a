// What is in a table, and what to look at before modelling.
#include "host/describe/describe.h"

#include "host/names.h"
#include "host/preparation/block.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace studystats {
namespace {

constexpr double kHardly = 0.95;                    // share of equal cells from which a column hardly varies
constexpr double kFiguresAt = 60, kRepeatsAt = 70;  // percent of the work

DescribedColumns chosenColumns(const TableView& table, const DescribeOptions& options) {
  const std::vector<TableView::Column>& columns = table.columns();
  std::vector<bool> chosen(columns.size(), options.columns.empty());
  for (const std::size_t j : matchingColumns(table, options.columns, "--columns")) chosen[j] = true;
  for (const std::size_t j : matchingColumns(table, options.exclude, "--exclude")) chosen[j] = false;
  DescribedColumns list;
  for (std::size_t j = 0; j < columns.size(); ++j)
    if (chosen[j]) list.push_back(&columns[j]);
  return list;
}

std::size_t differentCells(const TableView::Column& column, std::size_t rows) {
  std::unordered_set<std::string> seen;
  for (std::size_t i = 0; i < rows; ++i)
    if (!column.missing(i)) seen.insert(cellText(column, i));
  return seen.size();
}

void describeRowNames(const TableView& table, const TableView::Column* id, Description& description) {
  if (id) {
    description.idColumn = id->name;
    description.idDifferent = differentCells(*id, table.rows());
  }
  if (id || !table.rowNames().empty()) rowNames(table, id, description.remarks);  // tells of repeats
}

// What every analysis would warn of: columns that only count the rows. Of those that are almost numeric the reader of
// the table has told.
void remarkOnColumns(const TableView& table, const DescribeOptions& options, const TableView::Column* id,
                     const DescribedColumns& chosen, Description& description) {
  if (chosen.empty()) return;
  DataOptions data;
  data.exclude = options.exclude;
  std::vector<Dropped> dropped;
  std::vector<Remark> remarks;
  descriptorColumns(table, Roles{}, data, id, dropped, remarks);
  for (Remark& remark : remarks) {
    const bool about = std::any_of(chosen.begin(), chosen.end(),
                                   [&](const TableView::Column* column) { return column->name == remark.names[0]; });
    if (about && remark.code != "almost-numeric") description.remarks.push_back(std::move(remark));
  }
}

void takeColumn(const TableView::Column& column, bool isId, Description& description) {
  bool code = false;
  const ColumnSummary summary = describeColumn(column, code);
  description.columns.push_back(summary);
  if (summary.kind == ColumnKind::Text || isId || summary.count == 0) return;
  if (code) description.codes.push_back(summary.name);
  if (description.rows < 2) return;  // one row says nothing about spread
  if (summary.different == 1)
    description.constant.push_back(summary.name);
  else if (static_cast<double>(summary.mostCommon) >= kHardly * static_cast<double>(summary.count))
    description.hardlyVary.push_back(summary.name);
}

// The column that varies least first.
void sortHardlyVarying(Description& description) {
  std::unordered_map<std::string_view, double> share;
  for (const ColumnSummary& column : description.columns)
    share[column.name] = static_cast<double>(column.mostCommon) / static_cast<double>(column.count);
  std::stable_sort(description.hardlyVary.begin(), description.hardlyVary.end(),
                   [&](const std::string& a, const std::string& b) { return share[a] > share[b]; });
}

}  // namespace

Description describe(const TableView& table, const DescribeOptions& options) {
  Watch watch(options.progress, options.stop);
  watch.report("columns", "describing columns", 0, 0, 0, 1);
  Description description;
  description.table = table.name();
  description.rows = table.rows();
  description.tableColumns = table.columns().size();
  description.delimiter = table.delimiter();
  description.decimal = table.decimal();

  // 1. Columns and row names asked for.
  const DescribedColumns chosen = chosenColumns(table, options);
  const TableView::Column* id = idColumn(table, options.id, Roles{});
  describeRowNames(table, id, description);
  remarkOnColumns(table, options, id, chosen, description);

  // 2. Figures of each column.
  DescribedColumns numeric;
  for (std::size_t j = 0; j < chosen.size(); ++j) {
    const bool isId = id && chosen[j]->name == id->name;
    takeColumn(*chosen[j], isId, description);
    if (chosen[j]->kind == ColumnKind::Numeric && !isId) numeric.push_back(chosen[j]);
    watch.report("columns", "describing columns", 0, kFiguresAt, static_cast<std::int64_t>(j + 1),
                 static_cast<std::int64_t>(chosen.size()));
  }
  sortHardlyVarying(description);

  // 3. Missing cells, repeats and correlations.
  describeMissing(numeric, description);
  watch.report("missing", "missing cells", kFiguresAt, kRepeatsAt, 1, 1);
  describeRelations(numeric, watch, description);
  watch.report("done", "done", 100, 100, 1, 1);
  return description;
}

}  // namespace studystats
