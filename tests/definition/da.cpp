#include "tests/definition/da.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/matrix_view.h"
#include "tests/definition/eigen.h"
#include "tests/definition/least_squares.h"
#include "tests/definition/sorting.h"
#include "tests/definition/validation.h"

namespace studystats::definition {

Generator daGenerator;
std::int32_t daGroups;

namespace {

using Numbers = std::vector<double>;
using Floats = std::vector<float>;
using Integers = std::vector<std::int32_t>;
using core::ConstMatrix;
using core::Matrix;

std::size_t index(std::int32_t i) { return static_cast<std::size_t>(i); }

// Samples packed from row 1 down.
struct Samples {
  Numbers values;  // ld x p
  Integers classOf;
  std::int32_t ld, n, p;
  double operator()(std::int32_t i, std::int32_t j) const { return values[index(j) * index(ld) + index(i)]; }
};

Samples packed(const double* data, const std::int32_t* classOf, std::int32_t ld, std::int32_t p, const Integers& rows) {
  Samples samples{Numbers(index(ld) * index(p)), Integers(index(ld)), ld, static_cast<std::int32_t>(rows.size()), p};
  for (std::int32_t i = 0; i < samples.n; ++i) {
    const std::int32_t row = rows[index(i)] - 1;
    for (std::int32_t j = 0; j < p; ++j)
      samples.values[index(j) * index(ld) + index(i)] = data[index(j) * index(ld) + index(row)];
    samples.classOf[index(i)] = classOf[row];
  }
  return samples;
}

struct Fit {
  std::int32_t p, g;
  Numbers meanOf, withinOf, winvOf, workOf;
  Integers selected, classSize;

