// Prepared partial least squares run by the engine: the components of all rows, and the same in every fold.
#pragma once

#include <studystats/host/partial_least_squares.h>

#include "host/held_out.h"
#include "host/pls/latent_structure.h"
#include "host/pls/preparation.h"
#include "host/watch.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace studystats {

// Sums of squares and coefficients of models with 1, 2, ... components, of prepared descriptors and responses.
struct PlsRun {
  std::size_t descriptors = 0, components = 0, responses = 0;
  std::vector<double> coefficients, errors;  // descriptor, component, response
  std::vector<double> press, rss;            // component, response
  std::vector<double> tss;                   // response
  LatentStructure structure;
  FoldPlan plan;
  HeldOutRows heldOut;             // values: component, response; table units
  std::vector<std::size_t> ranks;  // components that the training rows of each fold hold

  std::size_t at(std::size_t a, std::size_t k) const { return a + k * components; }
  double coefficient(std::size_t j, std::size_t a, std::size_t k) const {
    return coefficients[j + at(a, k) * descriptors];
  }
  double error(std::size_t j, std::size_t a, std::size_t k) const { return errors[j + at(a, k) * descriptors]; }
  // The leading components whose root of PRESS(a) / RSS(a - 1) is within the limit for some response; one at least.
  std::size_t keptByRatio(double limit) const;
};

// Progress goes from `from` to `to` percent. Throws NotComputed when a component does not converge.
PlsRun runPls(const PreparedPls& prepared, Watch& watch, double from, double to);

// Sums of squared prediction errors by the first `components` of every fold's model when each fold is centred on its
// own training rows, one a response, in the block's units.
std::vector<double> pressCentredInside(const PreparedPls& prepared, int components, Watch& watch, double from,
                                       double to);

}  // namespace studystats
