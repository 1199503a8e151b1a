// Shapes of matrices that are lists of columns.
#include <algorithm>
#include <iterator>

#include "frame/growth.h"
#include "utils/matrices.h"

using namespace studystats::core;

namespace StatsMatrixUtils {
namespace {

template <class Column>
std::int32_t rowCount(const std::vector<Column>& m) {
  return m.empty() ? 0 : static_cast<std::int32_t>(m.front().size());
}

template <class Cell>
void resize(std::vector<std::vector<Cell>>* m, std::int32_t columns, std::int32_t rows, Cell fill,
            const char* operation) {
  require(m != nullptr && columns >= 0 && rows >= 0, operation);
  const auto nColumns = std::size_t(columns), nRows = std::size_t(rows), kept = std::min(nColumns, m->size());

  // All memory is obtained first; after that nothing can fail.
  std::vector<std::vector<Cell>> added(nColumns - kept, std::vector<Cell>(nRows, fill));
  reserveMore(*m, added.size());
  for (std::size_t c = 0; c < kept; ++c)
    if ((*m)[c].size() < nRows) reserveMore((*m)[c], nRows - (*m)[c].size());

  m->resize(kept);
  for (auto& column : *m) column.resize(nRows, fill);
  std::move(added.begin(), added.end(), std::back_inserter(*m));
}

}  // namespace

std::int32_t RowCount(const DataMatrix& m) { return rowCount(m); }
std::int32_t RowCount(const IndexMatrix& m) { return rowCount(m); }
std::int32_t ColumnCount(const DataMatrix& m) { return static_cast<std::int32_t>(m.size()); }
std::int32_t ColumnCount(const IndexMatrix& m) { return static_cast<std::int32_t>(m.size()); }

double GetModulusSquared(const DataMatrix& m) {
  const std::size_t nRows = requireRows(m, "GetModulusSquared");
  double sum = 0.0;
  for (const auto& column : m)
    for (std::size_t r = 0; r < nRows; ++r) sum += column[r] * column[r];
  return sum;
}

void ResizeDataMatrix(DataMatrix* m, std::int32_t columns, std::int32_t rows, double fill) {
  resize(m, columns, rows, fill, "ResizeDataMatrix");
}

void ResizeIndexMatrix(IndexMatrix* m, std::int32_t columns, std::int32_t rows, std::int32_t fill) {
  resize(m, columns, rows, fill, "ResizeIndexMatrix");
}

}  // namespace StatsMatrixUtils
