#include "host/distributions.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>

#include <cmath>
#include <limits>

namespace studystats {

double fQuantile(double level, double df1, double df2) {
  return boost::math::quantile(boost::math::fisher_f(df1, df2), level);
}

double fProbability(double f, double df1, double df2) { return boost::math::cdf(boost::math::fisher_f(df1, df2), f); }

double tProbability(double t, int df) {
  if (df < 1 || !std::isfinite(t)) return std::numeric_limits<double>::quiet_NaN();
  return 2 * boost::math::cdf(boost::math::complement(boost::math::students_t(df), std::abs(t)));
}

double tQuantile(double level, int df) {
  if (df < 1) return std::numeric_limits<double>::quiet_NaN();
  return boost::math::quantile(boost::math::students_t(df), (1 + level) / 2);
}

double chiSquareQuantile(double level, double df) { return boost::math::quantile(boost::math::chi_squared(df), level); }

}  // namespace studystats
