// The kernels of partial least squares by their addresses: one component, one sample's predictions, one whole model.
// Matrices are column-major; data holds p descriptor columns and then q response columns of n rows, centred by the
// caller. Counts below 0 count as 0.
#pragma once

#include <cstdint>

namespace studystats::core {

// One component of the current data by NIPALS.
//
//   data         n x (p + q)  in; m is not read
//   scores       n            out
//   weights      p            out
//   loadings     p            out: of unit length; scores and weights carry the norm
//   respWeights  q            out: of unit length, unless that is 1e-10 or less
//   innerCoef    1            out
//   status       kDone; kNotConverged after 1000 passes: scores, weights and respWeights are then those of the last
//                pass; kNoScratch
//
// Sums of squares that are 0 count as 1 where they divide, so zero vectors stay zero.
void PlsCmp(const double* data, const std::int32_t* n, const std::int32_t* m, const std::int32_t* p,
            const std::int32_t* q, double* scores, double* weights, double* loadings, double* respWeights,
            double* innerCoef, std::int32_t* status);

// Predictions of one response for one sample by the first nUse of nModel components.
//
//   sampleWork  p x nUse  in: the sample in column 1; out: column a + 1 holds it deflated by a components. The last
//                         component of the model deflates nothing, so nUse < nModel writes column nUse + 1, too
//   respColumn  nModel    in: response weights of the response
//   inner       nModel    in
//   weights, loadings     in, p x nModel
//   contrib     nUse      out: contribution of each component
//   cumulative  nUse      out: prediction after 1, 2, ... components
//
// nUse below 1 writes nothing.
void PlsPrd(double* sampleWork, const std::int32_t* nUse, const std::int32_t* p, const std::int32_t* nModel,
            const double* respColumn, const double* inner, const double* weights, const double* loadings,
            double* contrib, double* cumulative);

// A model of nComponents components, and its regression coefficients.
//
//   data               n x (p + q)          in-out: deflated in place; m is not read
//   weights, loadings  p x nComponents      out
//   respWeights        nComponents x q      out
//   inner              nComponents          out
//   coefs              p x nComponents x q  out, descriptor fastest: after 1, 2, ... components
//   status             as PlsCmp. The model stops at a component that did not converge: the data are then deflated by
//                      those before it, and coefs is not written
void PlsFit(double* data, const std::int32_t* n, const std::int32_t* m, const std::int32_t* p, const std::int32_t* q,
            const std::int32_t* nComponents, double* weights, double* loadings, double* respWeights, double* inner,
            double* coefs, std::int32_t* status);

}  // namespace studystats::core
