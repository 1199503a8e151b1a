// The principal components as a page of plain text, and what would be analysed.
#include <studystats/host/principal_components.h>

#include "host/pca/pca.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

constexpr double kPerMark = 0.025;       // share of the variance that one # of the scree stands for
constexpr std::size_t kLongTable = 30;   // descriptors listed in full
constexpr std::size_t kShortTable = 20;  // otherwise as many, those with the largest loadings

std::string componentTable(const PrincipalComponents& result, const TextOptions& options) {
  TextTable table;
  table.column("component");
  table.column("eigenvalue", Align::Point);
  table.column("explained");
  table.column("cumulative");
  table.column("", Align::Left);
  const std::size_t wanted = std::max<std::size_t>(static_cast<std::size_t>(result.kept) + 3, 6);
  const std::size_t all = result.components.size();
  const std::size_t shown = options.all || all <= wanted + 2 ? all : wanted;
  for (std::size_t k = 0; k < shown; ++k) {
    const Component& component = result.components[k];
    table.row({std::to_string(k + 1), significant(component.eigenvalue, options.digits), percent(component.explained),
               percent(component.cumulative),
               std::string(static_cast<std::size_t>(std::lround(component.explained / kPerMark)), '#')});
  }
  std::string text = table.text();
  if (shown < all) text += fmt::format("... {} more\n", all - shown);
  if (result.aboveOne) text += fmt::format("Eigenvalues above 1: {}.  ", *result.aboveOne);
  return text + fmt::format("Above a broken stick: {}.\n", result.aboveBrokenStick);
}

// Descriptors with the largest loadings on the components shown, in table order.
std::vector<std::size_t> listedDescriptors(const PrincipalComponents& result, std::size_t components, bool all) {
  std::vector<std::size_t> order(result.loadings.rows);
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (all || order.size() <= kLongTable) return order;
  const auto largest = [&](std::size_t j) {
    double most = 0;
    for (std::size_t k = 0; k < components; ++k) most = std::max(most, std::abs(result.loadings(j, k)));
    return most;
  };
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return largest(a) > largest(b); });
  order.resize(kShortTable);
  std::sort(order.begin(), order.end());
  return order;
}

std::string loadingTable(const PrincipalComponents& result, const TextOptions& options) {
  std::size_t longest = 8;
  for (const std::string& name : result.used.descriptors) longest = std::max(longest, name.size());
  const std::string heading = fmt::format("explained by PC1-{}", result.kept);
  const std::size_t room = kTextWidth > longest + heading.size() + 2 ? kTextWidth - longest - heading.size() - 2 : 0;
  const std::size_t components =
      std::clamp<std::size_t>(room / 8, 1, static_cast<std::size_t>(result.kept));  // 8 columns a loading

  TextTable table;
  table.column("loadings", Align::Left);
  for (std::size_t k = 0; k < components; ++k) table.column(fmt::format("PC{}", k + 1));
  table.column(result.kept > 1 ? heading : "explained by PC1");
  const std::vector<std::size_t> listed = listedDescriptors(result, components, options.all);
  for (const std::size_t j : listed) {
    std::vector<std::string> cells{result.used.descriptors[j]};
    for (std::size_t k = 0; k < components; ++k) cells.push_back(fixed(result.loadings(j, k), 3));
    cells.push_back(percent(result.explained(j, result.explained.columns - 1)));
    table.row(std::move(cells));
  }
  std::string text = table.text();
  if (listed.size() < result.loadings.rows)
    text += fmt::format(
        "... the {} descriptors with the largest loadings of {}: --all lists them, --tables DIR writes them\n",
        listed.size(), result.loadings.rows);
  if (components < static_cast<std::size_t>(result.kept))
    text += fmt::format("... PC{}-{} in --json FILE and --tables DIR\n", components + 1, result.kept);
  return text;
}

