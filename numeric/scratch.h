// Scratch memory for the length of one call, in one block obtained up front. What a computation needs is a struct of
// arrays, which its constructor takes from an arena one after the other:
//
//   struct FitScratch {
//     FitScratch(Arena& arena, std::int32_t n, std::int32_t p) : resid(arena, n), products(arena, area(p, p)) {}
//     Array<double> resid, products;
//   };
//
//   Obtained<FitScratch> scratch(n, p);
//   if (!scratch) { *status = kNoScratch; return; }
//
// The struct is made over an arena that only measures, and once more over a block of the size found. The block is
// zeroed as calloc does it: its pages cost something when they are first used. Nothing here throws, and a size that
// overflows is memory that cannot be had.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

namespace studystats::core {

// rows * columns, or a length that cannot be had when the product overflows; 0 when either is negative.
inline std::ptrdiff_t area(std::ptrdiff_t rows, std::ptrdiff_t columns) {
  if (rows <= 0 || columns <= 0) return 0;
  std::ptrdiff_t product = 0;
  return __builtin_mul_overflow(rows, columns, &product) ? PTRDIFF_MAX : product;
}

// Hands out arrays of a zeroed block; without a block it adds up what they need.
class Arena {
 public:
  static constexpr std::size_t kLine = 64;            // every array begins a cache line
  static constexpr std::size_t kMost = SIZE_MAX / 4;  // sizes from here on cannot be had

  explicit Arena(std::byte* block = nullptr) : block_(block) {}

  // n elements; null without a block. A negative n counts as 0.
  template <class T>
  T* take(std::ptrdiff_t n) {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_default_constructible_v<T>);
    const auto count = static_cast<std::size_t>(std::max<std::ptrdiff_t>(n, 0));
    const std::size_t start = size_, bytes = count < kMost / sizeof(T) ? count * sizeof(T) : kMost;
    size_ = std::min(start + (bytes + kLine - 1) / kLine * kLine + kGap, kMost);
    if (block_ == nullptr) return nullptr;
    markGap(start + bytes);
    return reinterpret_cast<T*>(block_ + start);
  }

  std::size_t size() const { return size_; }

 private:
#ifdef __SANITIZE_ADDRESS__
  // Arrays lie apart, and what is between them may not be touched.
  static constexpr std::size_t kGap = kLine;
  void markGap(std::size_t from) { __asan_poison_memory_region(block_ + from, size_ - from); }
#else
  static constexpr std::size_t kGap = 0;
  void markGap(std::size_t) {}
#endif

  std::byte* block_;
  std::size_t size_ = 0;
};

// n elements of an arena, zero at first.
template <class T>
class Array {
 public:
  Array(Arena& arena, std::ptrdiff_t n) : data_(arena.take<T>(n)) {}
  T* data() const { return data_; }
  T& operator[](std::ptrdiff_t i) const { return data_[i]; }

 private:
  T* data_;
};

// A scratch struct on a block of its own; false when the block could not be had, and then its arrays are null.
template <class S>
class Obtained {
 public:
  template <class... Sizes>
  explicit Obtained(Sizes... sizes)
      : block_(obtain(measure(sizes...))), scratch_(make(lineIn(block_.get()), sizes...)) {}

  explicit operator bool() const { return block_ != nullptr; }
  S& operator*() { return scratch_; }
  S* operator->() { return &scratch_; }

 private:
  struct Release {
    void operator()(std::byte* block) const { std::free(block); }
  };

  template <class... Sizes>
  static S make(std::byte* block, Sizes... sizes) {
    Arena arena(block);
    return S(arena, sizes...);
  }

  template <class... Sizes>
  static std::size_t measure(Sizes... sizes) {
    Arena arena;
    [[maybe_unused]] const S measured(arena, sizes...);
    return arena.size();
  }

  static std::byte* obtain(std::size_t size) {
    return size < Arena::kMost ? static_cast<std::byte*>(std::calloc(size + Arena::kLine, 1)) : nullptr;
  }

  // The first cache line that begins in the block.
  static std::byte* lineIn(std::byte* block) {
    return block == nullptr ? nullptr : block + (-reinterpret_cast<std::uintptr_t>(block) & (Arena::kLine - 1));
  }

  std::unique_ptr<std::byte, Release> block_;
  S scratch_;
};

// One array on a block of its own.
template <class T>
class Scratch {
 public:
  explicit Scratch(std::ptrdiff_t n) : array_(n) {}
  explicit operator bool() const { return static_cast<bool>(array_); }
  T* data() { return array_->data(); }
  T& operator[](std::ptrdiff_t i) { return (*array_)[i]; }

 private:
  Obtained<Array<T>> array_;
};

}  // namespace studystats::core
