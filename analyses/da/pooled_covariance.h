// Class means, the pooled within-class covariance and the total scatter of classified samples.
#pragma once

#include <cstddef>
#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/pace.h"
#include "numeric/quotient.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Samples with their classes 1 ... g, in the first n rows of x.
struct DaSamples {
  ConstMatrix x;
  const std::int32_t* classOf;
  const std::int32_t* classSize;  // divisor of each class's mean; the caller counts it
  std::int32_t n, p, g;
};

inline bool isClass(std::int32_t number, std::int32_t g) { return number >= 1 && number <= g; }

// Length of the scratch memory that the sums of products of p variables work in.
std::ptrdiff_t productScratch(std::int32_t p);

// True when every class number lies in 1 ... g and more samples than classes are left to estimate a variance.
bool canBePooled(const DaSamples& samples);

// Class means (p x g) and pooled covariance of all variables, as DaPool (by_address.h) computes them, for samples that
// canBePooled: means has g columns, within as many as rows.
void poolCovariance(const DaSamples& samples, Matrix means, Matrix within, double* scratch, Pace& pace);

// Room for `most` columns of the covariance of p variables.
struct CovarianceScratch {
  CovarianceScratch(Arena& arena, std::int32_t p, std::int32_t most)
      : columns(arena, area(p, most)), variances(arena, p), slotOf(arena, p) {}

  Array<double> columns, variances;
  Array<std::int32_t> slotOf;  // of a column that is there, from 1; else 0
};

// The pooled covariance as a selection looks at it: the variances, and the covariances of all variables with the few
// that have entered the model, a column at a time. Every entry has the bits that poolCovariance gives it.
class PooledCovariance {
 public:
  explicit PooledCovariance(ConstMatrix whole) : whole_(whole) {}

  // Of samples that canBePooled; means (p x g): out. Those and the arrays must outlive the object.
  PooledCovariance(const DaSamples& samples, Matrix means, CovarianceScratch& scratch, Pace& pace);

  // Makes sure that the column of variable j is there: no more than there is room for.
  void require(std::int32_t j, Pace& pace);

  // Of variables one of which has been required, or the diagonal.
  double operator()(std::int32_t i, std::int32_t j) const {
    if (scratch_ == nullptr) return whole_(i, j);
    if (i == j) return scratch_->variances[i];
    const std::int32_t slot = scratch_->slotOf[j];
    return slot != 0 ? column(slot)[i] : column(scratch_->slotOf[i])[j];
  }

 private:
  double* column(std::int32_t slot) const { return scratch_->columns.data() + std::ptrdiff_t{slot - 1} * samples_.p; }

  ConstMatrix whole_{nullptr, 0};
  DaSamples samples_{};
  ConstMatrix means_{nullptr, 0};
  CovarianceScratch* scratch_ = nullptr;
  std::int32_t nColumns_ = 0;
  MagnitudeKey smallest_ = 0;  // of the deviations
};

// c(a, b) = sum over the first n rows of the products of deviations from the means over those rows, of m variables
// counted from 0. Both triangles, exactly symmetric. means: m numbers, out.
void totalScatter(ConstMatrix x, std::int32_t n, const std::int32_t* variables, std::int32_t m, double* means, Matrix c,
                  double* scratch, Pace& pace);

}  // namespace studystats::core
