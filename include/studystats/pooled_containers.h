// Pooled memory, and the ordered set, the ordered map and the double-ended sequence that draw on it.
//
// These belong to the stand-in for the host's framework; <studystats/host_framework.h> includes them. The pools
// themselves live in the library, once for the whole process; the containers are templates and hold nothing but their
// own entries.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <utility>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

namespace kel {

// Memory in blocks of one size, one pool a size for the whole process. Pools may be used from several threads and are
// never destroyed, so that objects with static storage may give their blocks back at any time.
class STUDYSTATS_API MemoryPool {
 public:
  static MemoryPool& GetPool(std::size_t blockSize);

  void* allocate();              // std::bad_alloc when there is no more
  bool deallocate(void* block);  // a block of this pool; false (and nothing done) for null

  MemoryPool(const MemoryPool&) = delete;
  MemoryPool& operator=(const MemoryPool&) = delete;

 private:
  struct Link {
    Link* next;
  };
  explicit MemoryPool(std::size_t blockSize) noexcept;
  ~MemoryPool() = default;
  void addSlab();

  std::size_t blockSize_;
  std::mutex guard_;
  Link* free_ = nullptr;   // blocks that were given back
  Link* slabs_ = nullptr;  // all memory ever obtained
  char* fresh_ = nullptr;  // blocks of the latest slab that were never handed out
  char* freshEnd_ = nullptr;
};

// Allocates groups of `Count` objects from the pool of that size; any other number comes from operator new.
template <class T, std::size_t Count>
class STUDYSTATS_API pool_allocator {
 public:
  using value_type = T;
  template <class U>
  struct rebind {
    using other = pool_allocator<U, Count>;
  };

  pool_allocator() noexcept = default;
  template <class U>
  pool_allocator(const pool_allocator<U, Count>&) noexcept {}

  T* allocate(std::size_t n) {
    if (n == Count) return static_cast<T*>(pool().allocate());
    return std::allocator<T>().allocate(n);
  }
  void deallocate(T* objects, std::size_t n) noexcept {
    if (n == Count)
      pool().deallocate(objects);
    else
      std::allocator<T>().deallocate(objects, n);
  }
  template <class U>
  bool operator==(const pool_allocator<U, Count>&) const noexcept {
    return true;
  }

 private:
  static_assert(alignof(T) <= alignof(std::max_align_t));
  static MemoryPool& pool() {
    static MemoryPool& shared = MemoryPool::GetPool(Count * sizeof(T));
    return shared;
  }
};

// Allocates arrays whose length is a multiple of `Multiple`, each length from its own pool.
template <class T, std::size_t Multiple>
class STUDYSTATS_API pool_array_allocator {
 public:
  using value_type = T;
  template <class U>
  struct rebind {
    using other = pool_array_allocator<U, Multiple>;
  };

  pool_array_allocator() noexcept = default;
  template <class U>
  pool_array_allocator(const pool_array_allocator<U, Multiple>&) noexcept {}

  T* allocate(std::size_t n) {
    if (n > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T) - Multiple) throw std::bad_array_new_length();
    return static_cast<T*>(MemoryPool::GetPool(bytes(n)).allocate());
  }
  void deallocate(T* objects, std::size_t n) noexcept { MemoryPool::GetPool(bytes(n)).deallocate(objects); }
  template <class U>
  bool operator==(const pool_array_allocator<U, Multiple>&) const noexcept {
    return true;
  }

 private:
  static_assert(alignof(T) <= alignof(std::max_align_t));
  static std::size_t bytes(std::size_t n) { return (n + Multiple - 1) / Multiple * Multiple * sizeof(T); }
};

// What the ordered set and map share: a tree that refuses to grow past its allocator's limit.
// std::length_error "map/set<T> too long" when a further entry would pass max_size(). An assignment, or the
// insertion of one entry, that fails leaves the container as it was.
template <class Tree>
class STUDYSTATS_API ordered {
 public:
  using key_type = typename Tree::key_type;
  using value_type = typename Tree::value_type;
  using iterator = typename Tree::iterator;
  using const_iterator = typename Tree::const_iterator;

  ordered() = default;
  ordered(const ordered& other) = default;
  ordered(ordered&& other) = default;
  ordered& operator=(const ordered& other) { return *this = ordered(other); }
  ordered& operator=(ordered&& other) = default;
  ordered(std::initializer_list<value_type> values) { insert(values.begin(), values.end()); }
  template <class Iterator>
  ordered(Iterator first, Iterator last) {
    insert(first, last);
  }

  // Where the value stands, and whether it was put there by this call.
  std::pair<iterator, bool> insert(const value_type& value) {
    const iterator at = tree_.lower_bound(key(value));
    if (at != tree_.end() && !tree_.key_comp()(key(value), key(*at))) return {at, false};
    if (size() >= max_size()) throw std::length_error("map/set<T> too long");
    return {tree_.insert(at, value), true};
  }
  template <class Iterator>
  void insert(Iterator first, Iterator last) {
    for (; first != last; ++first) insert(*first);
  }
  std::size_t erase(const key_type& k) { return tree_.erase(k); }
  void clear() noexcept { tree_.clear(); }
  void swap(ordered& other) noexcept { tree_.swap(other.tree_); }

