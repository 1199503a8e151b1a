// Means and cross-products beside the plain triple loop.

#include <cstdint>
#include <memory>
#include <random>

#include "bench/comparison.h"
#include "numeric/cross_products.h"
#include "tests/definition/cross_products.h"

namespace studystats::bench {
namespace {

using Routine = void (*)(const double*, const std::int32_t*, const std::int32_t*, const std::int32_t*,
                         const std::int32_t*, double*, double*);

struct Products {
  std::int32_t n, p;
  Numbers x, c, means;

  Products(std::int32_t rows, std::int32_t columns)
      : n(rows),
        p(columns),
        x(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns)),
        c(static_cast<std::size_t>(columns) * static_cast<std::size_t>(columns)),
        means(static_cast<std::size_t>(columns)) {
    std::mt19937_64 random(20240614);
    std::normal_distribution<double> normal(3, 1);
    for (double& value : x) value = normal(random);
  }
  void form(Routine routine) { routine(x.data(), &n, &p, &n, &p, c.data(), means.data()); }
};

Comparison crossProducts(std::int32_t n, std::int32_t p) {
  const auto ours = std::make_shared<Products>(n, p), plain = std::make_shared<Products>(n, p);
  return {.ours = {[=] { ours->form(core::CrsPrd); }},
          .definition = {[=] { plain->form(definition::crossProducts); }},
          .sameBits = [=] { return sameBits(ours->c, plain->c) && sameBits(ours->means, plain->means); }};
}

const Registration kSmall("CrsPrd, 100 x 20", [] { return crossProducts(100, 20); });
const Registration kLarge("CrsPrd, 5000 x 300", [] { return crossProducts(5000, 300); });

}  // namespace
}  // namespace studystats::bench
