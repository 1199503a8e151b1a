// The library's one random-number generator: Knuth's subtractive method, a lagged Fibonacci sequence over 55 integers
// modulo 10^9, in the form published as ran3 in Numerical Recipes (Press et al., 2nd ed. 1992, section 7.1).
//
// Nmrand and Nmrrst (studystats/analyses.h) draw from one process-wide generator; nothing guards it.
#pragma once

#include <cstdint>

namespace studystats::core {

// All arithmetic wraps at 32 bits and remainders keep the sign of the dividend, so a seed whose magnitude exceeds
// 161803398 starts the table with a negative entry, and draws below 0 or above 1 can follow.
class SubtractiveGenerator {
 public:
  bool seeded() const { return seeded_; }
  void forgetSeed() { seeded_ = false; }  // the table stays as it is until the next seeding
  void seed(std::int32_t seed);
  std::int32_t draw();  // a table value, 0 ... 10^9 - 1 for seeds of ordinary magnitude

 private:
  bool seeded_ = false;
  std::int32_t table_[56] = {};  // entries 1 ... 55, as published
  int next_ = 0;
  int nextLag_ = 0;
};

// A table value as a number in [0, 1], in 32-bit arithmetic: values from 999999968 upward give exactly 1.
float unitNumber(std::int32_t tableValue);

}  // namespace studystats::core
