// A description as a page of plain text: what to look at before modelling.
#include "host/describe_text.h"

#include "host/describe.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace studystats {
namespace {

constexpr double kNearlySame = 0.9999;  // |r| from which a pair is named though it is not the same
constexpr double kVeryRelated = 0.95;
constexpr std::size_t kListed = 8;       // findings of a kind, unless all are asked for
constexpr std::size_t kNamedPairs = 4;   // correlated pairs that are named rather than counted
constexpr std::size_t kShortNumber = 6;  // characters of a number that makes a readable formula

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

// Three decimals, or as many as keep it from reading 1: 0.987, 0.99997.
std::string correlationText(double r) {
  int decimals = 3;
  while (decimals < 12 && std::abs(r) < 1 && std::abs(std::round(r * std::pow(10, decimals))) == std::pow(10, decimals))
    ++decimals;
  return std::abs(r) < 1 ? fixed(r, decimals) : fixed(r, 0);
}

// "1 - x", "0.001 * x"; empty when its numbers are long.
std::string expression(double shift, double scale, const std::string& name) {
  const std::string magnitude = exact(std::abs(scale)), constant = exact(shift);
  const bool unit = std::abs(scale) == 1;
  if ((!unit && magnitude.size() > kShortNumber) || constant.size() > (unit ? 2 : 1) * kShortNumber) return {};
  const std::string term = unit ? name : magnitude + " * " + name;
  if (shift == 0) return (scale < 0 ? "-" : "") + term;
  return constant + (scale < 0 ? " - " : " + ") + term;
}

// Two columns that say the same, as short as can be; `rank` 0 for equal ones, 1 with a formula, 2 without.
std::string sameText(const SameInformation& same, int& rank) {
  rank = same.scale == 1 && same.shift == 0 ? 0 : 1;
  const double inverse = 1 / same.scale;
  const std::string ofKept = expression(same.shift == 0 ? 0.0 : -same.shift * inverse, inverse, same.setAside);
  const std::string ofSetAside = expression(same.shift, same.scale, same.kept);
  if (!ofKept.empty() && (ofSetAside.empty() || ofKept.size() <= ofSetAside.size())) return same.kept + " = " + ofKept;
  if (!ofSetAside.empty()) return same.setAside + " = " + ofSetAside;
  rank = 2;
  return same.kept + " ~ " + same.setAside;
}

// Equal columns first, then formulas, then proportional ones, then those that differ a little.
std::vector<std::string> sameColumns(const Description& description) {
  std::vector<std::string> items[3];
  std::unordered_set<std::string> setAside;
  for (const SameInformation& same : description.same) {
    int rank = 0;
    const std::string text = sameText(same, rank);
    items[rank].push_back(text);
    setAside.insert(same.setAside);
  }
  std::vector<std::string> all;
  for (const auto& ranked : items) all.insert(all.end(), ranked.begin(), ranked.end());
  for (const RelatedColumns& pair : description.related)
    if (std::abs(pair.r) >= kNearlySame && !setAside.contains(pair.first) && !setAside.contains(pair.second))
      all.push_back(fmt::format("{} ~ {} (r {})", pair.first, pair.second, correlationText(pair.r)));
  return all;
}

std::vector<std::string> almostNumeric(const Description& description) {
  std::vector<std::string> items;
  for (const ColumnSummary& column : description.columns) {
    if (column.strayCount == 0) continue;
    std::string cells;
    for (std::size_t i = 0; i < std::min<std::size_t>(column.strays.size(), 2); ++i) {
      const StrayCell& stray = column.strays[i];
      cells += fmt::format("{} {} {}, \"{}\"", i == 0 ? ":" : ";", stray.line > 0 ? "line" : "row",
                           stray.line > 0 ? stray.line : static_cast<std::int64_t>(stray.row + 1), stray.text);
    }
    items.push_back(fmt::format("{} ({} of {} cells{})", column.name, column.strayCount, column.count, cells));
  }
  return items;
}

// "negative (207 of 208 rows equal), alert (206), a_acid, vsa_acid (201)"
std::vector<std::string> hardlyVarying(const Description& description) {
  std::unordered_map<std::string_view, const ColumnSummary*> byName;
  for (const ColumnSummary& column : description.columns) byName[column.name] = &column;
  std::vector<std::string> items;
  const auto& names = description.hardlyVary;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const ColumnSummary& column = *byName[names[i]];
    const ColumnSummary* next = i + 1 < names.size() ? byName[names[i + 1]] : nullptr;
    const bool sameAsNext = next && next->mostCommon == column.mostCommon && next->count == column.count;
    std::string share;
    if (i == 0 || column.count != byName[names[0]]->count)
      share = fmt::format(" ({} of {} rows equal)", column.mostCommon, column.count);
    else if (!sameAsNext)
      share = fmt::format(" ({})", column.mostCommon);
    items.push_back(names[i] + share);
  }
  return items;
}

