// Classification by a discriminant model, and what summarises it: confusion matrix, scatter matrices, canonical
// functions.
//
// Classes, leading dimensions and the arrays of a model are those of by_address.h.
#pragma once

#include <cstdint>

namespace studystats::core {

// Counts entry (true class, predicted class) of confusion (g x g) over the first n samples. A class outside 1 ... g is
// not counted.
void DaConf(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* selected, const double* means,
            const double* winv, std::int32_t* confusion);

// Scatter of the selected variables over the first n rows, leading dimension p: withinSS = within * (n - g), between =
// total - withinSS. Entries of between that involve another variable have no meaning. status: 0; 5, and nothing else
// is written.
void DaScat(const double* data, const std::int32_t* ldData, const std::int32_t* n, const std::int32_t* p,
            const std::int32_t* selected, const double* within, double* withinSS, double* between,
            std::int32_t* status);

// b(k, j) = a(index(k), index(j)), m x m; lda, ldb are the leading dimensions.
void SubMat(const std::int32_t* index, const double* a, const std::int32_t* lda, const std::int32_t* ldb,
            const std::int32_t* m, double* b);

// Classifies n samples: column 2 of tags (ldData x 2) receives the nearest class, row i of distances (ldData x g) the
// distances to all of them, Mahalanobis' with two or more selected variables, |x - mean| with one.
//
// With `final` odd also the canonical functions: eigenvectors of the between-class scatter in coordinates in which the
// within-class scatter is the identity. With one variable there is one, value and vector 1, whatever `final` says.
//
//   nCanonical    min(number of variables, g - 1)
//   canonValues   their eigenvalues, largest first
//   canonVectors  ldVar x nCanonical: unit vectors in the whitened coordinates, row a that of the a-th eigenvector of
//                 the within-class scatter (largest eigenvalue first)
//   work1, work2  ldVar x ldVar scratch
//   status        0; 1 no variable, or an eigenvalue that did not converge; 5, and then nothing else is written
void DaCanon(const double* data, std::int32_t* tags, const std::int32_t* ldData, const std::int32_t* ldVar,
             const std::int32_t* n, const std::int32_t* p, const std::int32_t* final, const std::int32_t* selected,
             std::int32_t* nCanonical, double* canonValues, double* canonVectors, const double* means,
             const double* winv, const double* withinSS, const double* between, float* distances, double* work1,
             double* work2, std::int32_t* status);

}  // namespace studystats::core
