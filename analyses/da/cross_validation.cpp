// Every fold repeats the selection of variables on its training samples and classifies the samples that it holds out:
// the honest figure, since a choice of variables made with the held-out samples in sight would flatter the classifier.
//
// Hastie, Tibshirani & Friedman, The Elements of Statistical Learning, 2nd ed. (2009), section 7.10.2.
#include "analyses/da/cross_validation.h"

#include <algorithm>
#include <limits>

#include "numeric/status.h"

namespace studystats::core {
namespace {

using engine::DiscriminantFold;
using engine::Status;

// A column at a time: data that lie below one another are read in their order.
void packRows(const DaProblem& v, std::span<const std::int32_t> rows, Matrix to, Pace& pace) {
  for (std::int32_t j = 0; j < v.p && pace.goOn(2 * std::ssize(rows)); ++j) {
    const double* column = v.x.column(j);
    double* packed = to.column(j);
    for (std::size_t i = 0; i < rows.size(); ++i) packed[i] = column[rows[i]];
  }
}

bool areAllInOrder(std::span<const std::int32_t> rows, std::int32_t n) {
  if (std::ssize(rows) != n) return false;
  for (std::int32_t i = 0; i < n; ++i)
    if (rows[static_cast<std::size_t>(i)] != i) return false;
  return true;
}

void takeSamples(const DaProblem& v, std::span<const std::int32_t> rows, const std::int32_t* classSize, DaFit& fit,
                 Pace& pace) {
  std::fill_n(fit.classSize.data(), v.g, 0);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::int32_t own = fit.tags[static_cast<std::ptrdiff_t>(i)] = classOfSample(v, rows[i]);
    if (own > 0) ++fit.classSize[own - 1];
  }
  fit.samples = {v.x,
                 fit.tags.data(),
                 classSize != nullptr ? classSize : fit.classSize.data(),
                 static_cast<std::int32_t>(rows.size()),
                 v.p,
                 v.g};
  if (areAllInOrder(rows, v.n)) return;
  const Matrix packed{fit.packed.data(), v.n};
  packRows(v, rows, packed, pace);
  fit.samples.x = {packed.data, packed.ld};
}

// Samples outside the model are held out by every fold, so that a tally may exceed its integer.
void countUp(std::int32_t& tally) {
  if (tally < std::numeric_limits<std::int32_t>::max()) ++tally;
}

}  // namespace

std::int32_t classOfSample(const DaProblem& v, std::int32_t row) {
  const std::int64_t fromZero = std::int64_t{v.classOf[row]} - v.firstClass;
  return fromZero >= 0 && fromZero < v.g ? static_cast<std::int32_t>(fromZero) + 1 : 0;
}

DaFit::DaFit(Arena& arena, const DaSizes& size)
    : packed(arena, area(size.n, size.p)),
      means(arena, area(size.p, size.g)),
      products(arena, size.whole ? productScratch(size.p) : 0),
      covariance(arena, size.p, size.most),
      tags(arena, size.n),
      classSize(arena, size.g),
      model(arena, size.n, size.most) {}

std::int32_t fitRows(const DaProblem& v, std::span<const std::int32_t> rows, const std::int32_t* classSize,
                     std::int32_t* selected, const DaSteps* steps, DaFit& fit, Pace& pace) {
  clearSelection(v.rules, v.p, selected, steps);
  takeSamples(v, rows, classSize, fit, pace);
  if (!canBePooled(fit.samples)) return kSingular;
  const Matrix means{fit.means.data(), v.p}, whole{fit.covariance.columns.data(), v.p};
  if (pace.stopped()) return kStopped;
  if (v.rules.takesAll()) {
    poolCovariance(fit.samples, means, whole, fit.products.data(), pace);
    fit.within = PooledCovariance({whole.data, v.p});
  } else {
    fit.within = PooledCovariance(fit.samples, means, fit.covariance, pace);
  }
  return selectSubset({fit.samples, {means.data, v.p}, fit.within, fit.model, pace}, v.rules, selected, steps);
}

void countResubstituted(DaFit& fit, MatrixView<std::int32_t> confusion, Pace& pace) {
  const DaSamples& samples = fit.samples;
  for (std::int32_t c = 0; c < samples.g; ++c) std::fill_n(confusion.column(c), samples.g, 0);
  nearestClasses({samples.x, samples.n}, {fit.means.data(), samples.p}, samples.g, fit.model, kNoDistances, pace,
                 OneVariable::kWeighted);
  for (std::int32_t i = 0; i < samples.n && !pace.stopped(); ++i)
    ++confusion(samples.classOf[i] - 1, fit.model.nearest[i] - 1);
}

DiscriminantFold runFold(const DaProblem& v, const engine::FoldRows& rows, DaFoldScratch& s, Pace& pace) {
  DiscriminantFold fold;
  fold.rows = rows;
  const std::int32_t status = fitRows(v, rows.training, nullptr, s.selected.data(), nullptr, s.fit, pace);
  fold.status = static_cast<Status>(status);
  if (status != kDone) return fold;

  const auto nHeld = static_cast<std::int32_t>(rows.heldOut.size());
  SubsetModel& model = s.fit.model;
  nearestClasses({v.x, nHeld, rows.heldOut.data()}, {s.fit.means.data(), v.p}, v.g, model,
                 MatrixView<double>{s.distances.data(), v.n}, pace);
  if (pace.stopped()) fold.status = Status::Stopped;
  if (fold.status != Status::Done) return fold;
  for (std::int32_t i = 0; i < nHeld; ++i) s.predicted[i] = model.nearest[i] - 1;
  fold.variables = {model.variables.data(), static_cast<std::size_t>(model.m)};
  fold.predicted = {s.predicted.data(), rows.heldOut.size()};
  fold.distances = {s.distances.data(), nHeld, v.g, v.n};
  return fold;
}

void DaCounts::clear(std::int32_t p, std::int32_t g) const {
  std::fill_n(selCount, p, 0);
  for (std::int32_t c = 0; c < g; ++c) std::fill_n(confusion.column(c), g, 0);
  std::fill_n(validated, g, 0);
  std::fill_n(correct, g, 0);
}

void addFold(const DaProblem& v, const DiscriminantFold& fold, const DaCounts& counts) {
  if (fold.status != Status::Done) return;
  for (const std::int32_t j : fold.variables) ++counts.selCount[j];
  for (std::size_t i = 0; i < fold.rows.heldOut.size(); ++i) {
    const std::int32_t own = classOfSample(v, fold.rows.heldOut[i]) - 1, predicted = fold.predicted[i];
    if (own < 0) continue;
    countUp(counts.confusion(own, predicted));
    countUp(counts.validated[own]);
    if (predicted == own) countUp(counts.correct[own]);
  }
}

}  // namespace studystats::core
