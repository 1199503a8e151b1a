#include "host/mlr/run.h"

#include "host/folds.h"
#include "host/preparation/magnitude.h"
#include "host/preparation/same_information.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/engine.h>

#include <cmath>
#include <limits>
#include <new>
#include <numeric>

namespace studystats {
namespace {

constexpr std::size_t kMostCompared = 100'000'000;  // cells: a second or so

// Descriptors and response in one matrix. The response is brought close to 1 by a power of two, which changes no digit:
// sums of squared residuals are rounded to 32 bits at every step, and would leave their range.
struct EngineTable {
  explicit EngineTable(const PreparedRegression& prepared)
      : rows(prepared.response.size()), columns(prepared.data.model.columns + 1), unit(unitFactor(prepared.response)) {
    cells.reserve(rows * columns);
    cells.assign(prepared.data.model.values.begin(), prepared.data.model.values.end());
    for (const double y : prepared.response) cells.push_back(y * unit);
  }
  engine::Table view() const { return {cells.data(), count32(rows), count32(columns), count32(rows)}; }

  std::size_t rows, columns;
  double unit;
  std::vector<double> cells;
};

std::vector<std::int32_t> counts32(const std::vector<std::size_t>& numbers) {
  std::vector<std::int32_t> counts;
  for (const std::size_t number : numbers) counts.push_back(count32(number));
  return counts;
}

[[noreturn]] void refuse(const PreparedRegression& prepared, std::span<const std::int32_t> descriptors) {
  std::vector<std::string> names;
  for (const std::int32_t j : descriptors) names.push_back(prepared.data.used.descriptors[static_cast<std::size_t>(j)]);
  throw NotComputed(
      fmt::format("the regression became singular with {} in the model: one of them is a combination of the "
                  "others. Try --exclude one of them, or a lower --corr-limit.",
                  listed(names, 8)));
}

std::vector<double> inUnit(std::span<const double> numbers, double unit) {
  std::vector<double> list(numbers.begin(), numbers.end());
  for (double& number : list) number *= unit;
  return list;
}

std::vector<double> listOf(std::span<const double> numbers) { return {numbers.begin(), numbers.end()}; }

FittedEquation equationOf(const engine::LinearModel& model, const engine::RegressionStatistics& s, double unit) {
  FittedEquation equation;
  equation.chosen.assign(model.descriptors.begin(), model.descriptors.end());
  equation.coefficients = inUnit(model.coefficients, unit);
  equation.intercept = model.intercept * unit;
  equation.standardErrors = inUnit(s.standardErrors, unit);
  equation.t = listOf(s.t);
  equation.p = listOf(s.tProbabilities);
  equation.fitted = inUnit(s.fitted, unit);
  equation.residuals = inUnit(s.residuals, unit);
  return equation;
}

RegressionFit fitOf(const engine::RegressionStatistics& s, double unit) {
  RegressionFit fit;
  const auto n = static_cast<double>(s.fitted.size());
  fit.dfModel = s.modelDf;
  fit.dfResidual = s.residualDf;
  fit.sumSqModel = s.modelSquares * unit * unit;
  fit.sumSqResidual = s.residualSquares * unit * unit;
  fit.sumSqTotal = s.totalSquares * unit * unit;
  fit.multipleR = s.multipleR;
  fit.r2 = fit.sumSqTotal > 0 ? fit.sumSqModel / fit.sumSqTotal : 0;
  fit.adjustedR2 = fit.dfResidual > 0 ? 1 - (fit.sumSqResidual / fit.dfResidual) / (fit.sumSqTotal / (n - 1))
                                      : std::numeric_limits<double>::quiet_NaN();
  fit.s = s.s * unit;
  fit.rmse = std::sqrt(fit.sumSqResidual / n);
  fit.f = s.f;
  if (s.fProbability >= 0) fit.fProbability = s.fProbability;
  return fit;
}

// Of the columns, the first two that say the same in the training rows of a fold: "x3, x7 identical in its rows".
std::string identicalInFold(const Prepared& prepared, const std::vector<std::size_t>& columns,
                            std::span<const std::int32_t> training) {
  std::vector<std::vector<double>> cells;
  for (const std::size_t j : columns) {
    cells.emplace_back();
    for (const std::int32_t row : training) cells.back().push_back(prepared.model(static_cast<std::size_t>(row), j));
  }
  const std::vector<SamePair> pairs = sameInformation({cells.begin(), cells.end()});
  if (pairs.empty()) return {};
  return fmt::format("{}, {} identical in its rows", prepared.used.descriptors[columns[pairs.front().kept]],
                     prepared.used.descriptors[columns[pairs.front().setAside]]);
}

double predictionOf(const engine::LinearModel& model, const engine::Table& table, std::int32_t row) {
  double sum = 0;
  for (std::size_t a = 0; a < model.coefficients.size(); ++a)
    sum += model.coefficients[a] * table.data[row + std::ptrdiff_t{model.descriptors[a]} * table.ld];
  return model.intercept + sum;
}

// Runs the folds and keeps what they say.
class Folding {
 public:
  Folding(const PreparedRegression& prepared, const EngineTable& table, const FittedEquation& equation,
          engine::Regression& regression)
      : prepared_(prepared), table_(table), equation_(equation), regression_(regression) {
    result_.heldOut.resize(table.rows);
  }

