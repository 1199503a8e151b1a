// Class means, the pooled within-class covariance and the total scatter of classified samples.
#pragma once

#include <cstddef>
#include <cstdint>

#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

// Samples with their classes 1 ... g, in the first n rows of x.
struct DaSamples {
  ConstMatrix x;
  const std::int32_t* classOf;
  const std::int32_t* classSize;  // divisor of each class's mean; the caller counts it
  std::int32_t n, p, g;
};

// Class means (p x g) and pooled within-class covariance (p x p) of all variables.
struct DaMoments {
  ConstMatrix means, within;
};

inline bool isClass(std::int32_t number, std::int32_t g) { return number >= 1 && number <= g; }

// Length of the scratch memory that the sums of products of p variables work in.
std::ptrdiff_t productScratch(std::int32_t p);

// True when every class number lies in 1 ... g and more samples than classes are left to estimate a variance.
bool canBePooled(const DaSamples& samples);

// What DaPool (by_address.h) computes, for samples that canBePooled: means has g columns, within as many as rows.
void poolCovariance(const DaSamples& samples, Matrix means, Matrix within, double* scratch);

// c(a, b) = sum over the first n rows of the products of deviations from the means over those rows, of m variables
// counted from 0. Both triangles, exactly symmetric. means: m numbers, out.
void totalScatter(ConstMatrix x, std::int32_t n, const std::int32_t* variables, std::int32_t m, double* means, Matrix c,
                  double* scratch);

}  // namespace studystats::core
