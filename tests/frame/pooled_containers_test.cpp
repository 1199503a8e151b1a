#include <gtest/gtest.h>
#include <studystats/pooled_containers.h>

#include <cstring>
#include <deque>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using Names = kel::set<std::string, std::less<std::string>, kel::pool_allocator<std::string, 1>>;
using Flags = kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>>;
static_assert(std::random_access_iterator<Flags::iterator> && std::random_access_iterator<Flags::const_iterator>);
static_assert(std::sized_sentinel_for<Flags::iterator, Flags::const_iterator>);  // that is, the one converts
static_assert(!std::is_convertible_v<Flags::const_iterator, Flags::iterator>);

// A refusal in the assignment of an object with containers in it is raised, and does not end the program.
struct Held {
  Names names;
  Flags flags;
};
static_assert(!std::is_nothrow_copy_assignable_v<Held> && std::is_nothrow_move_assignable_v<Held>);

// Gives its nodes back after the library's own static objects are gone.
Names keptUntilTheEnd{"made before", "any pool"};

TEST(MemoryPool, HandsOutAlignedBlocksThatDoNotOverlap) {
  for (const std::size_t size : {1u, 8u, 24u, 40u, 72u, 1024u, 4096u, 5000u}) {
    kel::MemoryPool& pool = kel::MemoryPool::GetPool(size);
    EXPECT_EQ(&pool, &kel::MemoryPool::GetPool(size));
    std::mt19937 random(17);
    std::vector<std::pair<unsigned char*, unsigned char>> held;  // each block filled with a mark of its own
    for (int step = 0; step < 3000; ++step) {
      if (held.empty() || random() % 5 < 3) {
        auto* block = static_cast<unsigned char*>(pool.allocate());
        const std::size_t alignment = std::min<std::size_t>(size & (~size + 1), alignof(std::max_align_t));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % alignment, 0u);
        held.emplace_back(block, static_cast<unsigned char>(random()));
        std::memset(block, held.back().second, size);
      } else {
        std::swap(held[random() % held.size()], held.back());
        const auto [block, mark] = held.back();
        for (std::size_t i = 0; i < size; ++i) ASSERT_EQ(block[i], mark) << "size " << size;
        ASSERT_TRUE(pool.deallocate(block));
        held.pop_back();
      }
    }
    for (const auto& [block, mark] : held) pool.deallocate(block);
    EXPECT_FALSE(pool.deallocate(nullptr));
    if (size > 4096) continue;

    std::set<void*> first, again;  // what was given back is handed out before anything else
    for (int i = 0; i < 100; ++i) first.insert(pool.allocate());
    for (void* block : first) pool.deallocate(block);
    for (int i = 0; i < 100; ++i) again.insert(pool.allocate());
    EXPECT_EQ(again, first) << "size " << size;
    for (void* block : again) pool.deallocate(block);
  }
}

// A standard allocator that admits only a few entries.
template <class T>
struct Few {
  using value_type = T;
  Few() = default;
  template <class U>
  Few(const Few<U>&) {}
  T* allocate(std::size_t n) { return std::allocator<T>().allocate(n); }
  void deallocate(T* p, std::size_t n) { std::allocator<T>().deallocate(p, n); }
  std::size_t max_size() const { return 3; }
  bool operator==(const Few&) const { return true; }
};

template <class Action>
std::string lengthError(Action action) {
  try {
    action();
  } catch (const std::length_error& error) {
    return error.what();
  }
  return "nothing";
}

TEST(Ordered, KeysAreUniqueBytewiseAndBoundedInNumber) {
  const Names names{"b", "a", "B", "\xC3\xA4", "a", ""};
  EXPECT_EQ(std::vector<std::string>(names.begin(), names.end()),
            (std::vector<std::string>{"", "B", "a", "b", "\xC3\xA4"}));
  Names copy = names;
  EXPECT_FALSE(copy.insert("b").second);
  EXPECT_TRUE(copy.insert("c").second);
  EXPECT_FALSE(names.contains("c"));

  kel::map<std::string, std::int32_t> numbers;
  EXPECT_TRUE(numbers.insert({"x", 1}).second);
  EXPECT_FALSE(numbers.insert({"x", 2}).second);
  numbers["y"] = 7;
  EXPECT_EQ(numbers["x"], 1);
  EXPECT_EQ(numbers.find("y")->second, 7);

  kel::set<int, std::less<int>, Few<int>> few{1, 2, 3};
  EXPECT_EQ(lengthError([&] { few.insert(4); }), "map/set<T> too long");
  EXPECT_FALSE(few.insert(2).second);  // already there: no growth
  EXPECT_EQ(few.size(), 3u);
}

