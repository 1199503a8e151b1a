// The classifier on some of the variables: Mahalanobis distances to the class means under the pooled within-class
// covariance of those variables, and the nearest class.
#pragma once

#include <cstdint>

#include "analyses/da/pooled_covariance.h"
#include "numeric/matrix_inverse.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

// One subset of up to p variables and what is known of it, with the scratch memory to classify up to n samples.
struct SubsetModel {
  SubsetModel(Arena& arena, std::int32_t n, std::int32_t p);

  std::int32_t m = 0;             // number of variables
  Array<std::int32_t> variables;  // counted from 0, increasing
  Array<double> weights;          // inverse covariance, row after row, each row padded
  Array<double> block;            // p x p
  Array<double> deviations;       // of a strip of samples
  Array<std::int32_t> nearest;    // of each sample classified last: its nearest class, 1 ... g
  InverseScratch inverse;
};

// The variables whose entry of `selected` (p) is exactly 1.
void chooseVariables(const std::int32_t* selected, std::int32_t p, SubsetModel& model);

// Inverts the covariance of the chosen variables, two or more. A variance of exactly 0 counts as 1. kDone or kSingular;
// the inverse (m x m) is then in model.block, too.
std::int32_t invertCovariance(ConstMatrix within, SubsetModel& model);

// The same for one variable, whose variance is taken as it is: 1 / 0 is infinite.
void invertVariance(ConstMatrix within, SubsetModel& model);

// Takes the weights from elsewhere: winv(variable, variable), a p x p matrix.
void takeWeights(ConstMatrix winv, SubsetModel& model);

// A model of one variable classifies by plain squared differences; a confusion matrix counts it by weighted ones, which
// differ in the last bit, and when the variance is 0.
enum class OneVariable { kPlain, kWeighted };

// The nearest class of each of the first n rows of x, 0 when g < 1; of equal distances the lower class. With two or
// more variables squared distances are Mahalanobis'. distances (n x g): out, their roots; none are stored when its data
// is null.
void nearestClasses(ConstMatrix x, std::int32_t n, ConstMatrix means, std::int32_t g, SubsetModel& model,
                    MatrixView<float> distances, OneVariable one = OneVariable::kPlain);

// Sum over pairs of classes of the distance between their means, a 32-bit total. One variable: in units of its
// within-class standard deviation, or of 1 when that is not positive.
float classSeparation(const DaMoments& moments, std::int32_t g, SubsetModel& model);

}  // namespace studystats::core
