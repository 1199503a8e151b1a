// The result is that of an insertion sort with strict comparisons; the work is n log n. Ties are broken by the incoming
// position, so the order of entries is total and any sort gives the stable one.
#include "numeric/sorting.h"

#include <algorithm>
#include <cmath>

#include "numeric/matrix_view.h"
#include "numeric/scratch.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

void insertionSort(double* keys, std::int32_t* ids, std::int32_t n, bool descending) {
  for (std::int32_t i = 1; i < n; ++i) {
    const double key = keys[i];
    const std::int32_t id = ids[i];
    std::int32_t j = i;
    for (; j > 0 && (descending ? key > keys[j - 1] : keys[j - 1] > key); --j) {
      keys[j] = keys[j - 1];
      ids[j] = ids[j - 1];
    }
    keys[j] = key;
    ids[j] = id;
  }
}

// A run without not-a-numbers.
void sortRun(double* keys, std::int32_t* ids, std::int32_t n, bool descending, SortEntry* buffer) {
  for (std::int32_t i = 0; i < n; ++i) buffer[i] = {keys[i], i, ids[i]};
  if (descending)
    std::sort(buffer, buffer + n, [](const SortEntry& a, const SortEntry& b) {
      return a.key > b.key || (a.key == b.key && a.position < b.position);
    });
  else
    std::sort(buffer, buffer + n, [](const SortEntry& a, const SortEntry& b) {
      return a.key < b.key || (a.key == b.key && a.position < b.position);
    });
  for (std::int32_t i = 0; i < n; ++i) {
    keys[i] = buffer[i].key;
    ids[i] = buffer[i].id;
  }
}

}  // namespace

void sortColumn(double* keys, std::int32_t* ids, std::int32_t n, bool descending, SortEntry* buffer) {
  constexpr std::int32_t kShort = 16;  // an insertion sort is as fast
  if (buffer == nullptr || n <= kShort) return insertionSort(keys, ids, n, descending);
  for (std::int32_t begin = 0; begin < n;) {
    std::int32_t end = begin;
    while (end < n && !std::isnan(keys[end])) ++end;
    sortRun(keys + begin, ids + begin, end - begin, descending, buffer);
    begin = end + 1;
  }
}

void SrtCol(double* data, std::int32_t* rowIds, const std::int32_t* n, const void*, const std::int32_t* column,
            const std::int32_t* direction) {
  if (*n < 2) return;
  Scratch<SortEntry> buffer(*n);
  sortColumn(Matrix{data, *n}.column(*column - 1), rowIds, *n, *direction > 0, buffer.data());
}

void orderRows(double* keys, std::int32_t* rowIds, std::int32_t n, std::int32_t* order, std::int32_t* inverse,
               SortEntry* buffer) {
  const auto namesRow = [n](std::int32_t id) { return id >= 1 && id <= n; };
  for (std::int32_t i = 0; i < n; ++i)
    if (namesRow(rowIds[i])) inverse[rowIds[i] - 1] = i + 1;
  sortColumn(keys, rowIds, n, false, buffer);
  for (std::int32_t i = 0; i < n; ++i) order[i] = namesRow(rowIds[i]) ? inverse[rowIds[i] - 1] : 0;
}

void VldSet(double* data, const std::int32_t* labels, std::int32_t* rowIds, const std::int32_t* n,
            const std::int32_t* labelColumn, const std::int32_t* mode, std::int32_t* order,
            const std::int32_t* keyColumn, std::int32_t* status) {
  *status = kDone;
  Scratch<std::int32_t> inverse(*n);
  if (!inverse) {
    *status = kNoScratch;
    return;
  }
  VldPln(n);
  if (*mode < 1 || *mode > 3 || *n < 1) return;

  double* key = Matrix{data, *n}.column((*mode == 3 ? *labelColumn : *keyColumn) - 1);
  if (*mode == 3)
    for (std::int32_t i = 0; i < *n; ++i) key[i] = labels[i];
  Scratch<SortEntry> buffer(*n);  // without it the sort is only slower
  orderRows(key, rowIds, *n, order, inverse.data(), buffer.data());
}

}  // namespace studystats::core
