// Partial least squares of a table: preparation, the analysis, the number of components, and what its rows are worth.
//
// The engine is given the model's rows alone, their means 0; others are predicted with the equation afterwards. Sums
// of squares come back in the block's units and are shown in those of the responses.
#include "host/limits.h"
#include "host/mlr/preparation.h"
#include "host/model/model_build.h"
#include "host/pls/latent_structure.h"
#include "host/pls/pls.h"
#include "host/pls/run.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

// Figures of each number of components for one response, in its unit.
std::vector<PlsFigures> figuresOf(const PlsRun& run, std::size_t k, double scale, double n) {
  std::vector<PlsFigures> figures;
  const double square = scale * scale;
  for (std::size_t a = 0; a < run.components; ++a) {
    PlsFigures one;
    one.rss = run.rss[run.at(a, k)] * square;
    one.press = run.press[run.at(a, k)] * square;
    const double before = a == 0 ? run.tss[k] : run.rss[run.at(a - 1, k)];
    one.ratio = before > 0 ? std::sqrt(run.press[run.at(a, k)] / before) : 0;
    one.r2 = run.tss[k] > 0 ? 1 - run.rss[run.at(a, k)] / run.tss[k] : 0;
    one.q2 = run.tss[k] > 0 ? 1 - run.press[run.at(a, k)] / run.tss[k] : 0;
    one.rmse = std::sqrt(one.rss / n);
    one.crossValidatedRmse = std::sqrt(one.press / n);
    figures.push_back(one);
  }
  return figures;
}

// Where PRESS as a share of each response's sum of squares is least, summed over responses; the smaller number of ties.
std::size_t leastPress(const PlsRun& run) {
  std::size_t best = 0;
  double least = std::numeric_limits<double>::infinity();
  for (std::size_t a = 0; a < run.components; ++a) {
    double sum = 0;
    for (std::size_t k = 0; k < run.responses; ++k)
      if (run.tss[k] > 0) sum += run.press[run.at(a, k)] / run.tss[k];
    if (sum < least) {
      least = sum;
      best = a;
    }
  }
  return best + 1;
}

std::size_t keptOf(const PlsRun& run, const ComponentChoice& choice) {
  if (choice.kind == ComponentChoice::Kind::Minimum) return leastPress(run);
  if (choice.kind == ComponentChoice::Kind::Number)
    return std::min(static_cast<std::size_t>(choice.number), run.components);
  return run.keptByRatio(static_cast<double>(static_cast<float>(choice.limit)));
}

PlsResponse responseResult(const PreparedPls& prepared, const PlsRun& run, std::size_t k, std::size_t kept,
                           const std::string& name) {
  const std::size_t p = run.descriptors;
  PlsResponse response;
  response.name = name;
  response.mean = prepared.means[p + k];
  response.sd = sampleSd(prepared.responses[k]);
  response.components = figuresOf(run, k, prepared.scales[p + k], static_cast<double>(prepared.block.rows));
  double shifted = 0;
  for (std::size_t j = 0; j < p; ++j) {
    const double unit = prepared.scales[p + k] / prepared.scales[j];
    response.preparedCoefficients.push_back(run.coefficient(j, kept - 1, k));
    response.coefficients.push_back(run.coefficient(j, kept - 1, k) * unit);
    response.coefficientErrors.push_back(run.error(j, kept - 1, k) * unit);
    shifted += prepared.means[j] * response.coefficients.back();
  }
  response.constant = response.mean - shifted;
  return response;
}

// A row of a prepared grid with the block's means, which differ from the preparation's where that leaves a mean.
std::vector<double> blockRow(const PreparedPls& prepared, const Grid& grid, std::size_t row) {
  const UsedData& used = prepared.data.used;
  std::vector<double> values;
  for (std::size_t j = 0; j < grid.columns; ++j)
    values.push_back(grid(row, j) - (prepared.means[j] - used.shift[j]) / used.scale[j]);
  return values;
}

PlsRow placedRow(const PartialLeastSquares& result, const PreparedPls& prepared, const LatentStructure& structure,
                 const std::vector<double>& values, const BlockRow& source, Role role) {
  const auto kept = static_cast<std::size_t>(result.kept);
  PlsRow row;
  row.name = source.name;
  row.role = role;
  for (std::size_t k = 0; k < result.responses.size(); ++k) {
    const PlsResponse& response = result.responses[k];
    row.observed.push_back(responseOf(source, response.name));
    const double sum = std::inner_product(values.begin(), values.end(), response.preparedCoefficients.begin(), 0.0);
    row.fitted.push_back(response.mean + prepared.scales[values.size() + k] * sum);
  }
  row.scores = structure.scoresOf(values);
  row.t2 = structure.t2(row.scores, kept);
  row.q = structure.residual(values, row.scores, kept);
  row.scores.resize(std::min(row.scores.size(), kept));
  return row;
}

