// Shapes of matrices that are lists of columns.
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
  m->resize(std::size_t(columns));
  for (auto& column : *m) column.resize(std::size_t(rows), fill);
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
