// Column-major matrices that belong to someone else; rows and columns are counted from 0.
#pragma once

#include <cstddef>
#include <cstdint>

namespace studystats::core {

template <class Real>
struct MatrixView {
  Real* data;
  std::int32_t ld;  // from one column to the next

  Real& operator()(std::ptrdiff_t i, std::ptrdiff_t j) const { return data[i + j * ld]; }
  Real* column(std::ptrdiff_t j) const { return data + j * ld; }
  MatrixView block(std::ptrdiff_t i, std::ptrdiff_t j) const { return {data + i + j * ld, ld}; }
};

using Matrix = MatrixView<double>;
using ConstMatrix = MatrixView<const double>;

}  // namespace studystats::core
