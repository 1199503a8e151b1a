// The parts that a table's description is made of.
#pragma once

#include <studystats/host/describe.h>

#include "host/watch.h"

#include <optional>
#include <vector>

namespace studystats {

using DescribedColumns = std::vector<const TableView::Column*>;

constexpr double kRelated = 0.90;             // |r| beyond which a pair of columns is listed
constexpr std::size_t kMostRelated = 100000;  // pairs that a description holds

// The figures of one column. Sets `code` when its whole numbers look like labels: every number between the smallest and
// the largest occurs, at least four times on average, and all about equally often.
ColumnSummary describeColumn(const TableView::Column& column, bool& code);

// Why a numeric column has no such figure; null when it has.
const char* reasonFor(const ColumnSummary& column, const std::optional<double> ColumnSummary::*figure);

// Missing cells of numeric columns that have any value (the others take no part in an analysis).
void describeMissing(const DescribedColumns& numeric, Description& description);

// Columns that repeat another (in the rows where neither has a cell missing alone), and strong correlations.
void describeRelations(const DescribedColumns& numeric, Watch& watch, Description& description);

}  // namespace studystats
