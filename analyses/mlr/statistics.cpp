// Analysis of variance, standard errors, t and F with their probabilities. Draper & Smith, Applied Regression Analysis,
// 3rd ed. (1998), chapters 1 and 5. Nothing guards the divisions but what is said: a residual sum of squares of 0 gives
// infinite t and F, no degrees of freedom left give statistics without meaning.
#include "analyses/mlr/statistics.h"

#include <cmath>

#include "numeric/least_squares.h"
#include "numeric/probability.h"

namespace studystats::core {
namespace {

// Residual, regression and total sums of squares; a regression sum that is nothing but rounding counts as 0.
void analyseVariance(const FittedModel& model, double rss, double* sumSq) {
  constexpr double kNothing = 1e-10F;  // as a 32-bit float
  const double ssr = model.tss - rss;
  sumSq[0] = ssr / model.tss < kNothing ? 0.0 : ssr;
  sumSq[1] = rss;
  sumSq[2] = model.tss;
}

// F of the model and the probability of exceeding it; -1 where that cannot be had.
void testModel(const std::int32_t* df, const double* sumSq, double* fValue, double* fProb) {
  const std::int32_t nIn = df[0], rest = df[1];
  if (nIn < 1) {
    *fValue = sumSq[1] > 0.0 ? sumSq[0] * rest / sumSq[1] : 0.0;
    *fProb = 1.0;
    return;
  }
  *fValue = (sumSq[0] / sumSq[1]) * (static_cast<double>(rest) / nIn);
  const double a = rest / 2.0, b = nIn / 2.0, x = rest / (rest + nIn * *fValue);
  std::int32_t status = 0;
  IncBet(&a, &b, &x, fProb, &status);
  if (status != 0) *fProb = -1.0;
}

// Standard errors, t-values and their two-sided probabilities, by variable.
void testCoefficients(const FittedModel& model, const MlrStatistics& out) {
  const double rss = out.sumSq[1], variance = rss / out.df[1];
  for (std::int32_t a = 0; a < model.nIn; ++a) {
    const std::int32_t j = model.inList[a] - 1;
    const double diagonal = model.inverseDiagonal[a];
    out.tValue[j] = model.coef[a] / std::sqrt(std::fabs(diagonal * variance));
    out.coefSe[j] = std::sqrt(diagonal * rss / out.df[1]);

    double inside = 0.0;
    std::int32_t status = 0;
    TProb(&out.tValue[j], &out.df[1], &inside, &status);
    out.tProb[j] = status == 0 ? 1.0 - inside : -1.0;
  }
}

}  // namespace

void modelStatistics(const FittedModel& model, const MlrStatistics& out) {
  double rss = 0.0;
  RegPred(model.data.data, &model.n, &model.p, &model.nIn, model.inList, model.intercept, model.coef, out.fitted,
          out.resid, &rss);
  analyseVariance(model, rss, out.sumSq);
  testModel(out.df, out.sumSq, out.fValue, out.fProb);
  *out.multR = model.tss == 0.0 ? 0.0 : std::sqrt(out.sumSq[0] / model.tss);
  *out.q2 = model.tss == 0.0 ? 0.0 : (model.tss - model.press) / model.tss;
  *out.sValue = std::sqrt(rss / out.df[1]);
  testCoefficients(model, out);
}

}  // namespace studystats::core
