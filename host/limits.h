// Limits of what belongs to a model of components: within its plane, and off it.
#pragma once

#include <optional>
#include <vector>

namespace studystats {

// Hotelling's T2 of k components over n rows: k (n^2 - 1) / (n (n - k)) * F(level; k, n - k); absent when n <= k.
std::optional<double> t2LimitOf(double k, double n, double level);

// Squared residual distances: g * chi^2(level; h), g and h from their mean and variance; absent when they are at the
// level of rounding beside `total`, the rows' mean squared length. Box (1954), Annals of Mathematical Statistics 25,
// 290-302; Nomikos & MacGregor (1995), Technometrics 37, 41-59.
std::optional<double> qLimitOf(const std::vector<double>& distances, double total, double level);

// The same from the mean and variance; absent unless the distances are above 0 and differ by more than rounding.
std::optional<double> qLimitFrom(double mean, double variance, double level);

}  // namespace studystats
