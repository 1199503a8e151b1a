#include "host/mlr/regression_call.h"

#include "host/folds.h"
#include "host/monitor.h"
#include "host/preparation/magnitude.h"
#include "host/preparation/same_information.h"
#include "host/text.h"

#include <fmt/format.h>
#include <studystats/analyses.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

constexpr double kUnset = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kMostCompared = 100'000'000;  // cells: a second or so

// Descriptors and response in one column-major matrix.
std::vector<double> matrixOf(const Grid& model, const std::vector<std::size_t>& columns,
                             const std::vector<double>& response) {
  std::vector<double> data;
  data.reserve(model.rows * (columns.size() + 1));
  for (const std::size_t j : columns) {
    const std::span<const double> column = model.column(j);
    data.insert(data.end(), column.begin(), column.end());
  }
  data.insert(data.end(), response.begin(), response.end());
  return data;
}

struct Request {
  std::vector<double> data, scale, shift;
  float fEnter, fRemove, corrLimit;
  std::int32_t n, p, maxSteps;
};

// What a call returns in the response's unit, or that unit's square, times the unit that the response was divided by.
void giveBackUnit(RegressionCall& call, double unit) {
  for (std::vector<double>* figures :
       {&call.fitted, &call.resid, &call.rawCoef, &call.coef, &call.cvCoefSd, &call.coefSe, &call.stepS})
    for (double& figure : *figures) figure *= unit;
  for (double* figure : {&call.rawIntercept, &call.intercept, &call.sValue}) *figure *= unit;
  if (!call.abandoned()) call.cvInterceptSd *= unit;
  for (double& sum : call.sumSq) sum *= unit * unit;
  call.press *= unit * unit;
}

// What a call will return, sized and filled beforehand.
RegressionCall sizedFor(const Request& request) {
  const auto rows = static_cast<std::size_t>(request.n), columns = static_cast<std::size_t>(request.p);
  const auto steps = static_cast<std::size_t>(std::max(request.maxSteps, 1));
  RegressionCall call;
  call.maxSteps = request.maxSteps;
  for (std::vector<double>* perRow : {&call.fitted, &call.resid}) perRow->assign(rows, kUnset);
  for (std::vector<double>* perColumn :
       {&call.rawCoef, &call.coef, &call.cvCoefSd, &call.coefSe, &call.tValue, &call.tProb})
    perColumn->assign(columns, kUnset);
  for (std::vector<float>* perStep : {&call.stepPartialF, &call.stepF})
    perStep->assign(steps, std::numeric_limits<float>::quiet_NaN());
  call.stepAction.assign(steps, -1);
  call.stepVar.assign(steps, 0);
  call.sumSq.assign(3, kUnset);
  call.df.assign(3, 0);
  call.inList.assign(columns, 0);
  call.cvSelCount.assign(columns, 0);
  call.rowIds.resize(rows);
  std::iota(call.rowIds.begin(), call.rowIds.end(), 1);
  return call;
}

