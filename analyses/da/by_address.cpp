// Sizes are read, arrays become views, scratch memory is obtained; the other files do the work. DaNear, DaConf and
// SubMat are too small to need any: they are the loops that define them.
#include "analyses/da/by_address.h"

#include <algorithm>
#include <cmath>

#include "analyses/da/canonical.h"
#include "analyses/da/classification.h"
#include "analyses/da/da.h"
#include "analyses/da/selection.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {

std::int32_t nClasses = 0;

namespace {

// For a model and its scatter matrices or canonical functions.
struct CanonicalModelScratch {
  CanonicalModelScratch(Arena& arena, std::int32_t n, std::int32_t p) : model(arena, n, p), canonical(arena, p) {}
  SubsetModel model;
  CanonicalScratch canonical;
};

// For a selection whose covariance is the caller's.
struct SelectionScratch {
  SelectionScratch(Arena& arena, std::int32_t n, std::int32_t p)
      : model(arena, n, p), products(arena, productScratch(p)) {}
  SubsetModel model;
  Array<double> products;
};

// A matrix of the model's variables, at their own positions.
void storeBlock(const SubsetModel& model, ConstMatrix block, Matrix to) {
  const std::int32_t* variables = model.variables.data();
  for (std::int32_t b = 0; b < model.m; ++b)
    for (std::int32_t a = 0; a < model.m; ++a) to(variables[a], variables[b]) = block(a, b);
}

void takeBlock(const SubsetModel& model, ConstMatrix from, Matrix block) {
  const std::int32_t* variables = model.variables.data();
  for (std::int32_t b = 0; b < model.m; ++b)
    for (std::int32_t a = 0; a < model.m; ++a) block(a, b) = from(variables[a], variables[b]);
}

void storeInverse(const SubsetModel& model, Matrix winv) {
  if (model.m > 1) return storeBlock(model, {model.block.data(), model.m}, winv);
  const std::int32_t j = model.variables[0];
  winv(j, j) = model.weights[0];
}

}  // namespace

void DaCore(const double* data, const std::int32_t* classOf, std::int32_t* modelRows, const std::int32_t* inModel,
            const std::int32_t* nSamples, const std::int32_t* nVars, const std::int32_t* classCount,
            const std::int32_t* selectMode, const std::int32_t* nSelect, const std::int32_t* method,
            const std::int32_t* groups, const float* fraction, double* canonVectors, double* canonValues,
            float* stepFraction, float* stepClassFraction, float* cvFractionCorrect, float* cvClassFraction,
            float* distances, std::int32_t* selected, std::int32_t* cvSelCount, std::int32_t* selectOrder,
            std::int32_t* confusion, std::int32_t* cvConfusion, std::int32_t* nSteps, std::int32_t* nCanonical,
            std::int32_t* status, ProgressMonitor* const* progressMonitor, std::int32_t* continueFlag) {
  cvMethod = *method;
  cvGroups = *groups;
  cvFraction = *fraction;
  nClasses = *classCount;
  *continueFlag = 1;
  *status = kSingular;
  const std::int32_t n = *nSamples, p = *nVars, g = *classCount;
  if (p < 0 || g < 1 || n <= g) {
    *nSteps = 0;
    return;
  }
  const DaProblem problem{{data, n}, classOf, 1, n, p, g, {*selectMode, *nSelect, p}};
  Obtained<DaScratch> scratch(DaSizes(n, p, g, problem.rules));
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const DaOutputs out{.modelRows = modelRows,
                      .steps = {nSteps, selectOrder, stepFraction, {stepClassFraction, p}},
                      .selected = selected,
                      .confusion = {confusion, g},
                      .distances = {distances, n},
                      .canonical = {nCanonical, canonValues, {canonVectors, p}},
                      .counts = {cvSelCount, {cvConfusion, g}, scratch->validated.data(), scratch->correct.data()},
                      .fractionCorrect = cvFractionCorrect,
                      .classFraction = cvClassFraction};
  *status = discriminate({problem, inModel, *progressMonitor, continueFlag}, out, *scratch);
}

