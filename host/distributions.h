// Quantiles of the distributions behind limits and intervals.
#pragma once

namespace studystats {

// The value below which a variate lies with probability `level`, 0 < level < 1.
double fQuantile(double level, double df1, double df2);
double fProbability(double f, double df1, double df2);  // that a variate lies below f
double tProbability(double t, int df);                  // two-sided: of a larger |t|
double tQuantile(double level, int df);                 // the t that |t| stays below with probability `level`
double chiSquareQuantile(double level, double df);      // df need not be whole

}  // namespace studystats
