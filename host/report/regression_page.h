// The parts of a regression's page that are made in files of their own.
#pragma once

#include <studystats/host/report.h>

#include <vector>

namespace studystats {

// Of its data, what the result has figures for.
std::vector<ReportFigure> regressionFigures(const Regression& result, const Table& rows, const Table& selection);

}  // namespace studystats
