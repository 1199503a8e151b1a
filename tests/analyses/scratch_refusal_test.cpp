// Memory refused on purpose: the k-th request for scratch memory fails, for k = 0, 1, 2, ... until an analysis
// succeeds. Each failure must give status 5, release what was obtained, and leave every output as it was. What
// validates must obtain nothing between its first report and its last, and leak nothing when the host stops it or
// fails. The linker puts the functions here in the place of calloc and free (--wrap).

#include <gtest/gtest.h>
#include <studystats/analyses.h>
#include <studystats/frame.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <vector>

#include "analyses/da/by_address.h"
#include "analyses/mlr/by_address.h"
#include "numeric/least_squares.h"
#include "tests/analyses/engine_runs.h"

namespace core = studystats::core;

namespace {

int requestsUntilRefusal = -1;  // -1: nothing is refused
int nRequests = 0;              // for scratch memory
long nLive = 0;                 // blocks obtained and not yet released
long nObtained = 0;
void* scratchBlocks[64] = {};  // those of scratch memory that are live

void* obtained(void* block) {
  if (block != nullptr) {
    ++nLive;
    ++nObtained;
  }
  return block;
}

void* obtainOrThrow(std::size_t size) {
  void* block = obtained(std::malloc(std::max<std::size_t>(size, 1)));
  return block != nullptr ? block : throw std::bad_alloc();
}

void release(void* block) {
  if (block != nullptr) --nLive;
  std::free(block);
}

}  // namespace

extern "C" {
void* __real_calloc(std::size_t count, std::size_t size);
void __real_free(void* block);

void* __wrap_calloc(std::size_t count, std::size_t size) {
  ++nRequests;
  if (requestsUntilRefusal == 0) return nullptr;
  if (requestsUntilRefusal > 0) --requestsUntilRefusal;
  void* block = obtained(__real_calloc(count, size));
  *std::find(scratchBlocks, scratchBlocks + 63, nullptr) = block;
  return block;
}

void __wrap_free(void* block) {
  void** scratch = std::find(scratchBlocks, scratchBlocks + 64, block);
  if (block != nullptr && scratch != scratchBlocks + 64) {
    --nLive;
    *scratch = nullptr;
  }
  __real_free(block);
}
}

void* operator new(std::size_t size) { return obtainOrThrow(size); }
void* operator new[](std::size_t size) { return obtainOrThrow(size); }
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
  std::vector<float> floats = std::vector<float>(100, -7.25F);
  double* next = numbers.data();
  double* take(std::ptrdiff_t n) { return (next += n) - n; }
  bool untouched() const {
    return std::count(numbers.begin(), numbers.end(), kUntouched) == std::ssize(numbers) &&
           std::count(counts.begin(), counts.end(), -7) == std::ssize(counts) &&
           std::count(floats.begin(), floats.end(), -7.25F) == std::ssize(floats);
  }
};

// A host that watches the memory, and stops or fails at one of its reports.
class Watcher final : public ISBProgressMonitor {
 public:
  Watcher(int stop, int fail) : stopAt(stop), failAt(fail) {
    monitor.monitor = this;
    AddRef();
  }
  HRESULT QueryInterface(const GUID&, void**) override { return 0; }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }
  HRESULT HostMethod4() override { return 0; }
  HRESULT HostMethod5() override { return 0; }
  HRESULT HostMethod6() override { return 0; }
  HRESULT HostMethod7() override { return 0; }
  HRESULT ReportProgress(std::int32_t, std::int32_t, VARIANT, VARIANT_BOOL* answer) override {
    if (++nReports == 1) obtainedBefore = nObtained;
    obtainedBetween = nObtained - obtainedBefore;
    *answer = nReports == stopAt ? VARIANT_BOOL{0} : VARIANT_TRUE;
    return nReports == failAt ? static_cast<HRESULT>(0x80004005U) : 0;
  }
  ProgressMonitor monitor;
  int stopAt, failAt, nReports = 0;
  long obtainedBefore = 0, obtainedBetween = 0;
};

ProgressMonitor* watched = nullptr;  // handed to the analyses that report

