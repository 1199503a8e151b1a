// A discriminant analysis as a page of plain text, and what would be analysed.
#include "host/da/discriminant.h"
#include "host/folds.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

namespace studystats {
namespace {

constexpr std::size_t kShownRows = 12;

std::string priorText(const Discriminant& result) {
  if (result.priors == Priors::Kind::Equal) return "equal priors";
  std::vector<std::string> priors;
  for (const DiscriminantClass& entry : result.classes) priors.push_back(brief(entry.prior, 3));
  return fmt::format("priors {}", listed(priors));
}

std::string title(const Discriminant& result) {
  const std::size_t descriptors = result.used.descriptors.size();
  std::string text = wrapped("", fmt::format("Discriminant analysis of {}: {} in {} classes, {}, {}; {}",
                                             result.classColumn, counted(result.used.rows.size(), "row", "rows"),
                                             result.classes.size(), counted(descriptors, "descriptor", "descriptors"),
                                             result.selection.kind == ClassSelection::Kind::All
                                                 ? "all taken"
                                                 : fmt::format("{} chosen", result.chosen.size()),
                                             priorText(result)));
  std::size_t unknown = 0, known = 0;
  for (const DiscriminantRow& row : result.rows)
    if (row.role == Role::Predicted) ++(row.known.empty() ? unknown : known);
  if (unknown > 0) text += fmt::format("{} no class: classified only\n", counted(unknown, "row has", "rows have"));
  if (known > 0) text += fmt::format("{} kept out and only classified\n", counted(known, "row is", "rows are"));
  return text;
}

// "53 of 57" a class.
std::vector<std::string> classCells(const Confusion& confusion) {
  std::vector<std::string> cells;
  for (std::size_t t = 0; t < confusion.classes; ++t) {
    std::size_t sum = 0;
    for (std::size_t q = 0; q < confusion.classes; ++q) sum += confusion(t, q);
    cells.push_back(fmt::format("{} of {}", confusion(t, t), sum));
  }
  return cells;
}

// Cross-validated first, resubstitution second; an abandoned validation shows no figure.
std::string frame(const Discriminant& result) {
  const bool selects = result.selection.kind != ClassSelection::Kind::All;
  TextTable table;
  table.column("", Align::Left);
  table.column("correct");
  for (const DiscriminantClass& entry : result.classes) table.column(entry.name);
  if (selects && result.validation) table.column("selection repeated in", Align::Left);
  const auto add = [&](const std::string& name, const Confusion& confusion, const std::string& last) {
    std::vector<std::string> cells{name, percent(confusion.fraction())};
    for (std::string& cell : classCells(confusion)) cells.push_back(std::move(cell));
    cells.push_back(last);
    if (!selects || !result.validation) cells.pop_back();
    table.row(std::move(cells));
  };
  if (result.validation)
    add("cross-validated, " +
            (result.plan.kind == Folds::Kind::LeaveOneOut ? "leave-one-out" : describedFolds(result.plan)),
        result.validation->confusion, "each fold");
  add("resubstitution", result.fitted, {});
  if (result.allDescriptors)
    add(fmt::format("all {}, cross-validated", result.used.descriptors.size()), *result.allDescriptors,
        "for comparison: --select all");
  std::string text = table.text();
  if (!result.validation) text = wrapped("not validated: ", result.validation.error()) + "\n" + text;
  return text;
}

std::string confusionTable(const Confusion& confusion, const std::vector<DiscriminantClass>& classes,
                           const std::string& heading) {
  TextTable table;
  table.column(heading, Align::Left);
  for (const DiscriminantClass& entry : classes) table.column(entry.name);
  for (std::size_t t = 0; t < classes.size(); ++t) {
    std::vector<std::string> cells{classes[t].name};
    for (std::size_t q = 0; q < classes.size(); ++q) cells.push_back(std::to_string(confusion(t, q)));
    table.row(std::move(cells));
  }
  return table.text();
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t to = std::min(text.find('\n', from), text.size());
    lines.push_back(text.substr(from, to - from));
    from = to + 1;
  }
  return lines;
}

// Two tables beside each other where the page has room, else below each other.
std::string besideEachOther(const std::string& left, const std::string& right) {
  const std::vector<std::string> a = linesOf(left), b = linesOf(right);
  std::size_t wide = 0, wideRight = 0;
  for (const std::string& line : a) wide = std::max(wide, textWidth(line));
  for (const std::string& line : b) wideRight = std::max(wideRight, textWidth(line));
  constexpr std::size_t kGap = 4;
  if (a.size() != b.size() || wide + kGap + wideRight > kTextWidth) return left + "\n" + right;
  std::string text;
  for (std::size_t i = 0; i < a.size(); ++i)
    text += a[i] + std::string(wide + kGap - textWidth(a[i]), ' ') + b[i] + "\n";
  return text;
}

std::string confusions(const Discriminant& result) {
  const std::string fitted = "resubstitution\n" + confusionTable(result.fitted, result.classes, "true \\ predicted");
  if (!result.validation) return fitted;
  return besideEachOther(
      "cross-validated\n" + confusionTable(result.validation->confusion, result.classes, "true \\ predicted"), fitted);
}

std::string stepTable(const Discriminant& result) {
  if (result.steps.empty()) return {};
  TextTable table;
  table.column("step");
  table.column("descriptor", Align::Left);
  table.column("correct (fit)");
  table.column("sum of distances", Align::Point);
  table.column("chosen", Align::Left);
  for (std::size_t k = 0; k < result.steps.size(); ++k) {
    const DiscriminantStep& step = result.steps[k];
    const auto descriptor = std::find_if(result.descriptors.begin(), result.descriptors.end(),
                                         [&](const ChosenDescriptor& d) { return d.name == step.descriptor; });
    table.row({std::to_string(k + 1), step.descriptor, percent(step.fraction), significant(step.distances, 5),
               result.validation ? fmt::format("{} of {}", descriptor->foldsChosen, result.plan.folds) : "-"});
  }
  return table.text() + wrapped("", "stopped: " + result.stopReason) + "\n";
}

std::string functions(const Discriminant& result, const TextOptions& options) {
  std::vector<std::string> items;
  for (std::size_t k = 0; k < result.functions.size(); ++k)
    items.push_back(fmt::format("{}: eigenvalue {} ({})", k + 1,
                                significant(result.functions[k].eigenvalue, options.digits),
                                percent(result.functions[k].share)));
  std::string text = wrappedItems("Canonical functions   ", items, "   ");
  if (!options.all) return text;
  TextTable table;
  table.column("coefficient", Align::Left);
  for (std::size_t k = 0; k < result.functions.size(); ++k) table.column(std::to_string(k + 1), Align::Point);
  std::vector<std::string> cells{"(constant)"};
  for (const CanonicalFunction& function : result.functions)
    cells.push_back(significant(function.constant, options.digits));
  table.row(std::move(cells));
  for (std::size_t a = 0; a < result.chosen.size(); ++a) {
    cells = {result.chosen[a]};
    for (const CanonicalFunction& function : result.functions)
      cells.push_back(significant(function.coefficients[a], options.digits));
    table.row(std::move(cells));
  }
  return text + table.text();
}

// "wine 5, 22, 26 (class_0 -> class_1)", by pair of classes in their order.
std::string wrongWhenLeftOut(const Discriminant& result, const TextOptions& options) {
  if (!result.validation) return {};
  std::map<std::pair<std::string, std::string>, std::vector<std::string>> groups;
  std::vector<std::pair<std::string, std::string>> order;
  std::size_t held = 0;
  for (const DiscriminantRow& row : result.rows) {
    if (row.timesHeldOut == 0) continue;
    ++held;
    if (row.heldOutClass == row.known) continue;
    const std::pair pair{row.known, row.heldOutClass};
    std::vector<std::string>& names = groups[pair];
    if (names.empty()) order.push_back(pair);
    names.push_back(names.empty() ? shownRow(result.used, row.name) : row.name);
  }
  if (held == 0) return {};
  std::vector<std::string> items;
  for (const auto& pair : order) {
    const std::vector<std::string>& names = groups[pair];
    const std::size_t shown = options.all ? names.size() : std::min(names.size(), kShownRows);
    items.insert(items.end(), names.begin(), names.begin() + static_cast<std::ptrdiff_t>(shown));
    if (shown < names.size()) items.push_back(fmt::format("{} more", names.size() - shown));
    items.back() += fmt::format(" ({} -> {})", pair.first, pair.second);
  }
  if (items.empty()) items.emplace_back("none");
  items.front() =
      (result.plan.kind == Folds::Kind::Random ? "Wrong most times when left out: " : "Wrong when left out: ") +
      items.front();
  return wrappedItems("", items, ", ");
}

std::string posteriorText(double posterior) { return posterior > 0.9995 ? ">0.999" : fixed(posterior, 3); }

std::string classifiedTable(const Discriminant& result, const TextOptions& options) {
  std::vector<const DiscriminantRow*> rows;
  bool known = false;
  std::size_t right = 0, judged = 0;
  for (const DiscriminantRow& row : result.rows) {
    if (row.role != Role::Predicted) continue;
    rows.push_back(&row);
    if (row.known.empty()) continue;
    known = true;
    ++judged;
    right += row.known == row.predicted ? 1 : 0;
  }
  if (rows.empty()) return {};
  TextTable table;
  table.column("row", Align::Left);
  table.column("class", Align::Left);
  table.column("next", Align::Left);
  table.column("d", Align::Point);
  table.column("d next", Align::Point);
  table.column("posterior");
  if (known) table.column("known", Align::Left);
  const auto at = [&](const std::string& name) {
    return static_cast<std::size_t>(std::find_if(result.classes.begin(), result.classes.end(),
                                                 [&](const DiscriminantClass& c) { return c.name == name; }) -
                                    result.classes.begin());
  };
  const std::size_t shown = options.all ? rows.size() : std::min(rows.size(), kShownRows);
  for (std::size_t i = 0; i < shown; ++i) {
    const DiscriminantRow& row = *rows[i];
    const std::size_t nearest = at(row.predicted);
    std::vector<std::string> cells{shownRow(result.used, row.name),
                                   row.predicted,
                                   row.next,
                                   fixed(row.distances[nearest], 2),
                                   fixed(row.distances[at(row.next)], 2),
                                   posteriorText(row.posteriors[nearest])};
    if (known) cells.push_back(row.known.empty() ? "-" : row.known);
    table.row(std::move(cells));
  }
  if (shown < rows.size()) table.line(fmt::format("... {} more", rows.size() - shown));
  std::string text = "\n" + table.text();
  if (judged > 0) text += fmt::format("{} of {} kept-out rows with a class are classified into it\n", right, judged);
  return text;
}

std::string selectionText(const ClassSelection& selection) {
  switch (selection.kind) {
    case ClassSelection::Kind::Auto:
      return "step by step, as long as the fraction correct or the distances between classes grow";
    case ClassSelection::Kind::All:
      return "every descriptor";
    case ClassSelection::Kind::Number:
      break;
  }
  return fmt::format("step by step up to {}",
                     counted(static_cast<std::size_t>(selection.number), "descriptor", "descriptors"));
}

}  // namespace