// The 52 arguments. The response is brought close to 1 by a power of two, which changes no digit: sums of squared
// residuals are rounded to 32 bits at every step, and would leave their range.
RegressionCall run(Request request, std::vector<std::int32_t> flags, const FoldSettings& settings, std::int32_t seed,
                   Watch& watch, const std::string& text, double from, double to) {
  const std::int32_t n = request.n, p = request.p;
  const auto rows = static_cast<std::size_t>(n), columns = static_cast<std::size_t>(p);
  RegressionCall call = sizedFor(request);
  call.flags = std::move(flags);
  std::vector<float> stepS(call.stepF);
  const std::vector<std::int32_t> tags(2 * rows, 0), usable(rows, 1);
  std::vector<double> corr(columns * columns, kUnset);
  const std::int32_t maxFolds = 1;
  float fStart = 0, sStart = 0;
  std::int32_t goOn = 1;
  const std::span<double> response = std::span(request.data).last(rows);
  const double factor = unitFactor(response);
  for (double& value : response) value *= factor;

  HostMonitor monitor(watch, "folds", text, from, to);
  const ValidatingAlone alone(seed);
  MulReg(request.data.data(), tags.data(), call.rowIds.data(), usable.data(), n, p, request.scale.data(),
         request.shift.data(), corr.data(), /*reserved*/ 0, request.fEnter, request.fRemove, request.maxSteps,
         request.corrLimit, call.flags.data(), settings.method, settings.groups, settings.fraction, call.fitted.data(),
         call.resid.data(), &fStart, &sStart, &call.rawIntercept, &call.intercept, &call.multR, &call.fValue,
         &call.sValue, &call.fProb, &call.q2, &call.press, &call.cvInterceptSd, call.df.data(), call.sumSq.data(),
         call.rawCoef.data(), call.coef.data(), call.cvCoefSd.data(), call.coefSe.data(), call.tValue.data(),
         call.tProb.data(), call.inList.data(), call.cvSelCount.data(), call.stepPartialF.data(), call.stepF.data(),
         stepS.data(), call.stepAction.data(), call.stepVar.data(), &call.nIn, &call.nSteps, &maxFolds, &call.status,
         monitor.monitor(), &goOn);
  monitor.rethrow();
  if (call.status == 999) throw Stopped();
  call.stepS.assign(stepS.begin(), stepS.end());
  giveBackUnit(call, 1 / factor);
  call.reports = monitor.reports();
  call.foldsPlanned = monitor.monitor()->minorIterationCount;
  for (std::int32_t a = 0; call.status == 0 && a < call.nIn; ++a)
    call.chosen.push_back(static_cast<std::size_t>(call.inList[static_cast<std::size_t>(a)] - 1));
  return call;
}

// Of the columns, the first two that say the same in the training rows of a fold: "x3, x7 identical in its rows".
std::string identicalInFold(const Prepared& prepared, const std::vector<std::size_t>& columns,
                            const std::vector<std::size_t>& training) {
  std::vector<std::vector<double>> cells;
  for (const std::size_t j : columns) {
    cells.emplace_back();
    for (const std::size_t row : training) cells.back().push_back(prepared.model(row, j));
  }
  const std::vector<SamePair> pairs = sameInformation({cells.begin(), cells.end()});
  if (pairs.empty()) return {};
  return fmt::format("{}, {} identical in its rows", prepared.used.descriptors[columns[pairs.front().kept]],
                     prepared.used.descriptors[columns[pairs.front().setAside]]);
}

// The request for rows of the table in the order given, and the flags to begin with.
Request requestFor(const PreparedRegression& prepared, const RegressionOptions& options, std::vector<double> data,
                   std::size_t rows) {
  std::vector<double> scale = prepared.data.used.scale, shift = prepared.data.used.shift;
  scale.push_back(1);
  shift.push_back(0);
  return {std::move(data),
          std::move(scale),
          std::move(shift),
          static_cast<float>(options.fEnter),
          static_cast<float>(options.fRemove),
          static_cast<float>(options.corrLimit),
          count32(rows),
          count32(prepared.data.model.columns + 1),
          prepared.maxSteps};
}

std::vector<std::int32_t> startingFlags(const PreparedRegression& prepared) {
  std::vector<std::int32_t> flags(prepared.data.model.columns + 1, 0);
  for (const std::size_t j : prepared.start) flags[j] = 1;
  return flags;
}

}  // namespace

RegressionCall callRegression(const PreparedRegression& prepared, const RegressionOptions& options, Watch& watch,
                              double from, double to) {
  const Grid& model = prepared.data.model;
  std::vector<std::size_t> all(model.columns);
  std::iota(all.begin(), all.end(), std::size_t{0});
  return run(requestFor(prepared, options, matrixOf(model, all, prepared.response), model.rows),
             startingFlags(prepared), settingsOf(prepared.folds), prepared.folds.seed, watch, "fold ", from, to);
}

