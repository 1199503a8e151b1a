// Random folds that hold out no row twice: then the predictions of the rows held out are those of the folds, and not
// means.
#pragma once

#include <studystats/host.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace studystats::test {

// run(folds) with the first seed whose draws do so. Few and small draws find one soon.
template <class Run>
auto withDrawsApart(Folds::Draws draws, Run run) {
  for (std::int32_t seed = 1; seed < 100; ++seed) {
    auto result = run(Folds::random(draws, seed));
    if (std::none_of(result.rows.begin(), result.rows.end(), [](const auto& row) { return row.timesHeldOut > 1; }))
      return result;
  }
  throw std::logic_error("these draws are too many or too large to lie apart");
}

}  // namespace studystats::test
