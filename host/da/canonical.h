// Canonical functions in table units, and Mahalanobis distances under the pooled covariance.
//
// The analysis returns canonical vectors in whitened coordinates. Here they are found again and carried back: the rows
// centred within their classes are whitened by their principal components, and the principal components of the class
// means in those coordinates, each mean as often as its class has rows, are the canonical directions. Seber,
// Multivariate Observations (1984), section 5.8.
#pragma once

#include <studystats/host/discriminant.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace studystats {

class CanonicalSpace {
 public:
  // model: prepared rows; classOf from 1; chosen: columns of the classifier.
  CanonicalSpace(const Grid& model, std::span<const std::int32_t> classOf, std::size_t classes,
                 std::vector<std::size_t> chosen);

  // What places a row, for a model that is saved.
  struct Parts {
    Grid classMeans;                // classes x descriptors, prepared units
    std::vector<double> grandMean;  // one a descriptor
    Grid whitening;                 // descriptors x descriptors: the pooled covariance becomes 1
    Grid vectors;                   // in whitened coordinates, descriptors x functions
    std::vector<double> eigenvalues;
  };
  explicit CanonicalSpace(Parts parts);  // rows then hold the chosen descriptors alone
  Parts parts() const;

  std::size_t functions() const { return eigenvalues_.size(); }
  const std::vector<double>& eigenvalues() const { return eigenvalues_; }  // between over within sum of squares
  const Grid& vectors() const { return vectors_; }                         // in whitened coordinates, unit length
  const Grid& classMeans() const { return classMeans_; }                   // classes x chosen, prepared units

  std::vector<double> scores(const Grid& rows, std::size_t row) const;  // pooled variance 1, 0 at the mean of the model
  std::vector<double> classScores(std::size_t c) const;
  double distance(const Grid& rows, std::size_t row, std::size_t c) const;  // Mahalanobis
  // What each descriptor adds to the squared distance.
  std::vector<double> contributions(const Grid& rows, std::size_t row, std::size_t c) const;
  double distanceBetween(std::size_t c, std::size_t d) const;
  // Of function k, for values in table units.
  CanonicalFunction function(std::size_t k, const UsedData& used) const;

 private:
  std::vector<double> whitened(std::span<const double> deviations) const;  // pooled covariance 1
  std::vector<double> rowOf(const Grid& rows, std::size_t row) const;

  std::vector<std::size_t> chosen_;
  Grid classMeans_;
  std::vector<double> grandMean_;
  Grid whitening_;  // chosen x chosen
  Grid vectors_;
  std::vector<double> eigenvalues_;
};

// prior * exp(-d^2 / 2) a class, made to sum to 1.
std::vector<double> posteriorsOf(const std::vector<double>& distances, const std::vector<double>& priors);

}  // namespace studystats
