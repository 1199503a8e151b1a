// The symmetric eigensolver with vectors, beside the published loops and LAPACK's dsyev.

#include <cstdint>
#include <memory>
#include <random>

#include "bench/comparison.h"
#include "bench/lapack.h"
#include "numeric/eigen.h"
#include "tests/definition/eigen.h"

namespace studystats::bench {
namespace {

using Solver = void (*)(const std::int32_t*, const std::int32_t*, double*, double*, const std::int32_t*, double*,
                        double*, double*, std::int32_t*);

// One solver's arrays. With vectors the matrix is left as it is.
struct Problem {
  std::int32_t n, ierr = 0;
  Numbers a, w, z, work1, work2;

  explicit Problem(std::int32_t order) : n(order), w(length()), work1(w), work2(w) {
    std::mt19937_64 random(20240613);
    std::normal_distribution<double> normal;
    a.resize(length() * length());
    for (double& x : a) x = normal(random);
    z = a;
  }
  std::size_t length() const { return static_cast<std::size_t>(n); }

  void solve(Solver solver) {
    const std::int32_t wantVectors = 1;
    solver(&n, &n, a.data(), w.data(), &wantVectors, z.data(), work1.data(), work2.data(), &ierr);
  }
};

Comparison withVectors(std::int32_t n) {
  const auto ours = std::make_shared<Problem>(n), plain = std::make_shared<Problem>(n),
             lapack = std::make_shared<Problem>(n);
  const auto dsyev = std::make_shared<Dsyev>(n);
  return {.ours = {[=] { ours->solve(core::EigSym); }},
          .definition = {[=] { plain->solve(definition::eigSym); }},
          .other = {[=] { (*dsyev)(lapack->z.data(), lapack->w.data()); }, [=] { lapack->z = lapack->a; }},
          .sameBits = [=] { return sameBits(ours->w, plain->w) && sameBits(ours->z, plain->z); }};
}

const Registration kSmall(
    "EigSym with vectors, n = 20", [] { return withVectors(20); }, "dsyev");
const Registration kMiddle(
    "EigSym with vectors, n = 50", [] { return withVectors(50); }, "dsyev");
const Registration kCommon(
    "EigSym with vectors, n = 200", [] { return withVectors(200); }, "dsyev");
const Registration kLarge(
    "EigSym with vectors, n = 500", [] { return withVectors(500); }, "dsyev");

}  // namespace
}  // namespace studystats::bench
