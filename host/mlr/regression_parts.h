// What a regression's result holds: its tables and groups of figures.
#pragma once

#include <studystats/host/regression.h>

#include "host/result/part.h"

#include <string>
#include <vector>

namespace studystats {

ResultPart regressionParts(const Regression& result);  // all of it

ResultPart coefficientsPart(const Regression& result);
ResultPart stepsPart(const Regression& result);
ResultPart selectionFrequencyPart(const Regression& result);  // the most often chosen first
ResultPart regressionRowsPart(const Regression& result);
ResultPart fitPart(const RegressionFit& fit);
ResultPart validationPart(const Regression& result);

bool stepwise(const Regression& result);

// In words, for pages and, in plain ASCII, for text.
std::string foldsText(const Regression& result);                // "7 folds, selection repeated in each"
std::string selectionText(const Regression& result);            // "F-to-enter 4, F-to-remove 3.9, ..."
std::vector<std::string> fitFigures(const Regression& result);  // "F(10, 197) = 33.5", "p < 0.0001", ...

// "fitted | cross-validated"; an abandoned validation shows no figure at all.
ReportFrame regressionFrame(const Regression& result);

}  // namespace studystats