struct Analysis {
  const char* name;
  std::int32_t (*run)(const std::vector<double>& data, Outputs& out);
};

std::int32_t principalComponents(const std::vector<double>& data, Outputs& out) {
  const int p = kColumns;
  std::int32_t status = -1;
  PCAnal(data.data(), kRows, p, out.counts.data(), out.take(p), out.take(p * p), out.take(p * p), out.take(p * p),
         out.take(kRows * p), out.take(p), out.take(p), &status);
  return status;
}

// Leave-one-out and a step or two; the flags and the row numbers are inputs as well.
std::int32_t regression(const std::vector<double>& data, Outputs& out) {
  const std::int32_t p = kColumns, n = kRows, steps = 3, maxFolds = n;
  std::int32_t tags[2 * kRows] = {}, rowIds[kRows], usable[kRows], flags[kColumns] = {}, status = -1, goOn = -1;
  double scale[kColumns], shift[kColumns] = {};
  float startF[2];
  float stepValues[3][steps] = {};
  for (std::int32_t i = 0; i < n; ++i) rowIds[i] = i + 1;
  std::fill_n(usable, n, 1);
  std::fill_n(scale, p, 1.0);
  std::int32_t* counts = out.counts.data();
  MulReg(data.data(), tags, rowIds, usable, n, p, scale, shift, out.take(p * p), 0, 0.01F, 0.01F, steps, 1, flags, 1, 0,
         1, out.take(n), out.take(n), &startF[0], &startF[1], out.take(1), out.take(1), out.take(1), out.take(1),
         out.take(1), out.take(1), out.take(1), out.take(1), out.take(1), counts, out.take(3), out.take(p), out.take(p),
         out.take(p), out.take(p), out.take(p), out.take(p), counts + 3, counts + 10, stepValues[0], stepValues[1],
         stepValues[2], counts + 20, counts + 30, counts + 40, counts + 41, &maxFolds, &status, watched, &goOn);
  return status;
}

// Two classes, stepwise to two variables, leave-one-out.
std::int32_t discrimination(const std::vector<double>& data, Outputs& out) {
  const std::int32_t n = kRows, p = kColumns, g = 2;
  std::int32_t classOf[2 * kRows] = {}, inModel[kRows], status = -1, goOn = -1;
  for (std::int32_t i = 0; i < n; ++i) classOf[i] = i % g + 1;
  std::fill_n(inModel, n, 1);
  std::int32_t* c = out.counts.data();
  float* f = out.floats.data();
  DisAnl(data.data(), classOf, c, inModel, n, p, g, 1, 2, 1, 0, 1, out.take(p * p), out.take(p), f, f + 10, f + 20,
         f + 30, f + 40, c + 20, c + 30, c + 40, c + 50, c + 60, c + 70, c + 71, &status, watched, &goOn);
  return status;
}

// One response and two components, leave-one-out; the scales are an input as well.
std::int32_t partialLeastSquares(const std::vector<double>& data, Outputs& out) {
  const std::int32_t n = kRows, m = kColumns, p = m - 1, q = 1, a = 2;
  std::int32_t tags[2 * kRows] = {}, rowUse[kRows], status = -1, goOn = -1;
  double scales[kColumns], means[kColumns] = {};
  std::fill_n(rowUse, n, 1);
  std::fill_n(scales, m, 1.0);
  PlsAnl(data.data(), tags, out.counts.data(), rowUse, n, m, 0, scales, means, nullptr, q, p, 0, 0.9F, a, 1, 1, 0, 1,
         out.take(p * a * q), out.take(p * a * q), out.take(a * q), out.take(a * q), out.take(a * q), out.take(a * q),
         out.take(q), out.take(a * q), out.take(n * q), out.take(a * q), &status, watched, &goOn);
  return status;
}

const Analysis kReporting[] = {{"MulReg", regression}, {"PlsAnl", partialLeastSquares}, {"DisAnl", discrimination}};
const Analysis kAnalyses[] = {{"PCAnal", principalComponents}, kReporting[0], kReporting[1], kReporting[2]};

