// Principal components of a table: preparation, the analysis, and what is worth knowing about its rows.
//
// T2 and the residual distance Q split a row's distance from the centre into what lies within the model plane and what
// lies off it. Components worth keeping: broken stick, Frontier, S. (1976), J. exp. mar. Biol. Ecol. 25, 67-75.
#include "host/pca/pca.h"
#include "host/limits.h"
#include "host/model/model_build.h"
#include "host/preparation/preparation.h"
#include "host/text.h"
#include "host/watch.h"

#include <fmt/format.h>
#include <studystats/engine.h>
#include <studystats/host/principal_components.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <numeric>

namespace studystats {
namespace {

constexpr double kWantedShare = 0.80;
constexpr double kRoundingLevel = 1e-12;  // of the total variance: what lies below says nothing
// An eigenvalue or a share that exceeds a mark by less is equal to it. Autoscaled columns without correlation have
// eigenvalues of 1, from which rounding takes them a few units in the last place up or down.
constexpr double kEqual = 1 + 1e-9;

// The components of the block, from whichever side of it is the smaller.
void decompose(engine::PrincipalComponents& components, Watch& watch) {
  EngineWatch progress(watch, "analysis", 10, 90);
  const engine::Status status = components.fit(progress);
  if (status == engine::Status::NoMemory) throw std::bad_alloc();
  if (status != engine::Status::Done) throw NotComputed("the components did not converge.");
}

std::vector<Component> componentsOf(const engine::PrincipalComponentsModel& d) {
  const double total = std::accumulate(d.eigenvalues.begin(), d.eigenvalues.end(), 0.0);
  std::vector<Component> components;
  double sum = 0;
  for (const double eigenvalue : d.eigenvalues) {
    sum += eigenvalue;
    components.push_back({eigenvalue, total > 0 ? eigenvalue / total : 0, total > 0 ? sum / total : 0});
  }
  return components;
}

int defaultKept(const std::vector<Component>& components) {
  int k = 1;
  while (k < static_cast<int>(components.size()) &&
         components[static_cast<std::size_t>(k - 1)].cumulative * kEqual < kWantedShare)
    ++k;
  return std::clamp(k, 2, 10);
}

// Leading components whose share exceeds that of the k-th longest piece of a stick broken at random.
int aboveBrokenStick(const std::vector<Component>& components) {
  const auto p = static_cast<int>(components.size());
  double expected = 0;
  for (int k = 1; k <= p; ++k) expected += 1.0 / k;
  int count = 0;
  for (int k = 1; k <= p; ++k) {
    if (components[static_cast<std::size_t>(k - 1)].explained <= kEqual * expected / p) break;
    expected -= 1.0 / k;
    ++count;
  }
  return count;
}

Grid leading(const engine::Table& table, std::size_t columns) {
  const auto rows = static_cast<std::size_t>(table.rows);
  return {rows, columns, {table.data, table.data + rows * columns}};
}

// Cumulative share of each descriptor's own variance: sum of v^2 * lambda over its variance.
Grid explainedShare(const engine::PrincipalComponentsModel& d, const Grid& loadings) {
  Grid share = loadings;
  for (std::size_t j = 0; j < share.rows; ++j) {
    double sum = 0;
    for (std::size_t k = 0; k < share.columns; ++k) {
      sum += loadings(j, k) * loadings(j, k) * d.eigenvalues[k];
      share.values[j + k * share.rows] = d.variances[j] > 0 ? std::min(1.0, sum / d.variances[j]) : 0;
    }
  }
  return share;
}

std::vector<double> columnMeans(const Grid& grid) {
  std::vector<double> means;
  for (std::size_t j = 0; j < grid.columns; ++j) {
    const std::span<const double> column = grid.column(j);
    means.push_back(std::accumulate(column.begin(), column.end(), 0.0) / static_cast<double>(grid.rows));
  }
  return means;
}

// Rows placed in the model: scores about the model's centre, T2, and the distance that the components leave.
class Placement {
 public:
  Placement(const PrincipalComponents& result, const std::vector<double>& centre, double rounding)
      : result_(result), centre_(centre), rounding_(rounding), deviation_(centre.size()) {}

