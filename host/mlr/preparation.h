// What a regression is run on.
#pragma once

#include <studystats/host/regression.h>

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace studystats {

struct PreparedRegression {
  Prepared data;
  std::vector<double> response;    // of the model's rows
  std::vector<std::size_t> start;  // descriptors in the model at the start
  std::int32_t maxSteps = 0;
  RunFolds folds;
};

PreparedRegression prepareRegression(const TableView& table, const RegressionOptions& options, Watch& watch);

// The response of a row, absent when its cell is missing or its table has no such column.
std::optional<double> responseOf(const BlockRow& row, const std::string& response);

// The responses of the model's rows. Throws NotComputed when they, or those known of other rows, are too large or too
// small to calculate with.
std::vector<double> responsesOf(const Prepared& data, const std::string& response);

double sampleSd(std::span<const double> values);

}  // namespace studystats