std::vector<double> table() {
  std::vector<double> data(kRows * kColumns);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<double>(i * i % 17);
  return data;
}

class ScratchRefusal : public testing::TestWithParam<Analysis> {};

TEST_P(ScratchRefusal, GivesStatus5LeaksNothingAndWritesNothing) {
  const std::vector<double> data = table();
  std::int32_t status = 5;
  int k = 0;
  for (; status == 5; ++k) {
    Outputs out;
    const long before = nLive;
    nRequests = 0;
    requestsUntilRefusal = k;
    nRequests = 0;
    status = GetParam().run(data, out);
    requestsUntilRefusal = -1;
    EXPECT_EQ(nLive, before) << "request " << k;
    EXPECT_EQ(nRequests, 1) << "the first refusal ends it";
    EXPECT_EQ(out.untouched(), status == 5) << "request " << k;
  }
  EXPECT_EQ(status, 0);
  EXPECT_GT(k, 1);
}

// p * p numbers: more than can be counted in bytes, and in 32 bits a small count. Only the sizes may be looked at.
TEST(ScratchSizes, ThatOverflowAreMemoryThatCannotBeHad) {
  for (const std::int32_t p : {2147483647, 1518500250}) {
    std::int32_t status = -1;
    PCAnal(nullptr, 1, p, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &status);
    EXPECT_EQ(status, 5) << p;
  }
}

// Nothing of the caller's is looked at before the memory is had, so none of these needs its arrays.
TEST(ScratchSizes, AreAllThatIsLookedAtBeforeARefusal) {
  const std::int32_t n = 9, p = 3, g = 2, one = 1, zero = 0, huge = 2000000000;
  const float limit = 1;
  const double number = 1;
  ProgressMonitor* const nobody = nullptr;
  std::int32_t enter = -7, nSteps = -7, goOn = -7;
  float f = 0, s = 0;
  struct Call {
    const char* name;
    std::function<void(std::int32_t& status)> run;
  };
  const Call calls[] = {
      {"MulReg",
       [&](std::int32_t& status) {
         MulReg(nullptr, nullptr, nullptr, nullptr, n, huge, nullptr, nullptr, nullptr, 0, 4, 4, 5, 1, nullptr, 1, 0, 1,
                nullptr, nullptr, &f, &s, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &zero, &status, nullptr, &goOn);
       }},
      {"StepReg",
       [&](std::int32_t& status) {
         core::StepReg(nullptr, &n, &p, &n, &one, &g, nullptr, nullptr, &limit, &limit, nullptr, nullptr, nullptr,
                       &limit, nullptr, nullptr, nullptr, nullptr, nullptr, &nSteps, nullptr, nullptr, nullptr, nullptr,
                       nullptr, &status, nullptr, nullptr);
       }},
      {"RegFit",
       [&](std::int32_t& status) {
         core::RegFit(nullptr, &n, &p, &n, &p, nullptr, nullptr, nullptr, nullptr, nullptr, &limit, nullptr, nullptr,
                      nullptr, nullptr, nullptr, nullptr, nullptr, &status, nullptr, nullptr);
       }},
      {"EntCand",
       [&](std::int32_t& status) {
         core::EntCand(nullptr, &n, &p, &n, &one, nullptr, nullptr, &one, nullptr, nullptr, nullptr, nullptr, &limit,
                       nullptr, &number, &number, &enter, &status);
       }},
      {"DisAnl", [&](std::int32_t& status) {
         core::DaCore(nullptr, nullptr, nullptr, nullptr, &n, &p, &g, &zero, &zero, &one, &zero, &limit, nullptr,
                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                      nullptr, nullptr, &status, &nobody, &goOn);
       }}};
  for (const Call& call : calls) {
    std::int32_t status = -7;
    requestsUntilRefusal = 0;
    call.run(status);
    requestsUntilRefusal = -1;
    EXPECT_EQ(status, 5) << call.name;
  }
  EXPECT_EQ(enter, 0) << "written first";
}

