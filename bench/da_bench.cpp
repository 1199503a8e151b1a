// Discriminant analysis with its selection cross-validated, beside the plain transcription of the same steps.

#include <cstdint>
#include <memory>
#include <random>

#include "bench/comparison.h"
#include "tests/analyses/da_call.h"
#include "tests/definition/da.h"

namespace studystats::bench {
namespace {

constexpr std::int32_t kStepwise = 0, kToCount = 1, kAllVariables = 2;

// Classes that lie half a standard deviation apart in every fifth variable; the others are noise.
DaCall classified(std::int32_t n, std::int32_t p, std::int32_t g, std::int32_t selectMode, std::int32_t folds) {
  DaCall call(n, p, g);
  std::mt19937_64 random(20240614);
  std::normal_distribution<double> normal;
  for (std::int32_t i = 0; i < n; ++i) call.classOf[static_cast<std::size_t>(i)] = i % g + 1;
  for (std::ptrdiff_t j = 0; j < p; ++j)
    for (std::ptrdiff_t i = 0; i < n; ++i)
      call.cell(i, j) = normal(random) + (j % 5 == 0 ? 0.5 * static_cast<double>((i + j / 5) % g) : 0.0);
  call.selectMode = selectMode;
  call.groups = folds;
  return call;
}

Comparison validated(const DaCall& call) {
  const auto fresh = std::make_shared<DaCall>(call);
  fresh->clearOutputs();
  const auto ours = std::make_shared<DaCall>(*fresh), plain = std::make_shared<DaCall>(*fresh);
  return {.ours = {[=] { ours->call(DisAnl); }, [=] { *ours = *fresh; }},
          .definition = {[=] { plain->call(definition::disAnl); }, [=] { *plain = *fresh; }},
          .sameBits = [=] { return ours->status() == 0 && differences(*ours, *plain).empty(); }};
}

// With two classes every candidate classifies all samples.
const Registration kTwoClasses("DisAnl, 300 x 50 x 2, stepwise, 10 folds",
                               [] { return validated(classified(300, 50, 2, kStepwise, 10)); });
const Registration kUsual("DisAnl, 300 x 50 x 3, stepwise, 10 folds",
                          [] { return validated(classified(300, 50, 3, kStepwise, 10)); });
const Registration kLeaveOneOut("DisAnl, 1000 x 30 x 3, leave-one-out",
                                [] { return validated(classified(1000, 30, 3, kAllVariables, 0)); });
const Registration kLarge("DisAnl, 2000 x 100 x 5, 8 steps, 7 folds", [] {
  DaCall call = classified(2000, 100, 5, kToCount, 7);
  call.nSelect = 8;
  return validated(call);
});

}  // namespace
}  // namespace studystats::bench
