// The options of discriminant analysis checked; its rows numbered by class, and descriptors that hold no spread within
// classes set aside.
#include "host/da/preparation.h"

#include "host/da/within_classes.h"
#include "host/names.h"
#include "host/preparation/same_information.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <numeric>
#include <set>

namespace studystats {
namespace {

void checkOptions(const DiscriminantOptions& options) {
  const auto refuse = [](const std::string& option, const std::string& text) {
    throw BadOptions(text, {.option = option});
  };
  if (options.classColumn.empty()) refuse("--class", "--class NAME is missing: which column holds the classes?");
  if (options.selection.kind == ClassSelection::Kind::Number && options.selection.number < 1)
    refuse("--select", fmt::format("--select {} leaves no descriptor; it is auto, all or a number from 1.",
                                   options.selection.number));
  if (!(options.level > 0 && options.level < 1))
    refuse("--level", fmt::format("--level {} is not a probability between 0 and 1, such as 0.95.", options.level));
  checkFolds(options.folds);
}

// Leaves out model rows, which then count as dropped.
void dropModelRows(Prepared& data, const std::vector<bool>& keep, const std::vector<std::string>& reasons) {
  std::vector<BlockRow> rows;
  std::vector<std::string> names;
  Grid model{0, data.model.columns, {}};
  for (std::size_t i = 0; i < keep.size(); ++i) {
    if (keep[i]) {
      rows.push_back(data.modelRows[i]);
      names.push_back(data.used.rows[i]);
    } else {
      data.used.droppedRows.push_back({data.used.rows[i], reasons[i]});
      --data.used.rowCounts.extracted;
      ++data.used.rowCounts.eliminated;
    }
  }
  for (std::size_t j = 0; j < data.model.columns; ++j)
    for (std::size_t i = 0; i < keep.size(); ++i)
      if (keep[i]) model.values.push_back(data.model(i, j));
  model.rows = rows.size();
  data.modelRows = std::move(rows);
  data.used.rows = std::move(names);
  data.model = std::move(model);
}

Grid withoutColumns(const Grid& grid, const std::vector<bool>& gone) {
  Grid kept{grid.rows, 0, {}};
  for (std::size_t j = 0; j < grid.columns; ++j) {
    if (gone[j]) continue;
    const std::span<const double> column = grid.column(j);
    kept.values.insert(kept.values.end(), column.begin(), column.end());
    ++kept.columns;
  }
  return kept;
}

void dropDescriptors(Prepared& data, const std::vector<bool>& gone, const std::string& reason) {
  data.model = withoutColumns(data.model, gone);
  data.predicted = withoutColumns(data.predicted, gone);
  UsedData& used = data.used;
  std::size_t kept = 0;
  for (std::size_t j = 0; j < gone.size(); ++j) {
    if (gone[j]) {
      used.droppedColumns.push_back({used.descriptors[j], reason});
      continue;
    }
    used.descriptors[kept] = used.descriptors[j];
    used.recipes[kept] = used.recipes[j];
    used.shift[kept] = used.shift[j];
    used.scale[kept++] = used.scale[j];
  }
  used.descriptors.resize(kept);
  used.recipes.resize(kept);
  used.shift.resize(kept);
  used.scale.resize(kept);
}

std::vector<std::string> namesInOrder(const std::vector<std::string>& labels, const DiscriminantOptions& options) {
  const std::set<std::string> known(labels.begin(), labels.end());
  for (const std::string& name : options.classOrder)
    if (!known.contains(name))
      throw BadOptions(fmt::format("--class-order: {} has no class \"{}\"{}", options.classColumn, name,
                                   fmt::format(". Its classes: {}.", listed({known.begin(), known.end()}))),
                       {.option = "--class-order"});
  return options.classOrder;
}

// Numbers the classes; those with one row are set aside.
void numberClasses(PreparedDiscriminant& prepared, const DiscriminantOptions& options) {
  Prepared& data = prepared.data;
  std::vector<std::string> labels = labelsOf(data.modelRows, options.classColumn);
  std::vector<std::string> names = namesInOrder(labels, options), newNames;
  std::vector<std::int32_t> classes, newClasses;
  StatsCalcUtils::ConvertToUniqueCategories(labels, classes, names);
  kel::deque<bool, 1024, kel::pool_allocator<bool, 1024>, kel::pool_array_allocator<bool*, 8>> marks;
  std::int32_t rows = 0, kept = 0;
  StatsCalcUtils::RemoveSingleElementClasses(classes, names, marks, newClasses, newNames, rows, kept);
  std::vector<bool> keep(labels.size());
  std::vector<std::string> reasons(labels.size()), single;
  for (std::size_t i = 0; i < keep.size(); ++i) {
    keep[i] = marks[i];
    if (keep[i]) continue;
    reasons[i] = fmt::format("the only row of class {}", labels[i]);
    single.push_back(labels[i]);
  }
  if (!single.empty()) {
    const std::string which = single.size() == 1 ? fmt::format("class \"{}\" has one row and was", single.front())
                                                 : fmt::format("{} classes have one row each and were", single.size());
    data.remarks.push_back({Severity::Warning, "single-member-classes",
                            fmt::format("{} set aside: a class needs two rows at least{}.", which,
                                        single.size() == 1 ? std::string() : " (" + listed(single) + ")"),
                            single});
    dropModelRows(data, keep, reasons);
  }
  prepared.classOf = std::move(newClasses);
  prepared.classNames = std::move(newNames);
  prepared.classSizes.assign(prepared.classes(), 0);
  for (const std::int32_t c : prepared.classOf) ++prepared.classSizes[static_cast<std::size_t>(c - 1)];
}

// A descriptor that does not vary within any class leaves no spread to measure distances by.
void setAsideConstants(PreparedDiscriminant& prepared, const std::vector<std::size_t>& rows) {
  Prepared& data = prepared.data;
  std::vector<bool> gone(data.model.columns);
  std::vector<std::string> names;
  for (std::size_t j = 0; j < gone.size(); ++j) {
    gone[j] = constantWithinClasses(data.model.column(j), prepared, rows);
    if (gone[j]) names.push_back(data.used.descriptors[j]);
  }
  if (names.empty()) return;
  data.remarks.push_back(
      {Severity::Warning, "constant-within-classes",
       fmt::format("{} within every class and {} set aside: {}. Equal values in all rows of a class "
                   "leave no spread to measure distances by; look whether the classes were made "
                   "from {}.",
                   counted(names.size(), "descriptor is constant", "descriptors are constant"),
                   names.size() == 1 ? "was" : "were", listed(names), names.size() == 1 ? "it" : "them"),
       names});
  dropDescriptors(data, gone, "constant within every class");
}

// A descriptor that repeats another within every class makes the covariance of the two singular.
void setAsideRepeatsWithinClasses(PreparedDiscriminant& prepared, const std::vector<std::size_t>& rows) {
  Prepared& data = prepared.data;
  std::vector<bool> gone(data.model.columns, false);
  std::vector<std::string> names, pairs;
  for (const auto& [kept, repeat] : identicalWithinClasses(prepared, rows)) {
    gone[repeat] = true;
    names.push_back(data.used.descriptors[repeat]);
    pairs.push_back(fmt::format("{} (as {})", names.back(), data.used.descriptors[kept]));
  }
  if (names.empty()) return;
  data.remarks.push_back(
      {Severity::Warning, "identical-within-classes",
       fmt::format("{} another within every class, up to scale, and {} set aside: {}. The two differ "
                   "between classes alone; the covariance within classes cannot hold both.",
                   counted(names.size(), "descriptor repeats", "descriptors repeat"),
                   names.size() == 1 ? "was" : "were", listed(pairs)),
       names});
  dropDescriptors(data, gone, "repeats another within every class");
}

void setAsideWithinClasses(PreparedDiscriminant& prepared) {
  std::vector<std::size_t> rows(prepared.classOf.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  setAsideConstants(prepared, rows);
  setAsideRepeatsWithinClasses(prepared, rows);
}

void requireEnough(const PreparedDiscriminant& prepared, const TableView& table, const DiscriminantOptions& options) {
  const std::size_t n = prepared.classOf.size(), g = prepared.classes();
  if (g < 2)
    throw NotComputed(fmt::format("{} has {} with two rows or more in {}: there is nothing to tell apart.",
                                  options.classColumn, g == 0 ? "no class" : "one class", table.name()));
  requireDescriptors(prepared.data, table, "within the classes");
  if (n <= g) throw NotComputed(fmt::format("too few rows: {} in {} classes.", n, g));
}

}  // namespace

PreparedDiscriminant prepareDiscriminant(const TableView& table, const DiscriminantOptions& options, Watch& watch) {
  checkOptions(options);
  PreparedDiscriminant prepared;
  prepared.data = prepare(table,
                          {.classColumn = options.classColumn,
                           .foldColumn = options.folds.column,
                           .predictWithoutResponse = true,
                           .mostSize = 1e30},  // the analysis holds spreads and distances in 32 bits
                          options.data, watch);
  numberClasses(prepared, options);
  if (prepared.classes() >= 2) setAsideWithinClasses(prepared);
  requireEnough(prepared, table, options);
  prepared.folds = foldsThatCanRun(options.folds, labelsOf(prepared.data.modelRows, options.folds.column),
                                   prepared.data.used.rows, prepared.data.remarks);
  return prepared;
}

}  // namespace studystats
