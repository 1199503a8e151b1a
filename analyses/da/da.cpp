// Discriminant analysis as DisAnl runs it. A validation in which a selection fails is run over again with one sample a
// group.
#include "analyses/da/da.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "numeric/folds.h"
#include "numeric/host_reports.h"
#include "numeric/sorting.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

constexpr std::int32_t kOneSampleAGroup = 0;

// Samples of each class, whether they are in the model or not.
void countClasses(const DaProblem& v, std::int32_t* classSize) {
  std::fill_n(classSize, v.g, 0);
  for (std::int32_t i = 0; i < v.n; ++i)
    if (const std::int32_t own = classOfSample(v, i); own > 0) ++classSize[own - 1];
}

bool modelCanBePooled(const DaAnalysis& v) {
  std::int32_t n = 0;
  for (std::int32_t i = 0; i < v.problem.n; ++i) {
    if (v.inModel[i] != 1) continue;
    if (classOfSample(v.problem, i) == 0) return false;
    ++n;
  }
  return n > v.problem.g;
}

// The model on all model samples, and the scatter of its variables.
std::int32_t fitModel(const DaAnalysis& v, const DaOutputs& out, DaScratch& s, Pace& pace) {
  countClasses(v.problem, s.classSize.data());
  std::int32_t* rows = s.fold.rows.data();
  std::size_t nModel = 0;
  for (std::int32_t i = 0; i < v.problem.n; ++i)
    if (v.inModel[i] == 1) {
      out.modelRows[nModel] = i + 1;
      rows[nModel++] = i;
    }
  const std::int32_t status =
      fitRows(v.problem, {rows, nModel}, s.classSize.data(), out.selected, &out.steps, s.full, pace);
  if (status != kDone) return status;
  if (s.full.model.m > 1) scatterMatrices(s.full.samples, s.full.within, s.full.model, s.canonical, pace);
  countResubstituted(s.full, out.confusion, pace);
  return kDone;
}

// Makes the plan and sorts modelRows by class, equal classes in increasing row number: dealt along this order, every
// group gets its share of each class. Rows outside the model stand behind all classes. The builder of systematic groups
// reads its marks of usable rows by position, that of random subsets by row: they are laid out so that both mean the
// row.
void orderForValidation(const DaAnalysis& v, std::int32_t* modelRows, DaScratch& s) {
  const DaProblem& problem = v.problem;
  VldPln(&problem.n);
  const double behindAll = problem.g + 1.0;
  std::iota(modelRows, modelRows + problem.n, 1);
  for (std::int32_t i = 0; i < problem.n; ++i) s.keys[i] = v.inModel[i] == 1 ? problem.classOf[i] : behindAll;
  sortColumn(s.keys.data(), modelRows, problem.n, false, s.sortBuffer.data());

  std::copy_n(modelRows, problem.n, s.order.data());
  for (std::int32_t i = 0; i < problem.n; ++i) {
    const std::int32_t row = cvMethod == kSystematicGroups ? s.order[i] - 1 : i;
    s.usable[i] = v.inModel[row] == 1 ? 1 : 0;
  }
}

// A fold is made by the settings as they are then: the host, which has just been told of it, may have changed them.
engine::FoldRows rowsOfFold(const DaAnalysis& v, std::int32_t fold, DaScratch& s) {
  PlannedFolds planned{
      cvMethod, {cvFolds, cvLeaveOut, cvPressWeight}, v.problem.n, s.order.data(), s.usable.data(), s.heldOut.data()};
  return planned(fold, {s.fold.rows.data(), static_cast<std::size_t>(v.problem.n)});
}

void storeFold(const engine::DiscriminantFold& fold, const DaOutputs& out) {
  for (std::int32_t c = 0; c < fold.distances.columns; ++c) {
    const double* distances = fold.distances.data + std::ptrdiff_t{c} * fold.distances.ld;
    for (std::int32_t i = 0; i < fold.distances.rows; ++i) out.distances(i, c) = static_cast<float>(distances[i]);
  }
  if (fold.variables.size() == 1) onlyCanonicalFunction(out.canonical);
}

