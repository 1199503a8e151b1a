// Sorting of one column with the row numbers that belong to it, and the order in which systematic validation groups are
// dealt.
#pragma once

#include <cstddef>
#include <cstdint>

namespace studystats::core {

// One row on its way through the sort. Equal keys keep their incoming order, which is what `position` is for.
struct SortEntry {
  double key;
  std::int32_t position;
  std::int32_t id;
};

// Sorts column `column` (counted from 1) of data (column-major, leading dimension n) and rowIds (n) with it; the other
// columns stay as they are. direction: ascending, or descending when positive. Stable both ways.
//
// A not-a-number never moves and nothing passes it: what stands between two of them is sorted by itself. That is what
// an insertion sort with strict comparisons gives. The fourth argument is not read.
void SrtCol(double* data, std::int32_t* rowIds, const std::int32_t* n, const void* unread, const std::int32_t* column,
            const std::int32_t* direction);

// The same for keys and ids (n each) with a buffer of n entries; a null buffer makes it an insertion sort.
void sortColumn(double* keys, std::int32_t* ids, std::int32_t n, bool descending, SortEntry* buffer);

// The set-up of a validation: makes the plan for n rows (VldPln) and, in modes 1 to 3, the validation order.
//
//   data         n rows, column-major   in-out; its key column is sorted in place
//   labels       n                      in, mode 3: written into column labelColumn, which is then the key
//   rowIds       n                      in-out, distinct values in 1 ... n; sorted along with the key
//   labelColumn, keyColumn              counted from 1; modes 1 and 2 sort by keyColumn
//   mode         1, 2 or 3; any other: plan only
//   order        n                      out: order[i - 1] is the position before sorting of the row that now is i-th; 0
//                                       for a row id that is not in 1 ... n
//   status       0; 5 when scratch memory could not be had: neither the plan nor the order is made
void VldSet(double* data, const std::int32_t* labels, std::int32_t* rowIds, const std::int32_t* n,
            const std::int32_t* labelColumn, const std::int32_t* mode, std::int32_t* order,
            const std::int32_t* keyColumn, std::int32_t* status);

// The order by ascending keys, as VldSet makes it. inverse (n) is scratch, buffer (n, or null) that of sortColumn.
void orderRows(double* keys, std::int32_t* rowIds, std::int32_t n, std::int32_t* order, std::int32_t* inverse,
               SortEntry* buffer);

}  // namespace studystats::core
