// Room in a list before anything is changed.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace studystats::core {

// Room for n more entries, so that adding them cannot fail. What is obtained at least doubles the list: one entry a
// call costs constant time on average.
template <class Entry>
void reserveMore(std::vector<Entry>& list, std::size_t n) {
  if (n <= list.capacity() - list.size()) return;
  list.reserve(list.size() + std::max(n, std::min(list.size(), list.max_size() - list.size())));
}

}  // namespace studystats::core