std::string summary(const Discriminant& result, const TextOptions& options) {
  return title(result) + leftOutText(result.used) + "\n" + frame(result) + "\n" + confusions(result) + "\n" +
         stepTable(result) + functions(result, options) + "\n" + wrongWhenLeftOut(result, options) +
         classifiedTable(result, options);
}

std::string explain(const TableView& table, const DiscriminantOptions& options) {
  Watch watch(options.progress, options.stop);
  const PreparedDiscriminant prepared = prepareDiscriminant(table, options, watch);
  std::vector<std::string> classes;
  for (std::size_t c = 0; c < prepared.classes(); ++c)
    classes.push_back(fmt::format("{} ({})", prepared.classNames[c], prepared.classSizes[c]));
  std::string text = explainedData(prepared.data.used);
  text +=
      wrapped("classes       ", fmt::format("{} of {}: {}", classes.size(), options.classColumn, listed(classes, 12)));
  text += wrapped("selection     ", selectionText(options.selection));
  text += wrapped("validation    ",
                  explainedFolds(prepared.folds, prepared.classOf.size(), options.classColumn) +
                      (options.selection.kind == ClassSelection::Kind::All ? "" : "; selection repeated in each"));
  text += explainedRemarks(prepared.data.remarks);
  return text + "nothing was analysed (--explain)\n";
}

}  // namespace studystats
