// Scatter matrices of the variables of a discriminant model, and its canonical functions.
#pragma once

#include <cstdint>

#include "analyses/da/pooled_covariance.h"
#include "analyses/da/subset_model.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"

namespace studystats::core {

// What DaScat (classification.h) computes, of the model's variables; samples' classes are not looked at. variableMeans
// (p), products (productScratch(p)) and model.block are scratch.
void scatterMatrices(const DaSamples& samples, ConstMatrix within, SubsetModel& model, double* variableMeans,
                     double* products, Matrix withinSS, Matrix between);

struct CanonicalScratch {
  CanonicalScratch(Arena& arena, std::int32_t p)
      : withinValues(arena, p), values(arena, p), work1(arena, p), work2(arena, p), rows(arena, area(p, p)) {}

  Array<double> withinValues, values, work1, work2;
  Array<double> rows;  // whitening vectors, row after row
};

struct ScatterMatrices {
  ConstMatrix within, between;  // p x p
};

// Outputs of DaCanon (classification.h) of the same names.
struct CanonicalFunctions {
  std::int32_t* count;
  double* values;
  Matrix vectors;
};

// The placeholder that a model of one variable gets.
void onlyCanonicalFunction(const CanonicalFunctions& out);

// The canonical functions of a model of two or more variables. work1 and work2 are p x p. kDone or kSingular.
std::int32_t canonicalFunctions(SubsetModel& model, std::int32_t g, const ScatterMatrices& scatter,
                                const CanonicalFunctions& out, Matrix work1, Matrix work2, CanonicalScratch& scratch);

}  // namespace studystats::core
