#include "host/pls/latent_structure.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

constexpr double kRoundingLevel = 1e-11;  // of the mean squared length of a row: what lies below says nothing

double dot(std::span<const double> a, std::span<const double> b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

}  // namespace

LatentStructure::LatentStructure(const Grid& block, const engine::PartialLeastSquaresModel& model) {
  const std::size_t p = block.columns - model.totalSquares.size();
  for (std::size_t j = 0; j < p; ++j) squares_ += dot(block.column(j), block.column(j));
  for (std::size_t a = 0; a < static_cast<std::size_t>(model.rank); ++a) add(block, model, a);
}

void LatentStructure::add(const Grid& block, const engine::PartialLeastSquaresModel& model, std::size_t a) {
  const std::size_t n = block.rows, q = model.totalSquares.size(), p = block.columns - q;
  const auto weights = model.weights.subspan(a * p, p), rotation = model.rotations.subspan(a * p, p);
  double length = std::sqrt(dot(weights, weights));
  const auto largest =
      std::max_element(rotation.begin(), rotation.end(), [](double x, double y) { return std::abs(x) < std::abs(y); });
  if (q > 1 && *largest < 0) length = -length;
  const auto shown = [&](std::span<const double> values, double factor) {
    std::vector<double> list(values.begin(), values.end());
    for (double& value : list) value *= factor;
    return list;
  };
  weights_.push_back(shown(weights, 1 / length));
  rotations_.push_back(shown(rotation, 1 / length));
  loadings_.push_back(shown(model.loadings.subspan(a * p, p), length));
  scores_.push_back(shown(model.scores.subspan(a * n, n), 1 / length));

  const std::vector<double>& scores = scores_.back();
  const double tt = dot(scores, scores), before = explained_.empty() ? 0 : explained_.back();
  responseLoadings_.emplace_back();
  for (std::size_t k = 0; k < q; ++k) responseLoadings_.back().push_back(dot(block.column(p + k), scores) / tt);
  explained_.push_back(before + tt * dot(loadings_.back(), loadings_.back()) / squares_);
  variances_.push_back(tt / static_cast<double>(n - 1));
  double here = 0;
  const auto components = static_cast<std::size_t>(model.components);
  for (std::size_t k = 0; k < q; ++k)
    here += (a == 0 ? model.totalSquares[k] : model.residualSquares[a - 1 + k * components]) -
            model.residualSquares[a + k * components];
  explainedHere_.push_back(here);
}

std::vector<double> LatentStructure::scoresOf(std::span<const double> row) const {
  std::vector<double> scores;
  for (const std::vector<double>& rotation : rotations_) scores.push_back(dot(row, rotation));
  return scores;
}

double LatentStructure::t2(const std::vector<double>& scores, std::size_t kept) const {
  double sum = 0;
  for (std::size_t a = 0; a < std::min(kept, scores.size()); ++a) sum += scores[a] * scores[a] / variances_[a];
  return sum;
}

double LatentStructure::residual(std::span<const double> row, const std::vector<double>& scores,
                                 std::size_t kept) const {
  double sum = 0;
  for (std::size_t j = 0; j < row.size(); ++j) {
    double left = row[j];
    for (std::size_t a = 0; a < std::min(kept, scores.size()); ++a) left -= scores[a] * loadings_[a][j];
    sum += left * left;
  }
  return sum;
}

std::vector<std::pair<double, double>> LatentStructure::residualMoments(const Grid& block) const {
  const std::size_t n = block.rows, p = rotations_.empty() ? 0 : rotations_.front().size();
  std::vector<double> left(block.values.begin(), block.values.begin() + static_cast<std::ptrdiff_t>(n * p));
  std::vector<std::pair<double, double>> moments;
  for (std::size_t a = 0; a < components(); ++a) {
    std::vector<double> distances(n, 0.0);
    for (std::size_t j = 0; j < p; ++j)
      for (std::size_t i = 0; i < n; ++i) {
        double& cell = left[i + j * n];
        cell -= scores_[a][i] * loadings_[a][j];
        distances[i] += cell * cell;
      }
    const double mean = std::accumulate(distances.begin(), distances.end(), 0.0) / static_cast<double>(n);
    double squares = 0;
    for (const double distance : distances) squares += (distance - mean) * (distance - mean);
    const bool rounding = !(mean > kRoundingLevel * squares_ / static_cast<double>(n));
    moments.emplace_back(rounding ? 0 : mean, squares / static_cast<double>(n - 1));
  }
  return moments;
}

std::vector<double> LatentStructure::vip(std::size_t kept) const {
  std::vector<double> squares(weights_.empty() ? 0 : weights_.front().size(), 0.0);
  double total = 0;
  for (std::size_t a = 0; a < std::min(kept, weights_.size()); ++a) {
    total += explainedHere_[a];
    for (std::size_t j = 0; j < squares.size(); ++j) squares[j] += explainedHere_[a] * weights_[a][j] * weights_[a][j];
  }
  for (double& square : squares)
    square = total > 0 ? std::sqrt(static_cast<double>(squares.size()) * square / total) : 0;
  return squares;
}

}  // namespace studystats
