// Quantiles of the distributions behind limits and intervals.
#pragma once

namespace studystats {

// The value below which a variate lies with probability `level`, 0 < level < 1.
double fQuantile(double level, double df1, double df2);
double chiSquareQuantile(double level, double df);  // df need not be whole

}  // namespace studystats
