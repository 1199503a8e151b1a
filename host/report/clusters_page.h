// The parts of a clustering's page that are made in files of their own.
#pragma once

#include <studystats/host/report.h>

#include <vector>

namespace studystats {

inline constexpr double kNoGroups = 0.25;  // Kaufman & Rousseeuw (1990), Finding Groups in Data: no structure below

// Of `rows`, `clusters` and `silhouettes`; what else they show is added to the data. `placed`: the rows have a place in
// the plane of the first two principal components.
std::vector<ReportFigure> clusterFigures(const Clusters& result, bool placed, std::vector<Table>& data);

}  // namespace studystats
