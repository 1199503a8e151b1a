// What discriminant analysis is run on.
#pragma once

#include <studystats/host/discriminant.h>

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <cstdint>
#include <string>
#include <vector>

namespace studystats {

struct PreparedDiscriminant {
  Prepared data;
  std::vector<std::int32_t> classOf;    // of the model's rows, from 1
  std::vector<std::string> classNames;  // in their order
  std::vector<std::size_t> classSizes;
  RunFolds folds;

  std::size_t classes() const { return classNames.size(); }
};

PreparedDiscriminant prepareDiscriminant(const TableView& table, const DiscriminantOptions& options, Watch& watch);

}  // namespace studystats
