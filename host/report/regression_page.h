// The parts of a regression's page that are made in files of their own.
#pragma once

#include <studystats/host/report.h>

#include <vector>

namespace studystats {

// Of `rows`, `coefficients`, `selection` and `steps`, what the result has figures for.
std::vector<ReportFigure> regressionFigures(const Regression& result, const std::vector<Table>& data);

// The part of the response's sum of squares that the model explains after each step.
std::vector<double> r2OfSteps(const Regression& result);

}  // namespace studystats
