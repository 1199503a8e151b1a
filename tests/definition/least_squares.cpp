#include "tests/definition/least_squares.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace studystats::definition {
namespace {

// Element (i, j), counted from 1.
template <class Real>
struct Table {
  Real* data;
  std::int32_t ld;
  Real& operator()(std::int32_t i, std::int32_t j) const { return data[(j - 1) * std::ptrdiff_t{ld} + (i - 1)]; }
};

}  // namespace

void splitVars(const std::int32_t* n, const std::int32_t* m, const std::int32_t* flags, std::int32_t* nIn,
               std::int32_t* inList, std::int32_t* nOut, std::int32_t* outList) {
  for (std::int32_t i = 0; i < *n; ++i) inList[i] = outList[i] = 0;
  *nIn = *nOut = 0;
  for (std::int32_t j = 1; j <= *m; ++j) {
    if (flags[j - 1] == 1)
      inList[(*nIn)++] = j;
    else
      outList[(*nOut)++] = j;
  }
}

void invMat(const std::int32_t* nIn, const std::int32_t* ld, double* data, std::int32_t* status) {
  const std::int32_t n = *nIn;
  const Table<double> a{data, *ld};
  std::vector<std::int32_t> counters(static_cast<std::size_t>(n) + 1), from(counters), to(counters);
  const auto p = [&](std::int32_t j) -> std::int32_t& { return counters[static_cast<std::size_t>(j)]; };
  for (std::int32_t i = 1; i <= n; ++i) {
    double big = 0;
    std::int32_t pr = 0, pc = 0;
    for (std::int32_t j = 1; j <= n; ++j)
      if (p(j) != 1)
        for (std::int32_t k = 1; k <= n; ++k)
          if (p(k) == 0 && std::fabs(a(k, j)) >= big) {
            big = std::fabs(a(k, j));
            pr = k;
            pc = j;
          }
    if (pr == 0) {
      *status = 1;
      return;
    }
    p(pr) = p(pr) + 1;
    if (pc != pr)
      for (std::int32_t k = 1; k <= n; ++k) std::swap(a(k, pc), a(k, pr));
    from[static_cast<std::size_t>(i)] = pc;
    to[static_cast<std::size_t>(i)] = pr;
    if (a(pr, pr) == 0) {
      *status = 1;
      return;
    }
    const double g = 1 / a(pr, pr);
    a(pr, pr) = 1;
    for (std::int32_t k = 1; k <= n; ++k) a(k, pr) = a(k, pr) * g;
    for (std::int32_t l = 1; l <= n; ++l)
      if (l != pr) {
        const double d = a(pr, l);
        a(pr, l) = 0;
        for (std::int32_t k = 1; k <= n; ++k) a(k, l) = a(k, l) - d * a(k, pr);
      }
  }
  for (std::int32_t l = n; l >= 1; --l) {
    const std::int32_t f = from[static_cast<std::size_t>(l)], t = to[static_cast<std::size_t>(l)];
    if (f != t)
      for (std::int32_t j = 1; j <= n; ++j) std::swap(a(f, j), a(t, j));
  }
  *status = 0;
}

void regFit(const double* xData, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
            const std::int32_t* yCol, const std::int32_t* flags, const double* cData, const double* means,
            double* invData, const double* r, const float* corrLimit, double* coef, double* intercept,
            std::int32_t* enter, std::int32_t* weakest, double* t, float* fStat, float* sEst, std::int32_t* status,
            std::int32_t* inList, std::int32_t* outList) {
  const Table<const double> x{xData, *ldx}, c{cData, *nCols};
  const Table<double> inv{invData, *nCols};
  std::vector<double> resid(static_cast<std::size_t>(*nObs));
  const std::int32_t m = *yCol - 1;
  std::int32_t nIn, nOut;
  splitVars(nCols, &m, flags, &nIn, inList, &nOut, outList);
  for (std::int32_t a = 1; a <= nIn; ++a)
    for (std::int32_t b = 1; b <= nIn; ++b) inv(a, b) = c(inList[a - 1], inList[b - 1]);
  for (std::int32_t a = 1; a <= nIn; ++a)
    if (inv(a, a) == 0) inv(a, a) = 1.0;
  invMat(&nIn, nCols, invData, status);
  if (*status != 0) return;
  for (std::int32_t a = 1; a <= nIn; ++a) {
    coef[a - 1] = 0;
    for (std::int32_t b = 1; b <= nIn; ++b) coef[a - 1] += inv(a, b) * c(inList[b - 1], *yCol);
  }
  double sum = 0;
  for (std::int32_t a = 1; a <= nIn; ++a) sum += means[inList[a - 1] - 1] * coef[a - 1];
  *intercept = means[*yCol - 1] - sum;
  double rss = 0, meanResid = 0;
  for (std::int32_t i = 1; i <= *nObs; ++i) {
    sum = 0;
    for (std::int32_t a = 1; a <= nIn; ++a) sum += coef[a - 1] * x(i, inList[a - 1]);
    const double e = x(i, *yCol) - (*intercept + sum);
    resid[static_cast<std::size_t>(i - 1)] = e;
    rss += e * e;
    meanResid += e;
  }
  meanResid = meanResid / *nObs;
  entCand(xData, ldx, nCols, nObs, &nOut, outList, resid.data(), &nIn, inList, cData, invData, r, corrLimit, means,
          &rss, &meanResid, enter, status);
  tVals(&rss, &nIn, inList, nObs, coef, nCols, invData, t, weakest);
  const auto df = static_cast<float>(*nObs - nIn - 1);
  const double ssr = c(*yCol, *yCol) - rss;
  if (nIn >= 1)
    *fStat = static_cast<float>(ssr / rss) * (df / static_cast<float>(nIn));
  else
    *fStat = static_cast<float>(ssr / (rss == 0 ? 1.0 : rss)) * df;
  *sEst = std::sqrt(static_cast<float>(rss) / df);
}

