#include "host/pls/held_out.h"

#include "host/pls/latent_structure.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

// The rows of a fold in the order in which the analysis takes them, moved by `centre`.
Grid rowsOf(const Grid& block, const std::vector<std::size_t>& rows, const std::vector<double>& centre) {
  Grid taken{rows.size(), block.columns, {}};
  taken.values.reserve(rows.size() * block.columns);
  for (std::size_t j = 0; j < block.columns; ++j)
    for (const std::size_t row : rows) taken.values.push_back(block(row, j) - centre[j]);
  return taken;
}

std::vector<double> centreOf(const Grid& block, const std::vector<std::size_t>& rows, FoldCentring centring) {
  std::vector<double> centre(block.columns, 0.0);
  if (centring == FoldCentring::AllRows) return centre;
  for (std::size_t j = 0; j < block.columns; ++j) {
    for (const std::size_t row : rows) centre[j] += block(row, j);
    centre[j] /= static_cast<double>(rows.size());
  }
  return centre;
}

// Predictions of one held-out row, in table units.
std::vector<double> predict(const PreparedPls& prepared, const PlsCall& call, const Grid& heldOut, std::size_t row,
                            const std::vector<double>& centre) {
  std::vector<double> values;
  for (std::size_t k = 0; k < call.responses; ++k) {
    const std::size_t column = call.descriptors + k;
    for (std::size_t a = 0; a < call.components; ++a) {
      double sum = 0;
      for (std::size_t j = 0; j < call.descriptors; ++j) sum += heldOut(row, j) * call.coefficient(j, a, k);
      values.push_back(prepared.means[column] + prepared.scales[column] * (centre[column] + sum));
    }
  }
  return values;
}

}  // namespace

PlsHeldOut plsHeldOut(const PreparedPls& prepared, const FoldPlan& plan, const std::vector<std::int32_t>& order,
                      int components, FoldCentring centring, Watch& watch, double from, double to) {
  const RowsOfFolds folds(prepared.folds, plan, order);
  const std::vector<double> units(prepared.block.columns, 1.0);
  PlsHeldOut heldOut;
  heldOut.rows.resize(prepared.block.rows);
  for (std::size_t f = 0; f < folds.size(); ++f) {
    watch.report("held-out rows", fmt::format("held-out rows of fold {} of {}", f + 1, folds.size()), from, to,
                 static_cast<std::int64_t>(f), static_cast<std::int64_t>(folds.size()));
    const FoldRows fold = folds[f];
    const std::vector<double> centre = centreOf(prepared.block, fold.training, centring);
    const Grid training = rowsOf(prepared.block, fold.training, centre);
    const Grid rows = rowsOf(prepared.block, fold.heldOut, centre);
    const PlsCall call = callPls({.block = training, .descriptors = prepared.descriptors(), .components = components},
                                 prepared.folds.seed, watch, {}, 0, 0);
    heldOut.ranks.push_back(LatentStructure(training, units, call, call.components).components());
    for (std::size_t i = 0; call.status == 0 && i < rows.rows; ++i)
      heldOut.rows[fold.heldOut[i]].push_back({f + 1, predict(prepared, call, rows, i, centre)});
  }
  return heldOut;
}

void validatePlsByColumn(PlsCall& call, const PreparedPls& prepared, Watch& watch, double from, double to) {
  const FoldPlan plan = planOf(0, prepared.folds, prepared.block.rows);
  const RowsOfFolds folds(prepared.folds, plan, call.order);
  const std::vector<double> asTheyAre(prepared.block.columns, 0.0);
  call.foldsPlanned = static_cast<std::int32_t>(plan.folds);
  std::fill(call.press.begin(), call.press.end(), 0.0);
  std::vector<std::vector<double>> coefficients;  // of every fold, in the block's units
  for (std::size_t f = 0; f < folds.size(); ++f) {
    watch.report("folds", fmt::format("fold {} of {}", f + 1, folds.size()), from, to, static_cast<std::int64_t>(f),
                 static_cast<std::int64_t>(folds.size()));
    const FoldRows rows = folds[f];
    const Grid training = rowsOf(prepared.block, rows.training, asTheyAre);
    PlsCall fold =
        callPls({.block = training, .descriptors = prepared.descriptors(), .components = prepared.components},
                prepared.folds.seed, watch, {}, 0, 0);
    call.foldsBegun = static_cast<std::int32_t>(f) + 1;
    if (fold.status != 0) {
      call.status = fold.status;
      return;
    }
    for (std::size_t k = 0; k < call.responses; ++k)
      for (std::size_t a = 0; a < call.components; ++a)
        for (const std::size_t row : rows.heldOut) {
          double sum = 0;
          for (std::size_t j = 0; j < call.descriptors; ++j) sum += prepared.block(row, j) * fold.coefficient(j, a, k);
          const double error = prepared.block(row, call.descriptors + k) - sum;
          call.press[call.at(a, k)] += error * error;
        }
    coefficients.push_back(std::move(fold.coefs));
  }
  // Jackknife: root((G - 1) / G * sum (b - mean)^2), in table units.
  const auto n = static_cast<double>(coefficients.size());
  for (std::size_t e = 0; e < call.errors.size(); ++e) {
    double mean = 0, squares = 0;
    for (const std::vector<double>& fold : coefficients) mean += fold[e] / n;
    for (const std::vector<double>& fold : coefficients) squares += (fold[e] - mean) * (fold[e] - mean);
    const std::size_t j = e % call.descriptors, k = e / call.descriptors / call.components;
    call.errors[e] = std::sqrt((n - 1) / n * squares) * prepared.scales[call.descriptors + k] / prepared.scales[j];
  }
}

std::size_t failingComponent(const PreparedPls& prepared, const FoldRows& fold, Watch& watch) {
  const std::vector<double> asTheyAre(prepared.block.columns, 0.0);
  const Grid training = rowsOf(prepared.block, fold.training, asTheyAre);
  const PlsCall call =
      callPls({.block = training, .descriptors = prepared.descriptors(), .components = prepared.components},
              prepared.folds.seed, watch, {}, 0, 0);
  return call.status == 2 ? call.completed() + 1 : 0;
}

}  // namespace studystats
