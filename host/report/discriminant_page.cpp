// A discriminant analysis as a page: how many rows left out are put into the right class, and where the classes lie.
#include "host/report/discriminant_page.h"

#include "host/distributions.h"
#include "host/folds.h"
#include "host/report/components.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/result/common.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace studystats {
namespace {

std::string ofText(std::size_t part, std::size_t whole) { return fmt::format("{} of {}", part, whole); }

std::size_t classNumber(const Discriminant& result, const std::string& name) {
  const auto found = std::find_if(result.classes.begin(), result.classes.end(),
                                  [&](const DiscriminantClass& one) { return one.name == name; });
  return static_cast<std::size_t>(found - result.classes.begin());
}

std::string foldText(const Discriminant& result) {
  return describedFolds(result.plan) + (selects(result) ? ", selection repeated in each" : ", refitted in each");
}

std::string answerOf(const Discriminant& result) {
  if (!result.validation)
    return fmt::format("How well these classes of {} are told apart is not known: it was not validated.",
                       result.classColumn);
  const Confusion& found = result.validation->confusion;
  std::string text = fmt::format("{} of rows left out are put into the right class of {} ({})",
                                 percent(found.fraction()), result.classColumn, ofText(found.correct(), found.total()));
  const auto share = [](const DiscriminantClass& one) {
    return one.heldOut > 0 ? static_cast<double>(one.heldOutCorrect) / static_cast<double>(one.heldOut) : 1.0;
  };
  const auto hardest = std::min_element(result.classes.begin(), result.classes.end(),
                                        [&](const auto& a, const auto& b) { return share(a) < share(b); });
  if (found.correct() == found.total()) return text + ".";
  return text +
         fmt::format("; {} is the hardest, with {}.", hardest->name, ofText(hardest->heldOutCorrect, hardest->heldOut));
}

ReportFrame frameOf(const Discriminant& result) {
  ReportFrame frame{{"correct", "fitted", "cross-validated"}, {}};
  const bool validated = static_cast<bool>(result.validation);
  frame.rows.push_back(
      {selects(result) ? counted(result.chosen.size(), "descriptor", "descriptors") + " chosen" : "all descriptors",
       percent(result.fitted.fraction()),
       validated ? percent(result.validation->confusion.fraction()) : "not validated"});
  if (validated && result.allDescriptors)
    frame.rows.push_back({fmt::format("all {} descriptors, for comparison", result.used.descriptors.size()), "",
                          percent(result.allDescriptors->fraction())});
  return frame;
}

// While it was held out, where that is known.
const std::vector<double>& shownDistances(const DiscriminantRow& row) {
  return row.heldOutDistances.empty() ? row.distances : row.heldOutDistances;
}

// The least distance to the mean of another class.
double otherDistance(const Discriminant& result, const DiscriminantRow& row) {
  const std::size_t own = classNumber(result, row.known.empty() ? row.predicted : row.known);
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t c = 0; c < shownDistances(row).size(); ++c)
    if (c != own) least = std::min(least, shownDistances(row)[c]);
  return least;
}

Table rowsOf(const Discriminant& result, const ColouringColumns& colours) {
  using Row = const DiscriminantRow*;
  const auto rows = shown(result.rows);
  ReportData data = rowData(result.rows);
  data.texts("known", rows, [](Row row) { return row->known; })
      .texts("group", rows, [](Row row) { return row->known.empty() ? "unknown" : row->known; })
      .texts("heldOutClass", rows, [](Row row) { return row->heldOutClass; })
      .texts("verdict", rows, [](Row row) { return verdictOf(*row); })
      .texts("predicted", rows, [](Row row) { return row->predicted; })
      .texts("next", rows, [](Row row) { return row->next; })
      .numbers("own", rows, [&](Row row) { return ownDistance(result, *row); })
      .numbers("other", rows, [&](Row row) { return otherDistance(result, *row); })
      .numbers("posterior", rows, [&](Row row) { return row->posteriors[classNumber(result, row->predicted)]; })
      .numbers("fold", rows,
               [](Row row) { return row->fold > 0 ? std::optional(static_cast<double>(row->fold)) : std::nullopt; });
  for (std::size_t k = 0; k < functionsOf(result); ++k)
    data.numbers(fmt::format("score{}", k + 1), rows, [k](Row row) { return row->scores[k]; });
  Table table = data.take();
  table.columns.insert(table.columns.end(), colours.columns.begin(), colours.columns.end());
  return table;
}

