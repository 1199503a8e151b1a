// The by-address doors to classification and canonical analysis.
#include "analyses/da/classification.h"

#include <algorithm>

#include "analyses/da/canonical.h"
#include "analyses/da/selection.h"
#include "numeric/status.h"

namespace studystats::core {

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
    if (nearest >= 1 && own >= 1 && own <= nClasses) ++counts(own - 1, nearest - 1);
  }
}

void DaScat(const double* data, const std::int32_t* ldData, const std::int32_t* n, const std::int32_t* p,
            const std::int32_t* selected, const double* within, double* withinSS, double* between,
            std::int32_t* status) {
  SubsetModel model(0, *p);
  Scratch<double> products(productScratch(*p)), variableMeans(*p);
  *status = obtained(model, products, variableMeans) ? kDone : kNoScratch;
  if (*status != kDone) return;
  chooseVariables(selected, *p, model);
  scatterMatrices({{data, *ldData}, nullptr, nullptr, *n, *p, nClasses}, {within, *p}, model, variableMeans.data(),
                  products.data(), {withinSS, *p}, {between, *p});
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
  SubsetModel model(*n, *p);
  CanonicalScratch scratch(*p);
  *status = obtained(model, scratch) ? kDone : kNoScratch;
  if (*status != kDone) return;

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
                                 {work2, *ldVar}, scratch);
}

}  // namespace studystats::core