struct Course {
  std::int32_t status;
  bool selectionFailed;
};

// All folds of the plan that cvGroups gives, up to the first that fails.
Course runFolds(const DaAnalysis& v, const DaOutputs& out, DaScratch& s, Pace& pace) {
  out.counts.clear(v.problem.p, v.problem.g);
  orderForValidation(v, out.modelRows, s);
  const std::int32_t nFolds = cvFolds;
  for (std::int32_t f = 0; f < nFolds; ++f) {
    if (!pace.begin(f + 1, nFolds)) return {kStopped, false};
    const engine::DiscriminantFold fold = runFold(v.problem, rowsOfFold(v, f, s), s.fold, pace);
    if (fold.status != engine::Status::Done) return {static_cast<std::int32_t>(fold.status), true};
    addFold(v.problem, fold, out.counts);
    storeFold(fold, out);
  }
  return {kDone, false};
}

// kDone, the status of the selection that failed, or kStopped. The counts are those of the second course, if there was
// one, alone; cvGroups is then 0, and gets its value back when that course fails, too.
std::int32_t crossValidate(const DaAnalysis& v, const DaOutputs& out, DaScratch& s) {
  HostReports reports{&v.monitor, v.continueFlag};
  Pace pace{engine::Checkpoint(reports)};
  Course course = runFolds(v, out, s, pace);
  if (!course.selectionFailed || cvGroups == kOneSampleAGroup) return course.status;
  const std::int32_t asked = cvGroups;
  cvGroups = kOneSampleAGroup;
  course = runFolds(v, out, s, pace);
  if (course.selectionFailed) cvGroups = asked;
  return course.status;
}

// Fractions of the held-out samples whose nearest class was their own, in 32 bits. The plan's weight brings the count
// back to one prediction a sample; all samples are the divisor, those outside the model, too.
void summariseValidation(const DaProblem& v, const DaOutputs& out) {
  std::int64_t nCorrect = 0;
  for (std::int32_t c = 0; c < v.g; ++c) {
    nCorrect += out.counts.correct[c];
    out.classFraction[c] = static_cast<float>(out.counts.correct[c]) / static_cast<float>(out.counts.validated[c]);
  }
  nCorrect = std::min<std::int64_t>(nCorrect, std::numeric_limits<std::int32_t>::max());
  *out.fractionCorrect = static_cast<float>(cvPressWeight) * static_cast<float>(nCorrect) / static_cast<float>(v.n);
}

// Distances of all samples, and the canonical functions.
std::int32_t classifyAll(const DaProblem& v, const DaOutputs& out, DaScratch& s, Pace& pace) {
  nearestClasses({v.x, v.n}, {s.full.means.data(), v.p}, v.g, s.full.model, out.distances, pace);
  if (s.full.model.m > 1) return canonicalFunctions(s.full.model.m, v.g, out.canonical, s.canonical, pace);
  onlyCanonicalFunction(out.canonical);
  return kDone;
}

}  // namespace

std::int32_t discriminate(const DaAnalysis& analysis, const DaOutputs& out, DaScratch& scratch) {
  *out.steps.nSteps = 0;
  if (!modelCanBePooled(analysis)) return kSingular;
  Pace unasked;

  // 1. The model on all model samples.
  if (const std::int32_t status = fitModel(analysis, out, scratch, unasked); status != kDone) return status;

  // 2. Cross-validation of selection and classifier.
  if (const std::int32_t status = crossValidate(analysis, out, scratch); status != kDone) return status;
  summariseValidation(analysis.problem, out);

  // 3. Distances of all samples and canonical functions of the model.
  return classifyAll(analysis.problem, out, scratch, unasked);
}

}  // namespace studystats::core
