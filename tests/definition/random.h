// The subtractive generator, step by step.
#pragma once

#include <cstdint>

namespace studystats::definition {

struct Generator {
  bool initialised = false;
  std::int32_t table[56] = {};
  int next = 0;
  int nextLag = 0;

  void seed(std::int32_t s);
  float draw(std::int32_t s);  // as Nmrand
};

}  // namespace studystats::definition