  iterator find(const key_type& k) { return tree_.find(k); }
  const_iterator find(const key_type& k) const { return tree_.find(k); }
  bool contains(const key_type& k) const { return tree_.contains(k); }
  std::size_t count(const key_type& k) const { return tree_.count(k); }
  std::size_t size() const noexcept { return tree_.size(); }
  std::size_t max_size() const noexcept { return tree_.max_size(); }
  bool empty() const noexcept { return tree_.empty(); }
  iterator begin() noexcept { return tree_.begin(); }
  iterator end() noexcept { return tree_.end(); }
  const_iterator begin() const noexcept { return tree_.begin(); }
  const_iterator end() const noexcept { return tree_.end(); }
  bool operator==(const ordered& other) const { return tree_ == other.tree_; }

 private:
  static const key_type& key(const value_type& value) {
    if constexpr (std::is_same_v<key_type, value_type>)
      return value;
    else
      return value.first;
  }
  Tree tree_;
};

// Unique keys in the order of Compare.
template <class Key, class Compare = std::less<Key>, class Allocator = pool_allocator<Key, 1>>
class STUDYSTATS_API set : public ordered<std::set<Key, Compare, Allocator>> {
 public:
  using ordered<std::set<Key, Compare, Allocator>>::ordered;
};

// One value for each of some unique keys, in the order of Compare.
template <class Key, class T, class Compare = std::less<Key>,
          class Allocator = pool_allocator<std::pair<const Key, T>, 1>>
class STUDYSTATS_API map : public ordered<std::map<Key, T, Compare, Allocator>> {
 public:
  using ordered<std::map<Key, T, Compare, Allocator>>::ordered;
  T& operator[](const Key& k) { return this->insert({k, T()}).first->second; }
};

// A double-ended sequence in blocks of `BlockSize` entries. The array of block pointers grows by at least 8 entries, or
// by half its size when that is more, always to a multiple of 8. References stay valid when entries are added at either
// end. A failing operation (memory, or a constructor of T) leaves the sequence as it was.
// std::length_error "deque<T> too long" when it would outgrow max_size().
template <class T, std::size_t BlockSize = 1024, class Allocator = pool_allocator<T, BlockSize>,
          class ArrayAllocator = pool_array_allocator<T*, 8>>
class STUDYSTATS_API deque {
  template <class Sequence, class Reference>
  class Cursor;

 public:
  using value_type = T;
  using iterator = Cursor<deque, T&>;
  using const_iterator = Cursor<const deque, const T&>;

  deque() noexcept = default;
  explicit deque(std::size_t n, const T& value = T()) : deque() { resize(n, value); }
  deque(std::initializer_list<T> values) : deque() {
    for (const T& value : values) push_back(value);
  }
  deque(const deque& other) : deque() {
    reserve(other.size_);
    for (const T& value : other) push_back(value);
  }
  deque(deque&& other) noexcept : deque() { swap(other); }
  deque& operator=(const deque& other) { return *this = deque(other); }
  deque& operator=(deque&& other) noexcept {
    deque taken(std::move(other));
    swap(taken);
    return *this;
  }
  ~deque() { clear(); }

  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  std::size_t max_size() const noexcept {
    return std::allocator_traits<Allocator>::max_size(Allocator()) / BlockSize * BlockSize;
  }
  T& operator[](std::size_t i) noexcept { return *place(i); }
  const T& operator[](std::size_t i) const noexcept { return *place(i); }
  T& front() noexcept { return *place(0); }
  T& back() noexcept { return *place(size_ - 1); }
  const T& front() const noexcept { return *place(0); }
  const T& back() const noexcept { return *place(size_ - 1); }
  iterator begin() noexcept { return {this, 0}; }
  iterator end() noexcept { return {this, size_}; }
  const_iterator begin() const noexcept { return {this, 0}; }
  const_iterator end() const noexcept { return {this, size_}; }

  void push_back(const T& value) {
    reserve(size_ + 1);
    std::construct_at(obtain(first_ + size_), value);
    ++size_;
  }
  void push_front(const T& value) {
    reserve(size_ + 1, 1);
    const std::size_t before = first_ == 0 ? capacity() - 1 : first_ - 1;
    std::construct_at(obtain(before), value);
    first_ = before;
    ++size_;
  }
  void pop_back() noexcept { std::destroy_at(place(--size_)); }
  void pop_front() noexcept {
    std::destroy_at(place(0));
    first_ = first_ + 1 == capacity() ? 0 : first_ + 1;
    --size_;
  }

