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

// For a model and sums of products beside it.
struct ScatterScratch {
  ScatterScratch(Arena& arena, std::int32_t n, std::int32_t p)
      : model(arena, n, p), products(arena, productScratch(p)), means(arena, p) {}
  SubsetModel model;
  Array<double> products, means;
};

// For a model and its canonical functions.
struct ClassifierScratch {
  ClassifierScratch(Arena& arena, std::int32_t n, std::int32_t p) : model(arena, n, p), canonical(arena, p) {}
  SubsetModel model;
  CanonicalScratch canonical;
};

// The inverse that model.block holds, at the variables' own positions.
void storeBlock(SubsetModel& model, Matrix winv) {
  const ConstMatrix block{model.block.data(), model.m};
  const std::int32_t* variables = model.variables.data();
  for (std::int32_t b = 0; b < model.m; ++b)
    for (std::int32_t a = 0; a < model.m; ++a) winv(variables[a], variables[b]) = block(a, b);
}

void storeInverse(SubsetModel& model, Matrix winv) {
  if (model.m > 1) return storeBlock(model, winv);
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
  Obtained<DaScratch> scratch(n, p, g);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const DaAnalysis analysis{.data = {data, n},
                            .classOf = classOf,
                            .inModel = inModel,
                            .n = n,
                            .p = p,
                            .g = g,
                            .rules = {*selectMode, *nSelect, p},
                            .monitor = *progressMonitor,
                            .continueFlag = continueFlag,
                            .modelRows = modelRows,
                            .selCount = cvSelCount,
                            .confusion = {cvConfusion, g},
                            .distances = {distances, n},
                            .canonical = {nCanonical, canonValues, {canonVectors, p}}};
  const DaModelOutputs out{.steps = {nSteps, selectOrder, stepFraction, {stepClassFraction, p}},
                           .selected = selected,
                           .confusion = {confusion, g},
                           .fractionCorrect = cvFractionCorrect,
                           .classFraction = cvClassFraction};
  *status = discriminate(analysis, out, *scratch);
}

void DaPool(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, double* means, double* within, const std::int32_t* classSize,
            std::int32_t* status) {
  const DaSamples samples{{data, *ldData}, classOf, classSize, *n, std::max(*p, 0), nClasses};
  Scratch<double> products(productScratch(*p));
  *status = products ? kDone : kNoScratch;
  if (!products) return;
  if (canBePooled(samples))
    poolCovariance(samples, {means, *ldVar}, {within, *ldVar}, products.data());
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
  chooseVariables(selected, *p, *model);
  *status = invertCovariance({within, *ldVar}, *model);
  if (*status == kDone) storeBlock(*model, {winv, *ldVar});
}

void DaEval(const double* data, const std::int32_t* classOf, const std::int32_t* ldData, const std::int32_t* ldVar,
            const std::int32_t* n, const std::int32_t* p, const std::int32_t* selected, const double* means,
            const double* within, double* winv, double* /*work*/, float* fraction, float* classFraction, float* distSum,
            const std::int32_t* classSize, std::int32_t* status) {
  Obtained<SubsetModel> model(*n, *p);
  *status = model ? kDone : kNoScratch;
  if (!model) return;
  const DaSamples samples{{data, *ldData}, classOf, classSize, *n, *p, nClasses};
  const SubsetFit fit{samples, {{means, *ldVar}, {within, *ldVar}}, *model};
  *status = fit.take(selected);
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
  Obtained<ScatterScratch> scratch(*n, *p);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;
  const DaSamples samples{{data, *ldData}, classOf, classSize, *n, std::max(*p, 0), nClasses};
  const DaSteps steps{nSteps, selectOrder, stepFraction, {stepClassFraction, *ldVar}};
  *status = selectSubset(samples, {*selectMode, *nSelect, *maxSteps}, selected, {means, *ldVar}, {within, *ldVar},
                         scratch->products.data(), &steps, scratch->model);
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
  Obtained<ScatterScratch> scratch(0, *p);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;
  chooseVariables(selected, *p, scratch->model);
  scatterMatrices({{data, *ldData}, nullptr, nullptr, *n, *p, nClasses}, {within, *p}, scratch->model,
                  scratch->means.data(), scratch->products.data(), {withinSS, *p}, {between, *p});
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
             const double* winv, const double* withinSS, const double* between, float* distances, double* work1,
             double* work2, std::int32_t* status) {
  Obtained<ClassifierScratch> scratch(*n, *p);
  *status = scratch ? kDone : kNoScratch;
  if (!scratch) return;

  SubsetModel& model = scratch->model;
  chooseVariables(selected, *p, model);
  if (model.m < 1) {
    *status = kSingular;
    return;
  }
  if (model.m > 1) takeWeights({winv, *ldVar}, model);
  nearestClasses({data, *ldData}, *n, {means, *ldVar}, nClasses, model, {distances, *ldData});
  std::copy_n(model.nearest.data(), std::max(*n, 0), tags + *ldData);

  const CanonicalFunctions out{nCanonical, canonValues, {canonVectors, *ldVar}};
  if (model.m == 1)
    onlyCanonicalFunction(out);
  else if ((*final & 1) != 0)
    *status = canonicalFunctions(model, nClasses, {{withinSS, *ldVar}, {between, *ldVar}}, out, {work1, *ldVar},
                                 {work2, *ldVar}, scratch->canonical);
}

}  // namespace studystats::core