  FoldedRegression run(const engine::Folds& folds, EngineWatch& progress) {
    const std::size_t cells = static_cast<std::size_t>(folds.count()) * table_.rows * equation_.chosen.size();
    const bool compared = prepared_.folds.kind != Folds::Kind::Random && cells <= kMostCompared;
    for (std::int32_t f = 0; f < folds.count() && result_.singularFold == 0; ++f) {
      const engine::RegressionFold fold = regression_.fold(folds.source(), f, progress);
      regression_.add(fold, folds.weight());
      if (fold.status != engine::Status::Done)
        endAt(f, fold.rows.training);
      else if (compared &&
               !(result_.culprits = identicalInFold(prepared_.data, equation_.chosen, fold.rows.training)).empty())
        result_.singularFold = static_cast<std::size_t>(f) + 1;
      else
        keep(f, fold, folds.weight());
    }
    finish();
    return std::move(result_);
  }

 private:
  // A singular fold: two of its columns may be why. The analysis sees only a pivot that is exactly 0; scaled copies
  // leave rounding noise there, and with it an inverse without meaning, so that columns are compared besides.
  void endAt(std::int32_t fold, std::span<const std::int32_t> training) {
    result_.singularFold = static_cast<std::size_t>(fold) + 1;
    if (prepared_.folds.kind == Folds::Kind::Random) return;
    result_.culprits = identicalInFold(prepared_.data, equation_.chosen, training);
    if (!result_.culprits.empty()) return;
    std::vector<std::size_t> all(prepared_.data.model.columns);
    for (std::size_t j = 0; j < all.size(); ++j) all[j] = j;
    result_.culprits = identicalInFold(prepared_.data, all, training);
  }

  void keep(std::int32_t number, const engine::RegressionFold& fold, double weight) {
    for (std::size_t i = 0; i < fold.rows.heldOut.size(); ++i) {
      const std::int32_t row = fold.rows.heldOut[i];
      const auto at = static_cast<std::size_t>(row);
      result_.heldOut[at].push_back({static_cast<std::size_t>(number) + 1, {fold.predictions[i] / table_.unit}});
      const double error = predictionOf(fold.refit, table_.view(), row) / table_.unit - prepared_.response[at];
      result_.keptPress += weight * (error * error);
    }
  }

  void finish() {
    const engine::RegressionValidation sums = regression_.validation();
    result_.timesChosen.assign(sums.timesChosen.begin(), sums.timesChosen.end());
    if (result_.singularFold != 0) return;
    result_.press = sums.press / (table_.unit * table_.unit);
    result_.spreads = inUnit(sums.spreads, 1 / table_.unit);
    result_.constantSpread = sums.interceptSpread / table_.unit;
  }

  const PreparedRegression& prepared_;
  const EngineTable& table_;
  const FittedEquation& equation_;
  engine::Regression& regression_;
  FoldedRegression result_;
};

}  // namespace

RegressionRun runRegression(const PreparedRegression& prepared, const RegressionOptions& options, Watch& watch,
                            double from, double to) {
  const EngineTable table(prepared);
  std::vector<std::int32_t> start = counts32(prepared.start);
  if (options.selection == Selection::All) {
    start.resize(table.columns - 1);
    std::iota(start.begin(), start.end(), 0);
  }
  const engine::Folds folds = engineFolds(prepared.folds, ascendingRows(prepared.response));
  engine::Regression regression({.table = table.view(),
                                 .rules = {.fEnter = static_cast<float>(options.fEnter),
                                           .fRemove = static_cast<float>(options.fRemove),
                                           .corrLimit = static_cast<float>(options.corrLimit),
                                           .maxSteps = prepared.maxSteps},
                                 .start = start,
                                 .scale = prepared.data.used.scale,
                                 .shift = prepared.data.used.shift},
                                folds.count());
  EngineWatch progress(watch, "folds", from, to);
  const engine::Status status = regression.fit(progress);
  if (status == engine::Status::NoMemory) throw std::bad_alloc();
  const engine::RegressionModel model = regression.model();
  if (status != engine::Status::Done) refuse(prepared, model.equation.descriptors);

  RegressionRun run;
  const engine::RegressionStatistics statistics = regression.statistics();
  run.equation = equationOf(model.equation, statistics, 1 / table.unit);
  run.fit = fitOf(statistics, 1 / table.unit);
  for (const engine::SelectionStep& step : model.tried)
    run.tried.push_back({static_cast<std::size_t>(step.descriptor), step.entered, static_cast<double>(step.partialF),
                         static_cast<double>(step.f), static_cast<double>(step.s) / table.unit});
  run.steps = model.steps.size();
  run.plan = planOf(folds, prepared.folds, table.rows);
  run.folds = Folding(prepared, table, run.equation, regression).run(folds, progress);
  return run;
}

}  // namespace studystats
