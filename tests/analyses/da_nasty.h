// Tables of classified samples that are made to break something.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "tests/analyses/da_call.h"

namespace studystats {

constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

// Ties and near ties, repeated and constant columns, columns constant within classes, sums of columns (integers:
// exactly singular), products that overflow and quotients that underflow, not-a-numbers and infinities, classes without
// samples and with one, samples outside the model.
inline NastyCase<DaCall> nastyCase(std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> normal;
  const Pick pick(random);
  DaCall call(pick(0, 2, 3, 5, 9, 12, 12, 17, 19, 19, 27, 34, 40), pick(0, 1, 1, 2, 3, 3, 4, 5, 8, 11),
              pick(1, 2, 2, 2, 3, 3, 4, 7));
  const bool allInModel = random() % 2 == 0, badClass = random() % 25 == 0, rare = random() % 4 == 0;
  for (std::size_t i = 0; i < call.inModel.size(); ++i) {
    const auto any = static_cast<std::int32_t>(random() % static_cast<std::uint64_t>(call.g)) + 1;
    call.classOf[i] = rare && random() % 6 != 0 ? 1 : any;
    if (badClass && random() % 8 == 0) call.classOf[i] = pick(0, -3, call.g + 1);
    if (allInModel || random() % 6 != 0) continue;
    call.inModel[i] = pick(0, 7, -1);
    call.classOf[i] = pick(0, 0, any, -5, call.g + 3, kLeast, kMost);
  }
  const bool holes = random() % 20 == 0, integers = random() % 3 == 0;
  for (std::ptrdiff_t j = 0; j < call.p; ++j) {
    const auto kind = random() % 24;
    const double apart = pick(0.0, 0.5, 1.0, 1.0, 6.0), unit = pick(1e160, 1e-150, 1e-155);
    for (std::ptrdiff_t i = 0; i < call.n; ++i) {
      const double cls = call.classOf[static_cast<std::size_t>(i)] % 8;
      call.cell(i, j) = kind == 0 && j > 0   ? call.cell(i, j / 2) * pick(1.0, 1.0, 2.0)
                        : kind == 1 && j > 1 ? call.cell(i, j - 1) + call.cell(i, j - 2)
                        : kind == 2          ? 3
                        : kind == 3          ? cls
                        : kind == 4          ? 0.1 * cls
                        : kind == 5          ? unit * normal(random)
                        : kind < 9 && j > 0  ? call.cell(i, j - 1) + (kind == 6 ? 0 : 1e-5 * normal(random))
                        : integers           ? pick(0, 1, 2, 4) + std::floor(apart) * cls
                                             : apart * cls + normal(random);
      if (holes && random() % 30 == 0)
        call.cell(i, j) = pick(std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity());
    }
  }
  call.selectMode = pick(0, 0, 0, 1, 1, 2, 2, 3, -1);
  call.nSelect = pick(-1, 0, 0, 1, 2, 3, 50, kLeast, kMost);
  call.method = pick(1, 1, 2);
  call.groups = pick(-1, 0, 0, 1, 2, 2, 3, 3, 5, 100, kLeast, kMost);
  call.fraction = pick(0.5F, 1.0F, 2.5F);
  return {call, static_cast<std::int32_t>(seed % 1000) + 1, pick(0, 0, 0, 1, 2, 4)};
}

}  // namespace studystats