// Two gigabytes for folds, of which there are three.
TEST(ScratchPages, CostNothingUntilTheyAreUsed) {
  const std::int32_t n = 3, p = 1, maxFolds = 1 << 28;
  const double data[] = {1, 2, 4}, scale[] = {1}, shift[] = {0};
  const std::int32_t tags[6] = {}, usable[] = {1, 1, 1};
  std::int32_t rowIds[] = {1, 2, 3}, counts[8] = {}, df[3], status = -7, goOn = -7;
  double x[20];
  float f[2];
  rusage before{}, after{};
  getrusage(RUSAGE_SELF, &before);
  MulReg(data, tags, rowIds, usable, n, p, scale, shift, x, 0, 4, 4, 0, 1, counts, 1, 0, 1, x + 1, x + 4, f, f + 1,
         x + 7, x + 8, x + 9, x + 10, x + 11, x + 12, x + 13, x + 14, x + 15, df, x + 16, nullptr, nullptr, nullptr,
         nullptr, nullptr, nullptr, counts + 1, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, counts + 2,
         counts + 3, &maxFolds, &status, nullptr, &goOn);
  getrusage(RUSAGE_SELF, &after);
  EXPECT_EQ(status, 0);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 512 * 1024) << "kilobytes";
}

class Reports : public testing::TestWithParam<Analysis> {};

TEST_P(Reports, FindNothingObtainedBetweenThemAndLeakNothingWhateverTheHostDoes) {
  const std::vector<double> data = table();
  int nReports = 1;
  for (int k = 0; k <= nReports; ++k)
    for (const bool fails : {false, true}) {
      Outputs out;
      Watcher host(fails ? 0 : k, fails ? k : 0);
      watched = &host.monitor;
      const long before = nLive;
      std::int32_t status = -7;
      try {
        status = GetParam().run(data, out);
      } catch (const Dvo::DvoResult&) {
        status = -1;
      }
      watched = nullptr;
      if (k == 0) nReports = host.nReports;
      EXPECT_EQ(status, k == 0 ? 0 : fails ? -1 : 999) << "report " << k;
      EXPECT_EQ(nLive, before) << "report " << k;
      EXPECT_EQ(host.obtainedBetween, 0) << "report " << k;
    }
  EXPECT_GT(nReports, 2);
}

// An object has its memory or says that it has not; what it runs afterwards obtains nothing, stopped or not.
template <class Run>
class EngineMemory : public testing::Test {};
using Engines = testing::Types<studystats::RegressionRun, studystats::PartialLeastSquaresRun>;
TYPED_TEST_SUITE(EngineMemory, Engines);

TYPED_TEST(EngineMemory, IsObtainedWhenAnObjectIsMadeOrNotAtAll) {
  const studystats::LatentTable data(20, 5, 1);
  const auto folds = studystats::engine::Folds::grouped(std::vector<std::int32_t>{0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2});
  for (std::int32_t k = 0; k <= 4; ++k) {
    const long before = nLive;
    requestsUntilRefusal = k;
    auto run = std::make_unique<TypeParam>(data, folds.count(), 3);
    requestsUntilRefusal = -1;
    EXPECT_EQ(static_cast<bool>(run->analysis), k == 4) << "for all rows and three places";
    const long obtainedBefore = nObtained;
    for (std::int32_t stopAt = 0, asked = 0; k == 4 && stopAt <= folds.count(); ++stopAt, asked = 0) {
      const auto ask = [&](const studystats::engine::Progress&) { return ++asked != stopAt; };
      run->analysis.fit(ask);
      run->analysis.validate(folds.source(), ask);
      EXPECT_EQ(asked, stopAt == 0 ? folds.count() : stopAt);
    }
    EXPECT_EQ(nObtained, obtainedBefore);
    run.reset();
    EXPECT_EQ(nLive, before) << "request " << k;
  }
}

INSTANTIATE_TEST_SUITE_P(EntryPoints, Reports, testing::ValuesIn(kReporting),
                         [](const auto& tested) { return tested.param.name; });
INSTANTIATE_TEST_SUITE_P(EntryPoints, ScratchRefusal, testing::ValuesIn(kAnalyses),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
