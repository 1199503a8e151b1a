// What a description's page shows beside the description: how the values of each column are spread, and correlations.
#pragma once

#include <studystats/host/report.h>

#include <string>
#include <vector>

namespace studystats {

// "histogram": column, low, high and count of each bin. Whole numbers within a short range have a bin each, others
// ceil(log2 n) + 1 bins of one width (Sturges 1926, Journal of the American Statistical Association 21, 65-66).
Table histogramData(const TableView& table, const std::vector<std::string>& columns);

// "correlations": first, second and r of every two, over the rows in which both are present; a full square.
Table correlationData(const TableView& table, const std::vector<std::string>& columns);

}  // namespace studystats
