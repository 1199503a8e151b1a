// Columns prepared by the rows that a model is fitted to: missing cells are filled, then (value - shift) / scale.
#pragma once

#include <studystats/engine/preparation.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Whether anything is done to a column.
bool prepares(const engine::Preparation& preparation);

// By column; false when the values are taken as they are.
struct ColumnUnits {
  const double *fill = nullptr, *shift = nullptr, *scale = nullptr;

  explicit operator bool() const { return scale != nullptr; }
  double filled(double value, std::ptrdiff_t j) const { return std::isnan(value) ? fill[j] : value; }
  double prepared(double value, std::ptrdiff_t j) const { return (filled(value, j) - shift[j]) / scale[j]; }
};

// Takes no memory when nothing is prepared.
struct PreparationScratch {
  PreparationScratch(Arena& arena, bool prepares, std::int32_t n, std::int32_t columns)
      : fill(arena, prepares ? columns : 0),
        shift(arena, prepares ? columns : 0),
        scale(arena, prepares ? columns : 0),
        values(arena, prepares ? n : 0) {}

  Array<double> fill, shift, scale;
  Array<double> values;  // of one column
};

// The units of the columns by those rows: descriptors in columns 0 ... nDescriptors - 1, responses in the others. They
// lie in scratch; without meaning once pace has stopped.
ColumnUnits columnUnits(const engine::Preparation& preparation, ConstMatrix table, std::span<const std::int32_t> rows,
                        std::int32_t nDescriptors, std::int32_t nColumns, PreparationScratch& scratch, Pace& pace);

}  // namespace studystats::core
