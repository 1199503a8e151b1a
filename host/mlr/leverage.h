// Where a row stands among the rows that a regression was fitted on.
//
// The chosen descriptors' components give it all: with standardised scores t / root(lambda), the leverage of a row is
// 1/n + sum t^2 / ((n - 1) lambda), the variance inflation of a descriptor sum v^2 / lambda, the condition number
// root(lambda_max / lambda_min). Belsley, Kuh & Welsch (1980), Regression Diagnostics.
#pragma once

#include <studystats/host/regression.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace studystats {

class LeverageModel {
 public:
  LeverageModel(const Grid& model, const std::vector<std::size_t>& chosen);

  double of(const Grid& grid, std::size_t row) const;  // a row prepared as the model's
  double atTableZero(const UsedData& used) const;      // where every descriptor is 0 in the table's units
  std::optional<double> condition() const { return condition_; }
  const std::vector<double>& vif() const { return vif_; }     // by position among the chosen
  const std::vector<double>& means() const { return mean_; }  // of the chosen prepared columns
  const std::vector<double>& sds() const { return sd_; }
  Grid axes() const;  // leverage = 1 / n + the squared length of (standardised row * axes)
  double preparedSd(std::size_t position) const { return sd_[position]; }

 private:
  double at(const std::vector<double>& standardised) const;

  std::vector<std::size_t> chosen_;
  std::vector<double> mean_, sd_;  // of the chosen prepared columns
  std::vector<double> eigenvalues_, vectors_, vif_;
  std::optional<double> condition_;
  double rows_;
};

}  // namespace studystats
