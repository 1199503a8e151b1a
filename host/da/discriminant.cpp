// Discriminant analysis of a table: preparation, the analysis, and what its classes are worth.
//
// The validated call is given the rows of known class alone: its fraction divides by all the rows passed, and rows
// outside the model shift class means and folds. A second call, whose only fold holds out rows outside the model,
// places the others.
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

constexpr float kComplete = 0.999999f;  // a fraction correct at which the automatic selection ends
constexpr double kGrowth = 1.05;        // of the distances, wanted of a step that leaves the fraction as it is

std::vector<std::size_t> everyRow(const PreparedDiscriminant& prepared) {
  std::vector<std::size_t> rows(prepared.classOf.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  return rows;
}

std::vector<std::string> chosenNames(const DiscriminantCall& call, const UsedData& used) {
  std::vector<std::string> names;
  for (const std::size_t j : call.chosen()) names.push_back(used.descriptors[j]);
  return names;
}

// n rows in g classes have n - g directions within classes; more descriptors than that depend on each other, which
// rounding may hide from the analysis.
[[noreturn]] void refuseTooMany(std::size_t descriptors, const PreparedDiscriminant& prepared) {
  const std::size_t n = prepared.classOf.size(), g = prepared.classes();
  throw NotComputed(
      fmt::format("{} descriptors are too many for {} rows in {} classes: the covariance within classes is "
                  "singular. Try --select {}, or fewer --columns.",
                  descriptors, n, g, std::max<std::size_t>(1, (n - g) / 3)));
}

[[noreturn]] void refuseStatus(const DiscriminantCall& call, const PreparedDiscriminant& prepared) {
  const UsedData& used = prepared.data.used;
  const std::size_t n = prepared.classOf.size(), g = prepared.classes();
  if (call.status == 2)
    throw NotComputed("no descriptor tells the classes apart: each has the same mean in every class.");
  const std::string culprits = withinClassCulprits(prepared, everyRow(prepared));
  if (!culprits.empty())
    throw NotComputed(fmt::format("the covariance within classes became singular: {}. Try --exclude.", culprits));
  const std::vector<std::string> chosen = chosenNames(call, used);
  if (chosen.size() + 1 > n - g) refuseTooMany(chosen.size() + 1, prepared);
  throw NotComputed(
      fmt::format("the covariance within classes became singular when a descriptor was added to {}: it depends on them "
                  "within every class. Try --select {}, or --exclude one of them.",
                  chosen.empty() ? "none" : listed(chosen, 8), std::max<std::size_t>(1, chosen.size())));
}

Confusion confusionOf(const std::vector<std::int32_t>& counts, std::size_t classes) {
  Confusion confusion{classes, std::vector<std::size_t>(classes * classes)};
  for (std::size_t t = 0; t < classes; ++t)
    for (std::size_t q = 0; q < classes; ++q)
      confusion.counts[t * classes + q] = static_cast<std::size_t>(counts[t + q * classes]);
  return confusion;
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

std::vector<DiscriminantStep> stepsOf(const DiscriminantCall& call, const PreparedDiscriminant& prepared) {
  std::vector<DiscriminantStep> steps;
  std::vector<std::size_t> taken;
  for (std::size_t k = 0; k < static_cast<std::size_t>(call.nSteps) && call.selectOrder[k] > 0; ++k) {
    const auto j = static_cast<std::size_t>(call.selectOrder[k] - 1);
    taken.insert(std::lower_bound(taken.begin(), taken.end(), j), j);
    DiscriminantStep step;
    step.descriptor = prepared.data.used.descriptors[j];
    step.fraction = static_cast<double>(call.stepFraction[k]);
    for (std::size_t c = 0; c < prepared.classes(); ++c)
      step.classFractions.push_back(static_cast<double>(call.stepClassFraction[k + c * call.selectOrder.size()]));
    step.distances = sumOfDistances(prepared, taken);
    steps.push_back(std::move(step));
  }
  return steps;
}

std::string ordinal(std::size_t n) {
  static const std::vector<std::string> kWords{"zeroth",  "first",  "second", "third", "fourth",   "fifth",  "sixth",
                                               "seventh", "eighth", "ninth",  "tenth", "eleventh", "twelfth"};
  if (n < kWords.size()) return (n == 8 || n == 11 ? "an " : "a ") + kWords[n];
  return fmt::format("a {}th", n);
}

// Why the automatic selection went no further: the step that it refused is taken by a call for one descriptor more.
std::string refusedStep(const PreparedDiscriminant& prepared, const std::vector<DiscriminantStep>& steps,
                        Watch& watch) {
  const std::size_t next = steps.size() + 1;
  const CallSettings further{.selectMode = 1, .nSelect = count32(next)};
  const DiscriminantCall call =
      callDiscriminant(allRows(prepared), prepared.classes(), further, prepared.folds.seed, watch, {"", 60, 62});
  if (static_cast<std::size_t>(call.nSteps) < next) return "no further descriptor tells the classes apart";
  const DiscriminantStep refused = stepsOf(call, prepared).back();
  const std::string candidate = fmt::format("{} ({})", ordinal(next), refused.descriptor);
  if (static_cast<float>(refused.fraction) < static_cast<float>(steps.back().fraction))
    return fmt::format("{} would lower the fraction correct to {}", candidate, percent(refused.fraction));
  return fmt::format(
      "{} would leave the fraction correct at {} and raise the sum of distances by {} only ({} is wanted)", candidate,
      percent(refused.fraction), percent(refused.distances / steps.back().distances - 1), percent(kGrowth - 1, 0));
}

std::string stopReasonOf(const DiscriminantCall& call, const PreparedDiscriminant& prepared,
                         const DiscriminantOptions& options, const std::vector<DiscriminantStep>& steps, Watch& watch) {
  const std::size_t descriptors = prepared.data.used.descriptors.size();
  if (options.selection.kind == ClassSelection::Kind::All) return "every descriptor is taken";
  if (steps.size() == descriptors) return "every descriptor is taken";
  if (options.selection.kind == ClassSelection::Kind::Number)
    return steps.size() == static_cast<std::size_t>(options.selection.number)
               ? fmt::format("--select {} is reached", options.selection.number)
               : "no further descriptor tells the classes apart";
  if (call.stepFraction[steps.size() - 1] >= kComplete) return "every row is in its own class";
  return refusedStep(prepared, steps, watch);
}

std::vector<ChosenDescriptor> descriptorsOf(const DiscriminantCall& call, const UsedData& used) {
  std::vector<ChosenDescriptor> descriptors;
  for (std::size_t j = 0; j < used.descriptors.size(); ++j)
    descriptors.push_back({used.descriptors[j], call.selected[j] == 1, static_cast<std::size_t>(call.cvSelCount[j])});
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

// Classifies rows of the block: `at` is where they begin among the rows of the placing call.
class Placement {
 public:
  Placement(const PreparedDiscriminant& prepared, const DiscriminantCall& call, const CanonicalSpace& space,
            std::vector<double> priors)
      : prepared_(prepared),
        call_(call),
        space_(space),
        priors_(std::move(priors)),
        rows_(call.distances.size() / prepared.classes()) {}

  DiscriminantRow place(const Grid& grid, std::size_t row, std::size_t at) const {
    DiscriminantRow placed;
    std::vector<double> given;
    for (std::size_t c = 0; c < prepared_.classes(); ++c) {
      given.push_back(static_cast<double>(call_.distances[at + row + c * rows_]));
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
  const DiscriminantCall& call_;
  const CanonicalSpace& space_;
  std::vector<double> priors_;
  std::size_t rows_;
};

void addHeldOut(DiscriminantRow& row, const std::vector<HeldOut::Prediction>& predictions,
                const std::vector<std::string>& names) {
  row.timesHeldOut = predictions.size();
  if (predictions.empty()) return;
  std::vector<std::size_t> votes(names.size(), 0);
  for (const HeldOut::Prediction& prediction : predictions) ++votes[prediction.predicted];
  const auto most = std::max_element(votes.begin(), votes.end()) - votes.begin();
  row.heldOutClass = names[static_cast<std::size_t>(most)];
  if (predictions.size() == 1) row.fold = predictions.front().fold;
  row.heldOutDistances.assign(names.size(), 0.0);
  for (const HeldOut::Prediction& prediction : predictions)
    for (std::size_t c = 0; c < names.size(); ++c)
      row.heldOutDistances[c] += prediction.distances[c] / static_cast<double>(predictions.size());
}

void placeRows(Discriminant& result, const PreparedDiscriminant& prepared, const Placement& placement,
               const std::optional<HeldOut>& heldOut) {
  const Prepared& data = prepared.data;
  for (std::size_t i = 0; i < data.modelRows.size(); ++i) {
    DiscriminantRow row = placement.place(data.model, i, 0);
    row.name = data.modelRows[i].name;
    row.known = prepared.classNames[static_cast<std::size_t>(prepared.classOf[i] - 1)];
    if (heldOut) addHeldOut(row, heldOut->rows[i], prepared.classNames);
    result.rows.push_back(std::move(row));
  }
  const std::vector<std::string> labels = labelsOf(data.predictedRows, result.classColumn);
  for (std::size_t i = 0; i < data.predictedRows.size(); ++i) {
    DiscriminantRow row = placement.place(data.predicted, i, data.modelRows.size());
    row.name = data.predictedRows[i].name;
    row.role = Role::Predicted;
    row.known = labels[i];
    result.rows.push_back(std::move(row));
  }
}

// The plan of the folds that were run last: after a restart, one row a fold.
FoldPlan planRun(const DiscriminantCall& call, const PreparedDiscriminant& prepared) {
  FoldPlan plan = planOf(call.foldsPlanned, prepared.folds, prepared.classOf.size());
  if (call.restartedAt == 0) return plan;
  if (plan.kind == Folds::Kind::Systematic) plan.kind = Folds::Kind::LeaveOneOut;
  plan.smallest = plan.largest = 1;
  return plan;
}

// What spoilt fold `fold` (from 1) of the folds asked for.
std::string spoiltFold(const DiscriminantCall& call, const PreparedDiscriminant& prepared, std::int32_t fold) {
  const std::size_t n = prepared.classOf.size();
  const std::size_t first =
      prepared.folds.kind == Folds::Kind::Random       ? static_cast<std::size_t>(prepared.folds.draws.draws)
      : prepared.folds.kind == Folds::Kind::Systematic ? static_cast<std::size_t>(prepared.folds.groups)
                                                       : n;
  const FoldPlan plan = planOf(count32(first), prepared.folds, n);
  const RowsOfFolds folds(prepared.folds, plan, call.modelRows);
  const std::string culprits = withinClassCulprits(prepared, folds[static_cast<std::size_t>(fold - 1)].training);
  return fmt::format("fold {} of {} became singular{}", fold, plan.folds,
                     culprits.empty() ? std::string() : fmt::format(" (in its training rows {})", culprits));
}

void judgeValidation(Discriminant& result, const DiscriminantCall& call, const PreparedDiscriminant& prepared) {
  const std::size_t n = prepared.classOf.size(), training = n - result.plan.largest;
  const std::size_t taken = call.chosen().size();
  if (call.validated() && taken + prepared.classes() > training) {
    const std::string why = fmt::format("{} descriptors are too many for the {} training rows of a fold in {} classes",
                                        taken, training, prepared.classes());
    result.validation = Result<DiscriminantValidation>::failure(why);
    result.remarks.push_back(
        {Severity::Warning,
         "not-validated",
         fmt::format("not validated: {}. Try --select with a smaller number, or --folds loo.", why),
         {}});
    return;
  }
  if (call.validated()) {
    DiscriminantValidation validation;
    validation.confusion = confusionOf(call.cvConfusion, prepared.classes());
    result.validation = validation;
    if (call.restartedAt == 0) return;
    result.remarks.push_back({Severity::Warning,
                              "validation-restarted",
                              fmt::format("{}; the validation was run again with one row a fold.",
                                          spoiltFold(call, prepared, call.restartedAt)),
                              {}});
    return;
  }
  std::string why = call.restartedAt > 0
                        ? fmt::format("{}, and so did fold {} of {} when one row at a time was held out",
                                      spoiltFold(call, prepared, call.restartedAt), call.foldsBegun, call.foldsPlanned)
                        : spoiltFold(call, prepared, call.foldsBegun);
  result.validation = Result<DiscriminantValidation>::failure(why);
  result.remarks.push_back({Severity::Warning,
                            "not-validated",
                            fmt::format("not validated: {}. Try --select with a smaller number, or --exclude.", why),
                            {}});
}

// The same classes with every descriptor: what the selection is worth.
std::optional<Confusion> withAllDescriptors(const PreparedDiscriminant& prepared, const DiscriminantOptions& options,
                                            Watch& watch) {
  const ClassSelection everything{ClassSelection::Kind::All};
  const bool byColumn = prepared.folds.kind == Folds::Kind::Column;
  CallSettings all = settingsOf(everything);
  if (!byColumn) all.folds = settingsOf(prepared.folds);
  DiscriminantCall call = callDiscriminant(knownRows(prepared), prepared.classes(), all, prepared.folds.seed, watch,
                                           {"all descriptors, fold ", 50, 60});
  if (byColumn && call.status == 0)
    validateByColumn(call, prepared, everything, options.stop, watch, {"all descriptors, fold ", 50, 60});
  if (call.status != 0 || !call.validated() || call.restartedAt > 0) return std::nullopt;
  return confusionOf(call.cvConfusion, prepared.classes());
}

Model modelOf(const Discriminant& result, const DiscriminantCall& call, const CanonicalSpace& space,
              const std::vector<double>& priors) {
  ModelData data = modelOf(Model::Kind::Discriminant, result.used, call.chosen(), result.level);
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
  const std::size_t classes = prepared.classes();

  Discriminant result;
  result.used = prepared.data.used;
  result.remarks = prepared.data.remarks;
  result.classColumn = options.classColumn;
  result.selection = options.selection;
  result.priors = options.priors.kind;
  result.level = options.level;

  // 1. The rows of known class: the selection on all of them, and in every fold.
  CallSettings validated = settingsOf(options.selection);
  const bool byColumn = prepared.folds.kind == Folds::Kind::Column;
  if (!byColumn) validated.folds = settingsOf(prepared.folds);
  DiscriminantCall call = callDiscriminant(byColumn ? allRows(prepared) : knownRows(prepared), classes, validated,
                                           prepared.folds.seed, watch, {"fold ", 2, byColumn ? 10.0 : 45.0});
  if (call.status != 0 && (byColumn || call.foldsBegun == 0)) refuseStatus(call, prepared);
  if (byColumn) validateByColumn(call, prepared, options.selection, options.stop, watch, {"fold ", 10, 45});
  if (call.chosen().size() > prepared.classOf.size() - classes) refuseTooMany(call.chosen().size(), prepared);
  result.plan = planRun(call, prepared);
  judgeValidation(result, call, prepared);

  // 2. The same classifier places every row.
  const DiscriminantCall placing = callDiscriminant(allRows(prepared), classes, settingsOf(options.selection),
                                                    prepared.folds.seed, watch, {"", 45, 50});
  if (placing.status != 0) refuseStatus(placing, prepared);
  result.fitted = confusionOf(placing.confusion, classes);
  result.chosen = chosenNames(placing, result.used);
  result.steps = stepsOf(placing, prepared);
  result.descriptors = descriptorsOf(call, result.used);

  // 3. What the selection is worth, and why it ended.
  if (result.validation && options.selection.kind != ClassSelection::Kind::All)
    result.allDescriptors = withAllDescriptors(prepared, options, watch);
  result.stopReason = stopReasonOf(placing, prepared, options, result.steps, watch);

  // 4. Rows held out, one by one.
  std::optional<HeldOut> heldOut;
  if (result.validation) heldOut = heldOutRows(prepared, options, call, result.plan, watch, {"fold ", 62, 98});
  if (heldOut) {
    DiscriminantValidation validation = *result.validation;
    validation.foldsWithout = heldOut->foldsWithout;
    result.validation = validation;
  }

  // 5. Classes, canonical functions and rows in the table's units.
  const CanonicalSpace space(prepared.data.model, prepared.classOf, classes, placing.chosen());
  for (std::size_t k = 0; k < space.functions(); ++k) result.functions.push_back(space.function(k, result.used));
  result.classes = classesOf(prepared, result, space, priors);
  placeRows(result, prepared, Placement(prepared, placing, space, priors), heldOut);

  result.model = modelOf(result, placing, space, priors);
  remarkOnDiscriminant(result, heldOut);
  watch.report("analysis", "done", 98, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
