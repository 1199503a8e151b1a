// From a table to the block of numbers that an analysis is given.
//
// Order of work: columns and rows asked for; transforms; missing cells; derived columns; rows only predicted set apart;
// constants and repeats set aside, in the table's own numbers; means and scales from the model's rows alone.
#pragma once

#include <studystats/host/data.h>

#include "host/preparation/block.h"
#include "host/watch.h"

#include <cstdint>
#include <vector>

namespace studystats {

struct Prepared {
  UsedData used;
  std::vector<Remark> remarks;
  std::vector<BlockRow> modelRows;
  std::vector<BlockRow> predictedRows;
  Grid model;      // model rows x descriptors, prepared
  Grid predicted;  // predicted rows x descriptors, prepared with the model's means and scales
};

Prepared prepare(const TableView& table, const Roles& roles, const DataOptions& options, Watch& watch);

// Throws NotComputed when no descriptor is left. varies: where one has to vary ("over the rows").
void requireDescriptors(const Prepared& prepared, const TableView& table, const char* varies);

// The class or response text of each row; empty where its table lacks the column or the cell.
std::vector<std::string> labelsOf(const std::vector<BlockRow>& rows, const std::string& columnName);

// A size as the library's 32-bit count; throws NotComputed when it is too large.
std::int32_t count32(std::size_t n);

const char* nameOf(Scaling scaling);  // "autoscale", as the command spells it

}  // namespace studystats
