#include "host/distributions.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>

namespace studystats {

double fQuantile(double level, double df1, double df2) {
  return boost::math::quantile(boost::math::fisher_f(df1, df2), level);
}

double chiSquareQuantile(double level, double df) { return boost::math::quantile(boost::math::chi_squared(df), level); }

}  // namespace studystats