  ComponentRow place(const Grid& block, std::size_t row, const std::string& name, Role role, const std::string& label) {
    ComponentRow placed{name, role, label, {}, 0, 0};
    for (std::size_t j = 0; j < block.columns; ++j) deviation_[j] = block(row, j) - centre_[j];
    for (std::size_t k = 0; k < result_.loadings.columns; ++k) {
      const std::span<const double> loading = result_.loadings.column(k);
      const double score = std::inner_product(loading.begin(), loading.end(), deviation_.begin(), 0.0);
      placed.scores.push_back(score);
      const double eigenvalue = result_.components[k].eigenvalue;
      if (eigenvalue > rounding_) placed.t2 += score * score / eigenvalue;
    }
    for (std::size_t k = 0; k < result_.loadings.columns; ++k) {
      const std::span<const double> loading = result_.loadings.column(k);
      for (std::size_t j = 0; j < deviation_.size(); ++j) deviation_[j] -= placed.scores[k] * loading[j];
    }
    placed.q = std::inner_product(deviation_.begin(), deviation_.end(), deviation_.begin(), 0.0);
    return placed;
  }

 private:
  const PrincipalComponents& result_;
  const std::vector<double>& centre_;
  double rounding_;
  std::vector<double> deviation_;
};

void placeRows(PrincipalComponents& result, const Prepared& prepared, const engine::PrincipalComponentsModel& d,
               double rounding, Watch& watch) {
  const std::vector<double> centre = columnMeans(prepared.model);
  Placement placement(result, centre, rounding);
  const std::vector<std::string> labels = labelsOf(prepared.modelRows, result.classColumn);
  for (std::size_t i = 0; i < prepared.modelRows.size(); ++i) {
    result.rows.push_back(placement.place(prepared.model, i, prepared.modelRows[i].name, Role::Model, labels[i]));
    // The analysis's own scores, less their means: the host's sum runs over deviations and may differ in the last
    // place.
    for (std::size_t k = 0; k < static_cast<std::size_t>(result.kept); ++k)
      result.rows.back().scores[k] = d.scores.data[i + k * prepared.model.rows] - d.scoreMeans[k];
    if (i % 4096 == 0) watch.check();
  }
  const std::vector<std::string> predictedLabels = labelsOf(prepared.predictedRows, result.classColumn);
  for (std::size_t i = 0; i < prepared.predictedRows.size(); ++i)
    result.rows.push_back(
        placement.place(prepared.predicted, i, prepared.predictedRows[i].name, Role::Predicted, predictedLabels[i]));
}

void setLimits(PrincipalComponents& result, double totalVariance) {
  std::vector<double> q;
  for (const ComponentRow& row : result.rows)
    if (row.role == Role::Model) q.push_back(row.q);
  result.t2Limit = t2LimitOf(result.kept, static_cast<double>(q.size()), result.level);
  result.qLimit = qLimitOf(q, totalVariance, result.level);
}

void setGroups(PrincipalComponents& result) {
  if (result.classColumn.empty()) return;
  for (const ComponentRow& row : result.rows) {
    if (row.role != Role::Model || row.label.empty()) continue;
    auto group = std::find_if(result.groups.begin(), result.groups.end(),
                              [&](const ComponentGroup& g) { return g.label == row.label; });
    if (group == result.groups.end())
      group = result.groups.insert(group, {row.label, 0, std::vector<double>(row.scores.size(), 0.0)});
    ++group->rows;
    for (std::size_t k = 0; k < row.scores.size(); ++k) group->meanScores[k] += row.scores[k];
  }
  for (ComponentGroup& group : result.groups)
    for (double& mean : group.meanScores) mean /= static_cast<double>(group.rows);
}

Model modelOf(const PrincipalComponents& result, const Prepared& prepared, const engine::PrincipalComponentsModel& d) {
  const auto kept = static_cast<std::size_t>(result.kept);
  std::vector<std::size_t> all(prepared.model.columns);
  std::iota(all.begin(), all.end(), std::size_t{0});
  ModelData data = modelOf(Model::Kind::PrincipalComponents, result.used, all, result.level);
  data.components = kept;
  std::vector<double> q;
  for (const ComponentRow& row : result.rows)
    if (row.role == Role::Model) q.push_back(row.q);
  const double mean = std::accumulate(q.begin(), q.end(), 0.0) / static_cast<double>(q.size());
  double squares = 0;
  for (const double x : q) squares += (x - mean) * (x - mean);
  PlaneModel plane;
  plane.centre = columnMeans(prepared.model);
  plane.rotations = plane.loadings = result.loadings;
  plane.offsets.assign(d.scoreMeans.begin(), d.scoreMeans.begin() + result.kept);
  plane.variances.assign(d.eigenvalues.begin(), d.eigenvalues.begin() + result.kept);
  plane.qMeans.assign(kept, result.qLimit ? mean : 0);  // of all kept; fewer components are never asked for
  plane.qVariances.assign(kept, squares / static_cast<double>(q.size() - 1));
  for (std::size_t k = 0; k < kept; ++k) plane.explained.push_back(result.components[k].cumulative);
  data.plane = std::move(plane);
  return sealed(std::move(data));
}

int chosenComponents(const PrincipalComponentsOptions& options, PrincipalComponents& result) {
  const int most = std::min(result.supported, static_cast<int>(result.components.size()));
  if (options.components <= most)
    return options.components > 0 ? options.components : std::min(most, defaultKept(result.components));
  result.remarks.push_back({Severity::Note,
                            "components-lowered",
                            fmt::format("--components {} was lowered to {}, the most that {} and {} can support.",
                                        options.components, most, counted(result.used.rows.size(), "row", "rows"),
                                        counted(result.used.descriptors.size(), "descriptor", "descriptors")),
                            {}});
  return most;
}

void checkOptions(const PrincipalComponentsOptions& options) {
  if (options.components < 0)
    throw BadOptions(
        fmt::format("--components {} is not a number of components; it counts from 1.", options.components),
        {.option = "--components"});
  if (!(options.level > 0 && options.level < 1))
    throw BadOptions(fmt::format("--level {} is not a probability between 0 and 1, such as 0.95.", options.level),
                     {.option = "--level"});
}

}  // namespace

Prepared preparePrincipalComponents(const TableView& table, const PrincipalComponentsOptions& options, Watch& watch) {
  checkOptions(options);
  Prepared prepared = prepare(table, {options.responses, options.classColumn}, options.data, watch);
  if (prepared.modelRows.size() < 2)
    throw NotComputed(fmt::format("too few rows: principal components need at least 2, and {} of {} is left in {}.",
                                  prepared.modelRows.size(), table.rows(), table.name()));
  requireDescriptors(prepared, table, "over the rows");
  return prepared;
}

PrincipalComponents principalComponents(const TableView& table, const PrincipalComponentsOptions& options) try {
  Watch watch(options.progress, options.stop);
  watch.report("preparing", "preparing the table", 0, 10, 0, 1);
  const Prepared prepared = preparePrincipalComponents(table, options, watch);
  watch.report("analysis", "principal components", 10, 90, 0, 1);
  const std::int32_t n = count32(prepared.model.rows);
  engine::PrincipalComponents components(
      {.table = {prepared.model.values.data(), n, count32(prepared.model.columns), n}, .side = engine::Side::Smaller});
  decompose(components, watch);
  const engine::PrincipalComponentsModel& d = components.model();
  watch.report("analysis", "rows and limits", 10, 90, 1, 1);

  const double total = std::accumulate(d.eigenvalues.begin(), d.eigenvalues.end(), 0.0);
  PrincipalComponents result;
  result.used = prepared.used;
  result.remarks = prepared.remarks;
  result.level = options.level;
  result.classColumn = options.classColumn;
  result.supported = d.supported;
  result.components = componentsOf(d);
  result.kept = chosenComponents(options, result);
  const auto kept = static_cast<std::size_t>(result.kept);
  result.aboveBrokenStick = aboveBrokenStick(result.components);
  if (options.data.scaling == Scaling::Autoscale)
    result.aboveOne = static_cast<int>(
        std::count_if(d.eigenvalues.begin(), d.eigenvalues.end(), [](double lambda) { return lambda > kEqual; }));
  result.loadings = leading(d.loadings, kept);
  result.explained = explainedShare(d, result.loadings);
  placeRows(result, prepared, d, kRoundingLevel * total, watch);
  setLimits(result, total);
  setGroups(result);
  result.model = modelOf(result, prepared, d);
  watch.report("analysis", "done", 90, 100, 1, 1);
  return result;
} catch (const std::bad_alloc&) {
  throw OutOfMemory(fmt::format("not enough memory to analyse {}.", table.name()));
}

}  // namespace studystats