void DaPool(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, double* means, double* within, const std::int32_t* classSize,
            std::int32_t* status) {
  const DaSamples samples{{data, *ldData}, classOf, classSize, *n, std::max(*p, 0), nClasses};
  Scratch<double> products(productScratch(*p));
  *status = products ? kDone : kNoScratch;
  if (!products) return;
  Pace unasked;
  if (canBePooled(samples))
    poolCovariance(samples, {means, *ldVar}, {within, *ldVar}, products.data(), unasked);
  else
    *status = kSingular;
}

void DaNear(const double* data, const std::int32_t* ldData, const std::int32_t* ldVar, const std::int32_t* p,
            const std::int32_t* selected, const double* means, const double* winv, const std::int32_t* row,
            std::int32_t* nearest, float* distances, const std::int32_t* storeDistances) {
  const ConstMatrix x{data, *ldData}, centres{means, *ldVar}, weights{winv, *ldVar};
  const std::int32_t i = *row - 1;
  double least = 0.0;
  *nearest = nClasses < 1 ? 0 : 1;
  for (std::int32_t c = 0; c < nClasses; ++c) {
    double squared = 0.0;
    for (std::int32_t j = 0; j < *p; ++j) {
      if (selected[j] != 1) continue;
      double inner = 0.0;
      for (std::int32_t k = 0; k < *p; ++k)
        if (selected[k] == 1) inner += weights(j, k) * (x(i, k) - centres(k, c));
      squared += (x(i, j) - centres(j, c)) * inner;
    }
    if (*storeDistances != 0) MatrixView<float>{distances, *ldData}(i, c) = static_cast<float>(std::sqrt(squared));
    if (c == 0 || squared < least) {
      least = squared;
      *nearest = c + 1;
    }
  }
}

void DaInv(const std::int32_t* p, const std::int32_t* ldVar, const std::int32_t* selected, const double* within,
           double* winv, double* /*work*/, std::int32_t* status) {
  Obtained<SubsetModel> model(0, *p);
  *status = model ? kDone : kNoScratch;
  if (!model) return;
  Pace unasked;
  chooseVariables(selected, *p, *model);
  *status = invertCovariance(PooledCovariance({within, *ldVar}), *model, unasked);
  if (*status == kDone) storeBlock(*model, {model->block.data(), model->m}, {winv, *ldVar});
}

void DaEval(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* selected, const double* means,
            const double* within, double* winv, double* /*work*/, float* fraction, float* classFraction, float* distSum,
            const std::int32_t* classSize, std::int32_t* status) {
  Obtained<SubsetModel> model(*n, *p);
  *status = model ? kDone : kNoScratch;
  if (!model) return;
  const DaSamples samples{{data, *ldData}, classOf, classSize, *n, *p, nClasses};
  PooledCovariance covariance({within, *ldVar});
  Pace unasked;
  const SubsetFit fit{samples, {means, *ldVar}, covariance, *model, unasked};
  chooseVariables(selected, *p, *model);
  *status = fit.build();
  if (*status == kSingular) std::fill_n(classFraction, std::max(nClasses, 0), 0.0F);
  if (*status != kDone) return;
  storeInverse(*model, {winv, *ldVar});
  *fraction = fit.fractionCorrect();
  *distSum = fit.separation();
  fit.classFractions(classFraction, 1);
}

void DaStep(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* maxSteps, const std::int32_t* selectMode,
            const std::int32_t* nSelect, std::int32_t* selected, double* within, double* means, double* winv,
            std::int32_t* nSteps, std::int32_t* selectOrder, float* stepFraction, float* stepClassFraction,
            double* /*work*/, const std::int32_t* classSize, std::int32_t* status) {
  Obtained<SelectionScratch> scratch(*n, *p);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;
  const DaSamples samples{{data, *ldData}, classOf, classSize, *n, std::max(*p, 0), nClasses};
  const DaSteps steps{nSteps, selectOrder, stepFraction, {stepClassFraction, *ldVar}};
  const DaRules rules{*selectMode, *nSelect, *maxSteps};
  clearSelection(rules, *p, selected, &steps);
  *status = kSingular;
  if (!canBePooled(samples)) return;
  Pace unasked;
  poolCovariance(samples, {means, *ldVar}, {within, *ldVar}, scratch->products.data(), unasked);
  PooledCovariance covariance({within, *ldVar});
  *status = selectSubset({samples, {means, *ldVar}, covariance, scratch->model, unasked}, rules, selected, &steps);
  if (*status == kDone) storeInverse(scratch->model, {winv, *ldVar});
}

