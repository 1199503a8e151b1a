// ln gamma by the Lanczos approximation, and the incomplete beta function by the even and odd steps of its continued
// fraction,
//
//   I_x(a, b) = x^a (1 - x)^b / (a B(a, b)) * 1 / (1 + d1 / (1 + d2 / (1 + ...))),
//
// taken in x or, by I_x(a, b) = 1 - I_{1-x}(b, a), in 1 - x, whichever converges faster. The denominators are divided
// out after every pair of steps, which keeps them near 1. Abramowitz & Stegun (1964), 26.5.8; Lanczos (1964), SIAM
// Journal on Numerical Analysis 1, 86-96.
#include "numeric/probability.h"

#include <cmath>

namespace studystats::core {
namespace {

constexpr double kLanczos[] = {76.18009185791016,   -86.50531768798828, 24.01409912109375,
                               -1.2317395210266113, 0.00120858003,      -5.36382e-06};
constexpr double kLanczosScale = 2.5066282749176025;  // about sqrt(2 pi)
constexpr int kMostTerms = 100;
constexpr double kTolerance = 3e-7;

}  // namespace

double LogGam(const double* x) {
  const double y = *x - 1.0;
  const double base = y + 5.5;
  const double power = (y + 0.5) * std::log(base) - base;
  double series = 1.0;
  for (int j = 0; j < 6; ++j) series += kLanczos[j] / (y + (j + 1));
  return power + std::log(kLanczosScale * series);
}

double BetCf(const double* aIn, const double* bIn, const double* xIn, std::int32_t* converged) {
  const double a = *aIn, b = *bIn, x = *xIn;
  double am = 1.0, bm = 1.0, az = 1.0;
  double bz = 1.0 - (a + b) * x / (a + 1.0);
  for (int term = 1; term <= kMostTerms; ++term) {
    const double m = term, twoM = 2 * term;
    const double even = m * (b - m) * x / ((a - 1.0 + twoM) * (a + twoM));
    const double ap = az + even * am;
    const double bp = bz + even * bm;
    const double odd = -(a + m) * (a + b + m) * x / ((a + twoM) * (a + 1.0 + twoM));
    const double app = ap + odd * az;
    const double bpp = bp + odd * bz;
    const double before = az;
    am = ap / bpp;
    bm = bp / bpp;
    az = app / bpp;
    bz = 1.0;
    if (kTolerance * std::fabs(az) > std::fabs(az - before)) {
      *converged = 0;
      return az;
    }
  }
  *converged = 1;
  return 0.0;
}

void IncBet(const double* aIn, const double* bIn, const double* xIn, double* result, std::int32_t* status) {
  const double a = *aIn, b = *bIn, x = *xIn;
  if (x < 0.0 || x > 1.0) {
    *status = 1;
    return;
  }
  double front = 0.0;
  if (x != 0.0 && x != 1.0) {
    const double sum = a + b;
    front = std::exp(LogGam(&sum) - LogGam(&a) - LogGam(&b) + a * std::log(x) + b * std::log(1.0 - x));
  }
  std::int32_t converged = 0;
  if (x < (a + 1.0) / (a + b + 2.0)) {
    *result = front * BetCf(&a, &b, &x, &converged) / a;
  } else {
    const double rest = 1.0 - x;
    *result = 1.0 - front * BetCf(&b, &a, &rest, &converged) / b;
  }
  *status = converged == 0 ? 0 : 2;
}

void TProb(const double* t, const std::int32_t* df, double* p, std::int32_t* status) {
  const double a = *df / 2.0, half = 0.5;
  const double x = *df / (*t * *t + *df);
  IncBet(&a, &half, &x, p, status);
  *p = 1.0 - *p;
}

}  // namespace studystats::core
