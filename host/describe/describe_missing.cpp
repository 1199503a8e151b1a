// Which cells are missing, which of them together, and what leaving a column out would keep.
#include "host/describe/describe.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace studystats {
namespace {

constexpr std::size_t kComparedColumns = 200;  // with the most missing cells: all pairs of them are looked at
constexpr std::size_t kListedPairs = 20;
constexpr std::size_t kListedGains = 10;

// One bit a row.
using RowSet = std::vector<std::uint64_t>;

RowSet missingRows(const TableView::Column& column, std::size_t rows) {
  RowSet set((rows + 63) / 64, 0);
  for (std::size_t i = 0; i < rows; ++i)
    if (column.missing(i)) set[i / 64] |= std::uint64_t{1} << (i % 64);
  return set;
}

std::size_t common(const RowSet& a, const RowSet& b) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < a.size(); ++i) count += static_cast<std::size_t>(std::popcount(a[i] & b[i]));
  return count;
}

struct Gapped {
  const TableView::Column* column;
  RowSet rows;
  std::size_t missing;
};

// Columns that miss some cells but not all, the most missing first.
std::vector<Gapped> gappedColumns(const DescribedColumns& numeric, std::size_t rows) {
  std::vector<Gapped> gapped;
  for (const TableView::Column* column : numeric) {
    RowSet set = missingRows(*column, rows);
    const std::size_t missing = common(set, set);
    if (missing > 0 && missing < rows) gapped.push_back({column, std::move(set), missing});
  }
  std::stable_sort(gapped.begin(), gapped.end(),
                   [](const Gapped& a, const Gapped& b) { return a.missing > b.missing; });
  return gapped;
}

// Rows with a missing cell, and those in which it is the only one.
struct IncompleteRows {
  RowSet any, once;
};
IncompleteRows incompleteRows(const std::vector<Gapped>& gapped, std::size_t rows) {
  IncompleteRows result{RowSet((rows + 63) / 64, 0), RowSet((rows + 63) / 64, 0)};
  for (const Gapped& one : gapped)
    for (std::size_t i = 0; i < one.rows.size(); ++i) {
      result.once[i] = (result.once[i] & ~one.rows[i]) | (one.rows[i] & ~result.any[i]);
      result.any[i] |= one.rows[i];
    }
  return result;
}

void listTogether(const std::vector<Gapped>& gapped, Description& description) {
  auto& pairs = description.missingTogether;
  const std::size_t compared = std::min(gapped.size(), kComparedColumns);
  for (std::size_t a = 0; a < compared; ++a)
    for (std::size_t b = a + 1; b < compared; ++b)
      if (const std::size_t rows = common(gapped[a].rows, gapped[b].rows))
        pairs.push_back({gapped[a].column->name, gapped[b].column->name, rows});
  std::stable_sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) { return a.rows > b.rows; });
  if (pairs.size() > kListedPairs) pairs.resize(kListedPairs);
}

}  // namespace

void describeMissing(const DescribedColumns& numeric, Description& description) {
  const std::vector<Gapped> gapped = gappedColumns(numeric, description.rows);
  if (gapped.empty()) return;
  const IncompleteRows incomplete = incompleteRows(gapped, description.rows);
  description.rowsWithMissing = common(incomplete.any, incomplete.any);
  for (const Gapped& one : gapped) description.cellsMissing += one.missing;
  listTogether(gapped, description);

  auto& gains = description.withoutColumn;
  const std::size_t complete = description.rows - description.rowsWithMissing;
  for (const Gapped& one : gapped)
    if (const std::size_t gained = common(one.rows, incomplete.once))
      gains.push_back({one.column->name, complete + gained});
  std::stable_sort(gains.begin(), gains.end(), [](const auto& a, const auto& b) { return a.rowsKept > b.rowsKept; });
  if (gains.size() > kListedGains) gains.resize(kListedGains);
}

}  // namespace studystats
