// What is worth saying about a discriminant analysis: classes too small to test, an unstable selection, doubtful rows.
#include "host/da/discriminant.h"
#include "host/preparation/used_text.h"
#include "host/text.h"

#include <fmt/format.h>

namespace studystats {
namespace {

void remarkOnSmallClasses(Discriminant& result) {
  for (const std::size_t c : classesWithFewRows(result)) {
    const DiscriminantClass& entry = result.classes[c];
    result.remarks.push_back(
        {Severity::Warning,
         "small-class",
         fmt::format("class \"{}\" has {}, so only {} of the {} folds test it; its {} of {} correct says little. Try "
                     "--folds loo, or leave the class out.",
                     entry.name, counted(entry.rows, "row", "rows"), entry.rows, result.plan.folds,
                     entry.heldOutCorrect, entry.heldOut),
         {entry.name}});
  }
}

void remarkOnAbsentClasses(Discriminant& result, const FoldedDiscriminant& folds) {
  for (std::size_t c = 0; c < result.classes.size(); ++c) {
    if (folds.notTrained[c] == 0) continue;
    result.remarks.push_back(
        {Severity::Warning,
         "class-absent",
         fmt::format(
             "class \"{}\" is absent from the training rows of {} of {} folds: those folds compare its rows with "
             "a mean of zeros. Try --folds loo, or draws that hold out fewer rows.",
             result.classes[c].name, folds.notTrained[c], result.plan.folds),
         {result.classes[c].name}});
  }
}

void remarkOnSelection(Discriminant& result) {
  if (!result.validation || result.selection.kind == ClassSelection::Kind::All) return;
  std::vector<std::string> seldom;
  for (const ChosenDescriptor& descriptor : result.descriptors)
    if (descriptor.chosen && 2 * descriptor.foldsChosen < result.plan.folds) seldom.push_back(descriptor.name);
  if (seldom.empty()) return;
  result.remarks.push_back(
      {Severity::Warning, "unstable-selection",
       fmt::format("the selection is unstable: {} of {} descriptors {} chosen in fewer than half "
                   "of the folds ({}).",
                   seldom.size(), result.chosen.size(), seldom.size() == 1 ? "was" : "were", listed(seldom)),
       seldom});
}

// The fraction that always naming the largest class would reach.
void remarkOnUselessness(Discriminant& result) {
  if (!result.validation) return;
  std::size_t largest = 0, total = 0;
  std::string name;
  for (const DiscriminantClass& entry : result.classes) {
    total += entry.heldOut;
    if (entry.heldOut > largest) name = entry.name;
    largest = std::max(largest, entry.heldOut);
  }
  const Confusion& confusion = result.validation->confusion;
  if (total == 0 || confusion.correct() > largest) return;
  result.remarks.push_back(
      {Severity::Warning,
       "no-better-than-largest",
       fmt::format("no better than always answering \"{}\", which would be right in {} of {} left-out rows.", name,
                   largest, total),
       {name}});
}

void remarkOnOneDescriptor(Discriminant& result) {
  if (result.chosen.size() != 1) return;
  result.remarks.push_back({Severity::Note,
                            "one-descriptor",
                            fmt::format("with {} alone, distances are in units of its spread within classes, and the "
                                        "eigenvalue is its sum of squares between classes over that within.",
                                        result.chosen.front()),
                            {result.chosen.front()}});
}

void remarkOnDoubtfulRows(Discriminant& result) {
  constexpr double kDoubtful = 0.8;
  std::vector<std::string> names;
  for (const DiscriminantRow& row : result.rows) {
    if (row.role != Role::Predicted) continue;
    for (std::size_t c = 0; c < result.classes.size(); ++c)
      if (result.classes[c].name == row.predicted && row.posteriors[c] < kDoubtful)
        names.push_back(fmt::format("{} ({})", shownRow(result.used, row.name), fixed(row.posteriors[c], 2)));
  }
  if (!names.empty())
    result.remarks.push_back(
        {Severity::Note, "doubtful-rows",
         fmt::format("{} below posterior {}: {}.", counted(names.size(), "classified row lies", "classified rows lie"),
                     brief(kDoubtful, 2), listed(names)),
         names});
}

}  // namespace

std::vector<std::size_t> classesWithFewRows(const Discriminant& result) {
  std::vector<std::size_t> few;
  if (result.plan.kind != Folds::Kind::Systematic || !result.validation) return few;
  for (std::size_t c = 0; c < result.classes.size(); ++c)
    if (result.classes[c].rows < result.plan.folds) few.push_back(c);
  return few;
}

void remarkOnDiscriminant(Discriminant& result, const FoldedDiscriminant& folds) {
  remarkOnSmallClasses(result);
  if (result.validation) remarkOnAbsentClasses(result, folds);
  remarkOnSelection(result);
  remarkOnUselessness(result);
  remarkOnOneDescriptor(result);
  remarkOnDoubtfulRows(result);
}

}  // namespace studystats
