#include "tests/definition/random.h"

namespace studystats::definition {
namespace {

std::int32_t wrapped(std::int64_t value) { return static_cast<std::int32_t>(value); }

std::int32_t lifted(std::int64_t difference) {
  const std::int32_t value = wrapped(difference);
  return value < 0 ? value + 1000000000 : value;
}

}  // namespace

void Generator::seed(std::int32_t s) {
  initialised = true;
  const std::int64_t magnitude = wrapped(s < 0 ? -std::int64_t{s} : s);
  std::int32_t mj = wrapped(161803398 - magnitude) % 1000000000;
  table[55] = mj;
  std::int32_t mk = 1;
  for (int i = 1; i <= 54; ++i) {
    const int ii = (21 * i) % 55;
    table[ii] = mk;
    mk = lifted(std::int64_t{mj} - mk);
    mj = table[ii];
  }
  for (int pass = 1; pass <= 4; ++pass)
    for (int i = 1; i <= 55; ++i) table[i] = lifted(std::int64_t{table[i]} - table[1 + (i + 30) % 55]);
  next = 0;
  nextLag = 31;
}

float Generator::draw(std::int32_t s) {
  if (s < 0 || !initialised) seed(s);
  next = next + 1 == 56 ? 1 : next + 1;
  nextLag = nextLag + 1 == 56 ? 1 : nextLag + 1;
  const std::int32_t mj = lifted(std::int64_t{table[next]} - table[nextLag]);
  table[next] = mj;
  return static_cast<float>(mj) * 1.0e-9F;
}

}  // namespace studystats::definition
