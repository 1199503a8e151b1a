// Discriminant analysis of a table: preparation, the analysis, and what its classes are worth.
//
// The engine is given the rows of known class alone; its classifier places the others.
#include "host/da/discriminant.h"

#include "host/da/canonical.h"
#include "host/da/within_classes.h"
#include "host/model/model_build.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

constexpr double kComplete = 0.999999;  // a fraction correct at which the automatic selection ends
constexpr double kGrowth = 1.05;        // of the distances, wanted of a step that leaves the fraction as it is

std::vector<std::string> namesOf(const std::vector<std::size_t>& chosen, const UsedData& used) {
  std::vector<std::string> names;
  for (const std::size_t j : chosen) names.push_back(used.descriptors[j]);
  return names;
}

std::vector<double> priorsOf(const PreparedDiscriminant& prepared, const Priors& priors) {
  const std::size_t g = prepared.classes();
  std::vector<double> values(g, 1.0);
  if (priors.kind == Priors::Kind::Size) values.assign(prepared.classSizes.begin(), prepared.classSizes.end());
  if (priors.kind == Priors::Kind::Given) {
    const auto refuse = [](const std::string& text) { throw BadOptions(text, {.option = "--prior"}); };
    if (priors.values.size() != g)
      refuse(fmt::format("--prior has {} for {} classes ({}).", counted(priors.values.size(), "value", "values"), g,
                         listed(prepared.classNames)));
    for (const double value : priors.values)
      if (!(value > 0) || !std::isfinite(value)) refuse("--prior wants numbers above 0, one a class.");
    values = priors.values;
  }
  const double sum = std::accumulate(values.begin(), values.end(), 0.0);
  for (double& value : values) value /= sum;
  return values;
}

double sumOfDistances(const PreparedDiscriminant& prepared, const std::vector<std::size_t>& chosen) {
  const CanonicalSpace space(prepared.data.model, prepared.classOf, prepared.classes(), chosen);
  double sum = 0;
  for (std::size_t c = 0; c < prepared.classes(); ++c)
    for (std::size_t d = c + 1; d < prepared.classes(); ++d) sum += space.distanceBetween(c, d);
  return sum;
}

DiscriminantStep stepOf(const TakenStep& taken, const PreparedDiscriminant& prepared,
                        const std::vector<std::size_t>& chosen) {
  return {prepared.data.used.descriptors[taken.descriptor], taken.fraction, taken.classFractions,
          sumOfDistances(prepared, chosen)};
}

void insertInOrder(std::size_t descriptor, std::vector<std::size_t>& chosen) {
  chosen.insert(std::lower_bound(chosen.begin(), chosen.end(), descriptor), descriptor);
}

std::vector<DiscriminantStep> stepsOf(const FittedClassifier& fitted, const PreparedDiscriminant& prepared) {
  std::vector<DiscriminantStep> steps;
  std::vector<std::size_t> chosen;
  for (const TakenStep& taken : fitted.steps) {
    insertInOrder(taken.descriptor, chosen);
    steps.push_back(stepOf(taken, prepared, chosen));
  }
  return steps;
}

std::string ordinal(std::size_t n) {
  static const std::vector<std::string> kWords{"zeroth",  "first",  "second", "third", "fourth",   "fifth",  "sixth",
                                               "seventh", "eighth", "ninth",  "tenth", "eleventh", "twelfth"};
  if (n < kWords.size()) return (n == 8 || n == 11 ? "an " : "a ") + kWords[n];
  return fmt::format("a {}th", n);
}

// Why the automatic selection went no further.
std::string refusedStep(const FittedClassifier& fitted, const PreparedDiscriminant& prepared,
                        const std::vector<DiscriminantStep>& steps) {
  if (!fitted.refused) return "no further descriptor tells the classes apart";
  std::vector<std::size_t> chosen = fitted.chosen;
  insertInOrder(fitted.refused->descriptor, chosen);
  const DiscriminantStep refused = stepOf(*fitted.refused, prepared, chosen);
  const std::string candidate = fmt::format("{} ({})", ordinal(steps.size() + 1), refused.descriptor);
  if (refused.fraction < steps.back().fraction)
    return fmt::format("{} would lower the fraction correct to {}", candidate, percent(refused.fraction));
  return fmt::format(
      "{} would leave the fraction correct at {} and raise the sum of distances by {} only ({} is wanted)", candidate,
      percent(refused.fraction), percent(refused.distances / steps.back().distances - 1), percent(kGrowth - 1, 0));
}

