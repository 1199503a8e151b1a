// What folds said of rows while they held them out; one type for every analysis that is validated.
#pragma once

#include <cstddef>
#include <vector>

namespace studystats {

struct HeldOut {
  std::size_t fold = 0;        // from 1
  std::vector<double> values;  // predictions, one a response and number of components; or distances to classes
  std::size_t group = 0;       // the class predicted, from 0
};

using HeldOutRows = std::vector<std::vector<HeldOut>>;  // by row of the model: once a fold that held it out

}  // namespace studystats
