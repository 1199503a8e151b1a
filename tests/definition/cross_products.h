// Column means and centred cross-products, one sum after the other.
#pragma once

#include <cstdint>

namespace studystats::definition {

void crossProducts(const double* x, const std::int32_t* ldx, const std::int32_t* ldc, const std::int32_t* nRows,
                   const std::int32_t* nCols, double* c, double* means);

}  // namespace studystats::definition