void placeRows(PartialLeastSquares& result, const PreparedPls& prepared, const LatentStructure& structure,
               Watch& watch) {
  const Prepared& data = prepared.data;
  std::vector<double> residuals;
  double total = 0;
  for (std::size_t i = 0; i < data.modelRows.size(); ++i) {
    std::vector<double> values;
    for (std::size_t j = 0; j < data.model.columns; ++j) values.push_back(prepared.block(i, j));
    result.rows.push_back(placedRow(result, prepared, structure, values, data.modelRows[i], Role::Model));
    residuals.push_back(result.rows.back().q);
    total += std::inner_product(values.begin(), values.end(), values.begin(), 0.0);
    if (i % 1024 == 0) watch.check();
  }
  for (std::size_t i = 0; i < data.predictedRows.size(); ++i)
    result.rows.push_back(placedRow(result, prepared, structure, blockRow(prepared, data.predicted, i),
                                    data.predictedRows[i], Role::Predicted));
  const auto n = static_cast<double>(data.modelRows.size());
  result.t2Limit = t2LimitOf(
      static_cast<double>(std::min<std::size_t>(structure.components(), static_cast<std::size_t>(result.kept))), n,
      result.level);
  result.qLimit = qLimitOf(residuals, total / n, result.level);
}

void judgePredictions(PartialLeastSquares& result) {
  for (std::size_t k = 0; k < result.responses.size(); ++k) {
    PlsPredicted predicted;
    double squares = 0, sum = 0;
    for (const PlsRow& row : result.rows) {
      if (row.role != Role::Predicted || !row.observed[k]) continue;
      const double error = row.fitted[k] - *row.observed[k];
      ++predicted.rows;
      squares += error * error;
      sum += error;
    }
    if (predicted.rows == 0) continue;
    predicted.rmse = std::sqrt(squares / static_cast<double>(predicted.rows));
    predicted.bias = sum / static_cast<double>(predicted.rows);
    result.responses[k].predicted = predicted;
  }
}

void addHeldOut(PartialLeastSquares& result, const PlsRun& run) {
  const auto components = static_cast<std::size_t>(result.computed);
  for (std::size_t a = 0; a < components; ++a)
    result.foldsWithout.push_back(static_cast<std::size_t>(
        std::count_if(run.ranks.begin(), run.ranks.end(), [a](std::size_t rank) { return rank <= a; })));
  for (std::size_t i = 0; i < run.heldOut.size(); ++i) {
    PlsRow& row = result.rows[i];
    const std::vector<HeldOut>& predictions = run.heldOut[i];
    row.timesHeldOut = predictions.size();
    if (predictions.empty()) continue;
    if (predictions.size() == 1) row.fold = predictions.front().fold;
    row.heldOutRank = components;
    for (const HeldOut& one : predictions) row.heldOutRank = std::min(row.heldOutRank, run.ranks[one.fold - 1]);
    for (std::size_t k = 0; k < result.responses.size(); ++k) {
      row.heldOut.emplace_back(components, 0.0);
      for (const HeldOut& one : predictions)
        for (std::size_t a = 0; a < components; ++a) row.heldOut[k][a] += one.values[a + k * components];
      for (double& value : row.heldOut[k]) value /= static_cast<double>(predictions.size());
    }
  }
}

// What q2 would be with every fold centred on its own training rows: the share that the common centring hides.
void addCentredInside(PartialLeastSquares& result, const PreparedPls& prepared, const PlsRun& run, Watch& watch) {
  const std::vector<double> press = pressCentredInside(prepared, result.kept, watch, 60, 98);
  for (std::size_t k = 0; k < press.size(); ++k) result.responses[k].centredInsideQ2 = 1 - press[k] / run.tss[k];
}

Grid gridOf(std::size_t rows, std::size_t columns, const auto& column) {
  Grid grid{rows, columns, {}};
  for (std::size_t a = 0; a < columns; ++a) {
    const std::vector<double>& values = column(a);
    grid.values.insert(grid.values.end(), values.begin(), values.end());
  }
  return grid;
}