std::string stopReasonOf(const FittedClassifier& fitted, const PreparedDiscriminant& prepared,
                         const ClassSelection& selection, const std::vector<DiscriminantStep>& steps) {
  if (selection.kind == ClassSelection::Kind::All || steps.size() == prepared.data.used.descriptors.size())
    return "every descriptor is taken";
  if (selection.kind == ClassSelection::Kind::Number)
    return steps.size() == static_cast<std::size_t>(selection.number)
               ? fmt::format("--select {} is reached", selection.number)
               : "no further descriptor tells the classes apart";
  if (steps.back().fraction >= kComplete) return "every row is in its own class";
  return refusedStep(fitted, prepared, steps);
}

std::vector<ChosenDescriptor> descriptorsOf(const FittedClassifier& fitted, const FoldedDiscriminant& folds,
                                            const UsedData& used) {
  std::vector<ChosenDescriptor> descriptors;
  for (std::size_t j = 0; j < used.descriptors.size(); ++j)
    descriptors.push_back(
        {used.descriptors[j], std::binary_search(fitted.chosen.begin(), fitted.chosen.end(), j), folds.timesChosen[j]});
  return descriptors;
}

std::vector<DiscriminantClass> classesOf(const PreparedDiscriminant& prepared, const Discriminant& result,
                                         const CanonicalSpace& space, const std::vector<double>& priors) {
  const UsedData& used = prepared.data.used;
  std::vector<DiscriminantClass> classes;
  for (std::size_t c = 0; c < prepared.classes(); ++c) {
    DiscriminantClass entry;
    entry.name = prepared.classNames[c];
    entry.rows = prepared.classSizes[c];
    entry.prior = priors[c];
    entry.fittedCorrect = result.fitted(c, c);
    if (result.validation) {
      const Confusion& confusion = result.validation->confusion;
      for (std::size_t q = 0; q < prepared.classes(); ++q) entry.heldOut += confusion(c, q);
      entry.heldOutCorrect = confusion(c, c);
    }
    std::size_t a = 0;
    for (const std::string& name : result.chosen) {
      const auto at = std::find(used.descriptors.begin(), used.descriptors.end(), name) - used.descriptors.begin();
      const auto j = static_cast<std::size_t>(at);
      entry.means.push_back(used.shift[j] + used.scale[j] * space.classMeans()(c, a++));
    }
    entry.scores = space.classScores(c);
    classes.push_back(std::move(entry));
  }
  return classes;
}

// Classifies rows; distances: the engine's, by row and class.
class Placement {
 public:
  Placement(const PreparedDiscriminant& prepared, const CanonicalSpace& space, std::vector<double> priors)
      : prepared_(prepared), space_(space), priors_(std::move(priors)) {}

  DiscriminantRow place(const Grid& grid, const Grid& distances, std::size_t row) const {
    DiscriminantRow placed;
    std::vector<double> given;
    for (std::size_t c = 0; c < prepared_.classes(); ++c) {
      given.push_back(static_cast<double>(static_cast<float>(distances(row, c))));
      placed.distances.push_back(space_.distance(grid, row, c));
    }
    const std::size_t nearest = nearestClass(given, placed.distances);
    placed.predicted = prepared_.classNames[nearest];
    std::size_t next = nearest == 0 ? 1 : 0;
    for (std::size_t c = 0; c < given.size(); ++c)
      if (c != nearest && placed.distances[c] < placed.distances[next]) next = c;
    placed.next = prepared_.classNames[next];
    placed.posteriors = posteriorsOf(placed.distances, priors_);
    placed.scores = space_.scores(grid, row);
    return placed;
  }

 private:
  const PreparedDiscriminant& prepared_;
  const CanonicalSpace& space_;
  std::vector<double> priors_;
};

