// A description as a page of plain text: missing cells, and columns that may be labels.
#include "host/describe/describe_text.h"

#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace studystats {
namespace {

const ColumnSummary& columnOf(const Description& description, const std::string& name) {
  return *std::find_if(description.columns.begin(), description.columns.end(),
                       [&](const ColumnSummary& column) { return column.name == name; });
}

// As the command line wants it: quoted when a shell would take it apart.
std::string forShell(const std::string& argument) {
  const auto plain = [](unsigned char c) {
    return std::isalnum(c) || c >= 0x80 ||
           std::string_view("_.,+-/:=@%").find(static_cast<char>(c)) != std::string::npos;
  };
  if (!argument.empty() && std::all_of(argument.begin(), argument.end(), plain)) return argument;
  std::string quoted = "'";
  for (const char c : argument) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// "Ozone 37, Solar.R 7, both in 2 rows."
std::string gapsText(const Description& description) {
  std::vector<const ColumnSummary*> gapped;
  for (const ColumnSummary& column : description.columns)
    if (column.kind == ColumnKind::Numeric && column.missing > 0 && column.count > 0 &&
        column.name != description.idColumn)
      gapped.push_back(&column);
  if (gapped.size() == 1) return ", all in " + gapped[0]->name + ".\n";

  std::stable_sort(gapped.begin(), gapped.end(),
                   [](const ColumnSummary* a, const ColumnSummary* b) { return a->missing > b->missing; });
  std::vector<std::string> counts;
  for (const ColumnSummary* column : gapped) counts.push_back(fmt::format("{} {}", column->name, column->missing));
  const std::string text = ": " + listed(counts);
  const auto& together = description.missingTogether;
  if (gapped.size() == 2)
    return text +
           (together.empty() ? ", never both.\n" : fmt::format(", both in {}.\n", counted(together[0].rows, "row")));
  if (together.empty()) return text + ".\n";
  std::vector<std::string> pairs;
  for (std::size_t i = 0; i < std::min<std::size_t>(together.size(), 3); ++i)
    pairs.push_back(
        fmt::format("{} and {} in {}", together[i].first, together[i].second, counted(together[i].rows, "row")));
  return text + fmt::format(".\nTogether: {}.\n", listed(pairs));
}

}  // namespace

std::string missingText(const Description& description) {
  if (description.cellsMissing == 0) return {};
  std::string text =
      fmt::format("{} in {}", counted(description.cellsMissing, "cell"), counted(description.rowsWithMissing, "row"));
  text += gapsText(description);

  const std::size_t complete = description.rows - description.rowsWithMissing;
  const bool refused = 2 * complete < description.rows;
  text += fmt::format("An analysis of all columns {} {} of {} rows (--missing drop-rows, the default)",
                      refused ? "is refused: it would keep" : "keeps", complete, description.rows);
  if (!description.withoutColumn.empty()) {
    const auto& best = description.withoutColumn.front();
    text += fmt::format(";\nwithout {} it {} {} (--exclude {})", best.column, refused ? "would keep" : "keeps",
                        best.rowsKept, forShell(best.column));
  }
  return wrapped("Missing     ", text + ".");
}

std::string codesText(const Description& description) {
  if (description.codes.empty()) return {};
  std::string names, list;
  for (std::size_t i = 0; i < description.codes.size(); ++i) {
    const ColumnSummary& column = columnOf(description, description.codes[i]);
    names += fmt::format("{}{} ({}{})",
                         i == 0                             ? ""
                         : i + 1 < description.codes.size() ? ", "
                                                            : " and ",
                         column.name, column.different, i == 0 ? " different whole numbers" : "");
    list += (i > 0 ? "," : "") + column.name;
  }
  const bool one = description.codes.size() == 1;
  return wrapped("Codes?      ", fmt::format("{} would count as {};\nleave {} out with --exclude {} if {} the rows.",
                                             names, one ? "a descriptor" : "descriptors", one ? "it" : "them",
                                             forShell(list), one ? "it only labels" : "they only label"));
}

}  // namespace studystats
