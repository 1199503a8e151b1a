// Discriminant analysis: selection of variables and classifier on all model samples, cross-validation of both, and the
// classifier's canonical functions and distances.
#include "analyses/da/da.h"

#include <algorithm>
#include <limits>

#include "analyses/da/canonical.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

// Packs the samples of the model and lists their rows, counted from 1; their number.
std::int32_t packModel(const DaAnalysis& v, DaScratch& s) {
  const Matrix packed{s.samples.data(), v.n};
  std::int32_t nPacked = 0;
  for (std::int32_t i = 0; i < v.n; ++i)
    if (v.inModel[i] == 1) {
      s.tags[nPacked] = v.classOf[i];
      v.modelRows[nPacked++] = i + 1;
    }
  for (std::int32_t j = 0; j < v.p; ++j)
    for (std::int32_t k = 0; k < nPacked; ++k) packed(k, j) = v.data(v.modelRows[k] - 1, j);
  return nPacked;
}

// Samples of each class, whether they are in the model or not.
void countClasses(const DaAnalysis& v, std::int32_t* classSize) {
  std::fill_n(classSize, v.g, 0);
  for (std::int32_t i = 0; i < v.n; ++i)
    if (isClass(v.classOf[i], v.g)) ++classSize[v.classOf[i] - 1];
}

bool modelCanBePooled(const DaAnalysis& v) {
  std::int32_t n = 0;
  for (std::int32_t i = 0; i < v.n; ++i) {
    if (v.inModel[i] != 1) continue;
    if (!isClass(v.classOf[i], v.g)) return false;
    ++n;
  }
  return n > v.g;
}

void countResubstituted(const DaSamples& samples, DaFit& fit, MatrixView<std::int32_t> confusion) {
  for (std::int32_t c = 0; c < samples.g; ++c) std::fill_n(confusion.column(c), samples.g, 0);
  nearestClasses(samples.x, samples.n, {fit.means.data(), samples.p}, samples.g, fit.model, {nullptr, 0},
                 OneVariable::kWeighted);
  for (std::int32_t i = 0; i < samples.n; ++i) ++confusion(samples.classOf[i] - 1, fit.model.nearest[i] - 1);
}

// The model on all model samples.
std::int32_t fitModel(const DaAnalysis& v, DaScratch& s, const DaModelOutputs& out) {
  countClasses(v, s.classSize.data());
  const std::int32_t nModel = packModel(v, s);
  const DaSamples samples{{s.samples.data(), v.n}, s.tags.data(), s.classSize.data(), nModel, v.p, v.g};
  const Matrix means{s.full.means.data(), v.p}, within{s.full.within.data(), v.p};
  const std::int32_t status =
      selectSubset(samples, v.rules, out.selected, means, within, s.products.data(), &out.steps, s.full.model);
  if (status != kDone) return status;
  scatterMatrices(samples, {s.full.within.data(), v.p}, s.full.model, s.variableMeans.data(), s.products.data(),
                  {s.withinSS.data(), v.p}, {s.between.data(), v.p});
  countResubstituted(samples, s.full, out.confusion);
  return kDone;
}

// Fractions of the held-out samples whose nearest class was their own, in 32 bits. The plan's weight brings the count
// back to one prediction a sample; all samples are the divisor, those outside the model, too.
void summariseValidation(const DaAnalysis& v, DaScratch& s, const DaModelOutputs& out) {
  std::int64_t nCorrect = 0;
  for (std::int32_t c = 0; c < v.g; ++c) {
    nCorrect += s.correct[c];
    out.classFraction[c] = static_cast<float>(s.correct[c]) / static_cast<float>(s.validated[c]);
  }
  nCorrect = std::min<std::int64_t>(nCorrect, std::numeric_limits<std::int32_t>::max());
  *out.fractionCorrect = static_cast<float>(cvPressWeight) * static_cast<float>(nCorrect) / static_cast<float>(v.n);
}

// Distances of all samples, and the canonical functions. The fold's matrices are free by now.
std::int32_t classifyAll(const DaAnalysis& v, DaScratch& s) {
  SubsetModel& model = s.full.model;
  nearestClasses(v.data, v.n, {s.full.means.data(), v.p}, v.g, model, v.distances);
  if (model.m == 1) {
    onlyCanonicalFunction(v.canonical);
    return kDone;
  }
  return canonicalFunctions(model, v.g, {{s.withinSS.data(), v.p}, {s.between.data(), v.p}}, v.canonical,
                            {s.fold.within.data(), v.p}, {s.fold.model.block.data(), v.p}, s.canonical);
}

}  // namespace

std::int32_t discriminate(const DaAnalysis& analysis, const DaModelOutputs& out, DaScratch& scratch) {
  *out.steps.nSteps = 0;
  if (!modelCanBePooled(analysis)) return kSingular;

  // 1. The model on all model samples.
  if (const std::int32_t status = fitModel(analysis, scratch, out); status != kDone) return status;

  // 2. Cross-validation of selection and classifier.
  if (const std::int32_t status = crossValidate(analysis, scratch); status != kDone) return status;
  summariseValidation(analysis, scratch, out);

  // 3. Distances of all samples and canonical functions of the model.
  return classifyAll(analysis, scratch);
}

}  // namespace studystats::core
