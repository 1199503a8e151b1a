#include "host/pls/latent_structure.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

constexpr double kRoundingLevel = 1e-11;  // of the largest coefficient: what lies below says nothing

double dot(std::span<const double> a, std::span<const double> b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

void scaleBy(std::vector<double>& values, double factor) {
  for (double& value : values) value *= factor;
}

// What component a adds to the coefficients of response k, in the block's units.
std::vector<double> increment(const std::vector<double>& scales, const PlsCall& call, std::size_t a, std::size_t k) {
  std::vector<double> change(call.descriptors);
  const double ofResponse = scales[call.descriptors + k];
  for (std::size_t j = 0; j < change.size(); ++j) {
    const double before = a == 0 ? 0 : call.coefficient(j, a - 1, k);
    change[j] = (call.coefficient(j, a, k) - before) * scales[j] / ofResponse;
  }
  return change;
}

double largest(const std::vector<double>& values) {
  double most = 0;
  for (const double value : values) most = std::max(most, std::abs(value));
  return most;
}

// The direction of a component: the longest of its increments; the sign is that of the increment for one response, else
// the largest entry is positive. Empty at the level of rounding.
std::vector<double> directionOf(const std::vector<double>& scales, const PlsCall& call, std::size_t a) {
  std::vector<double> direction;
  double most = 0, reference = 0;
  for (std::size_t k = 0; k < call.responses; ++k) {
    std::vector<double> change = increment(scales, call, a, k);
    for (std::size_t j = 0; j < change.size(); ++j)
      reference = std::max(reference, std::abs(call.coefficient(j, a, k) * scales[j] / scales[call.descriptors + k]));
    if (const double size = largest(change); size > most) {
      most = size;
      direction = std::move(change);
    }
  }
  if (!(most > kRoundingLevel * reference)) return {};
  if (call.responses > 1) {
    const auto entry = std::max_element(direction.begin(), direction.end(),
                                        [](double x, double y) { return std::abs(x) < std::abs(y); });
    if (*entry < 0) scaleBy(direction, -1);
  }
  return direction;
}

}  // namespace

LatentStructure::LatentStructure(const Grid& block, const std::vector<double>& scales, const PlsCall& call,
                                 std::size_t most) {
  for (std::size_t j = 0; j < call.descriptors; ++j) squares_ += dot(block.column(j), block.column(j));
  for (std::size_t a = 0; a < std::min(most, call.components); ++a) {
    std::vector<double> direction = directionOf(scales, call, a);
    if (direction.empty() || !add(block, std::move(direction))) return;
  }
}

bool LatentStructure::add(const Grid& block, std::vector<double> direction) {
  const std::size_t p = direction.size(), n = block.rows;

  // 1. Weights: what the direction has beyond those before it; r is scaled so that its part along them is 1.
  std::vector<double> weights = direction;
  for (int pass = 0; pass < 2; ++pass)  // twice: the first pass may leave rounding of a long projection
    for (const std::vector<double>& before : weights_) {
      const double part = dot(weights, before);
      for (std::size_t j = 0; j < p; ++j) weights[j] -= part * before[j];
    }
  const double length = std::sqrt(dot(weights, weights));
  if (!(length > kRoundingLevel * std::sqrt(dot(direction, direction)))) return false;
  scaleBy(weights, 1 / length);
  scaleBy(direction, 1 / length);

  // 2. Scores and loadings.
  std::vector<double> scores(n, 0.0), loadings, responseLoadings;
  for (std::size_t j = 0; j < p; ++j) {
    const std::span<const double> column = block.column(j);
    for (std::size_t i = 0; i < n; ++i) scores[i] += column[i] * direction[j];
  }
  const double tt = dot(scores, scores);
  if (!(tt > kRoundingLevel * kRoundingLevel * squares_)) return false;
  for (std::size_t j = 0; j < block.columns; ++j)
    (j < p ? loadings : responseLoadings).push_back(dot(block.column(j), scores) / tt);

  const double before = explained_.empty() ? 0 : explained_.back();
  explained_.push_back(before + tt * dot(loadings, loadings) / squares_);
  variances_.push_back(tt / static_cast<double>(n - 1));
  rotations_.push_back(std::move(direction));
  weights_.push_back(std::move(weights));
  loadings_.push_back(std::move(loadings));
  responseLoadings_.push_back(std::move(responseLoadings));
  scores_.push_back(std::move(scores));
  return true;
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

std::vector<double> LatentStructure::vip(const PlsCall& call, std::size_t kept) const {
  std::vector<double> squares(call.descriptors, 0.0);
  double total = 0;
  for (std::size_t a = 0; a < std::min(kept, weights_.size()); ++a) {
    double explainedHere = 0;
    for (std::size_t k = 0; k < call.responses; ++k)
      explainedHere += (a == 0 ? call.tss[k] : call.rss[call.at(a - 1, k)]) - call.rss[call.at(a, k)];
    total += explainedHere;
    for (std::size_t j = 0; j < squares.size(); ++j) squares[j] += explainedHere * weights_[a][j] * weights_[a][j];
  }
  for (double& square : squares)
    square = total > 0 ? std::sqrt(static_cast<double>(call.descriptors) * square / total) : 0;
  return squares;
}

}  // namespace studystats
