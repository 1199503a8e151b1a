// Scratch memory for the length of one call. All of a routine's scratch is asked for in one paragraph and checked once:
//
//   Scratch<double> means(p), products(area(p, p));
//   if (!obtained(means, products)) { *status = kNoScratch; return; }
//
// Nothing here throws, and a size that overflows is memory that cannot be had.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace studystats::core {

// A zeroed vector; false when the memory could not be had. A negative length counts as none.
template <class T>
class Scratch {
 public:
  explicit Scratch(std::ptrdiff_t n)
      : data_(n <= kMost ? new (std::nothrow) T[static_cast<std::size_t>(std::max<std::ptrdiff_t>(n, 0))]() : nullptr) {
  }
  explicit operator bool() const { return data_ != nullptr; }
  T* data() { return data_.get(); }
  T& operator[](std::ptrdiff_t i) { return data_[static_cast<std::size_t>(i)]; }

 private:
  static constexpr std::ptrdiff_t kMost = PTRDIFF_MAX / sizeof(T);  // beyond it g++ throws in spite of nothrow
  std::unique_ptr<T[]> data_;
};

template <class... S>
bool obtained(const S&... scratch) {
  return (static_cast<bool>(scratch) && ...);
}

// rows * columns, or a length that no Scratch can obtain when the product overflows; 0 when either is negative.
inline std::ptrdiff_t area(std::ptrdiff_t rows, std::ptrdiff_t columns) {
  if (rows <= 0 || columns <= 0) return 0;
  std::ptrdiff_t product = 0;
  return __builtin_mul_overflow(rows, columns, &product) ? PTRDIFF_MAX : product;
}

}  // namespace studystats::core