  Fit(std::int32_t nVars, std::int32_t nClasses)
      : p(nVars),
        g(nClasses),
        meanOf(index(p) * index(g)),
        withinOf(index(p) * index(p)),
        winvOf(withinOf),
        workOf(withinOf),
        selected(index(p)),
        classSize(index(g)) {}
  bool has(std::int32_t j) const { return selected[index(j)] == 1; }
  Integers list() const {
    Integers variables;
    for (std::int32_t j = 0; j < p; ++j)
      if (has(j)) variables.push_back(j);
    return variables;
  }
  double& mean(std::int32_t j, std::int32_t c) { return meanOf[index(c) * index(p) + index(j)]; }
  double mean(std::int32_t j, std::int32_t c) const { return meanOf[index(c) * index(p) + index(j)]; }
  double& within(std::int32_t k, std::int32_t j) { return withinOf[index(j) * index(p) + index(k)]; }
  double within(std::int32_t k, std::int32_t j) const { return withinOf[index(j) * index(p) + index(k)]; }
  double& winv(std::int32_t k, std::int32_t j) { return winvOf[index(j) * index(p) + index(k)]; }
  double winv(std::int32_t k, std::int32_t j) const { return winvOf[index(j) * index(p) + index(k)]; }
};

void countClasses(const std::int32_t* classOf, std::int32_t n, Integers& classSize) {
  std::fill(classSize.begin(), classSize.end(), 0);
  for (std::int32_t i = 0; i < n; ++i)
    if (classOf[i] >= 1 && classOf[i] <= static_cast<std::int32_t>(classSize.size()))
      classSize[index(classOf[i] - 1)] += 1;
}

void daPool(const Samples& x, Fit& fit) {
  std::fill(fit.meanOf.begin(), fit.meanOf.end(), 0.0);
  std::fill(fit.withinOf.begin(), fit.withinOf.end(), 0.0);
  for (std::int32_t s = 0; s < x.n; ++s)
    for (std::int32_t j = 0; j < x.p; ++j) fit.mean(j, x.classOf[index(s)] - 1) += x(s, j);
  for (std::int32_t j = 0; j < x.p; ++j)
    for (std::int32_t c = 0; c < fit.g; ++c)
      if (fit.classSize[index(c)] > 0) fit.mean(j, c) /= fit.classSize[index(c)];
  for (std::int32_t j = 0; j < x.p; ++j)
    for (std::int32_t s = 0; s < x.n; ++s) {
      const std::int32_t c = x.classOf[index(s)] - 1;
      for (std::int32_t k = 0; k < x.p; ++k)
        fit.within(k, j) += (x(s, k) - fit.mean(k, c)) * (x(s, j) - fit.mean(j, c)) / (x.n - fit.g);
    }
}

// The nearest class by the variables of the list, counted from 1; the distances go to one row of a matrix when there is
// one.
std::int32_t daNear(const Samples& x, const Fit& fit, const Integers& list, std::int32_t row, float* distances) {
  std::int32_t nearest = 0;
  double smallest = 0;
  for (std::int32_t c = 0; c < fit.g; ++c) {
    double d2 = 0;
    for (const std::int32_t j : list) {
      double sum = 0;
      for (const std::int32_t k : list) sum += fit.winv(j, k) * (x(row, k) - fit.mean(k, c));
      d2 += (x(row, j) - fit.mean(j, c)) * sum;
    }
    if (distances != nullptr) distances[index(c) * index(x.ld) + index(row)] = static_cast<float>(std::sqrt(d2));
    if (c == 0 || d2 < smallest) {
      nearest = c + 1;
      smallest = d2;
    }
  }
  return nearest;
}

// The same by one variable and without its variance.
std::int32_t nearestMean(const Samples& x, const Fit& fit, std::int32_t j, std::int32_t row, float* distances) {
  std::int32_t nearest = 0;
  double smallest = 0;
  for (std::int32_t c = 0; c < fit.g; ++c) {
    const double d = (x(row, j) - fit.mean(j, c)) * (x(row, j) - fit.mean(j, c));
    if (distances != nullptr) distances[index(c) * index(x.ld) + index(row)] = static_cast<float>(std::sqrt(d));
    if (c == 0 || d < smallest) {
      nearest = c + 1;
      smallest = d;
    }
  }
  return nearest;
}

std::int32_t daInv(Fit& fit) {
  const Integers list = fit.list();
  const auto m = static_cast<std::int32_t>(list.size());
  const Matrix work{fit.workOf.data(), fit.p};
  for (std::int32_t b = 0; b < m; ++b)
    for (std::int32_t a = 0; a < m; ++a) work(a, b) = fit.within(list[index(a)], list[index(b)]);
  for (std::int32_t a = 0; a < m; ++a)
    if (work(a, a) == 0) work(a, a) = 1;
  std::int32_t status;
  invMat(&m, &fit.p, fit.workOf.data(), &status);
  if (status != 0) return 1;
  for (std::int32_t b = 0; b < m; ++b)
    for (std::int32_t a = 0; a < m; ++a) fit.winv(list[index(a)], list[index(b)]) = work(a, b);
  return 0;
}

struct Scores {
  float fraction = 0, distSum = 0;
  Floats classFraction;
};

double meanDistance(const Fit& fit, const Integers& list, std::int32_t c, std::int32_t other) {
  double d2 = 0;
  for (const std::int32_t j : list) {
    double sum = 0;
    for (const std::int32_t k : list) sum += fit.winv(j, k) * (fit.mean(k, c) - fit.mean(k, other));
    d2 += (fit.mean(j, c) - fit.mean(j, other)) * sum;
  }
  return std::sqrt(d2);
}

std::int32_t daEval(const Samples& x, Fit& fit, Scores& scores) {
  const Integers list = fit.list();
  if (list.empty()) return 2;
  const bool one = list.size() == 1;
  const std::int32_t v = list[0];
  if (!one && daInv(fit) != 0) return 1;

  std::int32_t correct = 0;
  scores.classFraction.assign(index(fit.g), 0.0F);
  for (std::int32_t i = 0; i < x.n; ++i) {
    const std::int32_t nearest = one ? nearestMean(x, fit, v, i, nullptr) : daNear(x, fit, list, i, nullptr);
    if (nearest == x.classOf[index(i)]) {
      correct += 1;
      scores.classFraction[index(nearest - 1)] += 1;
    }
  }
  const auto root = static_cast<float>(std::sqrt(fit.within(v, v)));
  const float s = root > 0 ? root : 1.0F;
  scores.distSum = 0;
  for (std::int32_t c = 0; c < fit.g; ++c)
    for (std::int32_t other = c + 1; other < fit.g; ++other) {
      const double d = one ? std::fabs(fit.mean(v, c) - fit.mean(v, other)) / static_cast<double>(s)
                           : meanDistance(fit, list, c, other);
      scores.distSum = static_cast<float>(static_cast<double>(scores.distSum) + d);
    }
  scores.fraction = static_cast<float>(correct) / static_cast<float>(x.n);
  if (one) fit.winv(v, v) = 1 / fit.within(v, v);
  for (std::int32_t c = 0; c < fit.g; ++c)
    scores.classFraction[index(c)] /= static_cast<float>(fit.classSize[index(c)]);
  return 0;
}

struct Steps {
  std::int32_t* n;
  std::int32_t* order;
  float* fraction;
  float* classFraction;  // step x class, leading dimension p
};

bool beats(std::int32_t g, const Scores& candidate, float bestFraction, float bestDist) {
  const float fraction = candidate.fraction, dist = candidate.distSum;
  if (g == 2) return fraction > bestFraction || (std::fabs(fraction - bestFraction) <= 1e-5F && dist > bestDist);
  return dist > bestDist || (std::fabs(dist - bestDist) <= 1e-5F && fraction > bestFraction);
}

std::int32_t daStep(const Samples& x, std::int32_t maxSteps, std::int32_t selectMode, std::int32_t nSelect, Fit& fit,
                    const Steps& steps) {
  *steps.n = 0;
  const bool useAll = nSelect < 1 && selectMode == 2;
  std::fill(fit.selected.begin(), fit.selected.end(), useAll ? 1 : 0);
  if (x.n <= fit.g) return 1;
  daPool(x, fit);
  Scores scores;
  const auto writeClasses = [&](std::int32_t step) {
    for (std::int32_t c = 0; c < fit.g; ++c)
      steps.classFraction[index(c) * index(x.p) + index(step)] = scores.classFraction[index(c)];
  };
  if (useAll) {
    const std::int32_t status = daEval(x, fit, scores);
    if (status != 0) return status;
    steps.fraction[0] = scores.fraction;
    *steps.n = 1;
    steps.order[0] = 0;
    writeClasses(0);
    return 0;
  }
  float prevFraction = 0, bestDist = 0;
  for (;;) {
    const float prevDist = bestDist;
    float bestFraction = 0;
    bestDist = 0;
    std::int32_t best = 0;
    for (std::int32_t j = 1; j <= x.p; ++j) {
      if (fit.has(j - 1)) continue;
      fit.selected[index(j - 1)] = 1;
      const std::int32_t status = daEval(x, fit, scores);
      fit.selected[index(j - 1)] = 0;
      if (status != 0) return status;
      if (!beats(fit.g, scores, bestFraction, bestDist)) continue;
      best = j;
      bestFraction = scores.fraction;
      bestDist = scores.distSum;
      writeClasses(*steps.n);
    }
    if (best == 0) break;
    if (selectMode == 0 && (prevFraction > bestFraction ||
                            (std::fabs(bestFraction - prevFraction) < 1e-5F && prevDist * 1.05F > bestDist)))
      break;
    prevFraction = bestFraction;
    *steps.n += 1;
    steps.fraction[*steps.n - 1] = bestFraction;
    fit.selected[index(best - 1)] = 1;
    steps.order[*steps.n - 1] = best;
    if (*steps.n >= maxSteps) break;
    if (selectMode == 0 && bestFraction >= 0.999999F) break;
    if (selectMode == 1 && *steps.n >= nSelect) break;
  }
  return daEval(x, fit, scores);
}

void daConf(const Samples& x, const Fit& fit, std::int32_t* confusion) {
  const Integers list = fit.list();
  std::fill_n(confusion, fit.g * fit.g, 0);
  for (std::int32_t s = 0; s < x.n; ++s)
    confusion[index(daNear(x, fit, list, s, nullptr) - 1) * index(fit.g) + index(x.classOf[index(s)] - 1)] += 1;
}

struct Scatter {
  Numbers withinSS, between;
};

Scatter daScat(const Samples& x, const Fit& fit) {
  const std::int32_t p = x.p;
  Numbers mean(index(p));
  for (std::int32_t j = 0; j < p; ++j)
    if (fit.has(j)) {
      for (std::int32_t i = 0; i < x.n; ++i) mean[index(j)] += x(i, j);
      mean[index(j)] /= x.n;
    }
  Scatter scatter{Numbers(index(p) * index(p)), Numbers(index(p) * index(p))};
  const Matrix between{scatter.between.data(), p}, withinSS{scatter.withinSS.data(), p};
  for (std::int32_t k = 0; k < p; ++k)
    for (std::int32_t j = 0; j < p; ++j) {
      if (fit.has(j) && fit.has(k))
        for (std::int32_t i = 0; i < x.n; ++i) between(j, k) += (x(i, j) - mean[index(j)]) * (x(i, k) - mean[index(k)]);
      withinSS(j, k) = fit.within(j, k) * (x.n - fit.g);
      between(j, k) -= withinSS(j, k);
    }
  return scatter;
}

Numbers subMat(const Integers& list, const Numbers& a, std::int32_t ld) {
  Numbers b(index(ld) * index(ld));
  for (std::size_t j = 0; j < list.size(); ++j)
    for (std::size_t k = 0; k < list.size(); ++k) b[j * index(ld) + k] = a[index(list[j]) * index(ld) + index(list[k])];
  return b;
}

struct Canonical {
  std::int32_t* n;
  double* values;
  double* vectors;  // leading dimension p
};

std::int32_t canonicalFunctions(const Fit& fit, const Scatter& scatter, const Canonical& canonical) {
  const Integers list = fit.list();
  const std::int32_t p = fit.p, m = static_cast<std::int32_t>(list.size()), wantVectors = 1;
  Numbers s = subMat(list, scatter.withinSS, p), z(s.size()), e(index(p)), work1(index(p)), work2(index(p));
  const Matrix u{z.data(), p}, product{s.data(), p};
  const ConstMatrix between{scatter.between.data(), p};
  std::int32_t failed;
  eigSym(&p, &m, s.data(), e.data(), &wantVectors, z.data(), work1.data(), work2.data(), &failed);
  if (failed != 0) return 1;
  for (std::int32_t k = 0; k < m; ++k)
    if (e[index(k)] > 0) {
      const double factor = 1 / std::sqrt(e[index(k)]);
      for (std::int32_t i = 0; i < m; ++i) u(i, k) = u(i, k) * factor;
    }
  for (std::int32_t j = 0; j < m; ++j)
    for (std::int32_t i = 0; i <= j; ++i) {
      double sum = 0;
      for (std::int32_t a = 0; a < m; ++a)
        for (std::int32_t b = 0; b < m; ++b) sum += u(a, i) * between(list[index(a)], list[index(b)]) * u(b, j);
      product(i, j) = product(j, i) = sum;
    }
  eigSym(&p, &m, s.data(), e.data(), &wantVectors, z.data(), work1.data(), work2.data(), &failed);
  if (failed != 0) return 1;
  *canonical.n = std::min(m, fit.g - 1);
  for (std::int32_t k = 0; k < *canonical.n; ++k) {
    canonical.values[k] = e[index(k)];
    double squares = 0;
    for (std::int32_t i = 0; i < m; ++i) squares += u(i, k) * u(i, k);
    const double length = std::sqrt(squares);
    for (std::int32_t i = 0; i < m; ++i)
      canonical.vectors[index(k) * index(p) + index(i)] = length > 0 ? u(i, k) / length : u(i, k);
  }
  return 0;
}

std::int32_t daCanon(const Samples& x, bool final, const Fit& fit, const Scatter& scatter, Integers& predicted,
                     float* distances, const Canonical& canonical) {
  const Integers list = fit.list();
  predicted.assign(index(x.n), 0);
  if (list.empty()) return 1;
  if (list.size() == 1) {
    for (std::int32_t i = 0; i < x.n; ++i) predicted[index(i)] = nearestMean(x, fit, list[0], i, distances);
    canonical.vectors[0] = canonical.values[0] = 1;
    *canonical.n = 1;
    return 0;
  }
  for (std::int32_t i = 0; i < x.n; ++i) predicted[index(i)] = daNear(x, fit, list, i, distances);
  return final ? canonicalFunctions(fit, scatter, canonical) : 0;
}

}  // namespace

void disAnl(const double* data, const std::int32_t* classOf, std::int32_t* modelRows, const std::int32_t* inModel,
            std::int32_t nSamples, std::int32_t nVars, std::int32_t nClasses, std::int32_t selectMode,
            std::int32_t nSelect, std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* canonVectors,
            double* canonValues, float* stepFraction, float* stepClassFraction, float* cvFractionCorrect,
            float* cvClassFraction, float* distances, std::int32_t* selected, std::int32_t* cvSelCount,
            std::int32_t* selectOrder, std::int32_t* confusion, std::int32_t* cvConfusion, std::int32_t* nSteps,
            std::int32_t* nCanonical, std::int32_t* status, ProgressMonitor* progressMonitor,
            std::int32_t* continueFlag) {
  const std::int32_t N = nSamples, P = nVars, G = nClasses;
  *continueFlag = 1;
  *status = 1;
  daGroups = cvGroups;

  Integers model, others;
  *nSteps = 0;
  bool sound = N >= 0 && P >= 0 && G >= 1;
  for (std::int32_t s = 1; s <= N; ++s) {
    (inModel[s - 1] == 1 ? model : others).push_back(s);
    if (inModel[s - 1] == 1) sound = sound && classOf[s - 1] >= 1 && classOf[s - 1] <= G;
  }
  const auto n = static_cast<std::int32_t>(model.size());
  if (!sound || n <= G) return;
  const Canonical canonical{nCanonical, canonValues, canonVectors};

  // A selection that fails in a fold starts everything over, once, with one sample a group.
  for (bool restarted = false;; restarted = true) {
    Fit fit(P, G);
    countClasses(classOf, N, fit.classSize);
    std::copy(model.begin(), model.end(), modelRows);
    const Samples x = packed(data, classOf, N, P, model);
    *status = daStep(x, P, selectMode, nSelect, fit, {nSteps, selectOrder, stepFraction, stepClassFraction});
    std::copy(fit.selected.begin(), fit.selected.end(), selected);
    if (*status != 0) return;
    const Scatter scatter = daScat(x, fit);
    daConf(x, fit, confusion);

    std::fill_n(cvSelCount, P, 0);
    std::fill_n(cvConfusion, G * G, 0);
    Integers validated(index(G)), correct(index(G)), predicted;
    std::int32_t nCorrect = 0;
    // The model's samples by class; those outside it follow as if of class G + 1.
    Integers order = model;
    Numbers labels;
    for (const std::int32_t row : order) labels.push_back(classOf[row - 1]);
    sortColumn(labels, order, 0);
    order.insert(order.end(), others.begin(), others.end());
    std::copy(order.begin(), order.end(), modelRows);
    const Plan folds = plan(cvMethod, daGroups, cvFraction, N);
    Integers mayTrain(index(N));
    for (std::int32_t i = 0; i < N; ++i) mayTrain[index(i)] = inModel[cvMethod == 1 ? order[index(i)] - 1 : i] == 1;

    bool failed = false;
    for (std::int32_t f = 1; f <= folds.folds; ++f) {
      updateminorprogress(&progressMonitor, &f, &folds.folds, continueFlag);
      if (*continueFlag == 0) {
        *status = 999;
        return;
      }
      const Integers rows = cvMethod == 1 ? systematicTrainingRows(order, mayTrain, folds.folds, f)
                                          : randomTrainingRows(mayTrain, folds.leaveOut, daGenerator);
      const Samples training = packed(data, classOf, N, P, rows);
      Fit foldFit(P, G);
      countClasses(training.classOf.data(), training.n, foldFit.classSize);
      std::int32_t foldSteps;
      Integers foldOrder(index(P));
      Floats foldFraction(index(P)), foldClassFraction(index(P) * index(G));
      *status = daStep(training, P, selectMode, nSelect, foldFit,
                       {&foldSteps, foldOrder.data(), foldFraction.data(), foldClassFraction.data()});
      failed = *status != 0;
      if (failed) break;
      for (std::int32_t j = 0; j < P; ++j) cvSelCount[j] += foldFit.has(j);

      Integers isTraining(index(N)), left;
      for (const std::int32_t row : rows) isTraining[index(row - 1)] = 1;
      for (std::int32_t row = 1; row <= N; ++row)
        if (isTraining[index(row - 1)] == 0) left.push_back(row);
      const Samples heldOut = packed(data, classOf, N, P, left);
      *status = daCanon(heldOut, false, foldFit, {}, predicted, distances, canonical);
      if (*status != 0) return;
      for (std::int32_t i = 0; i < heldOut.n; ++i) {
        const std::int32_t t = heldOut.classOf[index(i)], q = predicted[index(i)];
        if (t < 1 || t > G) continue;
        cvConfusion[index(q - 1) * index(G) + index(t - 1)] += 1;
        validated[index(t - 1)] += 1;
        correct[index(t - 1)] += q == t;
        nCorrect += q == t;
      }
    }

    if (failed && !restarted && daGroups != 0) {
      daGroups = 0;
      continue;
    }
    if (failed && restarted) daGroups = cvGroups;
    if (failed) return;

    Integers everyRow;
    for (std::int32_t row = 1; row <= N; ++row) everyRow.push_back(row);
    *cvFractionCorrect = static_cast<float>(folds.pressWeight) * static_cast<float>(nCorrect) / static_cast<float>(N);
    for (std::int32_t c = 0; c < G; ++c)
      cvClassFraction[c] = static_cast<float>(correct[index(c)]) / static_cast<float>(validated[index(c)]);
    *status = daCanon(packed(data, classOf, N, P, everyRow), true, fit, scatter, predicted, distances, canonical);
    return;
  }
}

}  // namespace studystats::definition