// The same random history, on ours and on the standard one.
template <class Sequence>
void expectSameHistory(std::size_t longest) {
  std::mt19937 random(4711);
  Sequence ours;
  std::deque<bool> theirs;
  for (int step = 0; step < 400; ++step) {
    const bool value = random() % 2 == 0;
    const std::size_t n = random() % longest, kind = random() % 7;
    for (std::size_t i = 0; i < n && kind < 4; ++i) {
      if (kind == 0) ours.push_back(value), theirs.push_back(value);
      if (kind == 1) ours.push_front(value), theirs.push_front(value);
      if (kind == 2 && !ours.empty()) ours.pop_back(), theirs.pop_back();
      if (kind == 3 && !ours.empty()) ours.pop_front(), theirs.pop_front();
    }
    if (kind == 4) ours.resize(2 * n, value), theirs.resize(2 * n, value);
    if (kind == 5) ours = Sequence(ours);
    if (kind == 6 && n < longest / 10) ours.clear(), theirs.clear();
    if (!ours.empty()) ours[n % ours.size()] = theirs[n % theirs.size()] = value;
    ASSERT_TRUE(std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end())) << "step " << step;
  }
}

TEST(Deque, BehavesAsTheStandardOneThroughAnyHistory) {
  expectSameHistory<Flags>(3000);
  expectSameHistory<kel::deque<bool, 4>>(200);
  expectSameHistory<kel::deque<bool, 1>>(100);
}

std::vector<std::size_t> arrayLengths;
template <class T>
struct Recording : kel::pool_array_allocator<T, 8> {
  T* allocate(std::size_t n) {
    arrayLengths.push_back(n);
    return kel::pool_array_allocator<T, 8>::allocate(n);
  }
};

TEST(Deque, ItsArrayGrowsByEightOrByHalfInMultiplesOfEight) {
  kel::deque<int, 2, kel::pool_allocator<int, 2>, Recording<int*>> sequence;
  for (int i = 0; i < 1000; ++i) i % 3 == 0 ? sequence.push_front(i) : sequence.push_back(i);
  ASSERT_GT(arrayLengths.size(), 5u);
  EXPECT_EQ(arrayLengths[0], 8u);
  for (std::size_t i = 1; i < arrayLengths.size(); ++i) {
    EXPECT_EQ(arrayLengths[i] % 8, 0u);
    EXPECT_GE(arrayLengths[i], arrayLengths[i - 1] + std::max<std::size_t>(8, arrayLengths[i - 1] / 2));
    EXPECT_LT(arrayLengths[i], arrayLengths[i - 1] + std::max<std::size_t>(8, arrayLengths[i - 1] / 2) + 8);
  }
  Flags flags(5);
  EXPECT_EQ(lengthError([&] { flags.resize(flags.max_size() + 1); }), "deque<T> too long");
  EXPECT_EQ(flags, Flags(5));
  kel::deque<int, 3, Few<int>, Few<int*>> few{1, 2, 3};
  EXPECT_EQ(lengthError([&] { few.push_back(4); }), "deque<T> too long");
  EXPECT_EQ(lengthError([&] { few.push_front(0); }), "deque<T> too long");
  EXPECT_EQ(few, (kel::deque<int, 3, Few<int>, Few<int*>>{1, 2, 3}));
}

// Counts what is alive; the copy that brings the counter to 0 raises.
struct Fragile {
  static inline int alive = 0, copiesLeft = -1;
  int value;
  explicit Fragile(int v = 0) : value(v) { ++alive; }
  Fragile(const Fragile& other) : value(other.value) {
    if (copiesLeft >= 0 && copiesLeft-- == 0) throw std::runtime_error("copy");
    ++alive;
  }
  ~Fragile() { --alive; }
  bool operator==(const Fragile& other) const { return value == other.value; }
};

TEST(Deque, AFailingOperationLeavesItAsItWas) {
  {
    kel::deque<Fragile, 4> sequence;
    for (int i = 0; i < 30; ++i) sequence.push_back(Fragile(i));
    const kel::deque<Fragile, 4> before = sequence;
    for (int k = 0; k < 30; ++k) {
      const auto refused = [&](auto action) {
        Fragile::copiesLeft = k;
        EXPECT_THROW(action(), std::runtime_error) << k;
        Fragile::copiesLeft = -1;
        EXPECT_EQ(sequence, before);
      };
      refused([&] { sequence.resize(100, Fragile(7)); });
      refused([&] { kel::deque<Fragile, 4> copy(before); });
      refused([&] { sequence = before; });
    }
    Fragile::copiesLeft = 0;
    EXPECT_THROW(sequence.push_front(Fragile(1)), std::runtime_error);
    EXPECT_EQ(sequence, before);
  }
  EXPECT_EQ(Fragile::alive, 0);
}

}  // namespace
