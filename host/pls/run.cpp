#include "host/pls/run.h"

#include <fmt/format.h>
#include <studystats/engine.h>

#include <new>
#include <string>

namespace studystats {
namespace {

engine::PartialLeastSquaresTask taskOf(const PreparedPls& prepared, int components) {
  const std::int32_t n = count32(prepared.block.rows);
  return {.table = {prepared.block.values.data(), n, count32(prepared.block.columns), n},
          .responses = count32(prepared.block.columns - prepared.descriptors()),
          .components = components};
}

engine::Folds foldsOf(const PreparedPls& prepared) {
  return engineFolds(prepared.folds, ascendingRows(prepared.block.column(prepared.descriptors())));
}

[[noreturn]] void refuseNonConvergence(std::int32_t extracted, const std::string& where) {
  throw NotComputed(
      fmt::format("component {} did not converge in 1000 passes{}: its responses pull it two ways equally. "
                  "Try {}fewer --response columns, or one at a time.",
                  extracted + 1, where, extracted > 0 ? fmt::format("--components {}, ", extracted) : std::string()));
}

std::vector<double> listOf(std::span<const double> values) { return {values.begin(), values.end()}; }

// What a fold says of the rows that it held out, in table units.
void keep(const PreparedPls& prepared, const engine::PartialLeastSquaresFold& fold, std::size_t number, PlsRun& run) {
  run.ranks.push_back(static_cast<std::size_t>(fold.rank));
  for (std::size_t i = 0; i < fold.rows.heldOut.size(); ++i) {
    HeldOut one{number, {}};
    for (std::size_t k = 0; k < run.responses; ++k) {
      const std::size_t column = run.descriptors + k;
      for (std::size_t a = 0; a < run.components; ++a)
        one.values.push_back(prepared.means[column] +
                             prepared.scales[column] *
                                 fold.prediction(i, static_cast<std::int32_t>(a), static_cast<std::int32_t>(k)));
    }
    run.heldOut[static_cast<std::size_t>(fold.rows.heldOut[i])].push_back(std::move(one));
  }
}

}  // namespace

std::size_t PlsRun::keptByRatio(double limit) const {
  const engine::ComponentErrors sums{static_cast<std::int32_t>(components), press, rss, tss};
  return static_cast<std::size_t>(engine::componentsByRatio(sums, limit));
}

PlsRun runPls(const PreparedPls& prepared, Watch& watch, double from, double to) {
  engine::PartialLeastSquaresTask task = taskOf(prepared, prepared.components);
  task.scores = task.coefficients = task.coefficientErrors = true;
  engine::PartialLeastSquares pls(task);
  EngineWatch progress(watch, "folds", from, to);
  const engine::Status status = pls.fit(progress);
  if (status == engine::Status::NoMemory) throw std::bad_alloc();
  const engine::PartialLeastSquaresModel model = pls.model();
  if (status == engine::Status::NotConverged) refuseNonConvergence(model.components, {});

  PlsRun run;
  run.descriptors = prepared.descriptors();
  run.components = static_cast<std::size_t>(prepared.components);
  run.responses = prepared.block.columns - run.descriptors;
  run.coefficients = listOf(model.coefficients);
  run.rss = listOf(model.residualSquares);
  run.tss = listOf(model.totalSquares);
  run.structure = LatentStructure(prepared.block, model);
  run.heldOut.resize(prepared.block.rows);

  const engine::Folds folds = foldsOf(prepared);
  run.plan = planOf(folds, prepared.folds, prepared.block.rows);
  std::size_t number = 0;
  pls.validate(folds.source(), progress, [&](const engine::PartialLeastSquaresFold& fold) {
    ++number;
    if (fold.status != engine::Status::Done)
      refuseNonConvergence(fold.components, fmt::format(" in fold {} of {}", number, folds.count()));
    keep(prepared, fold, number, run);
  });
  run.press = listOf(pls.validation().press);
  run.errors = listOf(pls.validation().coefficientErrors);
  return run;
}

std::vector<double> pressCentredInside(const PreparedPls& prepared, int components, Watch& watch, double from,
                                       double to) {
  engine::PartialLeastSquaresTask task = taskOf(prepared, components);
  task.preparation = {.descriptors = {.centre = true}, .responses = {.centre = true}};
  engine::PartialLeastSquares pls(task);
  if (!pls) throw std::bad_alloc();
  EngineWatch progress(watch, "folds centred by themselves", from, to);
  const engine::Folds folds = foldsOf(prepared);
  if (pls.validate(folds.source(), progress) != engine::Status::Done) return {};
  const std::span<const double> press = pls.validation().press;
  std::vector<double> sums;
  for (std::size_t k = 0; k < prepared.block.columns - prepared.descriptors(); ++k)
    sums.push_back(press[static_cast<std::size_t>(components) * (k + 1) - 1]);
  return sums;
}

}  // namespace studystats