namespace {

// The columns in the rows of a fold's training set, in the order in which they were taken; the response last.
std::vector<double> trainingData(const PreparedRegression& prepared, const std::vector<std::size_t>& columns,
                                 const std::vector<std::size_t>& training) {
  std::vector<double> data;
  data.reserve(training.size() * (columns.size() + 1));
  for (const std::size_t j : columns)
    for (const std::size_t row : training) data.push_back(prepared.data.model(row, j));
  for (const std::size_t row : training) data.push_back(prepared.response[row]);
  return data;
}

// A fold is run again by a call on its training rows; that call's own validation has one group, which leaves nothing to
// train on and costs nothing.
RegressionCall callOnTraining(const PreparedRegression& prepared, const RegressionOptions& options,
                              const FoldRows& fold, Watch& watch) {
  std::vector<std::size_t> all(prepared.data.model.columns);
  std::iota(all.begin(), all.end(), std::size_t{0});
  return run(requestFor(prepared, options, trainingData(prepared, all, fold.training), fold.training.size()),
             startingFlags(prepared), {.method = 1, .groups = 1}, prepared.folds.seed, watch, {}, 0, 0);
}

// The chosen descriptors alone, all of them in the model.
RegressionCall refitOnTraining(const PreparedRegression& prepared, const std::vector<std::size_t>& chosen,
                               const FoldRows& fold, Watch& watch) {
  std::vector<double> scale, shift;
  for (const std::size_t j : chosen) {
    scale.push_back(prepared.data.used.scale[j]);
    shift.push_back(prepared.data.used.shift[j]);
  }
  scale.push_back(1);
  shift.push_back(0);
  const std::size_t p = chosen.size() + 1;
  return run({trainingData(prepared, chosen, fold.training), std::move(scale), std::move(shift), 0.0F, 0.0F, 1.0F,
              count32(fold.training.size()), count32(p), 0},
             std::vector<std::int32_t>(p, 0), {.method = 1, .groups = 1}, prepared.folds.seed, watch, {}, 0, 0);
}

// columns: which column of the model each chosen descriptor of the call is.
double predictedBy(const RegressionCall& call, const Grid& model, const std::vector<std::size_t>& columns,
                   std::size_t row) {
  double sum = 0;
  for (std::size_t a = 0; a < columns.size(); ++a) sum += call.coef[a] * model(row, columns[a]);
  return call.intercept + sum;
}

// Jackknife spread over folds of equal weight, as the analysis has it.
double spreadOf(const std::vector<double>& values) {
  const auto folds = static_cast<double>(values.size());
  const double mean = std::accumulate(values.begin(), values.end(), 0.0) / folds;
  double squares = 0;
  for (const double value : values) squares += (mean - value) * (mean - value);
  return std::sqrt((folds - 1) / folds * squares);
}

}  // namespace

std::vector<std::vector<HeldOutPrediction>> heldOutPredictions(const PreparedRegression& prepared,
                                                               const RegressionOptions& options,
                                                               const RegressionCall& call, const FoldPlan& plan,
                                                               Watch& watch, double from, double to) {
  const Grid& model = prepared.data.model;
  const RowsOfFolds folds(prepared.folds, plan, call.rowIds);
  std::vector<std::vector<HeldOutPrediction>> predictions(model.rows);
  for (std::size_t f = 0; f < folds.size(); ++f) {
    watch.report("held-out rows", fmt::format("held-out rows of fold {} of {}", f + 1, folds.size()), from, to,
                 static_cast<std::int64_t>(f), static_cast<std::int64_t>(folds.size()));
    const FoldRows rows = folds[f];
    const RegressionCall fold = callOnTraining(prepared, options, rows, watch);
    if (fold.status != 0) continue;
    for (const std::size_t row : rows.heldOut)
      predictions[row].push_back({f + 1, predictedBy(fold, model, fold.chosen, row)});
  }
  return predictions;
}

