// The data card in words, for every summary.
#pragma once

#include <studystats/host/data.h>

#include <string>
#include <vector>

namespace studystats {

std::string describedScaling(Scaling scaling);                        // "autoscaled (mean 0, sd 1)"
std::string shownTable(const UsedData& used);                         // "wine.csv", without its folder
std::string shownRow(const UsedData& used, const std::string& name);  // "wine 12", or "row 12" where rows are numbered
std::string leftOutText(const UsedData& used);                        // "Not used: ...", "Row names: ..."
std::string explainedData(const UsedData& used);                      // the first lines of --explain
std::string explainedRemarks(const std::vector<Remark>& remarks);     // its last lines
std::string sameAs(const SameInformation& same);                      // "fpsa1 = 1 - fnsa1"

}  // namespace studystats
