#include <studystats/analyses.h>
#include <studystats/utilities.h>

#include <cmath>

double StatsUtils::GenerateRandomDouble(double a, double b) {
  const double low = b > a ? a : b;
  const double r = Nmrand(1);
  return r * std::fabs(b - a) + low;
}
