// Knuth's subtractive generator, a lagged Fibonacci sequence over 55 integers modulo 10^9, integer version with a
// single-precision result; and the one generator that the process shares, from which Nmrand draws unguarded.
//
// All arithmetic wraps at 32 bits and remainders keep the sign of the dividend, so a seed whose magnitude exceeds
// 161803398 starts the table with a negative entry, and numbers below 0 or above 1 can follow.
#include <studystats/analyses.h>
#include <studystats/engine/folds.h>

#include <optional>

namespace studystats::engine {
namespace {

constexpr std::int32_t kModulus = 1000000000;
constexpr std::int32_t kSeedConstant = 161803398;
constexpr int kLength = 55;
constexpr int kLag = 31;
constexpr int kSpread = 21;
constexpr int kWarmingPasses = 4;
constexpr float kScale = 1.0e-9F;

// a - b, wrapping at 32 bits.
std::int32_t minus(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// a - b modulo 10^9 for arguments in 0 ... 10^9 - 1. Others are shifted at most once, as published.
std::int32_t difference(std::int32_t a, std::int32_t b) {
  const std::int32_t d = minus(a, b);
  return d < 0 ? d + kModulus : d;
}

}  // namespace

void Generator::start(std::int32_t seed) {
  const std::int32_t magnitude = seed < 0 ? minus(0, seed) : seed;
  std::int32_t mj = minus(kSeedConstant, magnitude) % kModulus;
  table_[kLength] = mj;
  std::int32_t mk = 1;
  for (int i = 1; i < kLength; ++i) {
    const int spread = kSpread * i % kLength;
    table_[spread] = mk;
    mk = difference(mj, mk);
    mj = table_[spread];
  }
  for (int pass = 0; pass < kWarmingPasses; ++pass)
    for (int i = 1; i <= kLength; ++i) table_[i] = difference(table_[i], table_[1 + (i + kLag - 1) % kLength]);
  next_ = 0;
  nextLag_ = kLag;
}

float Generator::operator()() {
  if (++next_ > kLength) next_ = 1;
  if (++nextLag_ > kLength) nextLag_ = 1;
  table_[next_] = difference(table_[next_], table_[nextLag_]);
  return static_cast<float>(table_[next_]) * kScale;  // 999999968 and above give exactly 1
}

}  // namespace studystats::engine

namespace {

std::optional<studystats::engine::Generator> shared;  // none: not seeded

}  // namespace

float Nmrand(std::int32_t seed) {
  if (seed < 0 || !shared) shared.emplace(seed);
  return (*shared)();
}

std::int32_t Nmrrst() {
  shared.reset();
  return 0;
}