void DaConf(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* selected, const double* means,
            const double* winv, std::int32_t* confusion) {
  const MatrixView<std::int32_t> counts{confusion, nClasses};
  const std::int32_t storeDistances = 0;
  for (std::int32_t c = 0; c < nClasses; ++c) std::fill_n(counts.column(c), nClasses, 0);
  for (std::int32_t row = 1; row <= *n; ++row) {
    const std::int32_t own = classOf[row - 1];
    std::int32_t nearest = 0;
    DaNear(data, ldData, ldVar, p, selected, means, winv, &row, &nearest, nullptr, &storeDistances);
    if (nearest >= 1 && isClass(own, nClasses)) ++counts(own - 1, nearest - 1);
  }
}

void DaScat(const double* data, const std::int32_t* ldData, const std::int32_t* n, const std::int32_t* p,
            const std::int32_t* selected, const double* within, double* withinSS, double* between,
            std::int32_t* status) {
  Obtained<CanonicalModelScratch> scratch(0, *p);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;
  SubsetModel& model = scratch->model;
  CanonicalScratch& s = scratch->canonical;
  const ConstMatrix covariance{within, *p};
  const Matrix inside{withinSS, *p}, outside{between, *p};
  Pace unasked;
  chooseVariables(selected, *p, model);
  totalScatter({data, *ldData}, *n, model.variables.data(), model.m, s.means.data(), {s.between.data(), model.m},
               s.products.data(), unasked);
  for (std::int32_t k = 0; k < *p; ++k) std::fill_n(outside.column(k), *p, 0.0);
  storeBlock(model, {s.between.data(), model.m}, outside);
  for (std::int32_t k = 0; k < *p; ++k)
    for (std::int32_t j = 0; j < *p; ++j) {
      inside(j, k) = covariance(j, k) * (*n - nClasses);
      outside(j, k) -= inside(j, k);
    }
}

void SubMat(const std::int32_t* index, const double* a, const std::int32_t* lda, const std::int32_t* ldb,
            const std::int32_t* m, double* b) {
  const ConstMatrix from{a, *lda};
  const Matrix to{b, *ldb};
  for (std::int32_t j = 0; j < *m; ++j)
    for (std::int32_t k = 0; k < *m; ++k) to(k, j) = from(index[k] - 1, index[j] - 1);
}

void DaCanon(const double* data, std::int32_t* tags, const std::int32_t* ldData, const std::int32_t* ldVar,
             const std::int32_t* n, const std::int32_t* p, const std::int32_t* final, const std::int32_t* selected,
             std::int32_t* nCanonical, double* canonValues, double* canonVectors, const double* means,
             const double* winv, const double* withinSS, const double* between, float* distances, double* /*work1*/,
             double* /*work2*/, std::int32_t* status) {
  Obtained<CanonicalModelScratch> scratch(*n, *p);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;

  SubsetModel& model = scratch->model;
  CanonicalScratch& s = scratch->canonical;
  Pace unasked;
  chooseVariables(selected, *p, model);
  if (model.m < 1) {
    *status = kSingular;
    return;
  }
  if (model.m > 1) takeWeights({winv, *ldVar}, model);
  nearestClasses({{data, *ldData}, *n}, {means, *ldVar}, nClasses, model, MatrixView<float>{distances, *ldData},
                 unasked);
  std::copy_n(model.nearest.data(), std::max(*n, 0), tags + *ldData);

  const CanonicalFunctions out{nCanonical, canonValues, {canonVectors, *ldVar}};
  if (model.m == 1) return onlyCanonicalFunction(out);
  if ((*final & 1) == 0) return;
  takeBlock(model, {withinSS, *ldVar}, {s.withinSS.data(), model.m});
  takeBlock(model, {between, *ldVar}, {s.between.data(), model.m});
  *status = canonicalFunctions(model.m, nClasses, out, s, unasked);
}

}  // namespace studystats::core