  // Entries past n are dropped; entries added are copies of `value`.
  void resize(std::size_t n, const T& value = T()) {
    if (n > max_size()) throw std::length_error("deque<T> too long");
    const std::size_t before = size_;
    if (n > before) reserve(n);
    try {
      while (size_ < n) push_back(value);
    } catch (...) {
      while (size_ > before) pop_back();
      throw;
    }
    while (size_ > n) pop_back();
  }
  void clear() noexcept {
    while (size_ > 0) pop_back();
    for (std::size_t b = 0; b < nBlocks_; ++b)
      if (blocks_[b] != nullptr) Allocator().deallocate(blocks_[b], BlockSize);
    if (blocks_ != nullptr) ArrayAllocator().deallocate(blocks_, nBlocks_);
    blocks_ = nullptr;
    nBlocks_ = first_ = 0;
  }
  void swap(deque& other) noexcept {
    std::swap(blocks_, other.blocks_);
    std::swap(nBlocks_, other.nBlocks_);
    std::swap(first_, other.first_);
    std::swap(size_, other.size_);
  }
  bool operator==(const deque& other) const {
    if (size_ != other.size_) return false;
    for (std::size_t i = 0; i < size_; ++i)
      if (!((*this)[i] == other[i])) return false;
    return true;
  }

 private:
  static constexpr std::size_t kArrayStep = 8;

  // Positions count entries through all blocks and wrap at the end; entry 0 stands at position first_.
  std::size_t capacity() const noexcept { return nBlocks_ * BlockSize; }
  T* at(std::size_t position) const noexcept { return blocks_[position / BlockSize] + position % BlockSize; }
  T* place(std::size_t i) const noexcept {
    const std::size_t position = first_ + i;
    return at(position < capacity() ? position : position - capacity());
  }

  // The unconstructed place at a position, in a block that is there.
  T* obtain(std::size_t position) {
    if (position >= capacity()) position -= capacity();
    T*& block = blocks_[position / BlockSize];
    if (block == nullptr) block = Allocator().allocate(BlockSize);
    return at(position);
  }

  // Block pointers for n entries, `inFront` of them before the first. The last block never is the first one too.
  void reserve(std::size_t n, std::size_t inFront = 0) {
    if (n > max_size()) throw std::length_error("deque<T> too long");
    const std::size_t offset = first_ % BlockSize;
    const std::size_t start = offset >= inFront ? offset - inFront : offset + BlockSize - inFront;
    const std::size_t needed = (start + n + BlockSize - 1) / BlockSize;
    if (needed > nBlocks_) growArray(needed);
  }

  void growArray(std::size_t needed) {
    std::size_t grown = nBlocks_ + std::max(kArrayStep, nBlocks_ / 2);
    grown = (std::max(grown, needed) + kArrayStep - 1) / kArrayStep * kArrayStep;
    T** array = ArrayAllocator().allocate(grown);
    const std::size_t firstBlock = first_ / BlockSize;
    for (std::size_t b = 0; b < grown; ++b) array[b] = b < nBlocks_ ? blocks_[(firstBlock + b) % nBlocks_] : nullptr;
    if (blocks_ != nullptr) ArrayAllocator().deallocate(blocks_, nBlocks_);
    blocks_ = array;
    nBlocks_ = grown;
    first_ %= BlockSize;
  }

  // An entry by its number: a random-access iterator.
  template <class Sequence, class Reference>
  class Cursor {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using reference = Reference;
    using pointer = std::remove_reference_t<Reference>*;

    Cursor() noexcept = default;
    Cursor(Sequence* sequence, std::size_t i) noexcept : sequence_(sequence), i_(std::ptrdiff_t(i)) {}
    operator Cursor<const Sequence, const T&>() const noexcept
        requires(!std::is_const_v<Sequence>)  // an iterator is a const_iterator, too
    {
      return {sequence_, std::size_t(i_)};
    }

    Reference operator*() const { return (*sequence_)[std::size_t(i_)]; }
    pointer operator->() const { return &**this; }
    Reference operator[](difference_type n) const { return *(*this + n); }
    Cursor& operator++() { return *this += 1; }
    Cursor& operator--() { return *this += -1; }
    Cursor operator++(int) { return std::exchange(*this, *this + 1); }
    Cursor operator--(int) { return std::exchange(*this, *this - 1); }
    Cursor& operator+=(difference_type n) {
      i_ += n;
      return *this;
    }
    Cursor& operator-=(difference_type n) { return *this += -n; }
    friend Cursor operator+(Cursor c, difference_type n) { return c += n; }
    friend Cursor operator+(difference_type n, Cursor c) { return c += n; }
    friend Cursor operator-(Cursor c, difference_type n) { return c -= n; }
    friend difference_type operator-(const Cursor& a, const Cursor& b) { return a.i_ - b.i_; }
    friend bool operator==(const Cursor& a, const Cursor& b) { return a.i_ == b.i_; }
    friend auto operator<=>(const Cursor& a, const Cursor& b) { return a.i_ <=> b.i_; }

   private:
    Sequence* sequence_ = nullptr;
    std::ptrdiff_t i_ = 0;
  };

  T** blocks_ = nullptr;
  std::size_t nBlocks_ = 0;
  std::size_t first_ = 0;
  std::size_t size_ = 0;
};

}  // namespace kel
