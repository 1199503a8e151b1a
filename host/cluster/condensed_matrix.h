// A symmetric matrix without its diagonal: n (n - 1) / 2 numbers.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace studystats {

class CondensedMatrix {
 public:
  explicit CondensedMatrix(std::size_t n) : n_(n), values_(n * (n - 1) / 2) {}

  std::size_t size() const { return n_; }
  double& operator()(std::size_t i, std::size_t j) {
    if (i > j) std::swap(i, j);
    return values_[i * (2 * n_ - i - 3) / 2 + j - 1];
  }

 private:
  std::size_t n_;
  std::vector<double> values_;
};

}  // namespace studystats
