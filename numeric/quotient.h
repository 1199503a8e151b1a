// Many numbers divided by one: the bits of a division, without dividing.
//
// With y the rounded reciprocal of d and q the rounded product x * y, q + (x - q * d) * y is the correctly rounded
// quotient when both steps are fused, each rounding once: the remainder is then exact. It holds as long as nothing on
// the way underflows or overflows; canMultiply() says what that asks of the caller. The sign of a quotient that is 0 is
// not kept, which no sum that begins at +0 can tell.
//
// Brisebarre, Muller & Raina (2004), IEEE Transactions on Computers 53, 1069-1072 (algorithm 1, Markstein's).
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace studystats::core {

// Orders magnitudes like the numbers themselves, with 0 behind the largest: the smallest key of many numbers belongs to
// the smallest that is not 0.
using MagnitudeKey = std::uint64_t;
constexpr MagnitudeKey kNoMagnitude = std::numeric_limits<MagnitudeKey>::max();

constexpr MagnitudeKey magnitudeKey(double x) { return (std::bit_cast<std::uint64_t>(x) << 1U) - 1U; }

// Factors of 2^-225 and above have products of 2^-450 and above.
constexpr MagnitudeKey kSmallestFactor = magnitudeKey(0x1p-225);

// Whether one fused instruction does both operations; where it is a call of a function, a division is faster.
inline bool fusedIsFast() {
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(STUDYSTATS_ONE_VERSION)
  return __builtin_cpu_supports("x86-64-v3") != 0;
#elif defined(__FP_FAST_FMA)
  return true;
#else
  return false;
#endif
}

// Whether products of two factors, none but 0 below 2^-225, may be divided by d with Multiply. What overflows shows: it
// makes every sum of quotients infinite or not a number.
inline bool canMultiply(double d) { return d >= 0x1p-450 && d <= 0x1p450 && fusedIsFast(); }

struct Divide {
  double divisor;
  double operator()(double x) const { return x / divisor; }
};

struct Multiply {
  explicit Multiply(double d) : divisor(d), reciprocal(1.0 / d) {}
  double operator()(double x) const {
    const double q = x * reciprocal;
    return std::fma(std::fma(-q, divisor, x), reciprocal, q);
  }
  double divisor, reciprocal;
};

struct DivideByOne {
  double operator()(double x) const { return x; }
};

}  // namespace studystats::core
