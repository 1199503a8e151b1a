#include "host/da/run.h"

#include "host/da/within_classes.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/engine.h>

#include <algorithm>
#include <limits>
#include <new>
#include <numeric>

namespace studystats {
namespace {

// The engine's view of a prepared table; classes count from 0 there.
struct EngineClasses {
  EngineClasses(const PreparedDiscriminant& prepared, const ClassSelection& selection) : classOf(prepared.classOf) {
    for (std::int32_t& c : classOf) --c;
    task.table = tableOf(prepared.data.model);
    task.classOf = classOf;
    task.classes = count32(prepared.classes());
    // n rows in g classes have n - g directions within classes; one descriptor more shows that they are too many.
    task.rules.mostVariables = count32(prepared.classOf.size() - prepared.classes() + 1);
    if (selection.kind == ClassSelection::Kind::All) task.rules = {.choice = engine::VariableChoice::Everything};
    if (selection.kind == ClassSelection::Kind::Number) {
      task.rules.choice = engine::VariableChoice::Number;
      task.rules.number = selection.number;
    }
  }
  static engine::Table tableOf(const Grid& grid) {
    const std::int32_t rows = count32(grid.rows);
    return {grid.values.data(), rows, count32(grid.columns), rows};
  }

  std::vector<std::int32_t> classOf;
  engine::DiscriminantTask task;
};

[[noreturn]] void refuseTooMany(std::size_t descriptors, const PreparedDiscriminant& prepared) {
  const std::size_t n = prepared.classOf.size(), g = prepared.classes();
  throw NotComputed(
      fmt::format("{} descriptors are too many for {} rows in {} classes: the covariance within classes is "
                  "singular. Try --select {}, or fewer --columns.",
                  descriptors, n, g, std::max<std::size_t>(1, (n - g) / 3)));
}

[[noreturn]] void refuse(engine::Status status, const FittedClassifier& fitted, const PreparedDiscriminant& prepared) {
  const std::size_t n = prepared.classOf.size(), g = prepared.classes();
  if (status == engine::Status::NotConverged)
    throw NotComputed("no descriptor tells the classes apart: each has the same mean in every class.");
  std::vector<std::size_t> rows(n);
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  const std::string culprits = withinClassCulprits(prepared, rows);
  if (!culprits.empty())
    throw NotComputed(fmt::format("the covariance within classes became singular: {}. Try --exclude.", culprits));
  std::vector<std::string> chosen;
  for (const TakenStep& step : fitted.steps) chosen.push_back(prepared.data.used.descriptors[step.descriptor]);
  if (chosen.size() + 1 > n - g) refuseTooMany(chosen.size() + 1, prepared);
  throw NotComputed(
      fmt::format("the covariance within classes became singular when a descriptor was added to {}: it depends on them "
                  "within every class. Try --select {}, or --exclude one of them.",
                  chosen.empty() ? "none" : listed(chosen, 8), std::max<std::size_t>(1, chosen.size())));
}

TakenStep taken(const engine::DiscriminantStep& step) {
  TakenStep one{static_cast<std::size_t>(step.variable), static_cast<double>(step.fraction), {}};
  one.classFractions.assign(step.classFractions.begin(), step.classFractions.end());
  return one;
}

Confusion confusionOf(std::span<const std::int32_t> counts, std::size_t classes) {
  Confusion confusion{classes, std::vector<std::size_t>(classes * classes)};
  for (std::size_t t = 0; t < classes; ++t)
    for (std::size_t q = 0; q < classes; ++q)
      confusion.counts[t * classes + q] = static_cast<std::size_t>(counts[t + q * classes]);
  return confusion;
}

Grid distancesOf(engine::Discriminant& analysis, const Grid& rows, std::size_t classes, EngineWatch& progress) {
  Grid distances{rows.rows, classes, std::vector<double>(rows.rows * classes)};
  if (rows.rows > 0)
    analysis.place(EngineClasses::tableOf(rows), {}, distances.values.data(), count32(rows.rows), {}, progress);
  return distances;
}

// The folds of an analysis; rows are dealt in the order of their classes.
engine::Folds foldsOf(const PreparedDiscriminant& prepared) {
  const std::vector<double> keys(prepared.classOf.begin(), prepared.classOf.end());
  return engineFolds(prepared.folds, ascendingRows(keys));
}

// One row a fold, drawn at random when the folds asked for were.
RunFolds oneRowAFold(const RunFolds& folds, std::size_t n) {
  RunFolds alone(Folds::leaveOneOut());
  if (folds.kind != Folds::Kind::Random) return alone;
  alone = folds;
  alone.draws.heldOut = 1.0 / static_cast<double>(n);
  alone.draws.draws = std::max(1, static_cast<int>(folds.draws.heldOut * folds.draws.draws * static_cast<double>(n)));
  return alone;
}

// Runs the folds and keeps what they say.
class Folding {
 public:
  Folding(const PreparedDiscriminant& prepared, engine::Discriminant& analysis)
      : prepared_(prepared), analysis_(analysis) {}

