// The example tables of classified samples, as calls of DisAnl.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/analyses/da_call.h"
#include "tests/analyses/example.h"

namespace studystats {

// The examples stand sorted by class.
inline DaCall classifiedExample(const char* name, const std::vector<std::int32_t>& classSizes, std::int32_t p) {
  std::vector<std::int32_t> classOf;
  for (std::size_t c = 0; c < classSizes.size(); ++c)
    classOf.insert(classOf.end(), static_cast<std::size_t>(classSizes[c]), static_cast<std::int32_t>(c) + 1);
  const auto n = static_cast<std::int32_t>(classOf.size());
  DaCall call(n, p, static_cast<std::int32_t>(classSizes.size()));
  call.data = exampleNumbers(name, n, p);
  std::copy(classOf.begin(), classOf.end(), call.classOf.begin());
  return call;
}

inline DaCall iris() { return classifiedExample("iris.csv", {50, 50, 50}, 4); }
inline DaCall wine() { return classifiedExample("wine.csv", {59, 71, 48}, 13); }

}  // namespace studystats