// "wine 122 (T2 20.1), wine 60 (18.4), wine 26 (10.6), 2 more"
std::string beyond(const PrincipalComponents& result, Role role, double ComponentRow::*distance, double limit,
                   const std::string& symbol) {
  std::vector<const ComponentRow*> rows;
  for (const ComponentRow& row : result.rows)
    if (row.role == role && row.*distance > limit) rows.push_back(&row);
  std::stable_sort(rows.begin(), rows.end(),
                   [&](const ComponentRow* a, const ComponentRow* b) { return a->*distance > b->*distance; });
  std::vector<std::string> names;
  for (const ComponentRow* row : rows)
    names.push_back(fmt::format("{} ({}{})", shownRow(result.used, row->name), names.empty() ? symbol + " " : "",
                                significant(row->*distance, 3)));
  return names.empty() ? "none" : listed(names, 3);
}

std::string distanceLines(const PrincipalComponents& result, Role role) {
  std::string text;
  if (result.t2Limit)
    text += wrapped("  extreme in the model plane  ", beyond(result, role, &ComponentRow::t2, *result.t2Limit, "T2"));
  if (result.qLimit)
    text += wrapped("  far from the model plane    ", beyond(result, role, &ComponentRow::q, *result.qLimit, "Q"));
  return text;
}

std::string unusualRows(const PrincipalComponents& result) {
  if (!result.t2Limit && !result.qLimit) return {};
  std::vector<std::string> limits;
  if (result.t2Limit) limits.push_back("T2 " + significant(*result.t2Limit, 3));
  if (result.qLimit) limits.push_back("residual distance Q " + significant(*result.qLimit, 3));
  std::string text = fmt::format("\nUnusual rows ({}, {} limits: {})\n",
                                 counted(static_cast<std::size_t>(result.kept), "component", "components"),
                                 percent(result.level, 0), fmt::join(limits, ", "));
  text += distanceLines(result, Role::Model);
  if (!result.used.predictedRows.empty())
    text += fmt::format("{}, placed in the model only\n",
                        counted(result.used.predictedRows.size(), "row kept out", "rows kept out")) +
            distanceLines(result, Role::Predicted);
  return text;
}

std::string groupTable(const PrincipalComponents& result) {
  if (result.groups.empty()) return {};
  const std::size_t components = std::min<std::size_t>(static_cast<std::size_t>(result.kept), 6);
  TextTable table;
  table.column("mean scores by " + result.classColumn, Align::Left);
  table.column("rows");
  for (std::size_t k = 0; k < components; ++k) table.column(fmt::format("PC{}", k + 1));
  const std::size_t shown = std::min<std::size_t>(result.groups.size(), 12);
  for (std::size_t g = 0; g < shown; ++g) {
    const ComponentGroup& group = result.groups[g];
    std::vector<std::string> cells{group.label, std::to_string(group.rows)};
    for (std::size_t k = 0; k < components; ++k) cells.push_back(fixed(group.meanScores[k], 2));
    table.row(std::move(cells));
  }
  std::string text = "\n" + table.text();
  if (shown < result.groups.size()) text += fmt::format("... {} more\n", result.groups.size() - shown);
  return text;
}

}  // namespace

std::string summary(const PrincipalComponents& result, const TextOptions& options) {
  return wrapped("", fmt::format("Principal components of {}: {}, {}, {}", shownTable(result.used),
                                 counted(result.used.rows.size(), "row", "rows"),
                                 counted(result.used.descriptors.size(), "descriptor", "descriptors"),
                                 describedScaling(result.used.scaling))) +
         leftOutText(result.used) + "\n" + componentTable(result, options) + "\n" + loadingTable(result, options) +
         groupTable(result) + unusualRows(result);
}

std::string explain(const TableView& table, const PrincipalComponentsOptions& options) {
  Watch watch(options.progress, options.stop);
  const Prepared prepared = preparePrincipalComponents(table, options, watch);
  std::string text = explainedData(prepared.used);
  text += wrapped("components    ", options.components > 0
                                        ? fmt::format("{} kept", options.components)
                                        : std::string("the smallest number with 80 % explained kept, 2 ... 10"));
  text += explainedRemarks(prepared.remarks);
  return text + "nothing was analysed (--explain)\n";
}

}  // namespace studystats
