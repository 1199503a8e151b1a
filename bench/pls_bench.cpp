// Partial least squares cross-validated, beside the plain transcription, whose coefficients are predictions of unit
// vectors.

#include <cstdint>
#include <memory>
#include <random>

#include "bench/comparison.h"
#include "tests/analyses/pls_call.h"
#include "tests/definition/pls.h"

namespace studystats::bench {
namespace {

// Five latent variables, which all columns share in falling proportion, and noise.
PlsCall latentVariables(std::int32_t n, std::int32_t p, std::int32_t nComponents, std::int32_t folds) {
  constexpr std::ptrdiff_t kLatent = 5;
  PlsCall call(n, p, 1, nComponents);
  std::mt19937_64 random(20240614);
  std::normal_distribution<double> normal;
  for (double& value : call.data) value = normal(random);
  Numbers latent(static_cast<std::size_t>(n * kLatent));
  for (double& value : latent) value = normal(random);
  for (std::ptrdiff_t j = 0; j <= p; ++j)
    for (std::ptrdiff_t f = 0; f < kLatent; ++f) {
      const double share = 3 * normal(random) / static_cast<double>(f + 1);
      for (std::ptrdiff_t i = 0; i < n; ++i) call.cell(i, j) += share * latent[static_cast<std::size_t>(f * n + i)];
    }
  call.centre(false);
  call.groups = folds;
  call.keepAll = 1;
  call.clearOutputs();
  return call;
}

// Everything that the definition gives operation by operation has its bits; the coefficients agree to rounding.
Comparison validation(std::int32_t n, std::int32_t p, std::int32_t nComponents, std::int32_t folds) {
  const auto ours = std::make_shared<PlsCall>(latentVariables(n, p, nComponents, folds));
  const auto plain = std::make_shared<PlsCall>(*ours);
  return {
      .ours = {[=] { ours->call(PlsAnl); }}, .definition = {[=] { plain->call(definition::plsAnl); }}, .sameBits = [=] {
        return ours->status() == 0 && differences(*ours, *plain).empty() &&
               relativeDifference(ours->coefs, plain->coefs) <= 1e-12;
      }};
}

const Registration kSpectra("PlsAnl, 60 x 401, leave-one-out", [] { return validation(60, 401, 8, 0); });
const Registration kWide("PlsAnl, 50 x 5000, leave-one-out", [] { return validation(50, 5000, 10, 0); });
const Registration kLong("PlsAnl, 20000 x 200, 10 folds", [] { return validation(20000, 200, 10, 10); });

}  // namespace
}  // namespace studystats::bench