void addStructure(PartialLeastSquares& result, const LatentStructure& structure, const PlsRun& run) {
  const auto kept = std::min(static_cast<std::size_t>(result.kept), structure.components());
  for (std::size_t a = 0; a < structure.components(); ++a) result.explained.push_back(structure.explained(a));
  result.weights = gridOf(
      run.descriptors, kept, [&](std::size_t a) -> const auto& { return structure.weights(a); });
  result.loadings = gridOf(
      run.descriptors, kept, [&](std::size_t a) -> const auto& { return structure.loadings(a); });
  result.responseLoadings = gridOf(
      run.responses, kept, [&](std::size_t a) -> const auto& { return structure.responseLoadings(a); });
  result.vip = structure.vip(kept);
}

PlsModelResponse modelResponse(const PartialLeastSquares& result, const PreparedPls& prepared, const PlsRun& run,
                               std::size_t k) {
  const std::size_t p = run.descriptors;
  PlsModelResponse response;
  response.mean = prepared.means[p + k];
  response.scale = prepared.scales[p + k];
  response.coefficients = {p, run.components, {}};
  response.inTableUnits = TableEquation{result.responses[k].constant, result.responses[k].coefficients};
  for (std::size_t a = 0; a < run.components; ++a) {
    for (std::size_t j = 0; j < p; ++j) response.coefficients.values.push_back(run.coefficient(j, a, k));
    const PlsFigures& figures = result.responses[k].components[a];
    response.r2.push_back(figures.r2);
    response.q2.push_back(figures.q2);
    response.rmse.push_back(figures.rmse);
    response.crossValidatedRmse.push_back(figures.crossValidatedRmse);
  }
  return response;
}

Model modelOf(const PartialLeastSquares& result, const PreparedPls& prepared, const PlsRun& run,
              const LatentStructure& structure) {
  std::vector<std::size_t> all(run.descriptors);
  std::iota(all.begin(), all.end(), std::size_t{0});
  ModelData data = modelOf(Model::Kind::PartialLeastSquares, result.used, all, result.level);
  for (std::size_t j = 0; j < all.size(); ++j) data.descriptors[j].shift = prepared.means[j];  // mean 0 in the block
  data.components = static_cast<std::size_t>(result.kept);
  data.validation.scheme = describedFolds(result.plan);
  const std::size_t components = structure.components();
  PlaneModel plane;
  plane.centre.assign(run.descriptors, 0.0);
  plane.offsets.assign(components, 0.0);
  plane.rotations = gridOf(
      run.descriptors, components, [&](std::size_t a) -> const auto& { return structure.rotation(a); });
  plane.loadings = gridOf(
      run.descriptors, components, [&](std::size_t a) -> const auto& { return structure.loadings(a); });
  for (const auto& [mean, variance] : structure.residualMoments(prepared.block)) {
    plane.qMeans.push_back(mean);
    plane.qVariances.push_back(variance);
  }
  for (std::size_t a = 0; a < components; ++a) plane.variances.push_back(structure.variance(a));
  plane.explained = result.explained;
  data.plane = std::move(plane);
  for (std::size_t k = 0; k < run.responses; ++k) {
    data.responses.push_back(result.responses[k].name);
    data.pls.push_back(modelResponse(result, prepared, run, k));
  }
  return sealed(std::move(data));
}

}  // namespace

bool outsideDomain(const PartialLeastSquares& result, const PlsRow& row) {
  return (result.t2Limit && row.t2 > *result.t2Limit) || (result.qLimit && row.q > *result.qLimit);
}

PartialLeastSquares partialLeastSquares(const TableView& table, const PartialLeastSquaresOptions& options) try {
  Watch watch(options.progress, options.stop);
  watch.report("preparing", "preparing the table", 0, 2, 0, 1);
  const PreparedPls prepared = preparePls(table, options, watch);

  PartialLeastSquares result;
  result.used = prepared.data.used;
  result.remarks = prepared.data.remarks;
  result.choice = options.choice;
  result.level = options.level;
  result.computed = prepared.components;

  // 1. The model and its validation.
  const PlsRun run = runPls(prepared, watch, 2, 60);
  const LatentStructure& structure = run.structure;
  result.plan = run.plan;

  // 2. How many components, and what they say.
  const std::size_t kept = keptOf(run, options.choice);
  result.kept = static_cast<int>(kept);
  for (std::size_t k = 0; k < run.responses; ++k)
    result.responses.push_back(responseResult(prepared, run, k, kept, options.responses[k]));
  addStructure(result, structure, run);

  // 3. The rows: in the model, kept out, held out.
  placeRows(result, prepared, structure, watch);
  judgePredictions(result);
  addHeldOut(result, run);
  addCentredInside(result, prepared, run, watch);

  result.model = modelOf(result, prepared, run, structure);
  remarkOnPls(result);
  watch.report("analysis", "done", 98, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
