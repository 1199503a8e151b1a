// The classifier on some of the variables: Mahalanobis distances to the class means under the pooled within-class
// covariance of those variables, and the nearest class.
#pragma once

#include <cstdint>

#include "analyses/da/pooled_covariance.h"
#include "numeric/matrix_inverse.h"
#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/scratch.h"

namespace studystats::core {

// One subset of up to `most` variables and what is known of it, with the scratch memory to classify up to n samples.
struct SubsetModel {
  SubsetModel(Arena& arena, std::int32_t n, std::int32_t most);

  std::int32_t m = 0;             // number of variables
  Array<std::int32_t> variables;  // counted from 0, increasing
  Array<double> weights;          // inverse covariance, row after row, each row padded
  Array<double> block;            // most x most
  Array<double> deviations;       // of a strip of samples
  Array<std::int32_t> nearest;    // of each sample classified last: its nearest class, 1 ... g
  InverseScratch inverse;
};

// The variables whose entry of `selected` (p) is exactly 1.
void chooseVariables(const std::int32_t* selected, std::int32_t p, SubsetModel& model);

// One variable more, which the model does not have; and one less.
void insertVariable(std::int32_t j, SubsetModel& model);
void removeVariable(std::int32_t j, SubsetModel& model);

// Inverts the covariance of the chosen variables, two or more. A variance of exactly 0 counts as 1. kDone, kSingular or
// kStopped; the inverse (m x m) is then in model.block, too.
std::int32_t invertCovariance(const PooledCovariance& within, SubsetModel& model, Pace& pace);

// The same for one variable, whose variance is taken as it is: 1 / 0 is infinite.
void invertVariance(const PooledCovariance& within, SubsetModel& model);

// Takes the weights from elsewhere: winv(variable, variable), a p x p matrix.
void takeWeights(ConstMatrix winv, SubsetModel& model);

// A model of one variable classifies by plain squared differences; a confusion matrix counts it by weighted ones, which
// differ in the last bit, and when the variance is 0.
enum class OneVariable { kPlain, kWeighted };

// Rows to be classified: those listed, counted from 0, or the first n when there is no list.
struct RowsOf {
  ConstMatrix x;
  std::int32_t n;
  const std::int32_t* list = nullptr;
};

// The nearest class of each row, 0 when g < 1; of equal distances the lower class. With two or more variables squared
// distances are Mahalanobis'. distances (n x g, of 32 or 64 bits): out, their roots; none are stored when its data is
// null.
template <class Real>
void nearestClasses(const RowsOf& rows, ConstMatrix means, std::int32_t g, SubsetModel& model,
                    MatrixView<Real> distances, Pace& pace, OneVariable one = OneVariable::kPlain);

constexpr MatrixView<double> kNoDistances{nullptr, 0};

// Sum over pairs of classes of the distance between their means, a 32-bit total. One variable: in units of its
// within-class standard deviation, or of 1 when that is not positive.
float classSeparation(ConstMatrix means, const PooledCovariance& within, std::int32_t g, SubsetModel& model,
                      Pace& pace);

}  // namespace studystats::core
