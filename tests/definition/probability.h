// Gamma, incomplete beta and t, formula by formula.
#pragma once

namespace studystats::definition {

double lnGamma(double x);
double betaFraction(double a, double b, double x, int& converged);
void incompleteBeta(double a, double b, double x, double& result, int& status);
void tProbability(double t, int df, double& p, int& status);

}  // namespace studystats::definition