void entCand(const double* xData, const std::int32_t* ldx, const std::int32_t* nCols, const std::int32_t* nObs,
             const std::int32_t* nOut, const std::int32_t* outList, const double* resid, const std::int32_t* nIn,
             const std::int32_t* inList, const double* cData, const double* invData, const double* rData,
             const float* corrLimit, const double* means, const double* rss, const double* meanResid,
             std::int32_t* enter, std::int32_t* status) {
  const Table<const double> x{xData, *ldx}, c{cData, *nCols}, inv{invData, *nCols}, r{rData, *nCols};
  *status = 0;
  *enter = 0;
  double best = 0;
  std::vector<double> w(static_cast<std::size_t>(*nIn) + 1);
  for (std::int32_t k = 0; k < *nOut; ++k) {
    const std::int32_t j = outList[k];
    const float limit = *corrLimit + 1e-5f;
    bool skip = false;
    for (std::int32_t a = 0; a < *nIn; ++a)
      if (std::fabs(r(j, inList[a])) > static_cast<double>(limit)) skip = true;
    if (skip) continue;
    double sum = 0;
    for (std::int32_t a = 1; a <= *nIn; ++a) {
      double wa = 0;
      for (std::int32_t b = 1; b <= *nIn; ++b) wa += inv(a, b) * c(inList[b - 1], j);
      w[static_cast<std::size_t>(a)] = wa;
      sum += means[inList[a - 1] - 1] * wa;
    }
    const double c0 = means[j - 1] - sum;
    double see = 0, sre = 0;
    for (std::int32_t i = 1; i <= *nObs; ++i) {
      sum = 0;
      for (std::int32_t a = 1; a <= *nIn; ++a) sum += w[static_cast<std::size_t>(a)] * x(i, inList[a - 1]);
      const double e = x(i, j) - (c0 + sum);
      see += e * e;
      sre += (resid[i - 1] - *meanResid) * e;
    }
    const double q = sre / std::sqrt(see * *rss) * (sre / std::sqrt(see * *rss));
    if (q >= best) {
      best = q;
      *enter = j;
    }
  }
}

void tVals(const double* rss, const std::int32_t* nIn, const std::int32_t* inList, const std::int32_t* nObs,
           const double* coef, const std::int32_t* ldInv, const double* invData, double* t, std::int32_t* weakest) {
  const Table<const double> inv{invData, *ldInv};
  const double s2 = *rss / (*nObs - *nIn - 1);
  double smallest = std::numeric_limits<double>::infinity();
  *weakest = 0;
  for (std::int32_t a = 1; a <= *nIn; ++a) {
    const std::int32_t v = inList[a - 1];
    t[v - 1] = coef[a - 1] / std::sqrt(std::fabs(inv(a, a) * s2));
    if (t[v - 1] * t[v - 1] <= smallest) {
      smallest = t[v - 1] * t[v - 1];
      *weakest = v;
    }
  }
}

void regPred(const double* xData, const std::int32_t* nRows, const std::int32_t* yCol, const std::int32_t* nIn,
             const std::int32_t* inList, const double* intercept, const double* coef, double* fitted, double* resid,
             double* rss) {
  const Table<const double> x{xData, *nRows};
  *rss = 0;
  for (std::int32_t i = 1; i <= *nRows; ++i) {
    double sum = 0;
    for (std::int32_t a = 1; a <= *nIn; ++a) sum += coef[a - 1] * x(i, inList[a - 1]);
    fitted[i - 1] = *intercept + sum;
    resid[i - 1] = x(i, *yCol) - fitted[i - 1];
    *rss += resid[i - 1] * resid[i - 1];
  }
}

void unScale(const double* coef, const double* intercept, const std::int32_t* nCols, const std::int32_t* nIn,
             const std::int32_t* inList, const double* scale, const double* shift, double* perVar1, double* perVar2,
             double* coefOut, double* interceptOut) {
  double sum = 0;
  for (std::int32_t a = 1; a <= *nIn; ++a) {
    const std::int32_t v = inList[a - 1];
    coefOut[a - 1] = coef[a - 1] / scale[v - 1];
    sum += coefOut[a - 1] * shift[v - 1];
  }
  *interceptOut = *nIn < 1 ? *intercept : *intercept - sum;
  for (std::int32_t j = 1; j <= *nCols - 1; ++j) {
    perVar1[j - 1] = perVar1[j - 1] / scale[j - 1];
    perVar2[j - 1] = perVar2[j - 1] / scale[j - 1];
  }
}

}  // namespace studystats::definition
