#include "tests/definition/mlr.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/definition/cross_products.h"
#include "tests/definition/least_squares.h"
#include "tests/definition/probability.h"
#include "tests/definition/sorting.h"
#include "tests/definition/validation.h"

namespace studystats::definition {

Generator mlrGenerator;

namespace {

using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;

std::size_t index(std::int32_t i) { return static_cast<std::size_t>(i); }

void correlate(const Numbers& c, std::int32_t p, double* corr) {
  for (std::int32_t i = 0; i < p; ++i)
    for (std::int32_t j = 0; j < p; ++j) {
      const double ii = c[index(i) * index(p + 1)], jj = c[index(j) * index(p + 1)],
                   ij = c[index(i) + index(j) * index(p)];
      corr[index(i) + index(j) * index(p)] = ii > 0 && jj > 0 ? ij / std::sqrt(ii * jj) : ij;
    }
  for (std::int32_t i = 0; i < p; ++i) corr[index(i) * index(p + 1)] = 1;
}

void corFilt(float corrLimit, const double* r, std::int32_t ld, std::int32_t m, std::int32_t* flags) {
  const float sum = corrLimit + 1e-5f;
  const double lim = sum;
  for (std::int32_t i = 1; i <= m; ++i)
    for (std::int32_t j = i + 1; j <= m; ++j)
      if (flags[i - 1] == 1 && std::fabs(r[index(j - 1) * index(ld) + index(i - 1)]) > lim) flags[j - 1] = 0;
}

struct History {
  Integers action, var;
  std::vector<float> partialF, f, s;
  float fStart = 0, sStart = 0;
  std::int32_t nSteps = 0;
  Integers written;  // bits: 1 action and var, 2 partialF, 4 f and s
  explicit History(std::int32_t steps)
      : action(index(steps) + 1), var(action), partialF(index(steps) + 1), f(partialF), s(partialF), written(action) {}
};

struct Model {
  double* coef;
  double* intercept;
  Numbers inv, t;
  std::int32_t* inList;
  Integers outList;
};

void stepReg(const double* x, std::int32_t ldx, std::int32_t nCols, std::int32_t nObs, std::int32_t maxSteps,
             const Numbers& c, const Numbers& means, float fEnter, float fRemove, std::int32_t* flags, const double* r,
             float corrLimit, Model& model, History& h, std::int32_t* status) {
  std::int32_t k = 0, last = 0;
  bool stop = false;
  *status = 0;
  for (;;) {
    float f = 0, s = 0;
    std::int32_t enter = 0, weakest = 0;
    regFit(x, &ldx, &nCols, &nObs, &nCols, flags, c.data(), means.data(), model.inv.data(), r, &corrLimit, model.coef,
           model.intercept, &enter, &weakest, model.t.data(), &f, &s, status, model.inList, model.outList.data());
    if (k == 0) {
      h.fStart = f;
      h.sStart = s;
    } else {
      h.f[index(k)] = f;
      h.s[index(k)] = s;
      h.written[index(k)] |= 4;
    }
    if (stop) {
      h.nSteps = k - 2;
      return;
    }
    if (*status != 0 || maxSteps <= 0 || k >= maxSteps) {
      h.nSteps = k;
      return;
    }
    k = k + 1;
    const auto t2 = [&](std::int32_t v) { return model.t[index(v - 1)] * model.t[index(v - 1)]; };
    if (last > 0) {
      h.partialF[index(k - 1)] = static_cast<float>(t2(last));
      h.written[index(k - 1)] |= 2;
      if (static_cast<double>(fEnter) > t2(last)) {
        flags[last - 1] = 0;
        stop = true;
        continue;
      }
    }
    if (weakest > 0 && static_cast<double>(fRemove) > t2(weakest)) {
      flags[weakest - 1] = 0;
      h.action[index(k)] = 0;
      h.var[index(k)] = weakest;
      h.partialF[index(k)] = static_cast<float>(t2(weakest));
      h.written[index(k)] |= 3;
      if (weakest == last) stop = true;
      last = 0;
      continue;
    }
    if (enter == 0) {
      h.nSteps = k - 1;
      return;
    }
    flags[enter - 1] = 1;
    h.action[index(k)] = 1;
    h.var[index(k)] = enter;
    h.written[index(k)] |= 1;
    last = enter;
  }
}

}  // namespace

void mulReg(const double* data, const std::int32_t*, std::int32_t* rowIds, const std::int32_t* usable,
            std::int32_t nRows, std::int32_t nCols, const double* scale, const double* shift, double* corr,
            std::int64_t, float fEnter, float fRemove, std::int32_t maxSteps, float corrLimit, std::int32_t* flags,
            std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* fitted, double* resid,
            float* fStart, float* sStart, double* rawIntercept, double* intercept, double* multR, double* fValue,
            double* sValue, double* fProb, double* q2, double* press, double* cvInterceptSd, std::int32_t* df,
            double* sumSq, double* rawCoef, double* coef, double* cvCoefSd, double* coefSe, double* tValue,
            double* tProb, std::int32_t* inList, std::int32_t* cvSelCount, float* stepPartialF, float* stepF,
            float* stepS, std::int32_t* stepAction, std::int32_t* stepVar, std::int32_t* nIn, std::int32_t* nSteps,
            const std::int32_t*, std::int32_t* status, ProgressMonitor* progressMonitor, std::int32_t* continueFlag) {
  const std::int32_t n = nRows, p = nCols, m = p - 1, steps = std::max(maxSteps, 0);
  *continueFlag = 1;
  *fStart = *sStart = 0;
  *status = 1;

  if (fEnter <= 1e-10f || maxSteps <= 0)
    for (std::int32_t j = 0; j < p; ++j) flags[j] = 1;
  const Integers start(flags, flags + m);

  Numbers c(index(p) * index(p)), means(index(p));
  crossProducts(data, &n, &p, &n, &p, c.data(), means.data());
  correlate(c, p, corr);
  const double tss = c[index(m) * index(p + 1)];
  corFilt(corrLimit, corr, p, m, flags);

  History h(steps);
  Model all{coef, intercept, Numbers(index(p) * index(p)), Numbers(index(p)), inList, Integers(index(p))};
  stepReg(data, n, p, n, steps, c, means, fEnter, fRemove, flags, corr, corrLimit, all, h, status);
  *fStart = h.fStart;
  *sStart = h.sStart;
  *nSteps = h.nSteps;
  for (std::int32_t k = 1; k <= steps; ++k) {
    if (h.written[index(k)] & 1) {
      stepAction[k - 1] = h.action[index(k)];
      stepVar[k - 1] = h.var[index(k)];
    }
    if (h.written[index(k)] & 2) stepPartialF[k - 1] = h.partialF[index(k)];
    if (h.written[index(k)] & 4) {
      stepF[k - 1] = h.f[index(k)];
      stepS[k - 1] = h.s[index(k)];
    }
  }
  if (*status != 0) return;

  std::int32_t nOut;
  splitVars(&p, &m, flags, nIn, inList, &nOut, all.outList.data());
  df[0] = *nIn;
  df[1] = n - *nIn - 1;
  df[2] = n - 1;
  *press = 0;
  for (std::int32_t j = 0; j < m; ++j) cvSelCount[j] = 0;

  Numbers response(data + index(m) * index(n), data + index(p) * index(n));
  Integers ids(rowIds, rowIds + n);
  const Integers order = validationOrder(response, ids);
  std::copy(ids.begin(), ids.end(), rowIds);
  const Plan folds = n < 1 ? Plan{0, 0, 1.0} : plan(cvMethod, cvGroups, cvFraction, n);
  const std::int32_t G = folds.folds;
  const double w = folds.pressWeight;
  Integers mayTrain(usable, usable + n);
  if (cvMethod == 1)
    for (std::int32_t i = 0; i < n; ++i) mayTrain[index(i)] = usable[order[index(i)] - 1];

  Numbers b(index(G) * index(*nIn)), I(index(G));
  bool abandoned = false;
  for (std::int32_t g = 1; g <= G && !abandoned; ++g) {
    updateminorprogress(&progressMonitor, &g, &G, continueFlag);
    if (*continueFlag == 0) {
      *status = 999;
      return;
    }
    Integers foldFlags = start;
    foldFlags.push_back(0);
    const Integers rows = cvMethod == 1 ? systematicTrainingRows(order, mayTrain, G, g)
                                        : randomTrainingRows(mayTrain, folds.leaveOut, mlrGenerator);
    const auto nTrain = static_cast<std::int32_t>(rows.size());
    Integers heldOut(index(n), 1);
    Numbers x(index(n) * index(p));
    for (std::int32_t i = 0; i < nTrain; ++i) {
      const std::int32_t row = rows[index(i)];
      heldOut[index(row - 1)] = 0;
      for (std::int32_t j = 0; j < p; ++j)
        x[index(j) * index(n) + index(i)] = data[index(j) * index(n) + index(row - 1)];
    }
    Numbers cf(index(p)), fc(index(p) * index(p)), fmeans(index(p)), fcorr(index(p) * index(p));
    crossProducts(x.data(), &n, &p, &nTrain, &p, fc.data(), fmeans.data());
    correlate(fc, p, fcorr.data());
    corFilt(corrLimit, fcorr.data(), p, m, foldFlags.data());
    double fi = 0;
    Integers foldIn(index(p));
    Model model{cf.data(), &fi, Numbers(index(p) * index(p)), Numbers(index(p)), foldIn.data(), Integers(index(p))};
    History ignored(steps);
    std::int32_t foldStatus;
    stepReg(x.data(), n, p, nTrain, steps, fc, fmeans, fEnter, fRemove, foldFlags.data(), fcorr.data(), corrLimit,
            model, ignored, &foldStatus);
    if (foldStatus != 0) {
      abandoned = true;
      break;
    }
    for (std::int32_t j = 0; j < m; ++j)
      if (foldFlags[index(j)] == 1) ++cvSelCount[j];

    Numbers refit(index(p));
    Integers refitIn(index(p));
    double ir = 0;
    Model again{refit.data(), &ir, Numbers(index(p) * index(p)), Numbers(index(p)), refitIn.data(), Integers(index(p))};
    std::int32_t enter, weakest;
    float f, s;
    regFit(x.data(), &n, &p, &nTrain, &p, flags, fc.data(), fmeans.data(), again.inv.data(), fcorr.data(), &corrLimit,
           again.coef, again.intercept, &enter, &weakest, again.t.data(), &f, &s, &foldStatus, again.inList,
           again.outList.data());
    if (foldStatus != 0) {
      abandoned = true;
      break;
    }
    double sum = 0;
    for (std::int32_t a = 0; a < *nIn; ++a) {
      const std::int32_t v = inList[a] - 1;
      b[index(g - 1) * index(*nIn) + index(a)] = refit[index(a)];
      sum += refit[index(a)] * shift[v] / scale[v];
    }
    I[index(g - 1)] = *nIn == 0 ? ir : ir - sum;

    for (std::int32_t i = 0; i < n; ++i)
      if (heldOut[index(i)] == 1) {
        sum = 0;
        for (std::int32_t a = 0; a < m && foldIn[index(a)] > 0; ++a)
          sum += cf[index(a)] * data[index(foldIn[index(a)] - 1) * index(n) + index(i)];
        const double pred = fi + sum, y = data[index(m) * index(n) + index(i)];
        *press = *press + w * ((pred - y) * (pred - y));
      }
  }
  if (abandoned) {
    *press = 0;
  } else {
    for (std::int32_t a = 0; a < *nIn; ++a) {
      double mean = 0, squares = 0;
      for (std::int32_t g = 0; g < G; ++g) mean += b[index(g) * index(*nIn) + index(a)];
      mean = mean / G;
      for (std::int32_t g = 0; g < G; ++g) {
        const double d = mean - b[index(g) * index(*nIn) + index(a)];
        squares += d * d;
      }
      cvCoefSd[inList[a] - 1] = G == 1 ? 0 : std::sqrt(w * (G - 1) / G * squares);
    }
    double mean = 0, squares = 0;
    for (std::int32_t g = 0; g < G; ++g) mean += I[index(g)];
    mean = mean / G;
    for (std::int32_t g = 0; g < G; ++g) squares += (mean - I[index(g)]) * (mean - I[index(g)]);
    *cvInterceptSd = G == 1 ? 0 : std::sqrt((G - 1) * w * squares / G);
  }

  double rss;
  regPred(data, &n, &p, nIn, inList, intercept, coef, fitted, resid, &rss);
  const double ssr = tss - rss;
  sumSq[0] = ssr / tss < static_cast<double>(1e-10f) ? 0 : ssr;
  sumSq[1] = rss;
  sumSq[2] = tss;
  const double s2 = rss / df[1];
  if (*nIn >= 1)
    *fValue = (sumSq[0] / rss) * (static_cast<double>(df[1]) / *nIn);
  else
    *fValue = rss > 0 ? sumSq[0] * df[1] / rss : 0;
  *multR = tss == 0 ? 0 : std::sqrt(sumSq[0] / tss);
  *q2 = tss == 0 ? 0 : (tss - *press) / tss;
  *sValue = std::sqrt(s2);
  int failed = 0;
  if (*nIn == 0) {
    *fProb = 1;
  } else {
    incompleteBeta(df[1] / 2.0, *nIn / 2.0, df[1] / (df[1] + *nIn * *fValue), *fProb, failed);
    if (failed != 0) *fProb = -1;
  }
  for (std::int32_t a = 0; a < *nIn; ++a) {
    const std::int32_t v = inList[a] - 1;
    const double aa = all.inv[index(a) * index(p + 1)];
    tValue[v] = coef[a] / std::sqrt(std::fabs(aa * s2));
    double inside = 0;
    tProbability(tValue[v], df[1], inside, failed);
    tProb[v] = failed != 0 ? -1 : 1 - inside;
    coefSe[v] = std::sqrt(aa * rss / (n - *nIn - 1));
  }
  unScale(coef, intercept, &p, nIn, inList, scale, shift, cvCoefSd, coefSe, rawCoef, rawIntercept);
}

}  // namespace studystats::definition
