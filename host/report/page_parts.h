// What the pages of all analyses have in common: the data card, remarks with their anchors, how to read the frame.
#pragma once

#include <studystats/host/report.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace studystats {

constexpr const char* kCardAnchor = "data-card";

// Remarks, warnings first; each linked to the figure or table that `anchors` gives for its code, else to the data card.
std::vector<ReportRemark> anchored(const std::vector<Remark>& remarks,
                                   std::initializer_list<std::pair<const char*, const char*>> anchors);

// Rows, columns, what was dropped and why, preparation; then what `own` adds; then command, version, digest and date.
std::vector<ReportEntry> dataCard(const UsedData& used, const std::vector<ReportEntry>& own,
                                  const ReportContext& context);

std::vector<ReportEntry> madeBy(const ReportContext& context);  // command, version, digest and date

// A note for pages whose rows are too many to be drawn.
void remarkOnSampling(std::size_t rows, ReportPage& page);

std::string nameOfTable(const UsedData& used);  // "wine.csv", without its folder
std::string rowHeading(const UsedData& used);   // the column that names the rows

// R², q² and the like: as many decimals as tell them from 1, and a true minus sign.
std::string explainedText(double value);

// A column of numbers of which three to four figures are shown at the size of their spread.
ReportColumn columnOfSize(std::string field, std::string heading, double spread);

// "bloodbrain.csv: 208 rows, 131 descriptors"
std::string madeFrom(const UsedData& used);

}  // namespace studystats