void validateByColumn(RegressionCall& call, const PreparedRegression& prepared, const RegressionOptions& options,
                      Watch& watch, double from, double to) {
  const Grid& model = prepared.data.model;
  const FoldPlan plan = planOf(0, prepared.folds, model.rows);
  const RowsOfFolds folds(prepared.folds, plan, call.rowIds);
  call.foldsPlanned = count32(plan.folds);
  call.cvInterceptSd = -1;
  call.press = 0;
  call.cvSelCount.assign(model.columns + 1, 0);
  double fixedPress = 0;
  std::vector<double> constants;
  std::vector<std::vector<double>> coefficients(call.chosen.size());
  for (std::size_t f = 0; f < folds.size(); ++f) {
    call.reports = static_cast<std::int64_t>(f) + 1;
    watch.report("folds", fmt::format("fold {} of {}", f + 1, folds.size()), from, to, static_cast<std::int64_t>(f),
                 static_cast<std::int64_t>(folds.size()));
    const FoldRows rows = folds[f];
    const RegressionCall fold = callOnTraining(prepared, options, rows, watch);
    const RegressionCall refit = refitOnTraining(prepared, call.chosen, rows, watch);
    if (fold.status != 0 || refit.status != 0) return;  // abandoned
    for (const std::size_t j : fold.chosen) ++call.cvSelCount[j];
    constants.push_back(refit.rawIntercept);
    for (std::size_t a = 0; a < call.chosen.size(); ++a) coefficients[a].push_back(refit.rawCoef[a]);
    for (const std::size_t row : rows.heldOut) {
      call.press += std::pow(predictedBy(fold, model, fold.chosen, row) - prepared.response[row], 2);
      fixedPress += std::pow(predictedBy(refit, model, call.chosen, row) - prepared.response[row], 2);
    }
  }
  call.q2 = call.sumSq[2] > 0 ? 1 - call.press / call.sumSq[2] : 0;
  call.fixedSetQ2 = call.sumSq[2] > 0 ? 1 - fixedPress / call.sumSq[2] : 0;
  call.cvInterceptSd = spreadOf(constants);
  for (std::size_t a = 0; a < call.chosen.size(); ++a) call.cvCoefSd[call.chosen[a]] = spreadOf(coefficients[a]);
}

std::optional<double> fixedSetQ2(const PreparedRegression& prepared, const std::vector<std::size_t>& chosen,
                                 Watch& watch, double from, double to) {
  const std::size_t p = chosen.size() + 1;
  const RegressionCall call =
      run({matrixOf(prepared.data.model, chosen, prepared.response), std::vector<double>(p, 1.0),
           std::vector<double>(p, 0.0), 0.0F, 0.0F, 1.0F, count32(prepared.response.size()), count32(p), 0},
          std::vector<std::int32_t>(p, 0), settingsOf(prepared.folds), prepared.folds.seed, watch,
          "chosen descriptors kept, fold ", from, to);
  if (call.status != 0 || call.abandoned()) return {};
  return call.q2;
}

std::optional<SingularFold> singularFold(const RegressionCall& call, const PreparedRegression& prepared) {
  const Prepared& data = prepared.data;
  if (prepared.folds.kind == Folds::Kind::Random)  // not drawn again for this
    return call.abandoned() ? std::optional<SingularFold>({call.reports, {}}) : std::nullopt;
  std::vector<std::size_t> all(data.model.columns);
  std::iota(all.begin(), all.end(), std::size_t{0});
  const RowsOfFolds folds(prepared.folds, planOf(call.foldsPlanned, prepared.folds, data.model.rows), call.rowIds);
  if (call.abandoned()) {
    const FoldRows rows = folds[static_cast<std::size_t>(call.reports - 1)];
    std::string culprits = identicalInFold(data, call.chosen, rows.training);
    if (culprits.empty()) culprits = identicalInFold(data, all, rows.training);
    return SingularFold{call.reports, culprits};
  }
  const std::size_t cells = folds.size() * data.model.rows * call.chosen.size();
  for (std::size_t fold = 0; cells <= kMostCompared && fold < folds.size(); ++fold)
    if (std::string culprits = identicalInFold(data, call.chosen, folds[fold].training); !culprits.empty())
      return SingularFold{static_cast<std::int64_t>(fold) + 1, culprits};
  return {};
}

}  // namespace studystats