Table confusionOf(const Discriminant& result) {
  struct Cell {
    const char* kind;
    const Confusion* counts;
    std::size_t truth, predicted;
  };
  std::vector<Cell> cells;
  const auto add = [&](const char* kind, const Confusion& counts) {
    for (std::size_t t = 0; t < counts.classes; ++t)
      for (std::size_t p = 0; p < counts.classes; ++p) cells.push_back({kind, &counts, t, p});
  };
  if (result.validation) add(kHeldOutRows, result.validation->confusion);
  add(kFittedRows, result.fitted);
  using One = const Cell&;
  const auto share = [](One one) {
    std::size_t whole = 0;
    for (std::size_t p = 0; p < one.counts->classes; ++p) whole += (*one.counts)(one.truth, p);
    return whole > 0 ? static_cast<double>((*one.counts)(one.truth, one.predicted)) / static_cast<double>(whole) : 0.0;
  };
  ReportData data("confusion");
  data.texts("kind", cells, [](One one) { return one.kind; })
      .texts("truth", cells, [&](One one) { return result.classes[one.truth].name; })
      .texts("predicted", cells, [&](One one) { return result.classes[one.predicted].name; })
      .numbers("rows", cells, [](One one) { return (*one.counts)(one.truth, one.predicted); })
      .numbers("share", cells, share)
      .texts("right", cells, [](One one) { return one.truth == one.predicted ? "right" : "wrong"; });
  return data.take();
}

Table classesOf(const Discriminant& result) {
  using Class = const DiscriminantClass&;
  const bool validated = static_cast<bool>(result.validation);
  const auto share = [](std::size_t part, std::size_t whole) {
    return whole > 0 ? std::optional(static_cast<double>(part) / static_cast<double>(whole)) : std::nullopt;
  };
  ReportData data("classes");
  data.texts("group", result.classes, [](Class one) { return one.name; })
      .numbers("rows", result.classes, [](Class one) { return one.rows; })
      .texts("heldOut", result.classes,
             [&](Class one) { return validated ? ofText(one.heldOutCorrect, one.heldOut) : std::string(); })
      .numbers("heldOutShare", result.classes,
               [&](Class one) { return validated ? share(one.heldOutCorrect, one.heldOut) : std::nullopt; })
      .texts("fitted", result.classes, [](Class one) { return ofText(one.fittedCorrect, one.rows); })
      .numbers("fittedShare", result.classes, [&](Class one) { return share(one.fittedCorrect, one.rows); })
      .numbers("prior", result.classes, [](Class one) { return one.prior; });
  for (std::size_t k = 0; k < functionsOf(result); ++k)
    data.numbers(fmt::format("score{}", k + 1), result.classes, [k](Class one) { return one.scores[k]; });
  return data.take();
}

// In canonical space the pooled covariance is 1: what holds a share `level` of a normal class is a circle.
Table circlesOf(const Discriminant& result) {
  constexpr std::size_t kPoints = 61;
  struct Point {
    const DiscriminantClass* of;
    double angle;
  };
  std::vector<Point> points;
  for (const DiscriminantClass& one : result.classes)
    for (std::size_t i = 0; i < kPoints; ++i)
      points.push_back({&one, 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(kPoints - 1)});
  const double radius = std::sqrt(chiSquareQuantile(result.level, 2));
  ReportData data("circles");
  data.texts("group", points, [](const Point& point) { return point.of->name; })
      .numbers("angle", points, [](const Point& point) { return point.angle; })
      .numbers("cos", points, [&](const Point& point) { return radius * std::cos(point.angle); })
      .numbers("sin", points, [&](const Point& point) { return radius * std::sin(point.angle); });
  for (std::size_t k = 0; k < functionsOf(result); ++k)
    data.numbers(fmt::format("score{}", k + 1), points, [k](const Point& point) { return point.of->scores[k]; });
  return data.take();
}

