#include "host/cluster/neighbours_text.h"

#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

namespace studystats {
namespace {

constexpr std::size_t kShownRows = 12;
constexpr std::size_t kNamed = 5;  // neighbours or rows that a line names

std::size_t wantedOf(const Clusters& result) { return static_cast<std::size_t>(result.neighbours); }

std::string listsText(const Clusters& result) {
  std::size_t longer = 0, longest = 0;
  for (const ClusterRow& row : result.rows) {
    longer += row.neighbours.size() > wantedOf(result) ? 1 : 0;
    longest = std::max(longest, row.neighbours.size());
  }
  const std::string each = counted(wantedOf(result), "neighbour", "neighbours") + " a row";
  if (result.fixed) return each + "; of rows that tie for the last place the first in the table\n";
  if (longer == 0) return each + "\n";
  return wrapped("", fmt::format("{}; ties for the last place lengthen {}, up to {} (--fixed breaks them)", each,
                                 counted(longer, "list", "lists"), longest));
}

std::string rowTable(const Clusters& result, const TextOptions& options, Role role) {
  TextTable table;
  table.column(role == Role::Model ? "row" : "row kept out", Align::Left);
  table.column("nearest", Align::Point);
  table.column("last", Align::Point);
  table.column("neighbours, nearest first", Align::Left);
  std::size_t all = 0, shown = 0;
  for (const ClusterRow& row : result.rows) {
    if (row.role != role) continue;
    ++all;
    if (!options.all && all > kShownRows) continue;
    ++shown;
    std::vector<std::string> names;
    for (const Neighbour& neighbour : row.neighbours) names.push_back(result.rows[neighbour.row].name);
    table.row({shownRow(result.used, row.name), significant(row.neighbours.front().distance, 3),
               significant(row.neighbours.back().distance, 3), listed(names, kNamed)});
  }
  if (all == 0) return {};
  if (shown < all)
    table.line(
        fmt::format("... {} more: --all lists them, --output FILE.csv and --tables DIR write them", all - shown));
  return "\n" + table.text();
}

// The rows of the model with the largest figures, and these: "flower 42 (1.31), flower 132 (1.2)".
template <class Figure, class Show>
std::string largest(const Clusters& result, Figure figure, Show show) {
  std::vector<std::size_t> order(result.used.rows.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t x, std::size_t y) { return figure(x) > figure(y); });
  order.resize(std::min(order.size(), kNamed));
  std::vector<std::string> names;
  for (const std::size_t row : order)
    names.push_back(fmt::format("{} ({})", shownRow(result.used, result.rows[row].name), show(figure(row))));
  return fmt::format("{}", fmt::join(names, ", "));
}

std::string distancesText(const Clusters& result) {
  std::vector<double> nearest;
  for (std::size_t i = 0; i < result.used.rows.size(); ++i)
    nearest.push_back(result.rows[i].neighbours.front().distance);
  std::sort(nearest.begin(), nearest.end());
  const std::size_t n = nearest.size();
  const double median = (nearest[(n - 1) / 2] + nearest[n / 2]) / 2;
  return wrapped("Nearest row        ", fmt::format("at {} (median), from {} to {}", significant(median, 3),
                                                    significant(nearest.front(), 3), significant(nearest.back(), 3)));
}

std::string listings(const Clusters& result) {
  std::vector<std::size_t> lists(result.used.rows.size(), 0);
  for (std::size_t i = 0; i < lists.size(); ++i)
    for (const Neighbour& neighbour : result.rows[i].neighbours) ++lists[neighbour.row];
  std::vector<std::string> nowhere;
  for (std::size_t i = 0; i < lists.size(); ++i)
    if (lists[i] == 0) nowhere.push_back(shownRow(result.used, result.rows[i].name));
  return wrapped("Far from others    ",
                 largest(
                     result, [&](std::size_t i) { return result.rows[i].neighbours.back().distance; },
                     [](double distance) { return significant(distance, 3); })) +
         wrapped("In most lists      ", largest(
                                            result, [&](std::size_t i) { return lists[i]; },
                                            [](std::size_t n) { return fmt::to_string(n); })) +
         wrapped("In no list         ",
                 nowhere.empty() ? "none" : fmt::format("{}: {}", nowhere.size(), listed(nowhere)));
}

// Of the neighbours of rows with a class, the share that has the same.
std::string sameClassText(const Clusters& result) {
  std::size_t same = 0, judged = 0;
  for (std::size_t i = 0; i < result.used.rows.size(); ++i) {
    const ClusterRow& row = result.rows[i];
    for (const Neighbour& neighbour : row.neighbours) {
      const std::string& label = result.rows[neighbour.row].label;
      if (row.label.empty() || label.empty()) continue;
      ++judged;
      same += label == row.label ? 1 : 0;
    }
  }
  if (judged == 0) return {};
  return wrapped("Of the same class  ",
                 fmt::format("{} of the neighbours ({})",
                             percent(static_cast<double>(same) / static_cast<double>(judged)), result.classColumn));
}

}  // namespace

std::string neighboursText(const Clusters& result, const TextOptions& options) {
  return listsText(result) + rowTable(result, options, Role::Model) + "\n" + distancesText(result) + listings(result) +
         sameClassText(result) + rowTable(result, options, Role::Predicted);
}

}  // namespace studystats