  // A fold that failed, if any; what it and the others gave is then forgotten by the next run.
  std::optional<FailedFold> run(const engine::Folds& folds, EngineWatch& progress) {
    const std::size_t classes = prepared_.classes();
    result_ = {};
    result_.heldOut.resize(prepared_.classOf.size());
    result_.foldsWithout.assign(classes, 0);
    result_.notTrained.assign(classes, 0);
    analysis_.restart();
    std::optional<FailedFold> failed;
    std::size_t number = 0;
    analysis_.validate(folds.source(), progress, [&](const engine::DiscriminantFold& fold) {
      ++number;
      if (fold.status == engine::Status::Done)
        keep(fold, number);
      else
        failed = FailedFold{
            number, static_cast<std::size_t>(folds.count()), {fold.rows.training.begin(), fold.rows.training.end()}};
    });
    const engine::DiscriminantValidation sums = analysis_.validation();
    result_.confusion = confusionOf(sums.confusion, classes);
    result_.timesChosen.assign(sums.timesChosen.begin(), sums.timesChosen.end());
    return failed;
  }

  FoldedDiscriminant take() { return std::move(result_); }

 private:
  std::vector<bool> classesAmong(std::span<const std::int32_t> rows) const {
    std::vector<bool> among(prepared_.classes(), false);
    for (const std::int32_t row : rows)
      among[static_cast<std::size_t>(prepared_.classOf[static_cast<std::size_t>(row)] - 1)] = true;
    return among;
  }

  void keep(const engine::DiscriminantFold& fold, std::size_t number) {
    const std::size_t classes = prepared_.classes();
    const std::vector<bool> held = classesAmong(fold.rows.heldOut), trained = classesAmong(fold.rows.training);
    for (std::size_t c = 0; c < classes; ++c) {
      if (!held[c]) ++result_.foldsWithout[c];
      if (!trained[c]) ++result_.notTrained[c];
    }
    for (std::size_t i = 0; i < fold.rows.heldOut.size(); ++i) {
      HeldOut one{number, {}, static_cast<std::size_t>(fold.predicted[i])};
      for (std::size_t c = 0; c < classes; ++c)
        one.values.push_back(trained[c] ? fold.distances.data[i + c * static_cast<std::size_t>(fold.distances.ld)]
                                        : std::numeric_limits<double>::quiet_NaN());
      result_.heldOut[static_cast<std::size_t>(fold.rows.heldOut[i])].push_back(std::move(one));
    }
  }

  const PreparedDiscriminant& prepared_;
  engine::Discriminant& analysis_;
  FoldedDiscriminant result_;
};

}  // namespace

FittedClassifier fitClassifier(const PreparedDiscriminant& prepared, const ClassSelection& selection, Watch& watch,
                               double from, double to) {
  const std::size_t room = prepared.classOf.size() - prepared.classes();
  const EngineClasses classes(prepared, selection);
  engine::Discriminant analysis(classes.task);
  EngineWatch progress(watch, "analysis", from, to);
  const engine::Status status = analysis.fit(progress);
  if (status == engine::Status::NoMemory) throw std::bad_alloc();

  const engine::DiscriminantModel& model = analysis.model();
  FittedClassifier fitted;
  for (const engine::DiscriminantStep& step : model.steps)
    if (step.variable >= 0) fitted.steps.push_back(taken(step));
  if (status != engine::Status::Done) refuse(status, fitted, prepared);
  fitted.chosen.assign(model.variables.begin(), model.variables.end());
  if (fitted.chosen.size() > room) refuseTooMany(fitted.chosen.size(), prepared);
  if (model.refused != nullptr) fitted.refused = taken(*model.refused);
  fitted.confusion = confusionOf(model.confusion, prepared.classes());
  fitted.distances = distancesOf(analysis, prepared.data.model, prepared.classes(), progress);
  fitted.predictedDistances = distancesOf(analysis, prepared.data.predicted, prepared.classes(), progress);
  return fitted;
}

FoldedDiscriminant foldClassifier(const PreparedDiscriminant& prepared, const ClassSelection& selection, Watch& watch,
                                  const std::string& stage, double from, double to) {
  const std::size_t n = prepared.classOf.size();
  const EngineClasses classes(prepared, selection);
  engine::Discriminant analysis(classes.task);
  if (!analysis) throw std::bad_alloc();
  EngineWatch progress(watch, stage, from, to);
  Folding folding(prepared, analysis);

  const engine::Folds folds = foldsOf(prepared);
  std::optional<FailedFold> restartedAt, failed = folding.run(folds, progress);
  FoldPlan plan = planOf(folds, prepared.folds, n);
  const bool severalRows = prepared.folds.kind == Folds::Kind::Systematic || prepared.folds.kind == Folds::Kind::Random;
  if (failed && severalRows) {
    restartedAt = std::exchange(failed, std::nullopt);
    PreparedDiscriminant alone = prepared;
    alone.folds = oneRowAFold(prepared.folds, n);
    const engine::Folds single = foldsOf(alone);
    failed = folding.run(single, progress);
    plan = planOf(single, alone.folds, n);
  }
  FoldedDiscriminant result = folding.take();
  result.restartedAt = std::move(restartedAt);
  result.failed = std::move(failed);
  result.plan = plan;
  return result;
}

}  // namespace studystats
