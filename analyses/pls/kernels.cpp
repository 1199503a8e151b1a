#include "analyses/pls/kernels.h"

#include <algorithm>
#include <numeric>

#include "analyses/pls/components.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/weighted_sums.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

struct PlsKernelScratch {
  PlsKernelScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : data(arena, area(n, std::ptrdiff_t{p} + q)),
        rotations(arena, area(p, nComponents)),
        scoreSquares(arena, nComponents),
        component(arena, n, q),
        samples(arena, p, nComponents),
        rows(arena, n) {}

  Array<double> data, rotations, scoreSquares;
  PlsComponentScratch component;
  PlsSampleScratch samples;
  Array<std::int32_t> rows;
};

}  // namespace

void PlsCmp(const double* data, const std::int32_t* nRows, const std::int32_t* /*m*/, const std::int32_t* nDescriptors,
            const std::int32_t* nResponses, double* scores, double* weights, double* loadings, double* respWeights,
            double* innerCoef, std::int32_t* status) {
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  Obtained<PlsKernelScratch> scratch(n, p, q, 0);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  std::iota(scratch->rows.data(), scratch->rows.data() + n, 1);
  PlsData current(scratch->data.data(), n, p, q);
  takeSamples({data, n}, scratch->rows.data(), current);
  double* u = scratch->component.u.data();
  PlsComponent component{scores, weights, loadings, respWeights, innerCoef};
  rowSums(current.x, u, startVector(current, u), weights);
  *status = extractComponent(current, component, u, scratch->component.uBefore.data());
}

void PlsPrd(double* sampleWork, const std::int32_t* nUse, const std::int32_t* nDescriptors, const std::int32_t* nModel,
            const double* respColumn, const double* inner, const double* weights, const double* loadings,
            double* contrib, double* cumulative) {
  const std::int32_t p = std::max(*nDescriptors, 0);
  const Matrix sample{sampleWork, p};
  const ConstMatrix w{weights, p}, l{loadings, p};
  for (std::int32_t a = 0; a < *nUse; ++a) {
    double t = 0.0;
    for (std::int32_t j = 0; j < p; ++j) t += sample(j, a) * w(j, a);
    contrib[a] = inner[a] * respColumn[a] * t;
    cumulative[a] = a == 0 ? contrib[a] : cumulative[a - 1] + contrib[a];
    for (std::int32_t j = 0; a + 1 < *nModel && j < p; ++j) sample(j, a + 1) = sample(j, a) - t * l(j, a);
  }
}

void PlsFit(double* data, const std::int32_t* nRows, const std::int32_t* /*m*/, const std::int32_t* nDescriptors,
            const std::int32_t* nResponses, const std::int32_t* nComponents, double* weights, double* loadings,
            double* respWeights, double* inner, double* coefs, std::int32_t* status) {
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  const std::int32_t nModel = std::max(*nComponents, 0);
  Obtained<PlsKernelScratch> scratch(n, p, q, nModel);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  std::iota(scratch->rows.data(), scratch->rows.data() + n, 1);
  PlsData current(scratch->data.data(), n, p, q);
  takeSamples({data, n}, scratch->rows.data(), current);
  const PlsModel model{
      p, q, nModel, {weights, p}, {loadings, p}, {respWeights, nModel}, inner, scratch->scoreSquares.data()};
  *status = fitComponents(current, model, scratch->component, nullptr);
  if (*status != kDone) return;

  if (nModel > 0) deflate(current.x, model.loadings.column(nModel - 1), scratch->component.scores.data());
  const Matrix left{data, n};
  for (std::int32_t j = 0; j < p; ++j)
    for (std::int32_t i = 0; i < n; ++i) left(i, j) = current.x.x(j, i);
  for (std::int32_t k = 0; k < q; ++k) std::copy_n(current.y.x.column(k), n, left.column(p + k));
  coefficients(model, {scratch->rotations.data(), p}, scratch->samples, coefs);
}

}  // namespace studystats::core
