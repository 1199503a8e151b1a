// Every fold repeats the selection of variables on its training samples and classifies the samples that it holds out:
// the honest figure, since a choice of variables made with the held-out samples in sight would flatter the classifier.
//
// Hastie, Tibshirani & Friedman, The Elements of Statistical Learning, 2nd ed. (2009), section 7.10.2.
#include "analyses/da/cross_validation.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "numeric/sorting.h"
#include "numeric/status.h"
#include "numeric/validation.h"

namespace studystats::core {
namespace {

constexpr std::int32_t kOneSampleAGroup = 0;

// Makes the plan and sorts modelRows by class, equal classes in increasing row number: dealt along this order, every
// group gets its share of each class. Rows outside the model stand behind all classes. The builder of systematic groups
// reads its marks of usable rows by position, that of random subsets by row: they are laid out so that both mean the
// row.
void orderForValidation(const DaAnalysis& v, DaScratch& s) {
  VldPln(&v.n);
  const double behindAll = v.g + 1.0;
  std::iota(v.modelRows, v.modelRows + v.n, 1);
  for (std::int32_t i = 0; i < v.n; ++i) s.keys[i] = v.inModel[i] == 1 ? v.classOf[i] : behindAll;
  sortColumn(s.keys.data(), v.modelRows, v.n, false, s.sortBuffer.data());

  std::copy_n(v.modelRows, v.n, s.order.data());
  for (std::int32_t i = 0; i < v.n; ++i) {
    const std::int32_t row = cvMethod == kSystematicGroups ? s.order[i] - 1 : i;
    s.usable[i] = v.inModel[row] == 1 ? 1 : 0;
  }
}

// Samples outside the model are held out by every fold, so that a tally may exceed its integer.
void countUp(std::int32_t& tally) {
  if (tally < std::numeric_limits<std::int32_t>::max()) ++tally;
}

void clearOutputs(const DaAnalysis& v, DaScratch& s) {
  std::fill_n(v.selCount, v.p, 0);
  for (std::int32_t c = 0; c < v.g; ++c) std::fill_n(v.confusion.column(c), v.g, 0);
  std::fill_n(s.validated.data(), v.g, 0);
  std::fill_n(s.correct.data(), v.g, 0);
}

// The selection on the training samples of a fold, counted from 0. Their classes are looked at again: the host, which
// has been told of the fold, may have changed them, or the settings that say who trains.
std::int32_t fitFold(const DaAnalysis& v, DaScratch& s, std::int32_t fold) {
  const std::int32_t group = fold + 1;
  std::int32_t nTrain = 0;
  VldTrn(v.data.data, v.classOf, s.samples.data(), s.tags.data(), s.order.data(), s.heldOut.data(), s.usable.data(),
         &v.n, &v.p, &nTrain, &group);
  std::fill_n(s.classSize.data(), v.g, 0);
  for (std::int32_t i = 0; i < nTrain; ++i)
    if (isClass(s.tags[i], v.g)) ++s.classSize[s.tags[i] - 1];

  const DaSamples training{{s.samples.data(), v.n}, s.tags.data(), s.classSize.data(), nTrain, v.p, v.g};
  return selectSubset(training, v.rules, s.foldSelected.data(), {s.fold.means.data(), v.p}, {s.fold.within.data(), v.p},
                      s.products.data(), nullptr, s.fold.model);
}

// Packs the held-out samples, as far as the fold's model looks at them; their number.
std::int32_t packHeldOut(const DaAnalysis& v, DaScratch& s) {
  std::int32_t nHeld = 0;
  for (std::int32_t i = 0; i < v.n; ++i)
    if (s.heldOut[i] == 1) {
      for (std::int32_t a = 0; a < s.fold.model.m; ++a) {
        const std::int32_t j = s.fold.model.variables[a];
        Matrix{s.samples.data(), v.n}(nHeld, j) = v.data(i, j);
      }
      s.tags[nHeld++] = v.classOf[i];
    }
  return nHeld;
}

void classifyHeldOut(const DaAnalysis& v, DaScratch& s) {
  const std::int32_t nHeld = packHeldOut(v, s);
  SubsetModel& model = s.fold.model;
  nearestClasses({s.samples.data(), v.n}, nHeld, {s.fold.means.data(), v.p}, v.g, model, v.distances);
  if (model.m == 1) onlyCanonicalFunction(v.canonical);
  for (std::int32_t i = 0; i < nHeld; ++i) {
    if (!isClass(s.tags[i], v.g)) continue;
    const std::int32_t own = s.tags[i] - 1, predicted = model.nearest[i] - 1;
    countUp(v.confusion(own, predicted));
    countUp(s.validated[own]);
    if (predicted == own) countUp(s.correct[own]);
  }
}

struct Course {
  std::int32_t status;
  bool selectionFailed;
};

// All folds of the plan that cvGroups gives, up to the first that fails.
Course runFolds(const DaAnalysis& v, DaScratch& s) {
  clearOutputs(v, s);
  orderForValidation(v, s);
  const std::int32_t nFolds = cvFolds;
  for (std::int32_t fold = 0; fold < nFolds; ++fold) {
    const std::int32_t report = fold + 1;
    updateminorprogress(&v.monitor, &report, &nFolds, v.continueFlag);
    if (*v.continueFlag == 0) return {kStopped, false};
    if (const std::int32_t status = fitFold(v, s, fold); status != kDone) return {status, true};
    for (std::int32_t j = 0; j < v.p; ++j) v.selCount[j] += s.foldSelected[j] == 1 ? 1 : 0;
    classifyHeldOut(v, s);
  }
  return {kDone, false};
}

}  // namespace

std::int32_t crossValidate(const DaAnalysis& v, DaScratch& s) {
  Course course = runFolds(v, s);
  if (!course.selectionFailed || cvGroups == kOneSampleAGroup) return course.status;
  const std::int32_t asked = cvGroups;
  cvGroups = kOneSampleAGroup;
  course = runFolds(v, s);
  if (course.selectionFailed) cvGroups = asked;
  return course.status;
}

}  // namespace studystats::core