void addHeldOut(DiscriminantRow& row, const std::vector<HeldOut>& predictions, const std::vector<std::string>& names) {
  row.timesHeldOut = predictions.size();
  if (predictions.empty()) return;
  std::vector<std::size_t> votes(names.size(), 0);
  for (const HeldOut& prediction : predictions) ++votes[prediction.group];
  const auto most = std::max_element(votes.begin(), votes.end()) - votes.begin();
  row.heldOutClass = names[static_cast<std::size_t>(most)];
  if (predictions.size() == 1) row.fold = predictions.front().fold;
  row.heldOutDistances.assign(names.size(), 0.0);
  for (const HeldOut& prediction : predictions)
    for (std::size_t c = 0; c < names.size(); ++c)
      row.heldOutDistances[c] += prediction.values[c] / static_cast<double>(predictions.size());
}

void placeRows(Discriminant& result, const PreparedDiscriminant& prepared, const FittedClassifier& fitted,
               const Placement& placement, const HeldOutRows& heldOut) {
  const Prepared& data = prepared.data;
  for (std::size_t i = 0; i < data.modelRows.size(); ++i) {
    DiscriminantRow row = placement.place(data.model, fitted.distances, i);
    row.name = data.modelRows[i].name;
    row.known = prepared.classNames[static_cast<std::size_t>(prepared.classOf[i] - 1)];
    if (result.validation) addHeldOut(row, heldOut[i], prepared.classNames);
    result.rows.push_back(std::move(row));
  }
  const std::vector<std::string> labels = labelsOf(data.predictedRows, result.classColumn);
  for (std::size_t i = 0; i < data.predictedRows.size(); ++i) {
    DiscriminantRow row = placement.place(data.predicted, fitted.predictedDistances, i);
    row.name = data.predictedRows[i].name;
    row.role = Role::Predicted;
    row.known = labels[i];
    result.rows.push_back(std::move(row));
  }
}

std::string failing(const FailedFold& fold, const PreparedDiscriminant& prepared) {
  const std::string culprits = withinClassCulprits(prepared, fold.training);
  return fmt::format("fold {} of {} became singular{}", fold.fold, fold.folds,
                     culprits.empty() ? std::string() : fmt::format(" (in its training rows {})", culprits));
}

void noValidation(Discriminant& result, const std::string& why, const char* remedy) {
  result.validation = Result<DiscriminantValidation>::failure(why);
  result.remarks.push_back(
      {Severity::Warning, "not-validated", fmt::format("not validated: {}. Try {}.", why, remedy), {}});
}

void judgeValidation(Discriminant& result, const FoldedDiscriminant& folds, const PreparedDiscriminant& prepared) {
  const std::size_t training = prepared.classOf.size() - folds.plan.largest, taken = result.chosen.size();
  if (folds.failed) {
    noValidation(result,
                 folds.restartedAt
                     ? fmt::format("{}, and so did fold {} of {} when one row at a time was held out",
                                   failing(*folds.restartedAt, prepared), folds.failed->fold, folds.failed->folds)
                     : failing(*folds.failed, prepared),
                 "--select with a smaller number, or --exclude");
    return;
  }
  if (taken + prepared.classes() > training) {
    noValidation(result,
                 fmt::format("{} descriptors are too many for the {} training rows of a fold in {} classes", taken,
                             training, prepared.classes()),
                 "--select with a smaller number, or --folds loo");
    return;
  }
  DiscriminantValidation validation;
  validation.confusion = folds.confusion;
  validation.foldsWithout = folds.foldsWithout;
  result.validation = validation;
  if (!folds.restartedAt) return;
  result.remarks.push_back(
      {Severity::Warning,
       "validation-restarted",
       fmt::format("{}; the validation was run again with one row a fold.", failing(*folds.restartedAt, prepared)),
       {}});
}

// The same classes with every descriptor: what the selection is worth.
std::optional<Confusion> withAllDescriptors(const PreparedDiscriminant& prepared, Watch& watch) {
  if (prepared.data.used.descriptors.size() + prepared.classes() > prepared.classOf.size()) return std::nullopt;
  const FoldedDiscriminant all =
      foldClassifier(prepared, {.kind = ClassSelection::Kind::All}, watch, "folds with all descriptors", 60, 95);
  if (all.failed || all.restartedAt) return std::nullopt;
  return all.confusion;
}

