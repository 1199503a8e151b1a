// The routines with by-address arguments: each wraps its addresses once and hands them to the method.
#include <algorithm>
#include <numeric>

#include "analyses/pls/components.h"
#include "analyses/pls/cross_validation.h"
#include "analyses/pls/kernels.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/scratch.h"
#include "analyses/pls/weighted_sums.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::core {

void PlsCmp(const double* data, const std::int32_t* nRows, const std::int32_t* /*m*/, const std::int32_t* nDescriptors,
            const std::int32_t* nResponses, double* scores, double* weights, double* loadings, double* respWeights,
            double* innerCoef, std::int32_t* status) {
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  Scratch<double> u(n), uBefore(n), samples(area(n, std::ptrdiff_t{p} + q));
  Scratch<std::int32_t> rows(n);
  if (!obtained(u, uBefore, samples, rows)) {
    *status = kNoScratch;
    return;
  }
  std::iota(rows.data(), rows.data() + n, 1);
  PlsData current(samples.data(), n, p, q);
  takeSamples({data, n}, rows.data(), current);
  PlsComponent component{scores, weights, loadings, respWeights, innerCoef};
  rowSums(current.x, u.data(), startVector(current, u.data()), weights);
  *status = extractComponent(current, component, u.data(), uBefore.data());
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
  PlsComponentScratch component(n, q);
  PlsSampleScratch samples(p, nModel);
  Scratch<double> rotations(area(p, nModel)), scoreSquares(nModel), storage(area(n, std::ptrdiff_t{p} + q));
  Scratch<std::int32_t> rows(n);
  if (!obtained(component, samples, rotations, scoreSquares, storage, rows)) {
    *status = kNoScratch;
    return;
  }
  std::iota(rows.data(), rows.data() + n, 1);
  PlsData current(storage.data(), n, p, q);
  takeSamples({data, n}, rows.data(), current);
  const PlsModel model{p, q, nModel, {weights, p}, {loadings, p}, {respWeights, nModel}, inner, scoreSquares.data()};
  *status = fitComponents(current, model, component, nullptr);
  if (*status != kDone) return;

  if (nModel > 0) deflate(current.x, model.loadings.column(nModel - 1), component.scores.data());
  const Matrix left{data, n};
  for (std::int32_t j = 0; j < p; ++j)
    for (std::int32_t i = 0; i < n; ++i) left(i, j) = current.x.x(j, i);
  for (std::int32_t k = 0; k < q; ++k) std::copy_n(current.y.x.column(k), n, left.column(p + k));
  coefficients(model, {rotations.data(), p}, samples, coefs);
}

void PlsCvl(const double* data, const std::int32_t* /*rowTags*/, double* work, std::int32_t* /*workTags*/,
            std::int32_t* rowOrder, const std::int32_t* rowUse, const std::int32_t* nRows, const std::int32_t* nColumns,
            const std::int32_t* nResponses, const std::int32_t* nDescriptors, const std::int32_t* nComputed,
            const std::int32_t* nComponents, const double* /*scales*/, const double* /*means*/,
            const std::int32_t* /*scaled*/, double* press, double* coefErrors, double* /*sampleWork*/,
            double* foldCoefs, double* weights, double* loadings, double* respWeights, double* inner, double* s1,
            double* s2, std::int32_t* status, ProgressMonitor* const* monitor, std::int32_t* continueFlag) {
  *continueFlag = 1;
  *status = kSingular;
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  const std::int32_t nModel = std::max(*nComponents, 0), nUsed = std::clamp(*nComputed, 0, nModel);
  PlsFoldScratch scratch(n, p, q, nModel);
  Scratch<double> scoreSquares(nModel);
  if (!obtained(scratch, scoreSquares)) {
    *status = kNoScratch;
    return;
  }
  const PlsModel model{p, q, nModel, {weights, p}, {loadings, p}, {respWeights, nModel}, inner, scoreSquares.data()};
  const PlsValidation validation{{data, n}, rowUse,       n,        *nColumns,       p,         q, nUsed,
                                 monitor,   continueFlag, rowOrder, {press, nModel}, coefErrors};
  *status = crossValidate(validation, work, model, foldCoefs, {s1, s2}, scratch);
}

}  // namespace studystats::core
