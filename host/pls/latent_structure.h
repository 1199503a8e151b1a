// Scores, weights and loadings of a partial least squares model, found again from its regression coefficients.
//
// The model with one component more differs by a rank-one increment r q' of the coefficients; its direction gives r,
// with the scores t = X r. The weights are r orthogonalised on the weights before it, the loadings X't / t't. De Jong
// (1993), Chemometrics and Intelligent Laboratory Systems 18, 251-263.
#pragma once

#include "host/pls/pls_call.h"

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace studystats {

class LatentStructure {
 public:
  // block: the rows of the call, descriptors then responses; scales: table units of its columns, as the call's
  // coefficients have them. Up to `most` components; fewer where an increment is at the level of rounding.
  LatentStructure(const Grid& block, const std::vector<double>& scales, const PlsCall& call, std::size_t most);

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
  std::vector<double> vip(const PlsCall& call, std::size_t kept) const;

 private:
  bool add(const Grid& block, std::vector<double> direction);

  std::vector<std::vector<double>> rotations_, weights_, loadings_, responseLoadings_, scores_;
  std::vector<double> variances_, explained_;
  double squares_ = 0;  // of the prepared descriptors
};

}  // namespace studystats