Model modelOf(const Discriminant& result, const std::vector<std::size_t>& chosen, const CanonicalSpace& space,
              const std::vector<double>& priors) {
  ModelData data = modelOf(Model::Kind::Discriminant, result.used, chosen, result.level);
  data.responses = {result.classColumn};
  DiscriminantModel model;
  for (const DiscriminantClass& entry : result.classes) model.classes.push_back(entry.name);
  model.priors = priors;
  model.space = space.parts();
  model.fitted = result.fitted.fraction();
  if (result.validation) {
    model.crossValidated = result.validation->confusion.fraction();
    data.validation.scheme =
        describedFolds(result.plan) + (result.selection.kind == ClassSelection::Kind::All ? "" : ", selection in each");
  } else {
    data.validation.reason = result.validation.error();
  }
  data.discriminant = std::move(model);
  return sealed(std::move(data));
}

}  // namespace

std::size_t nearestClass(std::span<const double> distances, std::span<const double> precise) {
  constexpr double kEqual = 1e-12;
  std::size_t nearest = 0;
  for (std::size_t c = 1; c < distances.size(); ++c) {
    const bool smaller = distances[c] == distances[nearest] ? precise[c] < precise[nearest] * (1 - kEqual)
                                                            : distances[c] < distances[nearest];
    if (smaller) nearest = c;
  }
  return nearest;
}

std::size_t Confusion::total() const { return std::accumulate(counts.begin(), counts.end(), std::size_t{0}); }

std::size_t Confusion::correct() const {
  std::size_t sum = 0;
  for (std::size_t c = 0; c < classes; ++c) sum += counts[c * classes + c];
  return sum;
}

double Confusion::fraction() const {
  return total() == 0 ? std::numeric_limits<double>::quiet_NaN()
                      : static_cast<double>(correct()) / static_cast<double>(total());
}

Discriminant discriminate(const TableView& table, const DiscriminantOptions& options) try {
  Watch watch(options.progress, options.stop);
  watch.report("preparing", "preparing the table", 0, 2, 0, 1);
  const PreparedDiscriminant prepared = prepareDiscriminant(table, options, watch);
  const std::vector<double> priors = priorsOf(prepared, options.priors);

  Discriminant result;
  result.used = prepared.data.used;
  result.remarks = prepared.data.remarks;
  result.classColumn = options.classColumn;
  result.selection = options.selection;
  result.priors = options.priors.kind;
  result.level = options.level;

  // 1. The classifier of all rows of known class, and how it was selected.
  const FittedClassifier fitted = fitClassifier(prepared, options.selection, watch, 2, 15);
  result.fitted = fitted.confusion;
  result.chosen = namesOf(fitted.chosen, result.used);
  result.steps = stepsOf(fitted, prepared);
  result.stopReason = stopReasonOf(fitted, prepared, options.selection, result.steps);

  // 2. The same in every fold.
  const FoldedDiscriminant folds = foldClassifier(prepared, options.selection, watch, "folds", 15, 60);
  result.plan = folds.plan;
  result.descriptors = descriptorsOf(fitted, folds, result.used);
  judgeValidation(result, folds, prepared);
  if (result.validation && options.selection.kind != ClassSelection::Kind::All)
    result.allDescriptors = withAllDescriptors(prepared, watch);

  // 3. Classes, canonical functions and rows in the table's units.
  const CanonicalSpace space(prepared.data.model, prepared.classOf, prepared.classes(), fitted.chosen);
  for (std::size_t k = 0; k < space.functions(); ++k) result.functions.push_back(space.function(k, result.used));
  result.classes = classesOf(prepared, result, space, priors);
  placeRows(result, prepared, fitted, Placement(prepared, space, priors), folds.heldOut);

  result.model = modelOf(result, fitted.chosen, space, priors);
  remarkOnDiscriminant(result, folds);
  watch.report("analysis", "done", 98, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