std::vector<std::string> related(const Description& description, bool all) {
  const std::size_t total = description.related.size();
  const auto very = static_cast<std::size_t>(
      std::count_if(description.related.begin(), description.related.end(),
                    [](const RelatedColumns& pair) { return std::abs(pair.r) > kVeryRelated; }));
  const auto pairs = [&](std::size_t n, const char* what) {
    return (n == kMostRelated ? "at least " : "") + counted(n, "pair") + what;
  };
  std::vector<std::string> items;
  if (very > 0) items.push_back(pairs(very, " of columns with |r| > 0.95"));
  if (total > very) items.push_back(pairs(total, very > 0 ? " with |r| > 0.90" : " of columns with |r| > 0.90"));
  if (total > kNamedPairs && !all) return items;
  for (const RelatedColumns& pair : description.related)
    items.push_back(fmt::format("{} and {} (r {})", pair.first, pair.second, correlationText(pair.r)));
  return items;
}

std::string finding(std::string_view what, std::vector<std::string> items, std::string_view separator, bool all) {
  if (items.empty()) return {};
  if (!all && items.size() > kListed + 1) {
    const std::size_t more = items.size() - kListed;
    items.resize(kListed);
    items.push_back(fmt::format("{} more", more));
  }
  return wrappedItems(fmt::format("  {:<18} ", what), items, separator);
}

}  // namespace

std::string missingText(const Description& description) {
  if (description.cellsMissing == 0) return {};
  std::vector<const ColumnSummary*> gapped;
  for (const ColumnSummary& column : description.columns)
    if (column.kind == ColumnKind::Numeric && column.missing > 0 && column.count > 0 &&
        column.name != description.idColumn)
      gapped.push_back(&column);
  std::stable_sort(gapped.begin(), gapped.end(),
                   [](const ColumnSummary* a, const ColumnSummary* b) { return a->missing > b->missing; });
  std::vector<std::string> counts;
  for (const ColumnSummary* column : gapped) counts.push_back(fmt::format("{} {}", column->name, column->missing));

  std::string text =
      fmt::format("{} in {}", counted(description.cellsMissing, "cell"), counted(description.rowsWithMissing, "row"));
  const auto& together = description.missingTogether;
  if (gapped.size() == 1)
    text += ", all in " + gapped[0]->name;
  else
    text += ": " + listed(counts);
  if (gapped.size() == 2) text += together.empty() ? ", never both" : ", both in " + counted(together[0].rows, "row");
  text += ".\n";
  if (gapped.size() > 2 && !together.empty()) {
    text += "Together: ";
    for (std::size_t i = 0; i < std::min<std::size_t>(together.size(), 3); ++i)
      text += fmt::format("{}{} and {} in {}", i > 0 ? ", " : "", together[i].first, together[i].second,
                          counted(together[i].rows, "row"));
    text += ".\n";
  }

  const std::size_t complete = description.rows - description.rowsWithMissing;
  const bool refused = 2 * complete < description.rows;
  text += fmt::format("An analysis of all columns {} {} of {} rows (--missing drop-rows, the default)",
                      refused ? "is refused, as it would keep" : "keeps", complete, description.rows);
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

std::string lookText(const Description& description, const TextOptions& options) {
  return finding("almost numeric", almostNumeric(description), ";  ", options.all) +
         finding("constant", description.constant, ", ", options.all) +
         finding("same information", sameColumns(description), ";  ", options.all) +
         finding("hardly vary", hardlyVarying(description), ", ", options.all) +
         finding("strongly related", related(description, options.all), ", ", options.all);
}

}  // namespace studystats
