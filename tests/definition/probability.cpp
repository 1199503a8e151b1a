#include "tests/definition/probability.h"

#include <cmath>

namespace studystats::definition {

double lnGamma(double x) {
  const double c[7] = {
      0, 76.18009185791016, -86.50531768798828, 24.01409912109375, -1.2317395210266113, 0.00120858003, -5.36382e-06};
  const double y = x - 1;
  double tmp = y + 5.5;
  tmp = (y + 0.5) * std::log(tmp) - tmp;
  double ser = 1.0;
  for (int j = 1; j <= 6; ++j) ser = ser + c[j] / (y + j);
  return tmp + std::log(2.5066282749176025 * ser);
}

double betaFraction(double a, double b, double x, int& converged) {
  double am = 1, bm = 1, az = 1;
  double bz = 1 - (a + b) * x / (a + 1);
  for (int m = 1; m <= 100; ++m) {
    const double tem = 2 * m;
    double d = m * (b - m) * x / ((a - 1 + tem) * (a + tem));
    const double ap = az + d * am;
    const double bp = bz + d * bm;
    d = -(a + m) * (a + b + m) * x / ((a + tem) * (a + 1 + tem));
    const double app = ap + d * az;
    const double bpp = bp + d * bz;
    const double aold = az;
    am = ap / bpp;
    bm = bp / bpp;
    az = app / bpp;
    bz = 1;
    if (3e-7 * std::fabs(az) > std::fabs(az - aold)) {
      converged = 0;
      return az;
    }
  }
  converged = 1;
  return 0.0;
}

void incompleteBeta(double a, double b, double x, double& result, int& status) {
  if (x < 0 || x > 1) {
    status = 1;
    return;
  }
  status = 0;
  double bt;
  if (x == 0 || x == 1)
    bt = 0;
  else
    bt = std::exp(lnGamma(a + b) - lnGamma(a) - lnGamma(b) + a * std::log(x) + b * std::log(1 - x));
  int converged;
  if (x < (a + 1) / (a + b + 2))
    result = bt * betaFraction(a, b, x, converged) / a;
  else
    result = 1 - bt * betaFraction(b, a, 1 - x, converged) / b;
  if (converged != 0) status = 2;
}

void tProbability(double t, int df, double& p, int& status) {
  const double a = df / 2.0;
  const double x = df / (t * t + df);
  incompleteBeta(a, 0.5, x, p, status);
  p = 1 - p;
}

}  // namespace studystats::definition
