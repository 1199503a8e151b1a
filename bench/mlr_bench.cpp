// Stepwise regression with its selection cross-validated, beside the plain transcription of the same steps.

#include <cstdint>
#include <memory>
#include <random>

#include "bench/comparison.h"
#include "tests/analyses/mlr_call.h"
#include "tests/definition/mlr.h"

namespace studystats::bench {
namespace {

// Independent descriptors, of which every seventh has some say; F limits so low that every step enters one.
MlrCall regression(std::int32_t n, std::int32_t nDescriptors, std::int32_t steps, std::int32_t folds) {
  MlrCall call(n, nDescriptors + 1);
  std::mt19937_64 random(20240614);
  std::normal_distribution<double> normal;
  for (double& value : call.data) value = normal(random);
  for (std::ptrdiff_t j = 0; j < nDescriptors; j += 7)
    for (std::ptrdiff_t i = 0; i < n; ++i) call.cell(i, nDescriptors) += call.cell(i, j) / static_cast<double>(j + 1);
  call.fEnter = call.fRemove = 0.001F;
  call.corrLimit = 0.9F;
  call.maxSteps = steps;
  call.groups = folds;
  return call;
}

Comparison selection(std::int32_t n, std::int32_t nDescriptors, std::int32_t steps, std::int32_t folds) {
  const auto fresh = std::make_shared<MlrCall>(regression(n, nDescriptors, steps, folds));
  fresh->clearOutputs();
  const auto ours = std::make_shared<MlrCall>(*fresh), plain = std::make_shared<MlrCall>(*fresh);
  return {.ours = {[=] { ours->call(MulReg); }, [=] { *ours = *fresh; }},
          .definition = {[=] { plain->call(definition::mulReg); }, [=] { *plain = *fresh; }},
          .sameBits = [=] { return ours->status() == 0 && differences(*ours, *plain).empty(); }};
}

const Registration kSmall("MulReg, 60 x 30, leave-one-out", [] { return selection(60, 30, 5, 0); });
const Registration kUsual("MulReg, 200 x 300, 10 folds", [] { return selection(200, 300, 10, 10); });
const Registration kLong("MulReg, 5000 x 300, 7 folds", [] { return selection(5000, 300, 10, 7); });

}  // namespace
}  // namespace studystats::bench
