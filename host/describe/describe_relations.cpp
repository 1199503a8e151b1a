// Columns of a table that repeat another, and those that are strongly correlated.
#include "host/describe/describe.h"

#include "host/preparation/related_columns.h"
#include "host/preparation/same_information.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace studystats {
namespace {

constexpr double kSameFrom = 70, kRelatedFrom = 75;  // percent of the work
constexpr std::size_t kFewestCells = 3;              // any two pairs of values lie on a line

std::vector<std::uint32_t> missingRows(std::span<const double> cells) {
  std::vector<std::uint32_t> rows;
  for (std::size_t i = 0; i < cells.size(); ++i)
    if (std::isnan(cells[i])) rows.push_back(static_cast<std::uint32_t>(i));
  return rows;
}

// Repeats among columns that miss the same cells, over the others; indices into `numeric`.
void findRepeats(const std::vector<std::size_t>& members, const DescribedColumns& numeric,
                 std::vector<SamePair>& pairs) {
  std::vector<std::vector<double>> present;
  std::vector<std::span<const double>> columns;
  present.reserve(members.size());
  for (const std::size_t j : members) {
    const std::span<const double> cells = numeric[j]->numbers;
    if (std::none_of(cells.begin(), cells.end(), [](double cell) { return std::isnan(cell); })) {
      columns.push_back(cells);
      continue;
    }
    std::vector<double>& kept = present.emplace_back();
    std::copy_if(cells.begin(), cells.end(), std::back_inserter(kept), [](double cell) { return !std::isnan(cell); });
    columns.push_back(kept);
  }
  if (columns[0].size() < kFewestCells) return;
  for (SamePair pair : sameInformation(columns)) {
    pair.kept = members[pair.kept];
    pair.setAside = members[pair.setAside];
    pairs.push_back(pair);
  }
}

void describeRepeats(const DescribedColumns& numeric, Description& description) {
  std::map<std::vector<std::uint32_t>, std::vector<std::size_t>> byMissing;
  for (std::size_t j = 0; j < numeric.size(); ++j) byMissing[missingRows(numeric[j]->numbers)].push_back(j);
  std::vector<SamePair> pairs;
  for (const auto& [rows, members] : byMissing)
    if (members.size() > 1) findRepeats(members, numeric, pairs);
  std::sort(pairs.begin(), pairs.end(), [](const SamePair& a, const SamePair& b) { return a.setAside < b.setAside; });
  for (const SamePair& pair : pairs)
    description.same.push_back({numeric[pair.kept]->name, numeric[pair.setAside]->name, pair.scale, pair.shift});
}

}  // namespace

void describeRelations(const DescribedColumns& numeric, Watch& watch, Description& description) {
  watch.report("repeats", "columns that repeat another", kSameFrom, kRelatedFrom, 0, 1);
  describeRepeats(numeric, description);

  std::vector<std::span<const double>> columns;
  for (const TableView::Column* column : numeric) columns.push_back(column->numbers);
  const RelatedPairs related = relatedColumns(columns, kRelated, kMostRelated, watch, kRelatedFrom, 100);
  for (const RelatedPair& pair : related.strongest)
    description.related.push_back({numeric[pair.first]->name, numeric[pair.second]->name, pair.r});
  if (related.found > related.strongest.size())
    description.remarks.push_back({Severity::Note,
                                   "related-columns-cut",
                                   fmt::format("{} pairs of columns have |r| > {:.2f}; the strongest {} are listed.",
                                               related.found, kRelated, related.strongest.size()),
                                   {}});
}

}  // namespace studystats
