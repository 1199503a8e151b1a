#include "tests/definition/pls.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/definition/sorting.h"
#include "tests/definition/validation.h"

namespace studystats::definition {

Generator plsGenerator;

namespace {

using Numbers = std::vector<double>;
using Integers = std::vector<std::int32_t>;

std::size_t index(std::int32_t i) { return static_cast<std::size_t>(i); }
std::size_t size(std::int32_t rows, std::int32_t columns) { return index(rows) * index(columns); }

// Rows and columns, components and responses are counted from 1 in this file.
struct Table {
  double* data;
  std::int32_t rows;
  double& operator()(std::int32_t i, std::int32_t j) const { return data[index(j - 1) * index(rows) + index(i - 1)]; }
};

double squares(const double* values, std::int32_t n) {
  double sum = 0;
  for (std::int32_t i = 0; i < n; ++i) sum += values[i] * values[i];
  return sum;
}

double orOne(double value) { return value == 0 ? 1 : value; }

struct Model {
  Model(std::int32_t p, std::int32_t q, std::int32_t A) : W(size(p, A)), P(W), C(size(A, q)), b(index(A)) {}
  Numbers W, P, C, b;
};

// Subtracts a component from the data.
void deflate(const Table& x, std::int32_t n, std::int32_t p, std::int32_t q, const double* t, const double* loadings,
             const double* c, double b) {
  for (std::int32_t k = 1; k <= q; ++k)
    for (std::int32_t i = 1; i <= n; ++i) x(i, p + k) -= t[i - 1] * (c[k - 1] * b);
  for (std::int32_t j = 1; j <= p; ++j)
    for (std::int32_t i = 1; i <= n; ++i) x(i, j) -= t[i - 1] * loadings[j - 1];
}

void coefficients(std::int32_t p, std::int32_t q, std::int32_t A, const double* W, const double* P, const double* C,
                  const double* b, double* coefs) {
  Numbers sample(size(p, A + 1)), contrib(index(A)), cumulative(index(A));
  for (std::int32_t k = 1; k <= q; ++k)
    for (std::int32_t j = 1; j <= p; ++j) {
      for (std::int32_t i = 1; i <= p; ++i) sample[index(i - 1)] = i == j ? 1 : 0;
      plsPrd(sample.data(), &A, &p, &A, C + size(k - 1, A), b, W, P, contrib.data(), cumulative.data());
      for (std::int32_t a = 1; a <= A; ++a)
        coefs[index(k - 1) * size(A, p) + size(a - 1, p) + index(j - 1)] = cumulative[index(a - 1)];
    }
}

}  // namespace

void plsCmp(const double* data, const std::int32_t* nRows, const std::int32_t*, const std::int32_t* nDescriptors,
            const std::int32_t* nResponses, double* t, double* w, double* loadings, double* c, double* b,
            std::int32_t* status) {
  const std::int32_t n = *nRows, p = *nDescriptors, q = *nResponses;
  const Table x{const_cast<double*>(data), n};
  Numbers u(index(n)), uOld(index(n));
  *status = 1;
  if (q >= 1)
    for (std::int32_t i = 1; i <= n; ++i) u[index(i - 1)] = x(i, p + 1);

  double tt = 1;
  for (int pass = 1;; ++pass) {
    const double uu = orOne(squares(u.data(), n));
    for (std::int32_t j = 1; j <= p; ++j) {
      double sum = 0;
      for (std::int32_t i = 1; i <= n; ++i) sum += x(i, j) * u[index(i - 1)] / uu;
      w[j - 1] = sum;
    }
    double ww = squares(w, p);
    if (ww != 0)
      for (std::int32_t j = 0; j < p; ++j) w[j] /= std::sqrt(ww);
    ww = orOne(squares(w, p));
    for (std::int32_t i = 0; i < n; ++i) t[i] = 0;
    for (std::int32_t j = 1; j <= p; ++j)
      for (std::int32_t i = 1; i <= n; ++i) t[i - 1] += x(i, j) * w[j - 1] / ww;
    tt = orOne(squares(t, n));

    for (std::int32_t k = 1; k <= q; ++k) {
      double sum = 0;
      for (std::int32_t i = 1; i <= n; ++i) sum += x(i, p + k) * t[i - 1] / tt;
      c[k - 1] = sum;
    }
    double cc = squares(c, q);
    if (cc != 0 && std::sqrt(cc) > static_cast<double>(1.0e-10f))
      for (std::int32_t k = 0; k < q; ++k) c[k] /= std::sqrt(cc);
    cc = orOne(squares(c, q));
    for (double& value : u) value = 0;
    for (std::int32_t k = 1; k <= q; ++k)
      for (std::int32_t i = 1; i <= n; ++i) u[index(i - 1)] += x(i, p + k) * c[k - 1] / cc;

    if (q <= 1) break;
    if (pass == 1000) {
      *status = 2;
      return;
    }
    bool within = pass > 1;
    for (std::int32_t i = 0; i < n && within; ++i) within = !(std::fabs(u[index(i)] - uOld[index(i)]) > 1.0e-6);
    if (within) break;
    uOld = u;
  }

  for (std::int32_t j = 1; j <= p; ++j) {
    double sum = 0;
    for (std::int32_t i = 1; i <= n; ++i) sum += x(i, j) * t[i - 1] / tt;
    loadings[j - 1] = sum;
  }
  const double ll = squares(loadings, p), s = ll == 0 ? 1 : std::sqrt(ll);
  for (std::int32_t j = 0; j < p; ++j) loadings[j] /= s;
  for (std::int32_t j = 0; j < p; ++j) w[j] *= s;
  for (std::int32_t i = 0; i < n; ++i) t[i] *= s;
  tt = orOne(squares(t, n));
  *b = 0;
  for (std::int32_t i = 0; i < n; ++i) *b += t[i] * u[index(i)] / tt;
  *status = 0;
}

void plsPrd(double* sampleWork, const std::int32_t* nUse, const std::int32_t* nDescriptors, const std::int32_t* nModel,
            const double* c, const double* b, const double* W, const double* P, double* contrib, double* cumulative) {
  const std::int32_t p = *nDescriptors;
  const Table sample{sampleWork, p};
  for (std::int32_t a = 1; a <= *nUse; ++a) {
    double t = 0;
    for (std::int32_t j = 1; j <= p; ++j) t += sample(j, a) * W[size(a - 1, p) + index(j - 1)];
    contrib[a - 1] = b[a - 1] * c[a - 1] * t;
    cumulative[a - 1] = a == 1 ? contrib[a - 1] : cumulative[a - 2] + contrib[a - 1];
    if (a < *nModel)
      for (std::int32_t j = 1; j <= p; ++j) sample(j, a + 1) = sample(j, a) - t * P[size(a - 1, p) + index(j - 1)];
  }
}

void plsFit(double* data, const std::int32_t* n, const std::int32_t* m, const std::int32_t* p, const std::int32_t* q,
            const std::int32_t* nComponents, double* W, double* P, double* C, double* b, double* coefs,
            std::int32_t* status) {
  const std::int32_t A = *nComponents;
  Numbers t(index(*n)), c(index(*q));
  *status = 0;
  for (std::int32_t a = 1; a <= A; ++a) {
    plsCmp(data, n, m, p, q, t.data(), W + size(a - 1, *p), P + size(a - 1, *p), c.data(), b + a - 1, status);
    if (*status != 0) return;
    for (std::int32_t k = 1; k <= *q; ++k) C[size(k - 1, A) + index(a - 1)] = c[index(k - 1)];
    deflate({data, *n}, *n, *p, *q, t.data(), P + size(a - 1, *p), c.data(), b[a - 1]);
  }
  coefficients(*p, *q, A, W, P, C, b, coefs);
}

void plsAnl(const double* data, const std::int32_t*, std::int32_t* rowOrder, const std::int32_t* rowUse, std::int32_t n,
            std::int32_t m, std::int64_t, double* scales, const double* means, const void*, std::int32_t q,
            std::int32_t p, std::int32_t keepAll, float ratioLimit, std::int32_t nComponents, std::int32_t scaled,
            std::int32_t cvMethod, std::int32_t cvGroups, float cvFraction, double* coefs, double* coefErrors,
            double* pressRatios, double* q2, double* r2, double* rss, double* tss, double* intercepts, double* fitted,
            double* press, std::int32_t* status, ProgressMonitor* progressMonitor, std::int32_t* continueFlag) {
  *continueFlag = 1;
  *status = 1;
  const std::int32_t A = std::max(nComponents, 0);
  const Table source{const_cast<double*>(data), n};
  Numbers work(size(n, m));
  const Table x{work.data(), n};
  Integers modelRows;
  for (std::int32_t i = 1; i <= n; ++i)
    if (rowUse[i - 1] == 1) {
      for (std::int32_t j = 1; j <= m; ++j) x(i, j) = source(i, j);
      rowOrder[i - 1] = i;
      modelRows.push_back(i);
    }
  if (scaled == 0)
    for (std::int32_t j = 0; j < m; ++j) scales[j] = 1;

  Model model(p, q, A);
  Numbers t(index(n)), c(index(q));
  for (std::int32_t a = 1; a <= A; ++a) {
    double* loadings = model.P.data() + size(a - 1, p);
    double& b = model.b[index(a - 1)];
    plsCmp(work.data(), &n, &m, &p, &q, t.data(), model.W.data() + size(a - 1, p), loadings, c.data(), &b, status);
    if (*status != 0) return;
    for (std::int32_t k = 1; k <= q; ++k) model.C[size(k - 1, A) + index(a - 1)] = c[index(k - 1)];
    for (std::int32_t k = 1; k <= q && a == 1; ++k) {
      double mean = 0, sum = 0;
      for (std::int32_t i = 1; i <= n; ++i) mean += x(i, p + k);
      mean /= n;
      for (std::int32_t i = 1; i <= n; ++i) sum += (x(i, p + k) - mean) * (x(i, p + k) - mean);
      tss[k - 1] = sum;
    }
    deflate(x, n, p, q, t.data(), loadings, c.data(), b);
    for (std::int32_t k = 1; k <= q; ++k)
      rss[size(k - 1, A) + index(a - 1)] = squares(work.data() + size(p + k - 1, n), n);
  }
  coefficients(p, q, A, model.W.data(), model.P.data(), model.C.data(), model.b.data(), coefs);

  // Folds, made over the rows of the model: positions 1 ... nModel stand for them. The key is the column behind the
  // descriptors, whether that is a response or not.
  const auto nModel = static_cast<std::int32_t>(modelRows.size());
  Numbers key;
  for (std::int32_t row : modelRows)
    if (m > p) key.push_back(source(row, p + 1));
  Integers positions, order;
  for (std::int32_t i = 1; i <= nModel; ++i) positions.push_back(i);
  order = m > p ? validationOrder(key, positions) : positions;
  for (std::int32_t i = 0; i < nModel; ++i) rowOrder[i] = modelRows[index(order[index(i)] - 1)];
  const Plan folds = nModel < 1 ? Plan{0, 0, 1.0} : plan(cvMethod, cvGroups, cvFraction, nModel);
  const std::int32_t G = folds.folds;
  const double weight = folds.pressWeight;

  Model foldModel(p, q, A);
  std::vector<Numbers> foldCoefs;
  Numbers sample(size(p, std::max(A, 1))), contrib(index(A)), cumulative(index(A));
  for (std::size_t i = 0; i < size(A, q); ++i) press[i] = 0;
  for (std::int32_t g = 1; g <= G; ++g) {
    updateminorprogress(&progressMonitor, &g, &G, continueFlag);
    if (*continueFlag == 0) {
      *status = 999;
      return;
    }
    const Integers usable(index(nModel), 1);
    const Integers training = cvMethod == 1 ? systematicTrainingRows(order, usable, G, g)
                                            : randomTrainingRows(usable, folds.leaveOut, plsGenerator);
    Integers heldOut(index(nModel), 1);
    work.assign(size(n, m), 0.0);
    std::int32_t nTrain = 0;
    for (std::int32_t position : training) {
      ++nTrain;
      heldOut[index(position - 1)] = 0;
      for (std::int32_t j = 1; j <= m; ++j) x(nTrain, j) = source(modelRows[index(position - 1)], j);
    }
    Numbers coefsOfFold(size(p, A) * index(q));
    plsFit(work.data(), &n, &m, &p, &q, &A, foldModel.W.data(), foldModel.P.data(), foldModel.C.data(),
           foldModel.b.data(), coefsOfFold.data(), status);
    if (*status != 0) return;
    foldCoefs.push_back(coefsOfFold);
    for (std::int32_t k = 1; k <= q; ++k)
      for (std::int32_t position = 1; position <= nModel; ++position) {
        if (heldOut[index(position - 1)] == 0) continue;
        const std::int32_t row = modelRows[index(position - 1)];
        for (std::int32_t j = 1; j <= p; ++j) sample[index(j - 1)] = source(row, j);
        plsPrd(sample.data(), &A, &p, &A, foldModel.C.data() + size(k - 1, A), foldModel.b.data(), foldModel.W.data(),
               foldModel.P.data(), contrib.data(), cumulative.data());
        for (std::int32_t a = 0; a < A; ++a) {
          const double error = source(row, p + k) - cumulative[index(a)];
          press[size(k - 1, A) + index(a)] += weight * (error * error);
        }
      }
  }

  // The standard errors, with the squares taken about the mean.
  for (std::size_t e = 0; e < size(p, A) * index(q); ++e) {
    double mean = 0, sum = 0;
    for (const Numbers& fold : foldCoefs) mean += fold[e];
    mean /= G;
    for (const Numbers& fold : foldCoefs) sum += (fold[e] - mean) * (fold[e] - mean);
    coefErrors[e] = G < 1 ? 0 : std::sqrt(sum * (static_cast<double>(G - 1) / G) * weight);
  }
  *status = 1;
  if (A < 1) return;

  const auto at = [A](std::int32_t a, std::int32_t k) { return size(k - 1, A) + index(a - 1); };
  const auto ratio = [&](std::int32_t a, std::int32_t k) {
    const double before = a == 1 ? tss[k - 1] : rss[at(a - 1, k)];
    return before > 0 ? std::sqrt(press[at(a, k)] / before) : 0;
  };
  std::int32_t nc = A;
  if (keepAll == 0) {
    nc = 0;
    for (std::int32_t a = 1; a <= A && nc == a - 1; ++a)
      for (std::int32_t k = 1; k <= q && nc < a; ++k)
        if (ratio(a, k) <= static_cast<double>(ratioLimit)) nc = a;
    if (nc == 0) nc = 1;
  }

  for (std::int32_t k = 1; k <= q; ++k)
    for (std::int32_t i = 1; i <= n; ++i) {
      for (std::int32_t j = 1; j <= p; ++j) sample[index(j - 1)] = source(i, j);
      plsPrd(sample.data(), &nc, &p, &A, model.C.data() + size(k - 1, A), model.b.data(), model.W.data(),
             model.P.data(), contrib.data(), cumulative.data());
      fitted[size(k - 1, n) + index(i - 1)] = cumulative[index(nc - 1)] * scales[p + k - 1] + means[p + k - 1];
    }
  for (std::int32_t k = 1; k <= q; ++k)
    for (std::int32_t a = 1; a <= A; ++a) {
      double sum = 0;
      for (std::int32_t j = 1; j <= p; ++j) {
        const std::size_t e = index(k - 1) * size(A, p) + size(a - 1, p) + index(j - 1);
        coefs[e] = coefs[e] * scales[p + k - 1] / scales[j - 1];
        coefErrors[e] = coefErrors[e] * scales[p + k - 1] / scales[j - 1];
        sum += means[j - 1] * coefs[e];
      }
      intercepts[at(a, k)] = means[p + k - 1] - sum;
    }
  for (std::int32_t k = 1; k <= q; ++k)
    for (std::int32_t a = 1; a <= nc; ++a) {
      pressRatios[at(a, k)] = ratio(a, k);
      q2[at(a, k)] = tss[k - 1] > 0 ? 1 - press[at(a, k)] / tss[k - 1] : 0;
      r2[at(a, k)] = tss[k - 1] > 0 ? 1 - rss[at(a, k)] / tss[k - 1] : 0;
    }
  *status = 0;
}

}  // namespace studystats::definition
