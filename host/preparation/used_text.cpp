#include "host/preparation/used_text.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace studystats {
namespace {

constexpr std::size_t kNamed = 8;  // columns that a line names before it counts the rest

// "cultivar (text), a, b (excluded)": names joined by reason, in the order in which reasons first appear.
std::string byReason(const std::vector<Dropped>& dropped) {
  std::vector<std::string> reasons;
  std::map<std::string, std::vector<std::string>> names;
  for (const Dropped& column : dropped) {
    if (!names.contains(column.reason)) reasons.push_back(column.reason);
    names[column.reason].push_back(column.name);
  }
  std::vector<std::string> parts;
  for (const std::string& reason : reasons)
    parts.push_back(fmt::format("{} ({})", listed(names[reason], kNamed), reason));
  return fmt::format("{}", fmt::join(parts, "; "));
}

std::vector<Dropped> withoutRowNames(const UsedData& used) {
  std::vector<Dropped> columns;
  std::copy_if(used.droppedColumns.begin(), used.droppedColumns.end(), std::back_inserter(columns),
               [&](const Dropped& column) { return column.name != used.idColumn; });
  return columns;
}

}  // namespace

std::string describedScaling(Scaling scaling) {
  switch (scaling) {
    case Scaling::Autoscale:
      return "autoscaled (mean 0, sd 1)";
    case Scaling::Pareto:
      return "Pareto-scaled (mean 0, divided by the root of the sd)";
    case Scaling::Range:
      return "range-scaled (-1 ... 1)";
    case Scaling::Centre:
      return "centred";
    case Scaling::None:
      return "not scaled";
  }
  return {};
}

std::string shownTable(const UsedData& used) { return used.table.substr(used.table.find_last_of('/') + 1); }

std::string shownRow(const UsedData& used, const std::string& name) {
  const bool number =
      !name.empty() && std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
  return used.idColumn.empty() && number ? "row " + name : name;
}

std::string sameAs(const SameInformation& same) {
  const std::string magnitude = std::abs(same.scale) == 1 ? std::string() : exact(std::abs(same.scale)) + " * ";
  if (same.shift == 0)
    return fmt::format("{} = {}{}{}", same.setAside, same.scale < 0 ? "-" : "", magnitude, same.kept);
  return fmt::format("{} = {} {} {}{}", same.setAside, exact(same.shift), same.scale < 0 ? "-" : "+", magnitude,
                     same.kept);
}

std::string leftOutText(const UsedData& used) {
  std::string text;
  std::vector<std::string> missing, others;
  for (const Dropped& row : used.droppedRows) {
    const std::string name = shownRow(used, row.name);
    if (row.reason.starts_with("missing"))
      missing.push_back(name);
    else
      others.push_back(fmt::format("{} ({})", name, row.reason));
  }
  if (!missing.empty())
    text += wrapped("Rows dropped: ", fmt::format("{} of {} for missing cells ({})", missing.size(),
                                                  used.rowCounts.requested, listed(missing)));
  if (!others.empty()) text += wrapped("Rows set aside: ", listed(others));
  if (!used.predictedRows.empty()) text += wrapped("Rows kept out: ", listed(used.predictedRows));
  if (!used.setAside.empty()) {
    std::vector<std::string> repeats;
    for (const SameInformation& same : used.setAside) repeats.push_back(sameAs(same));
    text += wrapped("Set aside: ", listed(repeats));
  }
  if (!used.formulas.empty()) text += wrapped("Made: ", listed(used.formulas));
  const std::vector<Dropped> columns = withoutRowNames(used);
  std::string last = columns.empty() ? std::string() : "Not used: " + byReason(columns) + ".";
  if (!used.idColumn.empty()) last += (last.empty() ? "" : "  ") + ("Row names: " + used.idColumn);
  return last.empty() ? text : text + wrapped("", last);
}

std::string explainedData(const UsedData& used) {
  std::string text = wrapped("table         ",
                             fmt::format("{}, {}, {}; {}", used.table, counted(used.tableRows, "row", "rows"),
                                         counted(used.tableColumns, "column", "columns"),
                                         used.idColumn.empty() ? "rows are numbered" : "row names: " + used.idColumn));
  text += wrapped("descriptors   ", fmt::format("{}: {}; {}", used.descriptors.size(), listed(used.descriptors, 6),
                                                describedScaling(used.scaling)));
  text += wrapped("rows          ", fmt::format("{} used, {} dropped, {} predicted only", used.rows.size(),
                                                used.droppedRows.size(), used.predictedRows.size()));
  const std::vector<Dropped> columns = withoutRowNames(used);
  if (!columns.empty()) text += wrapped("not used      ", byReason(columns));
  for (const SameInformation& same : used.setAside) text += wrapped("set aside     ", sameAs(same));
  for (const std::string& formula : used.formulas) text += wrapped("made          ", formula);
  return text;
}

std::string explainedRemarks(const std::vector<Remark>& remarks) {
  std::string text;
  for (const Remark& remark : remarks)  // what was set aside has its own lines
    if (remark.code != "duplicate-columns" && remark.code != "constant-columns")
      text += wrapped("remark        ", remark.text);
  return text;
}

}  // namespace studystats
