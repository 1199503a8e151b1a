// Memory refused on purpose: the k-th request for scratch memory fails, for k = 0, 1, 2, ... until an analysis
// succeeds. Each failure must give status 5, release what was obtained, and leave every output as it was.

#include <gtest/gtest.h>
#include <studystats/analyses.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <vector>

namespace {

int requestsUntilRefusal = -1;  // -1: nothing is refused
long nLive = 0;                 // blocks obtained and not yet released

void* obtain(std::size_t size) {
  void* block = std::malloc(std::max<std::size_t>(size, 1));
  if (block != nullptr) ++nLive;
  return block;
}

void* obtainOrThrow(std::size_t size) {
  void* block = obtain(size);
  return block != nullptr ? block : throw std::bad_alloc();
}

void* obtainOrRefuse(std::size_t size) {
  if (requestsUntilRefusal == 0) return nullptr;
  if (requestsUntilRefusal > 0) --requestsUntilRefusal;
  return obtain(size);
}

void release(void* block) {
  if (block != nullptr) --nLive;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return obtainOrThrow(size); }
void* operator new[](std::size_t size) { return obtainOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return obtainOrRefuse(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return obtainOrRefuse(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }

namespace {

constexpr double kUntouched = -7.25;
constexpr std::int32_t kRows = 12, kColumns = 3;

// Outputs of one call: each analysis takes what it needs from two arrays of ample length.
struct Outputs {
  std::vector<double> numbers = std::vector<double>(1000, kUntouched);
  std::vector<std::int32_t> counts = std::vector<std::int32_t>(100, -7);
  double* next = numbers.data();
  double* take(std::ptrdiff_t n) { return (next += n) - n; }
  bool untouched() const {
    return std::count(numbers.begin(), numbers.end(), kUntouched) == std::ssize(numbers) &&
           std::count(counts.begin(), counts.end(), -7) == std::ssize(counts);
  }
};

struct Analysis {
  const char* name;
  int nRequests;  // of scratch memory, at least
  std::int32_t (*run)(const std::vector<double>& data, Outputs& out);
};

std::int32_t principalComponents(const std::vector<double>& data, Outputs& out) {
  const int p = kColumns;
  std::int32_t status = -1;
  PCAnal(data.data(), kRows, p, out.counts.data(), out.take(p), out.take(p * p), out.take(p * p), out.take(p * p),
         out.take(kRows * p), out.take(p), out.take(p), &status);
  return status;
}

const Analysis kAnalyses[] = {{"PCAnal", 4, principalComponents}};

class ScratchRefusal : public testing::TestWithParam<Analysis> {};

TEST_P(ScratchRefusal, GivesStatus5LeaksNothingAndWritesNothing) {
  std::vector<double> data(kRows * kColumns);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<double>(i * i % 17);
  std::int32_t status = 5;
  int k = 0;
  for (; status == 5; ++k) {
    Outputs out;
    const long before = nLive;
    requestsUntilRefusal = k;
    status = GetParam().run(data, out);
    requestsUntilRefusal = -1;
    EXPECT_EQ(nLive, before) << "request " << k;
    EXPECT_EQ(out.untouched(), status == 5) << "request " << k;
  }
  EXPECT_EQ(status, 0);
  EXPECT_GT(k, GetParam().nRequests);
}

// p * p numbers: more than can be counted in bytes, and in 32 bits a small count. Only the sizes may be looked at.
TEST(ScratchSizes, ThatOverflowAreMemoryThatCannotBeHad) {
  for (const std::int32_t p : {2147483647, 1518500250}) {
    std::int32_t status = -1;
    PCAnal(nullptr, 1, p, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &status);
    EXPECT_EQ(status, 5) << p;
  }
}

INSTANTIATE_TEST_SUITE_P(EntryPoints, ScratchRefusal, testing::ValuesIn(kAnalyses),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