Table stepsOf(const Discriminant& result) {
  using Step = const DiscriminantStep&;
  const auto number = [&](Step step) { return static_cast<std::size_t>(&step - result.steps.data()) + 1; };
  ReportData data("steps");
  data.texts("key", result.steps, [](Step step) { return "d:" + step.descriptor; })
      .numbers("step", result.steps, number)
      .texts("descriptor", result.steps, [](Step step) { return step.descriptor; })
      .texts("label", result.steps, [&](Step step) { return fmt::format("{} {}", number(step), step.descriptor); })
      .numbers("fraction", result.steps, [](Step step) { return step.fraction; })
      .numbers("distances", result.steps, [](Step step) { return step.distances; });
  return data.take();
}

ResultPart selectionOf(const Discriminant& result) {
  std::vector<Choice> choices;
  for (const ChosenDescriptor& one : result.descriptors)
    if (one.chosen || one.foldsChosen > 0) choices.push_back({one.name, one.foldsChosen, one.chosen});
  return selectionFrequencyPart(std::move(choices), result.plan.folds);
}

std::vector<ReportTable> tablesOf(const Discriminant& result) {
  ReportTable classes{
      "classes", "Classes", "", "classes", {{"group", result.classColumn}, {"rows", "rows", CellKind::Whole}}};
  if (result.validation) {
    classes.columns.push_back({"heldOut", "right, left out"});
    classes.columns.push_back({"heldOutShare", "share", CellKind::Share});
  }
  classes.columns.push_back({"fitted", "right, fitted"});
  classes.columns.push_back({"fittedShare", "share", CellKind::Share});
  classes.columns.push_back({"prior", "prior", CellKind::Fixed, 3});
  std::vector<ReportTable> tables{std::move(classes)};
  if (!result.steps.empty())
    tables.push_back({"steps",
                      "Steps of the selection",
                      result.stopReason,
                      "steps",
                      {{"step", "step", CellKind::Whole},
                       {"descriptor", "descriptor"},
                       {"fraction", "correct, fitted", CellKind::Share},
                       {"distances", "sum of distances", CellKind::Number, 5}}});
  if (selects(result) && result.validation)
    tables.push_back(
        pageTable(selectionOf(result), "Selection frequency", "", {"descriptor", "in_model", "folds_chosen"}));
  ReportTable rows{"rows",
                   "Rows",
                   samplingText(result.rows.size()),
                   "rows",
                   {{"name", rowHeading(result.used)}, {"known", result.classColumn}}};
  if (result.validation) {
    rows.columns.push_back({"heldOutClass", "put into, left out"});
    rows.columns.push_back({"verdict", "verdict"});
    rows.columns.push_back({"fold", "fold", CellKind::Whole});
  }
  const std::vector<ReportColumn> last{{"predicted", "nearest, fitted"},
                                       {"next", "next"},
                                       {"own", "d own", CellKind::Fixed, 2},
                                       {"other", "d nearest other", CellKind::Fixed, 2},
                                       {"posterior", "posterior", CellKind::Fixed, 3}};
  rows.columns.insert(rows.columns.end(), last.begin(), last.end());
  tables.push_back(std::move(rows));
  return tables;
}

