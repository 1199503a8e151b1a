// What partial least squares is run on.
#pragma once

#include <studystats/host/partial_least_squares.h>

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <cstddef>
#include <vector>

namespace studystats {

struct PreparedPls {
  Prepared data;
  Grid block;                                  // model rows x descriptors, then responses: mean 0, scaled
  std::vector<double> means, scales;           // of the block's columns, table units: prepared = (value - mean) / scale
  std::vector<std::vector<double>> responses;  // of the model's rows, table units
  int components = 0;                          // as rows and columns allow
  RunFolds folds;

  std::size_t descriptors() const { return data.model.columns; }
};

PreparedPls preparePls(const TableView& table, const PartialLeastSquaresOptions& options, Watch& watch);

}  // namespace studystats
