#include "host/report/page_parts.h"

#include "host/preparation/used_text.h"
#include "host/report/data.h"
#include "host/result/common.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace studystats {
namespace {

constexpr std::size_t kNamed = 40;  // rows or columns that the card names before it counts the rest

// "3 for missing cell in Ozone (5, 25, 26)": grouped by reason, in the order in which reasons first appear.
std::string byReason(const std::vector<Dropped>& dropped) {
  std::vector<std::string> reasons;
  std::map<std::string, std::vector<std::string>> names;
  for (const Dropped& one : dropped) {
    if (!names.contains(one.reason)) reasons.push_back(one.reason);
    names[one.reason].push_back(one.name);
  }
  std::string text;
  for (const std::string& reason : reasons)
    text += fmt::format("{}{} – {}: {}", text.empty() ? "" : "\n", names[reason].size(), reason,
                        listed(names[reason], kNamed));
  return text;
}

std::string rowsText(const UsedData& used) {
  std::string text = fmt::format("{} used of {} in the table", used.rows.size(), used.tableRows);
  if (!used.predictedRows.empty())
    text += fmt::format("\n{} only predicted: {}", used.predictedRows.size(), listed(used.predictedRows, kNamed));
  return text;
}

std::string preparationText(const UsedData& used) {
  std::string text = describedScaling(used.scaling);
  if (used.cellsFilled > 0)
    text += fmt::format("\n{} filled", counted(used.cellsFilled, "missing cell", "missing cells"));
  for (const std::string& formula : used.formulas) text += "\n" + formula;
  return text;
}

}  // namespace

std::vector<ReportRemark> anchored(const std::vector<Remark>& remarks,
                                   std::initializer_list<std::pair<const char*, const char*>> anchors) {
  std::vector<ReportRemark> list;
  for (const Severity severity : {Severity::Warning, Severity::Note})
    for (const Remark& remark : remarks) {
      const bool said = std::any_of(list.begin(), list.end(),
                                    [&](const ReportRemark& other) { return other.remark.text == remark.text; });
      if (remark.severity != severity || said) continue;
      const auto* anchor =
          std::find_if(anchors.begin(), anchors.end(), [&](const auto& entry) { return remark.code == entry.first; });
      list.push_back({remark, anchor == anchors.end() ? kCardAnchor : anchor->second});
    }
  return list;
}

std::vector<ReportEntry> dataCard(const UsedData& used, const std::vector<ReportEntry>& own,
                                  const ReportContext& context) {
  std::vector<ReportEntry> card{
      {"Table", fmt::format("{}: {}, {}", used.table, counted(used.tableRows, "row", "rows"),
                            counted(used.tableColumns, "column", "columns"))},
      {"Rows", rowsText(used)},
      {"Row names", used.idColumn.empty() ? "rows are numbered" : used.idColumn},
      {"Descriptors", fmt::format("{}: {}", used.descriptors.size(), listed(used.descriptors, kNamed))}};
  if (!used.droppedRows.empty()) card.push_back({"Rows dropped", byReason(used.droppedRows)});
  if (!used.droppedColumns.empty()) card.push_back({"Columns not used", byReason(used.droppedColumns)});
  if (!used.setAside.empty()) {
    std::vector<std::string> repeats;
    for (const SameInformation& same : used.setAside) repeats.push_back(sameAs(same));
    card.push_back({"Repeats set aside", listed(repeats, kNamed)});
  }
  card.push_back({"Preparation", preparationText(used)});
  card.insert(card.end(), own.begin(), own.end());
  const std::vector<ReportEntry> made = madeBy(context);
  card.insert(card.end(), made.begin(), made.end());
  return card;
}

std::vector<ReportEntry> madeBy(const ReportContext& context) {
  std::vector<ReportEntry> card;
  if (!context.command.empty()) card.push_back({"Command", context.command});
  card.push_back({"Version", "studystats " + version()});
  if (!context.digest.empty()) card.push_back({"Digest of the table", context.digest});
  if (!context.date.empty()) card.push_back({"Date", context.date});
  return card;
}

void remarkOnSampling(std::size_t rows, ReportPage& page) {
  if (rows <= kMostReportRows) return;
  page.remarks.push_back({{Severity::Note,
                           "rows-sampled",
                           fmt::format("figures and the list of rows show {}; every other figure is of all rows. "
                                       "--output FILE writes them all.",
                                       samplingText(rows)),
                           {}},
                          "rows"});
}

std::string explainedText(double value) { return (value < 0 ? "−" : "") + explained(std::abs(value)); }

ReportColumn columnOfSize(std::string field, std::string heading, double spread) {
  const double decimals = 2 - std::floor(std::log10(spread));
  if (decimals > 12) return {std::move(field), std::move(heading), CellKind::Number, 4};
  return {std::move(field), std::move(heading), CellKind::Fixed, static_cast<int>(std::max(0.0, decimals))};
}
std::string nameOfTable(const UsedData& used) { return shownTable(used); }

std::string rowHeading(const UsedData& used) { return headingOfRows(used); }

std::string madeFrom(const UsedData& used) {
  return fmt::format("{}: {}, {}", shownTable(used), counted(used.rows.size(), "row", "rows"),
                     counted(used.descriptors.size(), "descriptor", "descriptors"));
}

}  // namespace studystats
