// Scores, weights and loadings of a partial least squares model, in the form in which they are shown: weights of unit
// length, scores t = X r, loadings X't / t't.
//
// The engine's components carry the length of their loadings; here each is divided by it. With several responses the
// sign of a component is open: the largest entry of its rotation is positive.
#pragma once

#include <studystats/engine/partial_least_squares.h>
#include <studystats/host/data.h>

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace studystats {

class LatentStructure {
 public:
  LatentStructure() = default;
  // block: the rows of the model, descriptors then responses; its model, with scores. As many components as are more
  // than rounding.
  LatentStructure(const Grid& block, const engine::PartialLeastSquaresModel& model);

  std::size_t components() const { return scores_.size(); }
  const std::vector<double>& weights(std::size_t a) const { return weights_[a]; }
  const std::vector<double>& loadings(std::size_t a) const { return loadings_[a]; }
  const std::vector<double>& responseLoadings(std::size_t a) const { return responseLoadings_[a]; }
  double explained(std::size_t a) const { return explained_[a]; }  // cumulative share of the descriptors' squares

  std::vector<double> scoresOf(std::span<const double> row) const;  // a row prepared as the block's
  double t2(const std::vector<double>& scores, std::size_t kept) const;
  double residual(std::span<const double> row, const std::vector<double>& scores, std::size_t kept) const;  // squared

  const std::vector<double>& rotation(std::size_t a) const { return rotations_[a]; }  // score = row * rotation
  double variance(std::size_t a) const { return variances_[a]; }                      // of the scores
  // Mean and variance of the model rows' squared residual distances, one pair a number of components.
  std::vector<std::pair<double, double>> residualMoments(const Grid& block) const;

  // Variable influence on projection of the first `kept` components: the squares sum to the number of descriptors.
  std::vector<double> vip(std::size_t kept) const;

 private:
  void add(const Grid& block, const engine::PartialLeastSquaresModel& model, std::size_t component);

  std::vector<std::vector<double>> rotations_, weights_, loadings_, responseLoadings_, scores_;
  std::vector<double> variances_, explained_;
  std::vector<double> explainedHere_;  // of the responses' squares, each scaled as the block has them, by component
  double squares_ = 0;                 // of the prepared descriptors
};

}  // namespace studystats
