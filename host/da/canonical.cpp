#include "host/da/canonical.h"

#include "host/preparation/preparation.h"

#include <studystats/engine.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>

namespace studystats {
namespace {

struct Axes {
  std::vector<double> sumsOfSquares;  // eigenvalue * (n - 1), largest first
  Grid vectors;
};

Axes principalAxes(const Grid& block) {
  const std::int32_t n = count32(block.rows), p = count32(block.columns);
  engine::PrincipalComponents components({.table = {block.values.data(), n, p, n}, .scores = false});
  const engine::Status status = components.fit();
  if (status == engine::Status::NoMemory) throw std::bad_alloc();
  if (status != engine::Status::Done)
    throw NotComputed("the canonical functions did not converge. Try --scale autoscale.");
  const engine::PrincipalComponentsModel& model = components.model();
  Axes axes{{}, {block.columns, block.columns, {}}};
  axes.vectors.values.assign(model.loadings.data, model.loadings.data + block.columns * block.columns);
  for (const double eigenvalue : model.eigenvalues) axes.sumsOfSquares.push_back(eigenvalue * (n - 1));
  return axes;
}

Grid meansOfClasses(const Grid& model, std::span<const std::int32_t> classOf, std::size_t classes,
                    const std::vector<std::size_t>& chosen) {
  Grid means{classes, chosen.size(), std::vector<double>(classes * chosen.size(), 0.0)};
  std::vector<double> sizes(classes, 0.0);
  for (const std::int32_t c : classOf) ++sizes[static_cast<std::size_t>(c - 1)];
  for (std::size_t a = 0; a < chosen.size(); ++a) {
    double* mean = &means.values[a * classes];
    for (std::size_t i = 0; i < model.rows; ++i) mean[static_cast<std::size_t>(classOf[i] - 1)] += model(i, chosen[a]);
    for (std::size_t c = 0; c < classes; ++c)
      if (sizes[c] > 0) mean[c] /= sizes[c];
  }
  return means;
}

}  // namespace

CanonicalSpace::CanonicalSpace(const Grid& model, std::span<const std::int32_t> classOf, std::size_t classes,
                               std::vector<std::size_t> chosen)
    : chosen_(std::move(chosen)), classMeans_(meansOfClasses(model, classOf, classes, chosen_)) {
  const std::size_t n = model.rows, m = chosen_.size();
  const auto classOfRow = [&](std::size_t i) { return static_cast<std::size_t>(classOf[i] - 1); };

  // 1. The rows centred within their classes: their principal axes whiten.
  Grid within{n, m, std::vector<double>(n * m)};
  for (std::size_t a = 0; a < m; ++a)
    for (std::size_t i = 0; i < n; ++i) within.values[i + a * n] = model(i, chosen_[a]) - classMeans_(classOfRow(i), a);
  Axes axes = principalAxes(within);
  for (std::size_t a = 0; a < m; ++a)
    if (axes.sumsOfSquares[a] > 0)
      for (std::size_t j = 0; j < m; ++j) axes.vectors.values[j + a * m] /= std::sqrt(axes.sumsOfSquares[a]);
  const double rootDf = std::sqrt(static_cast<double>(n - classes));
  for (double& entry : axes.vectors.values) entry *= rootDf;
  whitening_ = std::move(axes.vectors);
  for (std::size_t a = 0; a < m; ++a) {
    const std::span<const double> column = model.column(chosen_[a]);
    grandMean_.push_back(std::accumulate(column.begin(), column.end(), 0.0) / static_cast<double>(n));
  }

  // 2. The class means in those coordinates, one a row: their principal axes are the canonical directions.
  Grid between{n, m, std::vector<double>(n * m)};
  for (std::size_t i = 0; i < n; ++i) {
    std::vector<double> deviations(m);
    for (std::size_t a = 0; a < m; ++a) deviations[a] = classMeans_(classOfRow(i), a) - grandMean_[a];
    const std::vector<double> white = whitened(deviations);
    for (std::size_t a = 0; a < m; ++a) between.values[i + a * n] = white[a] / rootDf;
  }
  Axes canonical = principalAxes(between);
  const std::size_t functions = std::min(m, classes - 1);
  canonical.sumsOfSquares.resize(functions);
  eigenvalues_ = std::move(canonical.sumsOfSquares);
  canonical.vectors.values.resize(m * functions);
  canonical.vectors.columns = functions;
  vectors_ = std::move(canonical.vectors);
}

CanonicalSpace::CanonicalSpace(Parts parts)
    : chosen_(parts.grandMean.size()),
      classMeans_(std::move(parts.classMeans)),
      grandMean_(std::move(parts.grandMean)),
      whitening_(std::move(parts.whitening)),
      vectors_(std::move(parts.vectors)),
      eigenvalues_(std::move(parts.eigenvalues)) {
  std::iota(chosen_.begin(), chosen_.end(), std::size_t{0});
}

CanonicalSpace::Parts CanonicalSpace::parts() const {
  return {classMeans_, grandMean_, whitening_, vectors_, eigenvalues_};
}

std::vector<double> CanonicalSpace::whitened(std::span<const double> deviations) const {
  const std::size_t m = chosen_.size();
  std::vector<double> white(m, 0.0);
  for (std::size_t a = 0; a < m; ++a)
    for (std::size_t j = 0; j < m; ++j) white[a] += whitening_(j, a) * deviations[j];
  return white;
}

std::vector<double> CanonicalSpace::rowOf(const Grid& rows, std::size_t row) const {
  std::vector<double> values;
  for (const std::size_t j : chosen_) values.push_back(rows(row, j));
  return values;
}

std::vector<double> CanonicalSpace::scores(const Grid& rows, std::size_t row) const {
  std::vector<double> deviations = rowOf(rows, row);
  for (std::size_t a = 0; a < deviations.size(); ++a) deviations[a] -= grandMean_[a];
  const std::vector<double> white = whitened(deviations);
  std::vector<double> scores(functions(), 0.0);
  for (std::size_t k = 0; k < functions(); ++k)
    for (std::size_t a = 0; a < white.size(); ++a) scores[k] += white[a] * vectors_(a, k);
  return scores;
}

std::vector<double> CanonicalSpace::classScores(std::size_t c) const {
  std::vector<double> deviations;
  for (std::size_t a = 0; a < chosen_.size(); ++a) deviations.push_back(classMeans_(c, a) - grandMean_[a]);
  const std::vector<double> white = whitened(deviations);
  std::vector<double> scores(functions(), 0.0);
  for (std::size_t k = 0; k < functions(); ++k)
    for (std::size_t a = 0; a < white.size(); ++a) scores[k] += white[a] * vectors_(a, k);
  return scores;
}

double CanonicalSpace::distance(const Grid& rows, std::size_t row, std::size_t c) const {
  std::vector<double> deviations = rowOf(rows, row);
  for (std::size_t a = 0; a < deviations.size(); ++a) deviations[a] -= classMeans_(c, a);
  const std::vector<double> white = whitened(deviations);
  return std::sqrt(std::inner_product(white.begin(), white.end(), white.begin(), 0.0));
}

std::vector<double> CanonicalSpace::contributions(const Grid& rows, std::size_t row, std::size_t c) const {
  std::vector<double> deviations = rowOf(rows, row);
  for (std::size_t a = 0; a < deviations.size(); ++a) deviations[a] -= classMeans_(c, a);
  const std::vector<double> white = whitened(deviations);
  std::vector<double> parts(deviations.size(), 0.0);
  for (std::size_t j = 0; j < parts.size(); ++j)
    for (std::size_t a = 0; a < white.size(); ++a) parts[j] += deviations[j] * whitening_(j, a) * white[a];
  return parts;
}

double CanonicalSpace::distanceBetween(std::size_t c, std::size_t d) const {
  std::vector<double> deviations;
  for (std::size_t a = 0; a < chosen_.size(); ++a) deviations.push_back(classMeans_(c, a) - classMeans_(d, a));
  const std::vector<double> white = whitened(deviations);
  return std::sqrt(std::inner_product(white.begin(), white.end(), white.begin(), 0.0));
}

CanonicalFunction CanonicalSpace::function(std::size_t k, const UsedData& used) const {
  CanonicalFunction function;
  const std::size_t m = chosen_.size();
  const double total = std::accumulate(eigenvalues_.begin(), eigenvalues_.end(), 0.0);
  function.eigenvalue = eigenvalues_[k];
  function.share = total > 0 ? eigenvalues_[k] / total : 0;
  for (std::size_t j = 0; j < m; ++j) {
    double prepared = 0;
    for (std::size_t a = 0; a < m; ++a) prepared += whitening_(j, a) * vectors_(a, k);
    const double coefficient = prepared / used.scale[chosen_[j]];
    function.coefficients.push_back(coefficient);
    function.constant -= coefficient * (used.shift[chosen_[j]] + used.scale[chosen_[j]] * grandMean_[j]);
  }
  return function;
}

// The nearest class is taken out of the exponent, so that none vanishes alone.
std::vector<double> posteriorsOf(const std::vector<double>& distances, const std::vector<double>& priors) {
  const double least = *std::min_element(distances.begin(), distances.end());
  std::vector<double> posteriors;
  for (std::size_t c = 0; c < distances.size(); ++c)
    posteriors.push_back(priors[c] * std::exp((least * least - distances[c] * distances[c]) / 2));
  const double sum = std::accumulate(posteriors.begin(), posteriors.end(), 0.0);
  for (double& posterior : posteriors) posterior /= sum;
  return posteriors;
}

}  // namespace studystats