std::vector<ReportEntry> ownCard(const Discriminant& result) {
  std::vector<std::string> priors;
  for (const DiscriminantClass& one : result.classes)
    priors.push_back(fmt::format("{} {}", one.name, brief(one.prior, 4)));
  std::vector<ReportEntry> card{
      {"Classes", fmt::format("{} of {}; priors {}", result.classes.size(), result.classColumn, listed(priors, 12))}};
  card.push_back({"Descriptors chosen", fmt::format("{}: {}", result.chosen.size(), listed(result.chosen, 40))});
  if (selects(result)) card.push_back({"Selection", result.stopReason});
  card.push_back(
      {"Folds",
       foldText(result) + (result.plan.kind == Folds::Kind::Random ? fmt::format("; seed {}", result.plan.seed) : "")});
  for (std::size_t k = 0; k < functionsOf(result); ++k) {
    std::string equation = significant(result.functions[k].constant, 6);
    for (std::size_t j = 0; j < result.chosen.size(); ++j) {
      const double coefficient = result.functions[k].coefficients[j];
      equation += fmt::format(" {} {} · {}", coefficient < 0 ? "−" : "+", significant(std::abs(coefficient), 6),
                              result.chosen[j]);
    }
    card.push_back({fmt::format("Canonical function {}", k + 1), equation});
  }
  return card;
}

std::vector<ReportEntry> readingOf(const Discriminant& result) {
  return {
      {"correct, cross-validated",
       "The fraction of rows that a classifier built without them puts into their class" +
           std::string(selects(result) ? ", its descriptors chosen again each time." : ".")},
      {"resubstitution",
       "The same for the rows that the classifier was built from: too good, most of all where descriptors "
       "were chosen."},
      {"distance",
       "Mahalanobis distance to a class mean under the pooled covariance: d² = (x − m)ᵀ S⁻¹ (x − m). A row is put "
       "into the class with the smallest."},
      {"posterior", "prior · exp(−d² / 2), made to sum to 1 over the classes: normal densities with one covariance."},
      {"canonical scores",
       "Linear functions of the descriptors along which the classes differ most beside their spread; the "
       "pooled variance of each is 1. The share is that of its eigenvalue."}};
}

}  // namespace

std::string verdictOf(const DiscriminantRow& row) {
  if (row.role == Role::Predicted) return "kept out";
  if (row.heldOutClass.empty()) return "never left out";
  return row.heldOutClass == row.known ? "right when left out" : "wrong when left out";
}

double ownDistance(const Discriminant& result, const DiscriminantRow& row) {
  const std::size_t own = classNumber(result, row.known.empty() ? row.predicted : row.known);
  const std::vector<double>& distances = shownDistances(row);
  return own < distances.size() ? distances[own] : std::numeric_limits<double>::quiet_NaN();
}

ReportPage reportPage(const Discriminant& result, const ReportContext& context) {
  std::vector<std::string> names;
  for (const DiscriminantRow* row : shown(result.rows)) names.push_back(row->name);
  const ColouringColumns colours = colouringColumns(context, result.used, names);
  ReportPage page;
  page.analysis = "da";
  page.title = "Discriminant analysis of " + result.classColumn;
  page.subtitle =
      fmt::format("{}, {} {}", madeFrom(result.used), result.chosen.size(), selects(result) ? "chosen" : "taken");
  page.answer = answerOf(result);
  if (!result.validation) page.banner = "Not validated: " + result.validation.error();
  page.frame = frameOf(result);
  page.data = {confusionOf(result), classesOf(result), rowsOf(result, colours),
               circlesOf(result),   stepsOf(result),   pageData(selectionOf(result), "d:", "descriptor")};
  page.figures = discriminantFigures(result, page.data.back(), colours);
  page.tables = tablesOf(result);
  page.remarks = anchored(result.remarks, {{"unstable-selection", "selection-frequency"},
                                           {"small-class", "classes"},
                                           {"class-absent", "classes"},
                                           {"no-better-than-largest", "confusion"},
                                           {"doubtful-rows", "distances"},
                                           {"held-out-rows-unknown", "rows"}});
  remarkOnSampling(result.rows.size(), page);
  page.card = dataCard(result.used, ownCard(result), context);
  page.reading = readingOf(result);
  return page;
}

}  // namespace studystats
