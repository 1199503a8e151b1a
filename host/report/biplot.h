// Scores and loadings in one figure: the rows as points, descriptors as arrows with their names.
#pragma once

#include <studystats/host/report.h>

#include <vector>

namespace studystats {

// "arrows": the longest loadings on the first two components, or some along descriptors with an order of their own,
// drawn out as far as the scores reach, and the heights of their names, kept a line apart on either side. For results
// of two components and more.
Table arrowsOf(const PrincipalComponents& result);

ReportFigure biplot(const PrincipalComponents& result, const Table& arrows);

// Places moved so that they lie at least `gap` apart in the same order, by the least sum of squares.
std::vector<double> spreadOut(const std::vector<double>& places, double gap);

}  // namespace studystats
