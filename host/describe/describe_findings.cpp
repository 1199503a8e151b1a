// A description as a page of plain text: what to look at before modelling.
#include "host/describe/describe_text.h"

#include "host/describe/describe.h"
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
constexpr double kNames = 0.9;           // share of different texts from which a column seems to name the rows

// Three decimals, or as many as keep it from reading 1: 0.987, 0.99997.
std::string correlationText(double r) {
  int decimals = 3;
  while (decimals < 12 && std::abs(r) < 1 && std::abs(std::round(r * std::pow(10, decimals))) == std::pow(10, decimals))
    ++decimals;
  return std::abs(r) < 1 ? fixed(r, decimals) : fixed(r, 0);
}

// A number of a formula; empty when it cannot be written short.
std::string shortNumber(double value, std::size_t most) {
  const std::string text = brief(value, 10);
  const bool exactEnough = std::abs(std::stod(text) - value) <= 1e-13 * std::abs(value);
  return exactEnough && text.size() <= most ? text : std::string();
}

// "1 - x", "0.001 * x"; empty when its numbers are long.
std::string expression(double shift, double scale, const std::string& name) {
  const bool unit = std::abs(scale) == 1;
  const std::string magnitude = shortNumber(std::abs(scale), kShortNumber);
  const std::string constant = shortNumber(shift, unit ? 2 * kShortNumber : kShortNumber);
  if (magnitude.empty() || constant.empty()) return {};
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

// "31 pairs of columns with |r| > 0.95, 73 pairs with |r| > 0.90"
std::string relatedCounts(const Description& description) {
  const std::size_t total = description.related.size();
  const auto very = static_cast<std::size_t>(
      std::count_if(description.related.begin(), description.related.end(),
                    [](const RelatedColumns& pair) { return std::abs(pair.r) > kVeryRelated; }));
  const auto pairs = [](std::size_t n) {
    return fmt::format("{}{}", n == kMostRelated ? "at least " : "", counted(n, "pair"));
  };
  if (total == very) return fmt::format("{} of columns with |r| > 0.95", pairs(very));
  if (very == 0) return fmt::format("{} of columns with |r| > 0.90", pairs(total));
  return fmt::format("{} of columns with |r| > 0.95, {} with |r| > 0.90", pairs(very), pairs(total));
}

std::vector<std::string> relatedPairs(const Description& description) {
  std::vector<std::string> items;
  for (const RelatedColumns& pair : description.related)
    items.push_back(fmt::format("{} and {} (r {})", pair.first, pair.second, correlationText(pair.r)));
  return items;
}

std::vector<std::string> emptyColumns(const Description& description) {
  std::vector<std::string> names;
  for (const ColumnSummary& column : description.columns)
    if (column.count == 0 && description.rows > 0) names.push_back(column.name);
  return names;
}

// A column that names the rows, or seems to, but not each by a name of its own.
std::vector<std::string> repeatedNames(const Description& description) {
  std::vector<std::string> items;
  for (const ColumnSummary& column : description.columns) {
    const bool id = column.name == description.idColumn;
    const bool seems = description.idColumn.empty() && column.kind == ColumnKind::Text && column.strayCount == 0 &&
                       static_cast<double>(column.different) >= kNames * static_cast<double>(description.rows);
    if ((id || seems) && column.different < description.rows)
      items.push_back(fmt::format("{} ({} different in {} rows)", column.name, column.different, description.rows));
  }
  return items;
}

std::string label(std::string_view what) { return fmt::format("  {:<18} ", what); }

std::string finding(std::string_view what, std::vector<std::string> items, std::string_view separator, bool all) {
  if (items.empty()) return {};
  if (!all && items.size() > kListed + 1) {
    const std::size_t more = items.size() - kListed;
    items.resize(kListed);
    items.push_back(fmt::format("{} more", more));
  }
  return wrappedItems(label(what), items, separator);
}

// How many pairs; the pairs themselves when they are few.
std::string relatedText(const Description& description, bool all) {
  if (description.related.empty()) return {};
  const bool named = all || description.related.size() <= kNamedPairs;
  std::string text = wrapped(label("strongly related"), relatedCounts(description) + (named ? ":" : ""));
  if (named) text += wrappedItems(label(""), relatedPairs(description), ";  ");
  return text;
}

}  // namespace

std::string lookText(const Description& description, const TextOptions& options) {
  return finding("row names repeat", repeatedNames(description), ", ", options.all) +
         finding("no values", emptyColumns(description), ", ", options.all) +
         finding("almost numeric", almostNumeric(description), ";  ", options.all) +
         finding("constant", description.constant, ", ", options.all) +
         finding("same information", sameColumns(description), ";  ", options.all) +
         finding("hardly vary", hardlyVarying(description), ", ", options.all) + relatedText(description, options.all);
}

}  // namespace studystats
